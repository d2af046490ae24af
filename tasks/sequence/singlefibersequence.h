#pragma once

#include <QString>
#include <cstdint>
#include <vector>

#include "measuresinglefiberthread.h"

// Where the search put the fiber in a whole frame: (rawX, rawY) its center, (x, y) the center
// of the measurement window around it, moved where needed to keep the window in the frame.
struct FiberPlace {
    bool found = false;
    unsigned x = 0, y = 0, rawX = 0, rawY = 0;
};

// A gray region to measure: its pixels, its place in the frame and the fiber center in it.
struct MeasureRegion {
    const unsigned char* pixels = nullptr;
    int width = 0, height = 0, left = 0, top = 0, centerX = 0, centerY = 0;
};

// What a measurement saves, as the instrument's save modes and the connector id name it.
struct MeasureOutputs {
    int saveType = 0;
    QString connectorId;
    int language = 0;
};

// One single-fiber inspection as the instrument makes it after a trigger: search the frame,
// cut the measurement window around the fiber as the capture cuts it, measure. It owns its
// buffers and its measurement thread, so inspections on several threads never share memory.
class SingleFiberInspection {
public:
    SingleFiberInspection();

    // Searches a whole raw frame for the fiber, with the window's size and the refinement.
    FiberPlace searchFrame(const uint16_t* frame10);

    // The measurement window around a found fiber, converted to 8 bits into the inspection's
    // own buffer (valid until the next call).
    MeasureRegion cutWindow(const uint16_t* frame10, const FiberPlace& place);

    // Measures a region with the task and the sensor mask of the whole frame (may be null) and
    // waits for the run. Returns false, measuring nothing, when the run refuses the region
    // (MeasureSingleFiberThread::regionProblem says why); `saveProblem` says why result files
    // that were asked for were not written. A run that could not grade tells run().failure().
    bool measure(const TaskInfoSetting& task, const MeasureRegion& region,
                 const unsigned char* mask, const MeasureOutputs& outputs, QString& saveProblem);

    // The measurement thread: its results after measure(), its report texts before.
    MeasureSingleFiberThread& run() { return run_; }

private:
    std::vector<unsigned char> searchBuffer_;
    std::vector<unsigned char> window_;
    MeasureSingleFiberThread run_;
};
