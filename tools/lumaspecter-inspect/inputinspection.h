#pragma once

#include <QJsonObject>
#include <QString>
#include <cstdint>
#include <vector>

#include "singlefibersequence.h"

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
    MeasureOutputs files;   // the result files on the SD card
};

// Inspects one input as the instrument does after a trigger and returns the result as one
// JSON object. The sensor mask (may be null) is not used for given regions, which have no
// place on the sensor. `error` is set instead when the measurement refuses the region or could
// not grade (a task that grades nothing, a failed detector); `problems` receives why result
// files or overlay pictures that were asked for could not be written.
QJsonObject inspect(const InspectionInput& input, const TaskInfoSetting& task,
                    const unsigned char* mask, const InspectionOutputs& outputs,
                    SingleFiberInspection& inspection, QString& error, QStringList& problems);
