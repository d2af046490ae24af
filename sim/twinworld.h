#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>

#include "endfacescene.h"

namespace sim {

// The world the simulated instrument's camera looks at: the end face in front of the lens and
// the camera's exposure and frame clock. The fake camera driver reads its frames from here; the
// exposure control sets the exposure. Safe to use from several threads.
class TwinWorld {
public:
    // The exposure at which the scene's levels are what the scene says.
    static constexpr unsigned kNominalExposure = 20;
    static constexpr std::chrono::nanoseconds kDefaultFramePeriod{33'333'333};

    TwinWorld();

    void setScene(const EndFaceScene& scene);
    EndFaceScene scene() const;

    void setExposure(unsigned exposure);
    unsigned exposure() const;

    void setFramePeriod(std::chrono::nanoseconds period);
    std::chrono::nanoseconds framePeriod() const;

    // The frame the sensor gives now: kSensorWidth x kSensorHeight 10-bit samples.
    void readFrame(uint16_t* frame);

private:
    mutable std::mutex mutex_;
    EndFaceScene scene_;
    unsigned exposure_ = kNominalExposure;
    std::chrono::nanoseconds framePeriod_ = kDefaultFramePeriod;
};

}  // namespace sim
