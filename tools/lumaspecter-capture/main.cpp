// lumaspecter-capture: runs the capture thread against the simulated instrument in one work
// mode and writes what it emits, one JSON line per signal and the pictures as PNG files, so
// that a person can watch the twin and the thread at work; or runs one autofocus on the twin
// and prints how it went.

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QThread>
#include <cstdio>
#include <random>

#include "autofocusrun.h"
#include "capturethread.h"
#include "fakekernel.h"
#include "platformroot.h"
#include "signalwriter.h"
#include "twinsetting.h"
#include "twinworld.h"

namespace {

constexpr int kBadArguments = 2;

struct Options {
    TwinSetting twin;
    int mode = -1;
    unsigned frames = 30;
    unsigned exposure = sim::TwinWorld::kNominalExposure;
    bool preview = false;
    bool watch = false;
    QString folder;
    int lensStart = 0;  // motor steps
};

constexpr int kStepsPerUnit = 16;

int usageError(const QString& message) {
    std::fprintf(stderr, "lumaspecter-capture: %s (see --help)\n", qPrintable(message));
    return kBadArguments;
}

// Reads a whole number from lowest to highest into value; false when it is not one.
bool wholeNumber(const QString& text, long lowest, long highest, long& value) {
    bool ok = false;
    value = text.toLong(&ok);
    return ok && value >= lowest && value <= highest;
}

// The autofocus's start: --lens-start in climb units, else drawn from --seed over the travel.
QString parseAutoFocus(const QCommandLineParser& parser, Options& options) {
    long number = 0;
    const long travelUnits = sim::lens::kTravelSteps / kStepsPerUnit;
    if (parser.isSet("lens-start")) {
        if (!wholeNumber(parser.value("lens-start"), 0, travelUnits, number)) {
            return QString("--lens-start takes a position from 0 to %1").arg(travelUnits);
        }
        options.lensStart = int(number) * kStepsPerUnit;
        return {};
    }
    if (parser.isSet("seed") && !wholeNumber(parser.value("seed"), 0, 4294967295L, number)) {
        return "--seed takes a number from 0 to 4294967295";
    }
    std::mt19937 random(parser.isSet("seed") ? unsigned(number) : 1u);
    options.lensStart = std::uniform_int_distribution<int>(0, sim::lens::kTravelSteps)(random);
    return {};
}

QString parse(const QCommandLineParser& parser, Options& options) {
    if (parser.isSet("autofocus")) {
        const QString error = parseAutoFocus(parser, options);
        return error.isEmpty() ? parseTwinSetting(parser.value("scene"), options.twin) : error;
    }
    long number = 0;
    if (!wholeNumber(parser.value("mode"), 0, 10, number)) {
        return "--mode takes a work mode from 0 to 10";
    }
    options.mode = int(number);
    if (parser.isSet("frames") && !wholeNumber(parser.value("frames"), 1, 100000000, number)) {
        return "--frames takes a number of at least 1";
    }
    options.frames = parser.isSet("frames") ? unsigned(number) : options.frames;
    if (parser.isSet("exposure") && !wholeNumber(parser.value("exposure"), 1, 1000, number)) {
        return "--exposure takes a number from 1 to 1000";
    }
    options.exposure = parser.isSet("exposure") ? unsigned(number) : options.exposure;
    options.preview = parser.isSet("preview");
    options.watch = parser.isSet("watch");
    options.folder = parser.value("out");
    if (!options.folder.isEmpty() && !QDir().mkpath(options.folder)) {
        return options.folder + ": cannot create the folder";
    }
    return parseTwinSetting(parser.value("scene"), options.twin);
}

// The picture the video output showed last (mode 0), its luma bytes as gray.
void writeVideoOutput(fakekernel::V4l2OutputDriver& output, SignalWriter& writer) {
    unsigned width = 0, height = 0;
    const std::vector<uint8_t> shown = output.shownPicture(width, height);
    if (shown.empty()) {
        return;
    }
    writer.writePicture({{"device", "/dev/video1"}}, shown.data() + 1, int(width), int(height),
                        int(2 * width));
}

int run(const Options& options) {
    sim::TwinWorld world;
    applyTwinSetting(options.twin, world);
    fakekernel::FakeKernel kernel(world);
    CaptureThread thread;
    SignalWriter writer(thread, options.folder);
    thread.setExposure(options.exposure);
    thread.setExposurePreview(options.preview);
    thread.setSharpnessWatch(options.watch);
    thread.startCapture(Capture_Mode(options.mode));
    // Until the thread has taken the frames asked for, or ended by itself.
    while (thread.isRunning() && kernel.capture().takenBuffers() < options.frames) {
        QThread::msleep(5);
    }
    thread.stopCapture();
    writeVideoOutput(kernel.output(), writer);
    return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Runs the capture thread against the simulated instrument in one work mode and prints "
        "one JSON line per signal it emits; or, with --autofocus, runs one autofocus on the twin "
        "and prints one JSON object.\n\nScene options (--scene KEY=VALUE,...):\n" +
        twinSettingHelp());
    parser.addHelpOption();
    parser.addOptions({
        {"root", "Platform root for the instrument's fixed paths.", "DIR"},
        {"scene", "What the twin shows (see above).", "OPTIONS"},
        {"mode", "Work mode, 0 to 10.", "N"},
        {"frames", "Frames the thread takes from the camera (default 30).", "K"},
        {"out", "Write the pictures the thread hands out as PNG files here.", "DIR"},
        {"exposure", "The camera exposure (default 20).", "E"},
        {"preview", "Exposure preview in mode 0: report the mean gray."},
        {"watch", "Watch the sharpness too in mode 7."},
        {"autofocus", "Run one autofocus instead of a work mode."},
        {"lens-start", "Where the autofocus starts, climb units of 16 steps (0 to 1500).", "N"},
        {"seed", "Draws the autofocus's start when --lens-start is not given (default 1).", "S"},
    });
    parser.process(app);
    if (!parser.isSet("mode") && !parser.isSet("autofocus")) {
        return usageError("--mode or --autofocus is needed");
    }
    Options options;
    const QString error = parse(parser, options);
    if (!error.isEmpty()) {
        return usageError(error);
    }
    if (parser.isSet("root")) {
        setPlatformRoot(parser.value("root"));
    }
    return parser.isSet("autofocus") ? runAutoFocusOnTwin(options.twin, options.lensStart)
                                     : run(options);
}
