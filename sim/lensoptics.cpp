#include "lensoptics.h"

#include <algorithm>
#include <cmath>

namespace sim {
namespace lens {

namespace {

// The blur at focus sets the sharp frame's focus measure: with it, the single-fiber live
// view's measure of the sharp frame lies amid the real end-face pictures' (40 to 56).
constexpr double kFocusBlurPx = 0.55;
// Defocus: one pixel of blur per this many steps. The sharpness then stays above the
// autofocus's fast-stage threshold over about 40 climb units (16 steps each) around the focus,
// more than one 32-unit fast move, so the coarse climb lands in it.
constexpr double kStepsPerBlurPx = 384.0;
// Beyond this the picture shows nothing but noise anyway, and a wider blur only costs time.
constexpr double kMaxBlurPx = 12.0;

}  // namespace

double blurAt(int distance) {
    const double defocus = std::abs(distance) / kStepsPerBlurPx;
    return std::min(std::hypot(kFocusBlurPx, defocus), kMaxBlurPx);
}

}  // namespace lens
}  // namespace sim
