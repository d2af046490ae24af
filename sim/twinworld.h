#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <mutex>
#include <random>

#include "endfacescene.h"
#include "lightfield.h"
#include "noisebank.h"

namespace sim {

// The simulated instrument's world: what lies in front of the lens (a scene drawn by the
// renderer: a single fiber, an empty ferrule; or nothing, the view covered), where the focusing
// lens stands, the camera's exposure and its frame clock. The fake camera driver reads its
// frames from here and its exposure control sets the exposure; the fake motor moves the lens.
//
// A frame is the scene's light, blurred by the lens's distance from focus (mixed from renderings
// at a ladder of blurs, see LightCache), read out with the exposure's gain, shot and read noise
// from a precomputed bank, and what a hand-held instrument adds: a little gain flicker and a
// sub-pixel shake from frame to frame. Safe to use from several threads.
class TwinWorld {
public:
    // The exposure at which the scene's levels are what the scene says.
    static constexpr unsigned kNominalExposure = 20;
    static constexpr std::chrono::nanoseconds kDefaultFramePeriod{33'333'333};

    // A single fiber in the middle of the view, the lens at focus, the nominal exposure, 30
    // frames a second.
    TwinWorld();

    // The end face in front of the lens (its blur and noise are the twin's, not the scene's).
    void setScene(const EndFaceScene& scene);
    EndFaceScene scene() const;
    // Nothing in front of the lens: the frames are nearly black.
    void setCovered(bool covered);

    // The lens's position and the focus, microsteps (0 .. lens::kTravelSteps). Setting the
    // position puts the lens there at once, as if it had always stood there.
    void setLensPosition(int steps);
    int lensPosition() const;
    void setFocusPosition(int steps);
    int focusPosition() const;
    // The motor moves the lens by `steps` (signed), stopping at the ends of the travel.
    void moveLens(int steps);

    void setExposure(unsigned exposure);
    unsigned exposure() const;

    void setFramePeriod(std::chrono::nanoseconds period);
    std::chrono::nanoseconds framePeriod() const;

    // Reads out the next frame: kSensorWidth x kSensorHeight 10-bit samples. The sensor gathers
    // light over the whole frame period, so a lens in motion shows where it stood at the middle
    // of that time, half a period ago.
    void readFrame(uint16_t* frame);

private:
    using Clock = std::chrono::steady_clock;
    struct Shot;
    struct LensAt {
        Clock::time_point time;
        int position;
    };
    Shot nextShot();
    int lensPositionAt(Clock::time_point time) const;

    mutable std::mutex mutex_;  // guards the state below; the cache guards itself
    EndFaceScene scene_;
    uint64_t sceneVersion_ = 0;
    bool covered_ = false;
    std::deque<LensAt> lensPath_;  // where the lens stood since a little over a period ago
    int focus_;
    unsigned exposure_ = kNominalExposure;
    std::chrono::nanoseconds framePeriod_ = kDefaultFramePeriod;
    std::mt19937 random_;
    const NoiseBank noise_;
    LightCache cache_;
};

}  // namespace sim
