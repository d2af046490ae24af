// lumaspecter-inspect: inspects frames from files as the instrument does after a trigger, and
// prints one line per frame. Bad frames are reported on stderr and the others still inspected.

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <cstdio>
#include <vector>

#include "capturethread.h"
#include "frameloader.h"
#include "platformroot.h"

namespace {

// The window the capture thread cuts for a measurement.
constexpr unsigned kMeasureWindow = 960;

struct SearchResult {
    bool found = false;
    unsigned x = 0, y = 0, rawX = 0, rawY = 0;
};

SearchResult searchFiber(CaptureThread& capture, const std::vector<uint16_t>& frame) {
    SearchResult result;
    result.found = capture.searchSingleFiber(frame.data(), kRawFrameWidth, kRawFrameHeight,
                                             result.x, result.y, result.rawX, result.rawY,
                                             kMeasureWindow, kMeasureWindow, true) != 0;
    return result;
}

QByteArray asJsonLine(const QString& image, const SearchResult& result) {
    const QJsonObject object{{"image", image},           {"found", result.found},
                             {"x", int(result.x)},       {"y", int(result.y)},
                             {"rawX", int(result.rawX)}, {"rawY", int(result.rawY)}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QByteArray asTextLine(const QString& image, const SearchResult& result) {
    if (!result.found) {
        return QString("%1: no fiber found").arg(image).toUtf8();
    }
    return QString("%1: fiber at (%2, %3), window center (%4, %5)")
        .arg(image)
        .arg(result.rawX)
        .arg(result.rawY)
        .arg(result.x)
        .arg(result.y)
        .toUtf8();
}

}  // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Finds the fiber in each frame: a raw 1600 x 1200 10-bit frame, or an 8-bit grayscale "
        "picture of that size.");
    parser.addHelpOption();
    parser.addOption({"json", "Print one JSON object per frame."});
    parser.addOption({"root", "Platform root for the instrument's fixed paths.", "DIR"});
    parser.addPositionalArgument("FRAME", "Frame files to inspect.", "FRAME...");
    parser.process(app);
    if (parser.isSet("root")) {
        setPlatformRoot(parser.value("root"));
    }
    const QStringList frames = parser.positionalArguments();
    if (frames.isEmpty()) {
        std::fprintf(stderr, "lumaspecter-inspect: no frame given\n%s",
                     qPrintable(parser.helpText()));
        return 2;
    }

    const bool json = parser.isSet("json");
    CaptureThread capture;
    std::vector<uint16_t> frame;
    int status = 0;
    for (const QString& path : frames) {
        QString error;
        if (loadRawFrame(path, frame, error) != 1) {
            std::fprintf(stderr, "lumaspecter-inspect: %s: %s\n", qPrintable(path),
                         qPrintable(error));
            status = 2;
            continue;
        }
        const SearchResult result = searchFiber(capture, frame);
        const QByteArray line = json ? asJsonLine(path, result) : asTextLine(path, result);
        std::printf("%s\n", line.constData());
        std::fflush(stdout);
    }
    return status;
}
