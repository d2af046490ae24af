#pragma once

// Where the capture thread measures the focus in each work mode, and what it does with the
// measures: a pure function of the mode and the centers, so that it can be checked on its own.

struct SharpnessSquare {
    unsigned left, top, side;
};

struct SharpnessPlan {
    int squares = 0;  // 0: nothing is measured and the result is 0
    SharpnessSquare square[2] = {};
    double factor = 1.0;     // the result is the sum of the squares' measures times this
    bool announced = false;  // the result is announced (updateSharpnessValue), 0 included
};

// The squares for `workMode` (2: a sample for the autofocus, whose squares follow the live mode
// it came from, `rememberedLiveMode`), the fiber center found by the last search and the
// sharpness center of the autofocus's samples:
// - 8: the 124-pixel square above and left of the fiber center;
// - 2 from 0 or 8: that square around the sharpness center and the one below and right of it,
//   half their sum;
// - 9, and 2 from 9: the 161-pixel square in the middle of the frame, half its measure;
// - 7: the 124-pixel square in the middle of the frame, not announced;
// - any other: nothing, and 0 is announced.
// A square that would leave the frame is moved inside it, at the frame's edge.
SharpnessPlan sharpnessPlan(int workMode, int rememberedLiveMode, unsigned fiberX, unsigned fiberY,
                            unsigned sharpnessX, unsigned sharpnessY);
