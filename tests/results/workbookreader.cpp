#include "workbookreader.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>

namespace {

// Runs a script beside the tests; its standard output, or a test failure when it fails.
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

QJsonObject scriptJson(const QString& script, const QStringList& arguments) {
    QByteArray output;
    return runPythonScript(script, arguments, output) ? QJsonDocument::fromJson(output).object()
                                                      : QJsonObject();
}

}  // namespace

QJsonObject readWithOpenpyxl(const QString& path) {
    return scriptJson("dump_workbook.py", {path});
}

QString cellText(const QJsonObject& workbook, const QString& reference) {
    const QJsonValue value = workbook["cells"].toObject()[reference].toObject()["value"];
    return value.isDouble() ? QString::number(value.toDouble()) : value.toString();
}

QStringList cellTexts(const QJsonObject& workbook, const QStringList& references) {
    QStringList texts;
    for (const QString& reference : references) {
        texts << cellText(workbook, reference);
    }
    return texts;
}

QList<int> rowOrder(const QJsonObject& workbook) {
    QList<int> order;
    for (const QJsonValue& row : workbook["rowOrder"].toArray()) {
        order << row.toInt();
    }
    return order;
}

bool editLikeAUser(const QString& path, const QString& noteCell, const QString& logo) {
    QByteArray output;
    return runPythonScript(
        "edit_template.py",
        logo.isEmpty() ? QStringList{path, noteCell} : QStringList{path, noteCell, "--logo", logo},
        output);
}

void PrintTo(const QString& text, std::ostream* stream) {
    *stream << '"' << text.toStdString() << '"';
}
