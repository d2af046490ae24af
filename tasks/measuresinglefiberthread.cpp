#include "measuresinglefiberthread.h"

#include <QElapsedTimer>
#include <QMutexLocker>
#include <algorithm>
#include <cstring>
#include <mutex>

#include "finddefect.h"
#include "overlaysf.h"
#include "resultfiles.h"
#include "scratchcheck.h"
#include "sectionmap.h"
#include "taskgrading.h"

namespace {

// Excluded diameter bands of the defect search (um): the cladding edge, and for a multimode
// fiber the core edge too, where the fiber's own boundary must not count as a defect.
const int kSingleModeBands[] = {kCladdingBandMinUm, kCladdingBandMaxUm};
const int kMultiModeBands[] = {48, 60, kCladdingBandMinUm, kCladdingBandMaxUm};

// The scratch search's inspection circle and its excluded range, the cladding edge (um).
const double kScratchExcludedRange[] = {kCladdingBandMinUm, kCladdingBandMaxUm};

double elapsedMs(const QElapsedTimer& timer) {
    return timer.nsecsElapsed() / 1e6;
}

bool sameZones(const std::vector<TaskZoneSetting>& painted, const TaskInfoSetting& task) {
    const int zones = zonesInUse(task);
    if (int(painted.size()) != zones) {
        return false;
    }
    for (int z = 0; z < zones; ++z) {
        if (painted[z].diameterMin != task.sections[z].diameterMin ||
            painted[z].diameterMax != task.sections[z].diameterMax) {
            return false;
        }
    }
    return true;
}

}  // namespace

MeasureSingleFiberThread::MeasureSingleFiberThread(QObject* parent)
    : QThread(parent),
      scale_(kUmPerPixel),
      zoneMap_(kMaxRegionPixels),
      maskRegion_(kMaxRegionPixels),
      defectMap_(kMaxRegionPixels),
      defectMap2_(kMaxRegionPixels),
      labelMap_(kMaxRegionPixels, short(-1)),
      defectList_(kMaxDefects),
      scratches_(kMaxScratches),
      scratchZones_(kMaxScratches) {
    registerTaskMetaTypes();
}

MeasureSingleFiberThread::~MeasureSingleFiberThread() {
    wait();
}

bool MeasureSingleFiberThread::startMeasureSingleFiber(TaskInfoSetting task, unsigned char* image,
                                                       unsigned char* mask, int width, int height,
                                                       int left, int top, int centerX, int centerY,
                                                       int fiberFlag, int saveType,
                                                       QString connectorId, int language) {
    if (!regionProblem(width, height, centerX, centerY).isEmpty()) {
        return false;
    }
    // The inputs are written under the run's lock: a run in progress reads them, so a second
    // start is refused rather than made to overwrite them (or to wait for the whole run).
    std::unique_lock<QMutex> lock(runLock_, std::try_to_lock);
    if (!lock.owns_lock() || busy_) {
        return false;
    }
    // The previous run has released the lock and is only returning; start() on a thread that
    // has not finished yet would do nothing.
    wait();
    busy_ = true;
    task_ = task;
    image_ = image;
    mask_ = mask;
    width_ = width;
    height_ = height;
    left_ = left;
    top_ = top;
    centerX_ = centerX;
    centerY_ = centerY;
    fiberFlag_ = fiberFlag;
    saveType_ = saveType;
    connectorId_ = connectorId;
    language_ = language;
    start(QThread::InheritPriority);
    return true;
}

void MeasureSingleFiberThread::setReportTexts(const QString& describer, const QString& manufacturer,
                                              const QString& operatorName) {
    describer_ = describer;
    manufacturer_ = manufacturer;
    operatorName_ = operatorName;
}

QString MeasureSingleFiberThread::regionProblem(int width, int height, int centerX, int centerY) {
    if (width < 5 || height < 5) {
        return QStringLiteral("the region of %1 x %2 pixels is too small (at least 5 x 5)")
            .arg(width)
            .arg(height);
    }
    if (qint64(width) * height > kMaxRegionPixels) {
        return QStringLiteral("the region of %1 x %2 pixels is larger than a frame")
            .arg(width)
            .arg(height);
    }
    if (centerX < 0 || centerX >= width || centerY < 0 || centerY >= height) {
        return QStringLiteral("the fiber center (%1, %2) lies outside the region of %3 x %4")
            .arg(centerX)
            .arg(centerY)
            .arg(width)
            .arg(height);
    }
    return QString();
}

