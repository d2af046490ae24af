#include "lightfield.h"

#include <algorithm>

#include "endfacerenderer.h"
#include "lensoptics.h"

namespace sim {

std::shared_ptr<const LightField> renderLightField(const EndFaceScene& scene) {
    auto field = std::make_shared<LightField>();
    const int margin = LightField::kMargin;
    if (renderLight(scene, -margin, -margin, LightField::kWidth, LightField::kHeight,
                    field->levels.data()) != 1) {
        return nullptr;
    }
    return field;
}

std::shared_ptr<const LightField> LightCache::light(const EndFaceScene& scene,
                                                    uint64_t sceneVersion, int lensDistance) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto hit = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& e) {
        return e.sceneVersion == sceneVersion && e.lensDistance == lensDistance;
    });
    if (hit != entries_.end()) {
        std::rotate(hit, hit + 1, entries_.end());
        return entries_.back().light;
    }
    EndFaceScene blurred = scene;
    blurred.blurSigmaPx = lens::blurAt(lensDistance);
    if (entries_.size() == kEntries) {
        entries_.erase(entries_.begin());
    }
    entries_.push_back({sceneVersion, lensDistance, renderLightField(blurred)});
    return entries_.back().light;
}

}  // namespace sim
