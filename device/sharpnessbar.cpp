#include "sharpnessbar.h"

#include <algorithm>

namespace {

constexpr int kRedBelow = 18;
constexpr int kGreenAbove = 31;
constexpr int kFull = 100;

const char* chunkColour(SharpnessBar::Colour colour) {
    switch (colour) {
        case SharpnessBar::Red:
            return "rgb(255, 0, 0)";
        case SharpnessBar::Green:
            return "rgb(0, 255, 0)";
        default:
            return "rgb(255, 255, 0)";
    }
}

}  // namespace

SharpnessBar sharpnessBar(int sharpness) {
    const SharpnessBar::Colour colour = sharpness < kRedBelow     ? SharpnessBar::Red
                                        : sharpness > kGreenAbove ? SharpnessBar::Green
                                                                  : SharpnessBar::Yellow;
    const QString style = QString(
                              "QProgressBar{border:none;background:rgb(255, 255, 255);} "
                              "QProgressBar::chunk{background: %1;}")
                              .arg(chunkColour(colour));
    return {std::min(2 * sharpness, kFull), colour, style};
}
