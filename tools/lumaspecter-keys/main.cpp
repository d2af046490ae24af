// lumaspecter-keys: presses and releases the simulated instrument's hardware keys by writing
// input records into its key device, the FIFO at "<root>/dev/event0" that the simulation holds.

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QMap>
#include <cstdio>

#include "keydevicewriter.h"
#include "keyeventfifo.h"
#include "platformroot.h"

namespace {

constexpr int kBadArguments = 2;
constexpr int kNotWritten = 1;
constexpr long kHighestKeyCode = KEY_MAX;

int usageError(const QString& message) {
    std::fprintf(stderr, "lumaspecter-keys: %s (see --help)\n", qPrintable(message));
    return kBadArguments;
}

// The instrument's keys by name; any other key by its input code.
bool keyCode(const QString& name, unsigned short& code) {
    static const QMap<QString, unsigned short> named = {
        {"trigger", 279}, {"focus-in", 278}, {"focus-out", 277}};
    if (named.contains(name)) {
        code = named.value(name);
        return true;
    }
    bool ok = false;
    const long number = name.toLong(&ok);
    code = static_cast<unsigned short>(number);
    return ok && number >= 1 && number <= kHighestKeyCode;
}

// The key values of an action, in order: 1 press, 0 release.
bool actionValues(const QString& action, std::vector<int>& values) {
    static const QMap<QString, std::vector<int>> actions = {
        {"press", {1}}, {"release", {0}}, {"click", {1, 0}}};
    values = actions.value(action);
    return actions.contains(action);
}

std::vector<input_event> recordsOf(unsigned short code, const std::vector<int>& values) {
    std::vector<input_event> records;
    for (const int value : values) {
        const std::vector<input_event> key = fakekernel::keyRecords(code, value);
        records.insert(records.end(), key.begin(), key.end());
    }
    return records;
}

}  // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Presses, releases or clicks a hardware key of the simulated instrument.\n\nKEY is "
        "trigger (279), focus-in (278), focus-out (277) or an input key code.");
    parser.addHelpOption();
    parser.addOption({"root", "Platform root of the simulated instrument.", "DIR"});
    parser.addPositionalArgument("action", "press, release or click", "press|release|click");
    parser.addPositionalArgument("key", "trigger, focus-in, focus-out or CODE",
                                 "trigger|focus-in|focus-out|CODE");
    parser.process(app);
    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 2) {
        return usageError("an action and a key are needed");
    }
    std::vector<int> values;
    if (!actionValues(arguments[0], values)) {
        return usageError("unknown action \"" + arguments[0] + "\"");
    }
    unsigned short code = 0;
    if (!keyCode(arguments[1], code)) {
        return usageError("unknown key \"" + arguments[1] + "\"");
    }
    if (parser.isSet("root")) {
        setPlatformRoot(parser.value("root"));
    }
    const QString error = writeToKeyDevice(recordsOf(code, values));
    if (!error.isEmpty()) {
        std::fprintf(stderr, "lumaspecter-keys: %s\n", qPrintable(error));
        return kNotWritten;
    }
    return 0;
}
