#include "sharpnessregions.h"

#include "instrumentoptics.h"

namespace {

constexpr unsigned kSquare = 124;
// The middle of the frame: the fiber-change watch's square and the multi-fiber view's.
constexpr SharpnessSquare kWatchSquare = {738, 538, kSquare};
constexpr SharpnessSquare kMultiFiberSquare = {720, 520, 161};

// A square's corner along one side of the frame: the center minus the side, computed in single
// precision and truncated as the instrument does, then kept inside the frame, which a fiber
// near the edge would otherwise make the square leave.
unsigned cornerInside(float corner, unsigned side, int frameSide) {
    const float last = float(frameSide) - float(side);
    if (!(corner > 0.0f)) {
        return 0;
    }
    return unsigned(corner < last ? corner : last);
}

SharpnessSquare squareAt(float left, float top, unsigned side) {
    return {cornerInside(left, side, kSensorWidth), cornerInside(top, side, kSensorHeight), side};
}

SharpnessSquare aboveLeftOf(unsigned x, unsigned y) {
    return squareAt(float(x) - float(kSquare), float(y) - float(kSquare), kSquare);
}

}  // namespace

SharpnessPlan sharpnessPlan(int workMode, int rememberedLiveMode, unsigned fiberX, unsigned fiberY,
                            unsigned sharpnessX, unsigned sharpnessY) {
    SharpnessPlan plan;
    const bool sample = workMode == 2;
    if (workMode == 8) {
        plan.squares = 1;
        plan.square[0] = aboveLeftOf(fiberX, fiberY);
    } else if (sample && (rememberedLiveMode == 0 || rememberedLiveMode == 8)) {
        plan.squares = 2;
        plan.square[0] = aboveLeftOf(sharpnessX, sharpnessY);
        plan.square[1] = squareAt(float(sharpnessX), float(sharpnessY), kSquare);
        plan.factor = 0.5;
    } else if (workMode == 9 || (sample && rememberedLiveMode == 9)) {
        plan.squares = 1;
        plan.square[0] = kMultiFiberSquare;
        plan.factor = 0.5;
    } else if (workMode == 7) {
        plan.squares = 1;
        plan.square[0] = kWatchSquare;
    }
    plan.announced = workMode != 7;
    return plan;
}
