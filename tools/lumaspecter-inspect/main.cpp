// lumaspecter-inspect: inspects frames (or measurement regions) from files as the instrument
// does after a trigger, and prints one line per input, in input order. Inputs that cannot be
// read or graded, and result files that cannot be saved, are reported on stderr; the others
// are still inspected.

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>
#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <map>
#include <mutex>
#include <opencv2/core/utility.hpp>
#include <thread>
#include <vector>

#include "frameloader.h"
#include "inputinspection.h"
#include "platformroot.h"
#include "regularfile.h"
#include "settingsstore.h"
#include "taskchoice.h"
#include "taskjson.h"

namespace {

constexpr qint64 kMaskBytes = qint64(kSensorWidth) * kSensorHeight;

struct Options {
    QStringList inputs;
    bool json = false;
    bool givenCenter = false;
    int centerX = 0, centerY = 0;
    InspectionOutputs outputs;
    QString describer, manufacturer, operatorName;
    int jobs = 1;
    TaskInfoSetting task{};
    std::vector<unsigned char> mask;
};

struct Outcome {
    QJsonObject result;
    QString error;         // the input was not inspected, or not graded
    QStringList problems;  // files asked for that could not be written
};

int usageError(const QString& message) {
    std::fprintf(stderr, "lumaspecter-inspect: %s\n", qPrintable(message));
    return 2;
}

bool parseCenter(const QString& text, int& x, int& y) {
    const QStringList parts = text.split(',');
    bool okX = false, okY = false;
    if (parts.size() == 2) {
        x = parts[0].toInt(&okX);
        y = parts[1].toInt(&okY);
    }
    return okX && okY;
}

// The sensor mask under the root, if there is one; false when it is there but unusable.
bool loadMask(std::vector<unsigned char>& mask, QString& error) {
    const QString path = platformPath("/etc/ccd_mask.dat");
    if (!QFileInfo::exists(path)) {
        return true;
    }
    QByteArray bytes;
    if (!readRegularFile(path, kMaskBytes, bytes, error)) {
        error = path + ": " + error;
        return false;
    }
    if (bytes.size() != kMaskBytes) {
        error = QString("%1: not a sensor mask (%2 bytes, expected %3)")
                    .arg(path)
                    .arg(bytes.size())
                    .arg(kMaskBytes);
        return false;
    }
    mask.assign(bytes.begin(), bytes.end());
    return true;
}

bool readInput(const QString& path, const Options& options, InspectionInput& input,
               QString& error) {
    input.path = path;
    if (!options.givenCenter) {
        return loadRawFrame(path, input.frame, error) == 1;
    }
    input.centerX = options.centerX;
    input.centerY = options.centerY;
    return loadGrayRegion(path, input.region, input.regionWidth, input.regionHeight, error) == 1;
}

Outcome inspectOne(const QString& path, const Options& options, SingleFiberInspection& inspection) {
    Outcome outcome;
    InspectionInput input;
    if (readInput(path, options, input, outcome.error)) {
        outcome.result =
            inspect(input, options.task, options.mask.empty() ? nullptr : options.mask.data(),
                    options.outputs, inspection, outcome.error, outcome.problems);
    }
    return outcome;
}

QByteArray textLine(const QJsonObject& r) {
    if (!r["found"].toBool()) {
        return QString("%1: no fiber found").arg(r["image"].toString()).toUtf8();
    }
    return QString("%1: %2 - fiber at (%3, %4), %5 defects, %6 scratches")
        .arg(r["image"].toString())
        .arg(r["pass"].toBool() ? "PASS" : "FAIL")
        .arg(r["left"].toInt() + r["centerX"].toInt())
        .arg(r["top"].toInt() + r["centerY"].toInt())
        .arg(r["defectCount"].toInt())
        .arg(r["scratchCount"].toInt())
        .toUtf8();
}

void complain(const QString& input, const QString& problem) {
    std::fprintf(stderr, "lumaspecter-inspect: %s: %s\n", qPrintable(input), qPrintable(problem));
}

// Prints one input's result line, or its error, and its problems; returns its exit status.
int report(const QString& input, const Outcome& outcome, bool json) {
    if (!outcome.error.isEmpty()) {
        complain(input, outcome.error);
        return 2;
    }
    const QByteArray line = json ? QJsonDocument(outcome.result).toJson(QJsonDocument::Compact)
                                 : textLine(outcome.result);
    std::printf("%s\n", line.constData());
    std::fflush(stdout);
    for (const QString& problem : outcome.problems) {
        complain(input, problem);
    }
    return outcome.problems.isEmpty() ? 0 : 2;
}

// Inspects every input on `jobs` workers and prints the results in input order as they
// complete. A result is dropped once printed, and no worker runs more than two inputs per
// worker ahead of the next one to print, so memory stays the same over any number of inputs.
// Returns 2 when an input could not be read, graded or saved, 0 otherwise.
int inspectAll(const Options& options) {
    const int n = options.inputs.size();
    const int workerCount = std::min(options.jobs, n);
    const int ahead = 2 * workerCount;
    std::map<int, Outcome> done;  // inspected, not yet printed
    std::mutex mutex;
    std::condition_variable changed;
    int next = 0;     // the next input to inspect
    int printed = 0;  // inputs printed so far
    auto worker = [&] {
        SingleFiberInspection inspection;
        inspection.run().setReportTexts(options.describer, options.manufacturer,
                                        options.operatorName);
        for (;;) {
            int index;
            {
                std::unique_lock<std::mutex> lock(mutex);
                changed.wait(lock, [&] { return next == n || next < printed + ahead; });
                if (next == n) {
                    return;
                }
                index = next++;
            }
            Outcome outcome = inspectOne(options.inputs[index], options, inspection);
            std::lock_guard<std::mutex> lock(mutex);
            done.emplace(index, std::move(outcome));
            changed.notify_all();
        }
    };
    std::vector<std::thread> workers;
    for (int j = 0; j < workerCount; ++j) {
        workers.emplace_back(worker);
    }
    int status = 0;
    for (int i = 0; i < n; ++i) {
        Outcome outcome;
        {
            std::unique_lock<std::mutex> lock(mutex);
            changed.wait(lock, [&] { return done.count(i) != 0; });
            outcome = std::move(done[i]);
            done.erase(i);
            printed = i + 1;
        }
        changed.notify_all();
        status = std::max(status, report(options.inputs[i], outcome, options.json));
    }
    for (std::thread& thread : workers) {
        thread.join();
    }
    return status;
}

}  // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Inspects fiber end faces: raw 1600 x 1200 10-bit frames or 8-bit grayscale pictures of "
        "that size, or with --center measurement regions of any size.");
    parser.addHelpOption();
    parser.addOptions({
        {"json", "Print one JSON object per input."},
        {"root", "Platform root for the instrument's fixed paths.", "DIR"},
        {"task", "Task name or id (default: the last used task, else the first).", "TASK"},
        {"center", "The inputs are measurement regions with the fiber at X,Y.", "X,Y"},
        {"overlay", "Write the overlay and the measured image as PNG files here.", "DIR"},
        {"jobs", "Inputs inspected at once (default: every core).", "N"},
        {"save-type",
         "Result files on the SD card under the root: 0 none (default), 1 data, "
         "2 report, 3 both, 4 both on pass, 5 both on fail.",
         "N"},
        {"id", "Connector id naming the result files (default: the setting SN_TEXT).", "ID"},
    });
    parser.addPositionalArgument("FRAME", "Frames or regions to inspect.", "FRAME...");
    parser.process(app);
    if (parser.isSet("root")) {
        setPlatformRoot(parser.value("root"));
    }

    Options options;
    options.inputs = parser.positionalArguments();
    options.json = parser.isSet("json");
    if (options.inputs.isEmpty()) {
        std::fprintf(stderr, "%s", qPrintable(parser.helpText()));
        return usageError("no frame given");
    }
    options.givenCenter = parser.isSet("center");
    if (options.givenCenter &&
        !parseCenter(parser.value("center"), options.centerX, options.centerY)) {
        return usageError("--center takes X,Y in pixels");
    }
    const int cores = std::max(QThread::idealThreadCount(), 1);
    options.jobs = cores;
    if (parser.isSet("jobs")) {
        bool ok = false;
        options.jobs = parser.value("jobs").toInt(&ok);
        if (!ok || options.jobs < 1) {
            return usageError("--jobs takes a number of at least 1");
        }
        // Each job holds a whole measurement's buffers (some 15 MB), and more jobs than cores
        // only wait for each other: 100000 jobs would take all the memory there is.
        options.jobs = std::min(options.jobs, cores);
    }
    if (parser.isSet("overlay")) {
        options.outputs.overlayFolder = parser.value("overlay");
        if (!QDir().mkpath(options.outputs.overlayFolder)) {
            return usageError(options.outputs.overlayFolder + ": cannot create the overlay folder");
        }
    }
    if (parser.isSet("save-type")) {
        bool ok = false;
        options.outputs.files.saveType = parser.value("save-type").toInt(&ok);
        if (!ok || options.outputs.files.saveType < 0 || options.outputs.files.saveType > 5) {
            return usageError("--save-type takes 0 to 5");
        }
    }
    const SettingsStore settings;
    options.outputs.files.connectorId =
        parser.isSet("id") ? parser.value("id") : settings.textValue(SettingsStore::kSnText);
    options.outputs.files.language = settings.intValue(SettingsStore::kLanguage);
    options.describer = settings.textValue(SettingsStore::kDescriber);
    options.manufacturer = settings.textValue(SettingsStore::kManufacturer);
    options.operatorName = settings.textValue(SettingsStore::kOperator);
    QString error, taskNote;
    const QList<TaskInfoSetting> tasks = availableTasks(taskNote);
    if (!taskNote.isEmpty()) {
        std::fprintf(stderr, "lumaspecter-inspect: %s\n", qPrintable(taskNote));
    }
    if (!chooseTask(tasks, parser.value("task"), options.task, error) ||
        !loadMask(options.mask, error)) {
        return usageError(error);
    }
    // The jobs are the parallelism: OpenCV's own threads would only compete with them.
    cv::setNumThreads(1);
    return inspectAll(options);
}
