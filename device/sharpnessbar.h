#pragma once

#include <QString>

// How the main screen's sharpness bar shows a sharpness value v: filled to min(2v, 100), red
// below 18, yellow from 18 to 31, green above 31.
struct SharpnessBar {
    enum Colour { Red, Yellow, Green };

    int value;
    Colour colour;
    QString styleSheet;  // the bar's style sheet with the chunk in that colour
};

SharpnessBar sharpnessBar(int sharpness);
