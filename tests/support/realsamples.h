#pragma once

#include <QString>
#include <QStringList>

// The real end-face pictures beside the project (the CMake option LUMASPECTER_SAMPLES_DIR).
// They are not part of the repository: the tests that use them are skipped without them.
QString realSamplesDir();

// The paths of the pictures (*.png) in name order; empty when the folder is absent.
QStringList realSamplePictures();
