#pragma once

#include <QDateTime>
#include <QJsonObject>

#include "remotecontroller.h"

// The parts of the answers that report something: each returns the keys to add to "data".

// The fixed device information of method 3.
QJsonObject deviceInfoReply();

// The measurement object of method 4: the last finished run as the controller kept it, with
// the connector id and report texts of now; an empty object before the first run.
QJsonObject measurementReply(const RemoteMeasurement& measurement, const QString& connectorId,
                             const RemoteReportTexts& texts, const QDateTime& now);

// Method 2: the task file's object added to `data` when the file reads as a non-empty object,
// "failure" with "parse task error" when it exists but does not, `data` untouched when it is
// missing or cannot be opened.
void addTaskFileReply(QJsonObject& data);
