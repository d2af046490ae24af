#include "twinworld.h"

#include "endfacerenderer.h"

namespace sim {

TwinWorld::TwinWorld() = default;

void TwinWorld::setScene(const EndFaceScene& scene) {
    std::lock_guard<std::mutex> lock(mutex_);
    scene_ = scene;
}

EndFaceScene TwinWorld::scene() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return scene_;
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

void TwinWorld::readFrame(uint16_t* frame) {
    EndFaceScene scene = this->scene();
    scene.exposure *= double(exposure()) / kNominalExposure;
    renderRaw(scene, 0, 0, kSensorWidth, kSensorHeight, frame);
}

}  // namespace sim
