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

// What an inspection writes besides its result line.
struct InspectionOutputs {
    QString overlayFolder;  // the overlay pictures go here; empty: none written
    int saveType = 0;       // the result files on the SD card, as the instrument's save modes
    QString connectorId;
    int language = 0;
};

// The tools' own workers for one job: a capture thread for the search, a measurement thread,
// and the buffer the measurement window is cut into, reused from input to input.
struct InspectionWorkers {
    CaptureThread& capture;
    MeasureSingleFiberThread& measure;
    std::vector<unsigned char>& window;
};

// Inspects one input as the instrument does after a trigger: the fiber search with the
// 960 x 960 window and refinement, the window cut as the capture cuts it, then the measurement
// run with the task and the sensor mask (may be null; not used for given regions, which have
// no place on the sensor), which also saves the result files the save type asks for. Returns
// the result as one JSON object; `error` is set instead when the region does not fit the
// measurement's buffers, and `saveProblem` when the result files could not be written.
QJsonObject inspect(const InspectionInput& input, const TaskInfoSetting& task,
                    const unsigned char* mask, const InspectionOutputs& outputs,
                    InspectionWorkers workers, QString& error, QString& saveProblem);
