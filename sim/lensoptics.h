#pragma once

namespace sim {

// The twin's focusing lens: a motor moves it in steps between two limit switches, and the
// picture is sharp at one position, the focus. Away from it the blur grows with the distance,
// so the sharpness along the travel has one peak.
//
// Positions are motor steps of the finest kind, microsteps: a step word moves the lens by its
// increment (1 in the autofocus's step mode, 16 in the coarsest). The autofocus counts in units
// of 16 steps, so the travel is 1500 units. The depth of field, where the defocus blur stays
// below the optics' own blur at focus, reaches about 211 steps (13 units) either side of the
// focus: the fine climb's 3-unit moves sample it several times over, and a coarse 32-unit move
// cannot jump over the span where the focus measure exceeds the coarse stage's threshold.
namespace lens {

constexpr int kTravelSteps = 24000;  // from one limit switch to the other
constexpr int kDefaultFocus = 12000;

// Blur (gaussian sigma, pixels) with the lens `distance` steps from the focus: the optics'
// own blur at focus, and the defocus growing in proportion to the distance beyond it.
double blurAt(int distance);

}  // namespace lens

}  // namespace sim
