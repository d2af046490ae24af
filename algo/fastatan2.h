#pragma once

// Arctangent of y / x in radians, in (-pi, pi], from a 257-entry table with linear
// interpolation: cheap on the instrument's processor, whose floating point is done in software.
// The error against atan2 stays under 2e-3 rad; it is largest just where the table takes over
// from the small-angle rule (a ratio of 1/255), because the table is spaced by 1/255 while
// the ratio is scaled by 256 to index it. fastAtan2(0, 0) is 0.
float fastAtan2(float y, float x);
