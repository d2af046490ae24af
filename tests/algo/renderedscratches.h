#pragma once

#include <random>
#include <vector>

#include "endfacescene.h"
#include "scratchrecord.h"
#include "taskrecords.h"

// Scratch search on rendered 960 x 960 measurement regions about the fiber, as the measurement
// run cuts them, with the scratches reported in frame coordinates like the scene's.
struct FoundScratches {
    int count;
    std::vector<ScratchRecord> scratches;
    std::vector<short> zones;
    TaskInfoSetting task;
};
FoundScratches findRenderedScratches(const sim::EndFaceScene& scene, const TaskInfoSetting& task);

// A reported scratch matches a rendered one when both its ends lie within 3 px of the rendered
// middle line and the two directions differ by 2 degrees at most.
bool matchesScratch(const ScratchRecord& reported, const sim::Scratch& truth);

// A scene about a randomly placed fiber with random blur and noise; the core follows the task.
sim::EndFaceScene randomFace(std::mt19937& random, const TaskInfoSetting& task);

// A scratch across the whole inspection circle, its middle line at offsetUm from the fiber
// center and at angle (radians) to the x axis.
sim::Scratch crossingScratch(const sim::EndFaceScene& scene, double offsetUm, double angle,
                             double widthUm, double contrast, bool bright);
