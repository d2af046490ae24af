#pragma once

#include <QImage>
#include <QList>
#include <QMutex>
#include <QString>
#include <QThread>
#include <memory>
#include <vector>

#include "defectinfo.h"
#include "instrumentoptics.h"
#include "scratchrecord.h"
#include "taskinfo.h"

// One single-fiber measurement per start: the zone map, defects and scratches with their
// grading per zone, the overall verdict and the overlay, reported by
// measureSingleFiberFinished. The buffers are allocated once, for regions of up to a whole
// frame, and reused; the reported pointers stay valid until the next run starts.
class MeasureSingleFiberThread : public QThread {
    Q_OBJECT

public:
    static constexpr int kMaxDefects = 500;
    static constexpr int kMaxScratches = 200;
    static constexpr int kMaxRegionPixels = kSensorPixels;
    static constexpr int kMaskLineLength = kSensorWidth;  // the sensor mask covers the whole frame

    // How long the run's stages took, milliseconds.
    struct StageTimes {
        double defects = 0.0;
        double scratches = 0.0;
        double overlay = 0.0;
    };

    explicit MeasureSingleFiberThread(QObject* parent = nullptr);
    ~MeasureSingleFiberThread() override;

    // Stores the run's inputs and starts the run; refused (false, nothing emitted) while a run
    // is in progress. `image` is the gray region (width x height,
    // at most kMaxRegionPixels) at (left, top) in the frame, with the fiber at (centerX,
    // centerY) in it; `mask` (may be null) the sensor mask of the whole frame, 255 on pixels to
    // ignore. fiberFlag, saveType, connectorId and language are kept for the result files.
    // Also returns false, starting nothing, when regionProblem() finds fault with the region.
    bool startMeasureSingleFiber(TaskInfoSetting task, unsigned char* image, unsigned char* mask,
                                 int width, int height, int left, int top, int centerX, int centerY,
                                 int fiberFlag, int saveType, QString connectorId, int language);

    // The texts the result files carry (the settings DESCRIBER, MANUFACTURER, OPERATOR).
    void setReportTexts(const QString& describer, const QString& manufacturer,
                        const QString& operatorName);

    // Why a region cannot be measured, or "" when it can: smaller than 5 x 5 pixels, larger
    // than the buffers (a frame), or with the fiber center outside it (a center far outside
    // would also overflow the zone and defect maps' distance arithmetic).
    static QString regionProblem(int width, int height, int centerX, int centerY);

    // The largest outer diameter of the task's zones (um), 0 without zones: what the region
    // cut around the fiber must cover.
    static int maxMeasureSizeSF(const TaskInfoSetting& task);

    // The last run's results (read after the signal, before the next start).
    bool passed() const { return pass_; }
    // Why the last run gave no verdict that can be trusted, "" when it graded the end face: a
    // task that grades nothing (nothing was detected or saved), or a detector that failed.
    const QString& failure() const { return failure_; }
    int defectCount() const { return defectCount_; }
    int scratchCount() const { return scratchCount_; }
    const defect_info_struct* defects() const { return defectList_.data(); }
    const ScratchRecord* scratches() const { return scratches_.data(); }
    const short* scratchZones() const { return scratchZones_.data(); }
    const QList<TaskZoneResult>& results() const { return results_; }
    const TaskInfoSetting& task() const { return task_; }
    const QImage& overlay() const { return overlay_; }
    const QImage& measuredImage() const { return measured_; }
    const StageTimes& stageTimes() const { return times_; }
    // How often the zone map has been painted since construction.
    int zoneMapPaints() const { return zoneMapPaints_; }

signals:
    void measureSingleFiberFinished(bool pass, QImage* overlay, QImage* image,
                                    QList<ZoneResult>* results);
    // The run's save mode asked for files, but there is no SD card / the connector id cannot
    // name a file: nothing was written.
    void noSDCard();
    void invalidFileName();
    // The result files the save mode asks for could not be written (a full or read-only card,
    // a name too long for the file system); the reason names the file and the system's cause.
    void resultFilesNotSaved(QString reason);
    // Emitted just before measureSingleFiberFinished (whose verdict is then false) when the run
    // could not grade: the reason is failure(), for the screen to show.
    void measureSingleFiberFailed(QString reason);

protected:
    void run() override;

private:
    // What the zone map was last painted for: it is reused only for the same zones, region
    // size and center.
    struct PaintedZones {
        std::vector<TaskZoneSetting> zones;
        int width = -1, height = -1, centerX = -1, centerY = -1;
    };

    void initSectionMapByTaskInfoSF(const TaskInfoSetting& task, int width, int height, int centerX,
                                    int centerY);
    bool zoneMapFits() const;
    void clearForRun();
    void unlabelLastDefects();
    void copyMaskRegion();
    void detectDefects();
    void detectScratches();
    bool defectSidePasses() const;
    bool scratchSidePasses() const;
    void collectResults();
    void measureAndGrade();
    void drawOverlay();
    void saveResultFiles();

    const double scale_;
    QMutex runLock_;     // held by a run from start to end, and while its inputs are stored
    bool busy_ = false;  // a run is started and has not yet ended (under runLock_)

    // The run's inputs.
    TaskInfoSetting task_{};
    unsigned char* image_ = nullptr;
    unsigned char* mask_ = nullptr;
    int width_ = 0, height_ = 0, left_ = 0, top_ = 0, centerX_ = 0, centerY_ = 0;
    int fiberFlag_ = 0, saveType_ = 0, language_ = 0;
    QString connectorId_;
    QString describer_, manufacturer_, operatorName_;

    // Buffers, allocated once.
    std::vector<unsigned char> zoneMap_;
    std::vector<unsigned char> maskRegion_;
    std::vector<unsigned char> defectMap_;
    std::vector<unsigned char> defectMap2_;
    std::vector<short> labelMap_;
    std::vector<defect_info_struct> defectList_;
    std::vector<ScratchRecord> scratches_;
    std::vector<short> scratchZones_;
    PaintedZones painted_;
    int zoneMapPaints_ = 0;
    int labelledWidth_ = 0;  // the line length of the label map's boxes from the last run

    // The results.
    int defectCount_ = 0;
    int scratchCount_ = 0;
    bool pass_ = false;
    QString failure_;
    QImage overlay_;
    QImage measured_;
    QList<TaskZoneResult> results_;
    StageTimes times_;
};
