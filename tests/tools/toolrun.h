#pragma once

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>
#include <vector>

#include "endfacerenderer.h"
#include "testfiles.h"

// What the tool tests share: a program run as a user runs it, and frames for it to read.

struct ToolRun {
    int status;                // -1 when the program did not exit normally
    QList<QJsonObject> lines;  // one a line of its output ({} for a line that is not JSON)
    QString errors;
};

inline ToolRun runProgram(const QString& program, const QStringList& arguments) {
    QProcess tool;
    tool.start(program, arguments);
    tool.waitForFinished(120000);
    ToolRun run{tool.exitStatus() == QProcess::NormalExit ? tool.exitCode() : -1, {}, {}};
    for (const QByteArray& line : tool.readAllStandardOutput().split('\n')) {
        if (!line.isEmpty()) {
            run.lines.append(QJsonDocument::fromJson(line).object());
        }
    }
    run.errors = QString::fromUtf8(tool.readAllStandardError());
    return run;
}

// The keys of a result with their values, to compare them all at once.
inline QJsonObject pick(const QJsonObject& object, const QStringList& keys) {
    QJsonObject picked;
    for (const QString& key : keys) {
        picked[key] = object[key];
    }
    return picked;
}

// A whole raw frame of the scene, as the sensor gives it.
inline void writeRawFrame(const QString& path, const sim::EndFaceScene& scene) {
    std::vector<uint16_t> frame(size_t(kSensorWidth) * kSensorHeight);
    ASSERT_EQ(sim::renderRaw(scene, 0, 0, kSensorWidth, kSensorHeight, frame.data()), 1);
    ASSERT_TRUE(writeFile(
        path, QByteArray(reinterpret_cast<const char*>(frame.data()), int(frame.size() * 2))));
}
