#include "lcdbrightness.h"

#include <QString>
#include <algorithm>
#include <array>

#include "shellrunner.h"

namespace {

constexpr int kLevels = 80;
constexpr int kLuxPerLevel = 50;

// Entry i holds 80 - i.
std::array<int, kLevels> brightnessTable() {
    std::array<int, kLevels> table{};
    for (int i = 0; i < kLevels; ++i) {
        table[i] = kLevels - i;
    }
    return table;
}

}  // namespace

// 4000 lux would fall one past the table (4000 / 50 = 80): it is as bright as 3999.
int brightnessLevelForIlluminance(int illuminance) {
    static const std::array<int, kLevels> table = brightnessTable();
    const int entry = std::clamp(illuminance / kLuxPerLevel, 0, kLevels - 1);
    return table[entry];
}

int setLcdBrightness(int level) {
    return runShellCommand("lcdbrightness", {QString::number(level)});
}

int setUserBrightness(int brightness) {
    return setLcdBrightness(100 - std::clamp(brightness, 0, 100));
}
