#include "renderedscratches.h"

#include <algorithm>
#include <cmath>

#include "endfacerenderer.h"
#include "scratchcheck.h"
#include "scratchgeometry.h"

namespace {

constexpr int kRegion = 960;
constexpr double kCladdingRange[] = {110.0, 135.0};

double lineAngle(double dx, double dy) {
    const double a = std::atan2(dy, dx);
    return a < 0 ? a + M_PI : a;
}

}  // namespace

FoundScratches findRenderedScratches(const sim::EndFaceScene& scene, const TaskInfoSetting& task) {
    std::vector<unsigned char> gray(kRegion * kRegion);
    const int left = int(std::lround(scene.centerX)) - kRegion / 2;
    const int top = int(std::lround(scene.centerY)) - kRegion / 2;
    sim::renderGray(scene, left, top, kRegion, kRegion, gray.data());
    FoundScratches found{0, std::vector<ScratchRecord>(200), std::vector<short>(200, -1), task};
    FindSectionScratch(gray.data(), kRegion, kRegion, found.scratches.data(), found.zones.data(),
                       200, found.count, found.task, kUmPerPixel, kRegion / 2, kRegion / 2, 125.0,
                       125.0, kCladdingRange, 1, nullptr, 0);
    found.scratches.resize(size_t(std::max(found.count, 0)));
    for (ScratchRecord& s : found.scratches) {
        s.x1 += left, s.x2 += left, s.y1 += top, s.y2 += top;
    }
    return found;
}

bool matchesScratch(const ScratchRecord& r, const sim::Scratch& s) {
    const double d1 = Point2LineDistance(r.x1, r.y1, s.x1, s.y1, s.x2, s.y2);
    const double d2 = Point2LineDistance(r.x2, r.y2, s.x1, s.y1, s.x2, s.y2);
    double da = std::abs(lineAngle(r.x2 - r.x1, r.y2 - r.y1) - lineAngle(s.x2 - s.x1, s.y2 - s.y1));
    da = std::min(da, M_PI - da);
    return d1 <= 3.0 && d2 <= 3.0 && da <= 2.0 * M_PI / 180.0;
}

sim::EndFaceScene randomFace(std::mt19937& random, const TaskInfoSetting& task) {
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    sim::EndFaceScene scene;
    scene.centerX = 700 + 200 * unit(random);
    scene.centerY = 500 + 200 * unit(random);
    scene.coreDiameterUm = task.opticalType == 0 ? 9.0 : 50.0;
    scene.blurSigmaPx = 0.5 + 0.5 * unit(random);
    scene.noiseSigma = 0.5 + 1.5 * unit(random);
    scene.seed = random();
    return scene;
}

sim::Scratch crossingScratch(const sim::EndFaceScene& scene, double offsetUm, double angle,
                             double widthUm, double contrast, bool bright) {
    const double offset = sim::micronsToPixels(offsetUm);
    const double half = sim::micronsToPixels(90.0);
    const double mx = scene.centerX - offset * std::sin(angle);
    const double my = scene.centerY + offset * std::cos(angle);
    sim::Scratch s;
    s.x1 = mx - half * std::cos(angle);
    s.y1 = my - half * std::sin(angle);
    s.x2 = mx + half * std::cos(angle);
    s.y2 = my + half * std::sin(angle);
    s.widthUm = widthUm;
    s.contrast = contrast;
    s.bright = bright;
    return s;
}
