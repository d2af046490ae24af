// lumaspecter-remote: drives an instrument over its remote control connection from a laptop
// or a script: device information, state, tasks, measurements, live messages, brightness.

#include <QCommandLineParser>
#include <QCoreApplication>

#include "commands.h"

namespace {

constexpr int kConnectTimeoutMs = 5000;

int usageError(const QString& message) {
    return failed(message + " (see --help)");
}

// Runs the command given as the positional arguments.
int runCommand(RemoteClient& client, const QStringList& words, const QCommandLineParser& parser) {
    const QString command = words.value(0);
    const QString argument = words.value(1);
    if (command == "info") {
        return showDeviceInfo(client);
    }
    if (command == "state") {
        return showState(client);
    }
    if (command == "tasks") {
        return showTasks(client);
    }
    if (command == "put-task") {
        return putTask(client, argument);
    }
    if (command == "delete-task") {
        return deleteTask(client, argument);
    }
    if (command == "brightness") {
        return setBrightness(client, argument.toInt());
    }
    if (command == "watch") {
        return watchMessages(client);
    }
    return measure(client, {parser.value("task"), parser.value("id"), parser.value("out")});
}

// Why the words do not make a command, or "" when they do.
QString commandProblem(const QStringList& words) {
    const QString command = words.value(0);
    const QStringList bare{"info", "state", "tasks", "watch", "measure"};
    const QStringList withArgument{"put-task", "delete-task", "brightness"};
    if (bare.contains(command)) {
        return words.size() == 1 ? "" : command + " takes no argument";
    }
    if (!withArgument.contains(command)) {
        return command.isEmpty() ? "no command given" : command + ": no such command";
    }
    if (words.size() != 2 || words[1].isEmpty()) {
        return command + " takes one argument";
    }
    bool number = true;
    words[1].toInt(&number);
    return command == "brightness" && !number ? "brightness takes a whole number" : "";
}

}  // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Drives the instrument over its remote control connection (TCP, JSON lines).\n\n"
        "Commands:\n"
        "  info              the device information\n"
        "  state             the device state number (6 is live view)\n"
        "  tasks             the task list as JSON\n"
        "  put-task FILE     adds a task object, or replaces the task with its taskId\n"
        "  delete-task ID    deletes the task with this taskId\n"
        "  measure           starts a measurement, waits for its result, writes the two\n"
        "                    pictures and prints the result as one JSON object\n"
        "  watch             prints every message the instrument pushes, one JSON line each\n"
        "  brightness N      sets the live view's exposure (11 to 199)");
    parser.addHelpOption();
    parser.addOptions({
        {"host", "The instrument's address (default 127.0.0.1).", "H", "127.0.0.1"},
        {"port", "The remote control port (default 6667).", "P", "6667"},
        {"task", "measure: the taskId to measure with (default the current task).", "ID"},
        {"id", "measure: the connector id to save the result under.", "CONNECTOR"},
        {"out", "measure: the folder for the pictures (default the current one).", "DIR", "."},
    });
    parser.addPositionalArgument("COMMAND", "What to do (see above).", "COMMAND [ARGUMENT]");
    parser.process(app);
    const QStringList words = parser.positionalArguments();
    const QString problem = commandProblem(words);
    if (!problem.isEmpty()) {
        return usageError(problem);
    }
    bool ok = false;
    const uint port = parser.value("port").toUInt(&ok);
    if (!ok || port == 0 || port > 65535) {
        return usageError("--port takes a number from 1 to 65535");
    }
    RemoteClient client;
    if (!client.open(parser.value("host"), quint16(port), kConnectTimeoutMs)) {
        return failed(client.error());
    }
    return runCommand(client, words, parser);
}
