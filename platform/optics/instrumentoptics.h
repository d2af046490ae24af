#pragma once

// What the instrument's camera and optics are: the one place these facts are written down.
// Plain constants without any library behind them, so that every layer (the image algorithms
// too) can use them.

// The sensor delivers whole frames of this size, one 10-bit sample per pixel.
constexpr int kSensorWidth = 1600;
constexpr int kSensorHeight = 1200;
constexpr int kSensorPixels = kSensorWidth * kSensorHeight;

// The single-fiber view's scale, micrometres per sensor pixel: the single-precision value
// nearest 1 / 1.952, widened to double.
constexpr double kUmPerPixel = 0.5122950673103333;

// The square window cut around a found fiber and handed to the measurement.
constexpr int kMeasureWindowSide = 960;

// The cladding every connector's fiber has, and the ring around its edge (diameters, um) where
// the edge itself must not be taken for a defect or a scratch.
constexpr double kCladdingDiameterUm = 125.0;
constexpr int kCladdingBandMinUm = 110;
constexpr int kCladdingBandMaxUm = 135;

// The cladding's radius in sensor pixels (125 um at the single-fiber scale), what the fiber
// search expects to find.
constexpr int kCladdingRadiusPx = 122;
