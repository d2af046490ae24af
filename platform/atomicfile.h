#pragma once

#include <QByteArray>
#include <QString>

// Replaces the file's contents as one step: the bytes go to a temporary file in the same
// folder, which is then renamed over the old file. A crash or power cut during the write
// leaves either the old file or the new one, never a mixture. The caller runs "sync" after.
// Returns false, leaving the old file as it was, when the write fails.
bool writeFileAtomically(const QString& path, const QByteArray& bytes);
