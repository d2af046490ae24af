#pragma once

#include <QString>
#include <QStringList>

#include "remoteclient.h"

// The commands of lumaspecter-remote. Each prints its result on stdout and returns the exit
// status: 0, or 2 with the reason on stderr when the exchange failed or the instrument
// answered "failure".

int showDeviceInfo(RemoteClient& client);
int showState(RemoteClient& client);
int showTasks(RemoteClient& client);
int putTask(RemoteClient& client, const QString& file);
int deleteTask(RemoteClient& client, const QString& taskId);
int setBrightness(RemoteClient& client, int value);
int watchMessages(RemoteClient& client);

struct MeasureOptions {
    QString taskId;       // empty: the instrument's current task
    QString connectorId;  // empty: the instrument's connector id field as it is
    QString folder;       // where the pictures go
};
int measure(RemoteClient& client, const MeasureOptions& options);

// Prints the message on stderr and returns 2.
int failed(const QString& message);

// Ordinary answers come at once; a measurement may take a while.
constexpr int kAnswerTimeoutMs = 10000;
