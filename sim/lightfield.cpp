#include "lightfield.h"

#include <algorithm>
#include <cmath>

#include "endfacerenderer.h"
#include "lensoptics.h"

namespace sim {

namespace {

// The ladder of blurs drawn exactly. Between two rungs this close the mix of their pictures
// differs from the picture at the blur between by less than the sensor's noise, and the focus
// measure still falls smoothly with the distance from focus.
constexpr double kRungRatio = 1.15;

double lowestBlur() {
    return lens::blurAt(0);
}

double highestBlur() {
    return lens::blurAt(lens::kTravelSteps);
}

int rungCount() {
    return 2 + int(std::log(highestBlur() / lowestBlur()) / std::log(kRungRatio));
}

double rungBlur(int index) {
    return std::min(lowestBlur() * std::pow(kRungRatio, index), highestBlur());
}

std::shared_ptr<const LightField> mix(const LightField& a, const LightField& b, double weightOfB) {
    auto field = std::make_shared<LightField>();
    const float wb = float(weightOfB), wa = 1.0f - wb;
    for (size_t i = 0; i < field->levels.size(); ++i) {
        field->levels[i] = wa * a.levels[i] + wb * b.levels[i];
    }
    return field;
}

}  // namespace

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
    if (entries_.size() == kEntries) {
        entries_.erase(entries_.begin());
    }
    entries_.push_back(
        {sceneVersion, lensDistance, mixed(scene, sceneVersion, lens::blurAt(lensDistance))});
    return entries_.back().light;
}

std::shared_ptr<const LightField> LightCache::mixed(const EndFaceScene& scene,
                                                    uint64_t sceneVersion, double blur) {
    const int last = rungCount() - 1;
    const int below =
        std::clamp(int(std::log(blur / lowestBlur()) / std::log(kRungRatio)), 0, last - 1);
    const double weight =
        std::clamp((blur - rungBlur(below)) / (rungBlur(below + 1) - rungBlur(below)), 0.0, 1.0);
    const auto a = rung(scene, sceneVersion, below);
    if (a == nullptr || weight == 0.0) {
        return a;
    }
    const auto b = rung(scene, sceneVersion, below + 1);
    return weight == 1.0 ? b : mix(*a, *b, weight);
}

std::shared_ptr<const LightField> LightCache::rung(const EndFaceScene& scene, uint64_t sceneVersion,
                                                   int index) {
    if (rungsVersion_ != sceneVersion || rungs_.empty()) {
        rungs_.assign(size_t(rungCount()), nullptr);
        rungsVersion_ = sceneVersion;
    }
    if (rungs_[index] == nullptr) {
        EndFaceScene blurred = scene;
        blurred.blurSigmaPx = rungBlur(index);
        rungs_[index] = renderLightField(blurred);
    }
    return rungs_[index];
}

}  // namespace sim