int MeasureSingleFiberThread::maxMeasureSizeSF(const TaskInfoSetting& task) {
    int largest = 0;
    for (int z = 0; z < zonesInUse(task); ++z) {
        largest = std::max<int>(largest, task.sections[z].diameterMax);
    }
    return largest;
}

void MeasureSingleFiberThread::initSectionMapByTaskInfoSF(const TaskInfoSetting& task, int width,
                                                          int height, int centerX, int centerY) {
    ::initSectionMapByTaskInfoSF(task, zoneMap_.data(), width, height, centerX, centerY, scale_);
    const int zones = zonesInUse(task);
    painted_ = {std::vector<TaskZoneSetting>(task.sections, task.sections + zones), width, height,
                centerX, centerY};
    ++zoneMapPaints_;
}

bool MeasureSingleFiberThread::zoneMapFits() const {
    return painted_.width == width_ && painted_.height == height_ && painted_.centerX == centerX_ &&
           painted_.centerY == centerY_ && sameZones(painted_.zones, task_);
}

// The label map is -1 but over the boxes of the defects the last run found: only those are put
// back, instead of the whole map.
void MeasureSingleFiberThread::unlabelLastDefects() {
    for (int i = 0; i < defectCount_; ++i) {
        const defect_info_struct& d = defectList_[size_t(i)];
        for (int y = d.top; y <= d.bottom; ++y) {
            std::fill_n(labelMap_.begin() + long(y) * labelledWidth_ + d.left,
                        std::max(d.right - d.left + 1, 0), short(-1));
        }
    }
}

// The defect detector clears its two maps itself, and they are read only after it found
// defects: they are not cleared here.
void MeasureSingleFiberThread::clearForRun() {
    results_.clear();
    unlabelLastDefects();
    defectCount_ = scratchCount_ = 0;
    std::fill(scratchZones_.begin(), scratchZones_.end(), short(-1));
    std::fill(std::begin(task_.zoneResults), std::end(task_.zoneResults), TaskZoneResult{});
}

void MeasureSingleFiberThread::copyMaskRegion() {
    for (int row = 0; row < height_; ++row) {
        std::memcpy(maskRegion_.data() + size_t(row) * width_,
                    mask_ + size_t(top_ + row) * kMaskLineLength + left_, size_t(width_));
    }
}

void MeasureSingleFiberThread::detectDefects() {
    const bool multiMode = task_.opticalType != 0;
    const int* bands = multiMode ? kMultiModeBands : kSingleModeBands;
    const int bandCount = multiMode ? 2 : 1;
    defectCount_ = AlgGetFiberDefect(image_, mask_ ? maskRegion_.data() : nullptr,
                                     defectMap_.data(), defectMap2_.data(), zoneMap_.data(), task_,
                                     width_, height_, centerX_, centerY_, float(scale_), bands,
                                     bandCount, defectList_.data(), labelMap_.data(), kMaxDefects);
    labelledWidth_ = width_;
}

void MeasureSingleFiberThread::detectScratches() {
    // The search reaches out to the largest zone that checks scratches, the cladding at least.
    double outerDiameter = kCladdingDiameterUm;
    for (int z = 0; z < zonesInUse(task_); ++z) {
        if (task_.sections[z].sCheck != 0 && task_.sections[z].diameterMax > outerDiameter) {
            outerDiameter = task_.sections[z].diameterMax;
        }
    }
    scratchCount_ = FindSectionScratch(
        image_, width_, height_, scratches_.data(), scratchZones_.data(), kMaxScratches,
        scratchCount_, task_, float(scale_), centerX_, centerY_, outerDiameter, kCladdingDiameterUm,
        kScratchExcludedRange, 1, defectList_.data(), 0);
}

