#pragma once

#include <QImage>
#include <QString>

#include "resultrecord.h"

// A measurement as the single-fiber run hands it over: the first factory task with counts in
// its zones (zone z has z + 1 small defects, one middle defect and z scratches; zone 2's
// scratches fail), 960 x 960 pictures and fixed report texts. The tests link the resources.
SingleFiberResultRecord sampleRecord(const QString& connectorId, int saveMode = kSaveDataAndReport,
                                     bool passed = true);

// Where the sample's day is saved, under the platform root.
constexpr const char* kSampleDayFolder = "mnt/sdcard/sd/Measure_Result/20240517";

// A picture like the measured image (gray) or the overlay (RGB): a bright fiber on a dark
// background with some noise, so that it does not compress to nothing.
QImage samplePicture(QImage::Format format, int side = 960);
