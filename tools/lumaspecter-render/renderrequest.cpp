#include "renderrequest.h"

#include <QCommandLineParser>
#include <QVector>

#include <cmath>

namespace {

const char* const kUsage =
    "Usage: lumaspecter-render [options] OUTPUT\n"
    "Renders a synthetic fiber end face as the instrument's camera sees it and writes its\n"
    "ground truth as JSON to OUTPUT.json.\n"
    "  --root DIR                 platform root for the instrument's fixed paths\n"
    "  --seed N                   texture and noise seed (default 1)\n"
    "  --center X,Y               fiber center, frame pixels (default 800,600)\n"
    "  --core UM                  core diameter, micrometres (default 9)\n"
    "  --blur SIGMA               optical blur, pixels (default 1)\n"
    "  --noise SIGMA              sensor noise, 8-bit levels (default 1)\n"
    "  --exposure E               brightness factor (default 1)\n"
    "  --spot X,Y,DIAM_UM,CONTRAST[,bright]          a spot at a frame position\n"
    "  --spot-at R_UM,ANGLE,DIAM_UM,CONTRAST[,bright] a spot R_UM from the fiber center,\n"
    "                             ANGLE degrees counter-clockwise from +x\n"
    "  --scratch X1,Y1,X2,Y2,WIDTH_UM,CONTRAST[,bright]\n"
    "  --format raw|png           raw: 1600 x 1200 little-endian 16-bit words; png: 8-bit\n"
    "                             gray (default png)\n"
    "  --region X,Y               only the 960 x 960 8-bit region centred on X,Y (raw: bytes)\n"
    "  -h, --help                 this text\n";

// Region centers farther out than this are surely a mistake.
constexpr double kMaxRegionCenter = 1e6;

// Comma-separated numbers, optionally followed by the word "bright" or "dark".
struct NumberList {
    QVector<double> numbers;
    bool bright = false;
};

bool parseNumberList(const QString& text, int count, bool allowShade, NumberList& list) {
    QStringList parts = text.split(',');
    if (allowShade && parts.size() == count + 1) {
        const QString shade = parts.takeLast().trimmed();
        if (shade != "bright" && shade != "dark") {
            return false;
        }
        list.bright = shade == "bright";
    }
    if (parts.size() != count) {
        return false;
    }
    for (const QString& part : parts) {
        bool ok = false;
        list.numbers.append(part.trimmed().toDouble(&ok));
        if (!ok) {
            return false;
        }
    }
    return true;
}

class RequestParser {
public:
    explicit RequestParser(RenderRequest& request) : request_(request) {
        parser_.addHelpOption();
        for (const char* name : {"root", "seed", "center", "core", "blur", "noise", "exposure",
                                 "spot", "spot-at", "scratch", "format", "region"}) {
            parser_.addOption(QCommandLineOption(name, name, "value"));
        }
        parser_.addPositionalArgument("OUTPUT", "output file");
    }

    QString parse(const QStringList& arguments, bool& wantsHelp) {
        if (!parser_.parse(arguments)) {
            return parser_.errorText();
        }
        wantsHelp = parser_.isSet("help");
        if (wantsHelp) {
            return {};
        }
        const QStringList positional = parser_.positionalArguments();
        if (positional.size() != 1) {
            return "exactly one OUTPUT file is needed";
        }
        request_.output = positional.first();
        request_.root = parser_.value("root");
        QString error = parseFace();
        if (error.isEmpty()) {
            error = parseDefects();
        }
        if (error.isEmpty()) {
            error = parseOutputForm();
        }
        if (error.isEmpty() && !sim::isValidScene(request_.scene)) {
            error =
                "a value is out of range (blur 0..20 px, sizes positive, noise, exposure and "
                "contrasts not negative)";
        }
        return error;
    }

private:
    // Reads option name as count numbers into list; false (with error set) when malformed.
    bool numbers(const QString& name, const QString& text, int count, bool allowShade,
                 NumberList& list) {
        if (parseNumberList(text, count, allowShade, list)) {
            return true;
        }
        error_ = QString("--%1: cannot read '%2'").arg(name, text);
        return false;
    }

    // The single number of option name into value, when the option is given.
    bool optionalNumber(const QString& name, double& value) {
        NumberList list;
        if (!parser_.isSet(name)) {
            return true;
        }
        if (!numbers(name, parser_.value(name), 1, false, list)) {
            return false;
        }
        value = list.numbers[0];
        return true;
    }

    QString parseFace() {
        sim::EndFaceScene& scene = request_.scene;
        double seed = scene.seed;
        NumberList center;
        const bool ok = optionalNumber("seed", seed) &&
                        optionalNumber("core", scene.coreDiameterUm) &&
                        optionalNumber("blur", scene.blurSigmaPx) &&
                        optionalNumber("noise", scene.noiseSigma) &&
                        optionalNumber("exposure", scene.exposure) &&
                        (!parser_.isSet("center") ||
                         numbers("center", parser_.value("center"), 2, false, center));
        if (!ok) {
            return error_;
        }
        if (seed < 0 || seed > 4294967295.0 || seed != double(qint64(seed))) {
            return "--seed: must be a whole number from 0 to 4294967295";
        }
        scene.seed = uint32_t(qint64(seed));
        if (!center.numbers.isEmpty()) {
            scene.centerX = center.numbers[0];
            scene.centerY = center.numbers[1];
        }
        return {};
    }

    QString parseDefects() {
        sim::EndFaceScene& scene = request_.scene;
        for (const QString& text : parser_.values("spot")) {
            NumberList v;
            if (!numbers("spot", text, 4, true, v)) {
                return error_;
            }
            scene.spots.push_back(
                {v.numbers[0], v.numbers[1], v.numbers[2], v.numbers[3], v.bright});
        }
        for (const QString& text : parser_.values("spot-at")) {
            NumberList v;
            if (!numbers("spot-at", text, 4, true, v)) {
                return error_;
            }
            scene.spots.push_back(sim::spotAtRadius(scene, v.numbers[0], v.numbers[1], v.numbers[2],
                                                    v.numbers[3], v.bright));
        }
        for (const QString& text : parser_.values("scratch")) {
            NumberList v;
            if (!numbers("scratch", text, 6, true, v)) {
                return error_;
            }
            const QVector<double>& n = v.numbers;
            scene.scratches.push_back({n[0], n[1], n[2], n[3], n[4], n[5], v.bright});
        }
        return {};
    }

    QString parseOutputForm() {
        const QString format = parser_.isSet("format") ? parser_.value("format") : "png";
        if (format != "raw" && format != "png") {
            return QString("--format: '%1' is neither raw nor png").arg(format);
        }
        request_.raw = format == "raw";
        NumberList region;
        if (parser_.isSet("region")) {
            if (!numbers("region", parser_.value("region"), 2, false, region)) {
                return error_;
            }
            if (std::abs(region.numbers[0]) > kMaxRegionCenter ||
                std::abs(region.numbers[1]) > kMaxRegionCenter) {
                return "--region: the center lies too far outside the frame";
            }
            request_.region = true;
            request_.regionX = qRound(region.numbers[0]);
            request_.regionY = qRound(region.numbers[1]);
        }
        return {};
    }

    RenderRequest& request_;
    QCommandLineParser parser_;
    QString error_;
};

}  // namespace

QString parseRenderRequest(const QStringList& arguments, RenderRequest& request, bool& wantsHelp) {
    wantsHelp = false;
    return RequestParser(request).parse(arguments, wantsHelp);
}

QString renderUsage() {
    return kUsage;
}
