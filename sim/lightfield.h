#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "endfacescene.h"

namespace sim {

// The light a scene puts on the sensor (renderLight), with a margin of one pixel all round so
// that the picture can be shifted by a fraction of a pixel either way.
struct LightField {
    static constexpr int kMargin = 1;
    static constexpr int kWidth = kSensorWidth + 2 * kMargin;
    static constexpr int kHeight = kSensorHeight + 2 * kMargin;

    std::vector<float> levels = std::vector<float>(size_t(kWidth) * kHeight);

    // Frame row y (-kMargin .. kSensorHeight - 1 + kMargin), from frame column -kMargin.
    const float* row(int y) const { return levels.data() + size_t(y + kMargin) * kWidth; }
};

// The scene's light with the scene's blur; null when the scene is not valid.
std::shared_ptr<const LightField> renderLightField(const EndFaceScene& scene);

// Blurred renderings of a scene, so that a lens in motion costs little and a lens standing still
// nothing. The scene is drawn exactly at a ladder of blurs, each 15 % above the one before,
// from the optics' own at focus to the largest, each rung when first needed; the light at any
// lens position is the mix of the two rungs around its blur, and the last few positions' mixes
// are kept. Entries belong to a scene version; a new version makes the old entries useless.
class LightCache {
public:
    static constexpr size_t kEntries = 4;

    // The light of `scene` (version `sceneVersion`) with the lens `lensDistance` steps from
    // focus.
    std::shared_ptr<const LightField> light(const EndFaceScene& scene, uint64_t sceneVersion,
                                            int lensDistance);

private:
    struct Entry {
        uint64_t sceneVersion;
        int lensDistance;
        std::shared_ptr<const LightField> light;
    };

    std::shared_ptr<const LightField> mixed(const EndFaceScene& scene, uint64_t sceneVersion,
                                            double blur);
    std::shared_ptr<const LightField> rung(const EndFaceScene& scene, uint64_t sceneVersion,
                                           int index);

    std::mutex mutex_;
    std::vector<Entry> entries_;  // most recently used last
    uint64_t rungsVersion_ = 0;
    std::vector<std::shared_ptr<const LightField>> rungs_;  // null: not drawn yet
};

}  // namespace sim