bool MeasureSingleFiberThread::defectSidePasses() const {
    if (defectCount_ == -1) {
        return false;
    }
    for (int z = 0; z < zonesInUse(task_); ++z) {
        const TaskZoneResult& r = task_.zoneResults[z];
        if (r.dNoBiggerResult == 0 || r.dMidResult == 0 || r.dBiggerResult == 0) {
            return false;
        }
    }
    return true;
}

bool MeasureSingleFiberThread::scratchSidePasses() const {
    if (scratchCount_ == -1) {
        return false;
    }
    for (int z = 0; z < zonesInUse(task_); ++z) {
        const TaskZoneResult& r = task_.zoneResults[z];
        if (r.sNoBiggerResult == 0 || r.sBiggerResult == 0) {
            return false;
        }
    }
    return true;
}

void MeasureSingleFiberThread::collectResults() {
    for (int z = 0; z < zonesInUse(task_); ++z) {
        results_.append(task_.zoneResults[z]);
    }
}

void MeasureSingleFiberThread::drawOverlay() {
    const SingleFiberFindings findings{defectMap2_.data(), labelMap_.data(),  defectList_.data(),
                                       defectCount_,       scratches_.data(), scratchZones_.data(),
                                       scratchCount_};
    drawOverlayImageSF(image_, width_, height_, centerX_, centerY_, task_, scale_, findings,
                       measured_, overlay_);
}

void MeasureSingleFiberThread::saveResultFiles() {
    SingleFiberResultRecord record;
    record.saveMode = saveType_;
    record.connectorId = connectorId_;
    record.language = language_;
    record.passed = pass_;
    record.task = task_;
    record.measured = measured_;
    record.overlay = overlay_;
    record.time = QDateTime::currentDateTime();
    record.describer = describer_;
    record.manufacturer = manufacturer_;
    record.operatorName = operatorName_;
    QString failure;
    switch (saveMeasureResultSF(record, &failure)) {
        case SaveOutcome::NoSdCard:
            emit noSDCard();
            break;
        case SaveOutcome::InvalidFileName:
            emit invalidFileName();
            break;
        case SaveOutcome::Failed:
            emit resultFilesNotSaved(failure);
            break;
        case SaveOutcome::NotSaved:
        case SaveOutcome::Saved:
            break;
    }
}

// Detection, grading and the result files; a detector that fails still leaves its partial
// counts, the overlay and the saved files, as the instrument has always kept them.
void MeasureSingleFiberThread::measureAndGrade() {
    QElapsedTimer timer;
    timer.start();
    detectDefects();
    times_.defects = elapsedMs(timer);
    timer.restart();
    detectScratches();
    times_.scratches = elapsedMs(timer);
    collectResults();
    pass_ = defectSidePasses() && scratchSidePasses();
    if (defectCount_ == -1) {
        failure_ = QStringLiteral(
                       "the defect search failed (more than %1 defects, or more "
                       "rings than the defect map holds)")
                       .arg(kMaxDefects);
    } else if (scratchCount_ == -1) {
        failure_ =
            QStringLiteral("the scratch search failed (more than %1 scratches)").arg(kMaxScratches);
    }
    timer.restart();
    drawOverlay();
    times_.overlay = elapsedMs(timer);
    saveResultFiles();
}

void MeasureSingleFiberThread::run() {
    QMutexLocker lock(&runLock_);
    if (!zoneMapFits()) {
        initSectionMapByTaskInfoSF(task_, width_, height_, centerX_, centerY_);
    }
    clearForRun();
    if (mask_ != nullptr) {
        copyMaskRegion();
    }
    // A task that grades nothing would pass every connector: no detection, no verdict, no
    // files, only the picture with its zone circles and the reason.
    failure_ = taskGradingProblem(task_);
    if (failure_.isEmpty()) {
        measureAndGrade();
    } else {
        pass_ = false;
        drawOverlay();
    }
    if (!failure_.isEmpty()) {
        emit measureSingleFiberFailed(failure_);
    }
    emit measureSingleFiberFinished(pass_, &overlay_, &measured_, &results_);
    busy_ = false;
}
