#pragma once

#include <QStringList>

// The result workbook templates live under "/etc" so that a user can adapt them (a logo,
// colours, column widths); the program carries the factory copies as resources
// ":/templates/<name>".

// The eight template file names (single-fiber and MT12, data and report, English and Chinese).
const QStringList& resultTemplateNames();

// Where a save reads a template from: the user's copy under "/etc" when there is one, otherwise
// the factory copy in the resources. A save never writes into "/etc".
QString resultTemplatePath(const QString& name);

// Copies every template that is missing from "/etc" out of the resources, each in one step,
// then runs "sync". Templates already there, edited or not, are left alone. False when one
// could not be written.
bool installTemplatesIfMissing();
