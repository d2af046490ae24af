#pragma once

namespace sim {

// The twin's focusing lens: a motor moves it in steps between two limit switches, and the
// picture is sharp at one position, the focus. Away from it the blur grows with the distance,
// so the sharpness along the travel has one peak. Positions are motor steps.
namespace lens {

constexpr int kTravelSteps = 24000;  // from one limit switch to the other
constexpr int kDefaultFocus = 12000;

// Blur (gaussian sigma, pixels) with the lens `distance` steps from the focus: the optics'
// own blur at focus, and the defocus growing in proportion to the distance beyond it.
double blurAt(int distance);

}  // namespace lens

}  // namespace sim
