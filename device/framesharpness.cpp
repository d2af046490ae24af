#include "framesharpness.h"

#include <cstddef>
#include <vector>

#include "instrumentoptics.h"
#include "libcapture.h"

double measurePlan(MathCal::FocusCal& focus, const uint16_t* frame, const SharpnessPlan& plan,
                   unsigned char* work) {
    double sum = 0.0;
    for (int i = 0; i < plan.squares; ++i) {
        const SharpnessSquare& s = plan.square[i];
        convert_y10bit_to_y8bit(frame, work, kSensorWidth, kSensorHeight, s.left, s.top, s.side,
                                s.side);
        sum += focus.GetAllGDEndface(work, int(s.side), int(s.side));
    }
    return plan.squares > 0 ? sum * plan.factor : 0.0;
}

double liveViewSharpness(const uint16_t* frame, unsigned fiberX, unsigned fiberY) {
    constexpr int kLiveView = 8;
    const SharpnessPlan plan = sharpnessPlan(kLiveView, kLiveView, fiberX, fiberY, 0, 0);
    std::vector<unsigned char> work(std::size_t(plan.square[0].side) * plan.square[0].side);
    MathCal::FocusCal focus;
    return measurePlan(focus, frame, plan, work.data());
}
