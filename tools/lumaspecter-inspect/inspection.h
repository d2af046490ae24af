#pragma once

#include <QJsonObject>
#include <QString>
#include <cstdint>
#include <vector>

#include "taskinfo.h"

class CaptureThread;
class MeasureSingleFiberThread;

// One input of the tool: a whole frame to search, or a measurement region whose fiber center
// is given.
struct InspectionInput {
    QString path;
    std::vector<uint16_t> frame;        // a whole frame (10-bit), or empty
    std::vector<unsigned char> region;  // with a given center: the region (8-bit)
    int regionWidth = 0, regionHeight = 0;
    int centerX = 0, centerY = 0;  // with a given center
};

// Where the overlay pictures go, if anywhere.
struct OverlayOutput {
    QString folder;  // empty: none written
};

// The tools' own workers for one job: a capture thread for the search, a measurement thread.
struct InspectionWorkers {
    CaptureThread& capture;
    MeasureSingleFiberThread& measure;
};

// Inspects one input as the instrument does after a trigger: the fiber search with the
// 960 x 960 window and refinement, the window cut as the capture cuts it, then the measurement
// run with the task and the sensor mask (may be null; not used for given regions, which have
// no place on the sensor). Returns the result as one JSON object; `error` is set instead when
// the region does not fit the measurement's buffers.
QJsonObject inspect(const InspectionInput& input, const TaskInfoSetting& task,
                    const unsigned char* mask, const OverlayOutput& overlays,
                    InspectionWorkers workers, QString& error);
