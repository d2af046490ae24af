#include "twinworld.h"

#include <algorithm>

#include "lensoptics.h"
#include "sensorframe.h"

namespace sim {

namespace {

constexpr double kLevelsPer8Bit = 4.0;
// Light left when nothing is in front of the lens: a mean gray of a few levels.
constexpr double kCoveredLight = 0.03;
// The lamp's flicker, as a share of the gain (one standard deviation), and how far the
// picture shakes, pixels either way: enough to move the sharpness measure by a few tenths from
// frame to frame, as a hand-held instrument does, within the autofocus's tolerances.
constexpr double kFlicker = 0.003;
constexpr double kShakePx = 0.2;

// How far back the lens's path is kept: longer than any frame period.
constexpr std::chrono::seconds kPathKept{1};

int onTravel(int steps) {
    return std::clamp(steps, 0, lens::kTravelSteps);
}

}  // namespace

// One frame's draw: the scene as it stands and what varies from frame to frame.
struct TwinWorld::Shot {
    EndFaceScene scene;
    uint64_t sceneVersion;
    int lensDistance;
    FrameReadout readout;
};

TwinWorld::TwinWorld()
    : lensPath_{{Clock::now(), lens::kDefaultFocus}},
      focus_(lens::kDefaultFocus),
      random_(1),
      noise_(1) {}

void TwinWorld::setScene(const EndFaceScene& scene) {
    std::lock_guard<std::mutex> lock(mutex_);
    scene_ = scene;
    ++sceneVersion_;
}

EndFaceScene TwinWorld::scene() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return scene_;
}

void TwinWorld::setCovered(bool covered) {
    std::lock_guard<std::mutex> lock(mutex_);
    covered_ = covered;
}

void TwinWorld::setLensPosition(int steps) {
    std::lock_guard<std::mutex> lock(mutex_);
    lensPath_.assign(1, {Clock::time_point::min(), onTravel(steps)});
}

int TwinWorld::lensPosition() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lensPath_.back().position;
}

void TwinWorld::moveLens(int steps) {
    std::lock_guard<std::mutex> lock(mutex_);
    const Clock::time_point now = Clock::now();
    lensPath_.push_back({now, onTravel(lensPath_.back().position + steps)});
    while (lensPath_.size() > 1 && lensPath_[1].time < now - kPathKept) {
        lensPath_.pop_front();
    }
}

// The last place the lens reached by `time`; before the path kept, where it begins.
int TwinWorld::lensPositionAt(Clock::time_point time) const {
    for (auto at = lensPath_.rbegin(); at != lensPath_.rend(); ++at) {
        if (at->time <= time) {
            return at->position;
        }
    }
    return lensPath_.front().position;
}

void TwinWorld::setFocusPosition(int steps) {
    std::lock_guard<std::mutex> lock(mutex_);
    focus_ = onTravel(steps);
}

int TwinWorld::focusPosition() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return focus_;
}

void TwinWorld::setExposure(unsigned exposure) {
    std::lock_guard<std::mutex> lock(mutex_);
    exposure_ = exposure;
}

unsigned TwinWorld::exposure() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return exposure_;
}

void TwinWorld::setFramePeriod(std::chrono::nanoseconds period) {
    std::lock_guard<std::mutex> lock(mutex_);
    framePeriod_ = period;
}

std::chrono::nanoseconds TwinWorld::framePeriod() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return framePeriod_;
}

TwinWorld::Shot TwinWorld::nextShot() {
    std::lock_guard<std::mutex> lock(mutex_);
    std::normal_distribution<double> flicker(1.0, kFlicker);
    std::uniform_real_distribution<double> shake(-kShakePx, kShakePx);
    const int lens = lensPositionAt(Clock::now() - framePeriod_ / 2);
    Shot shot{scene_, sceneVersion_, lens - focus_, {}};
    shot.readout.gain = kLevelsPer8Bit * exposure_ / kNominalExposure * flicker(random_) *
                        (covered_ ? kCoveredLight : 1.0);
    shot.readout.shakeX = shake(random_);
    shot.readout.shakeY = shake(random_);
    shot.readout.noiseStart = uint32_t(random_());
    return shot;
}

void TwinWorld::readFrame(uint16_t* frame) {
    const Shot shot = nextShot();
    const auto light = cache_.light(shot.scene, shot.sceneVersion, shot.lensDistance);
    if (light == nullptr) {  // a scene the renderer refuses shows as a black frame
        std::fill(frame, frame + kSensorPixels, uint16_t(0));
        return;
    }
    readOutFrame(*light, noise_, shot.readout, frame);
}

}  // namespace sim
