#pragma once

#include "twinsetting.h"

// Runs one autofocus on the twin set up as `twin`, with the lens starting at `lensStart`
// (motor steps), and prints one JSON object: whether it ended in focus, the moves and samples
// it took, the lens's start, end and sharpest positions in climb units, and its milliseconds.
int runAutoFocusOnTwin(const TwinSetting& twin, int lensStart);
