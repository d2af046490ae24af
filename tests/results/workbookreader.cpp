#include "workbookreader.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>

bool runPythonScript(const QString& script, const QStringList& arguments, QByteArray& output) {
    QProcess python;
    python.start("/usr/bin/python3",
                 QStringList{QStringLiteral(RESULTS_SCRIPTS_DIR "/") + script} + arguments);
    const bool finished = python.waitForFinished(120000);
    output = python.readAllStandardOutput();
    const bool ok =
        finished && python.exitStatus() == QProcess::NormalExit && python.exitCode() == 0;
    if (!ok) {
        ADD_FAILURE() << script.toStdString() << " failed on " << arguments.join(' ').toStdString()
                      << ":\n"
                      << python.readAllStandardError().toStdString();
    }
    return ok;
}

QJsonObject readWithOpenpyxl(const QString& path) {
    QByteArray output;
    if (!runPythonScript("dump_workbook.py", {path}, output)) {
        return QJsonObject();
    }
    return QJsonDocument::fromJson(output).object();
}

QString cellText(const QJsonObject& workbook, const QString& reference) {
    const QJsonValue value = workbook["cells"].toObject()[reference].toObject()["value"];
    return value.isDouble() ? QString::number(value.toDouble()) : value.toString();
}

QJsonObject compareParts(const QString& before, const QString& after) {
    QByteArray output;
    if (!runPythonScript("compare_parts.py", {before, after}, output)) {
        return QJsonObject();
    }
    return QJsonDocument::fromJson(output).object();
}

bool editLikeAUser(const QString& path, const QString& noteCell, const QString& logo) {
    QStringList arguments = {path, noteCell};
    if (!logo.isEmpty()) {
        arguments << "--logo" << logo;
    }
    QByteArray output;
    return runPythonScript("edit_template.py", arguments, output);
}

void PrintTo(const QString& text, std::ostream* stream) {
    *stream << '"' << text.toStdString() << '"';
}
