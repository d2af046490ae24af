#pragma once

#include <QString>

#include "endfacescene.h"
#include "lensoptics.h"

namespace sim {
class TwinWorld;
}

// What the twin shows when the tool starts: the scene in front of the lens, the lens and its
// focus, and the frame rate.
struct TwinSetting {
    sim::EndFaceScene scene;
    bool covered = false;
    int lens = sim::lens::kDefaultFocus;
    int focus = sim::lens::kDefaultFocus;
    double framesPerSecond = 30.0;
};

// Reads "--scene" options: comma-separated KEY=VALUE pairs, for example
// "fiber=single,x=640,y=480,lens=11000". Returns "" or what is wrong.
QString parseTwinSetting(const QString& text, TwinSetting& setting);

// Puts the world in the state the setting describes.
void applyTwinSetting(const TwinSetting& setting, sim::TwinWorld& world);

// The keys and their meaning, for the tool's help.
QString twinSettingHelp();
