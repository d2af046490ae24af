#include "twinsetting.h"

#include <QStringList>
#include <chrono>
#include <cmath>

#include "twinworld.h"

namespace {

const char* const kHelp =
    "  fiber=single|empty|covered  a single fiber, an empty ferrule, or nothing in view\n"
    "  x=X,y=Y       fiber center, frame pixels (default 800,600)\n"
    "  core=UM       core diameter, micrometres (default 9)\n"
    "  seed=N        texture seed (default 1)\n"
    "  lens=STEPS    lens position, motor steps 0..24000 (default 12000, the focus)\n"
    "  focus=STEPS   where the picture is sharp (default 12000)\n"
    "  fps=F         frames a second (default 30)\n";

bool setFiber(const QString& value, TwinSetting& setting) {
    if (value != "single" && value != "empty" && value != "covered") {
        return false;
    }
    setting.scene.hasFiber = value == "single";
    setting.covered = value == "covered";
    return true;
}

// Sets the number `key` names; false when the key is unknown or the number out of range.
bool setNumber(const QString& key, double number, TwinSetting& setting) {
    sim::EndFaceScene& scene = setting.scene;
    const bool onTravel = number >= 0 && number <= sim::lens::kTravelSteps;
    if (key == "x" || key == "y") {
        (key == "x" ? scene.centerX : scene.centerY) = number;
    } else if (key == "core" && number >= 0) {
        scene.coreDiameterUm = number;
    } else if (key == "seed" && number >= 0 && number <= 4294967295.0) {
        scene.seed = uint32_t(number);
    } else if ((key == "lens" || key == "focus") && onTravel) {
        (key == "lens" ? setting.lens : setting.focus) = int(number);
    } else if (key == "fps" && number > 0 && number <= 1000) {
        setting.framesPerSecond = number;
    } else {
        return false;
    }
    return true;
}

}  // namespace

QString parseTwinSetting(const QString& text, TwinSetting& setting) {
    for (const QString& pair : text.split(',', Qt::SkipEmptyParts)) {
        const QString key = pair.section('=', 0, 0).trimmed();
        const QString value = pair.section('=', 1).trimmed();
        bool isNumber = false;
        const double number = value.toDouble(&isNumber);
        const bool ok = key == "fiber"
                            ? setFiber(value, setting)
                            : isNumber && std::isfinite(number) && setNumber(key, number, setting);
        if (!ok) {
            return QString("--scene: cannot use '%1'").arg(pair);
        }
    }
    return {};
}

void applyTwinSetting(const TwinSetting& setting, sim::TwinWorld& world) {
    world.setScene(setting.scene);
    world.setCovered(setting.covered);
    world.setFocusPosition(setting.focus);
    world.setLensPosition(setting.lens);
    world.setFramePeriod(std::chrono::nanoseconds(long(1e9 / setting.framesPerSecond)));
}

QString twinSettingHelp() {
    return kHelp;
}
