#include "mergesegment.h"

#include "linemerge.h"
#include "nobadalloc.h"

namespace {

// The second round works on the merged scratches of the first.
constexpr int kSecondRoundMinLength = 10;
constexpr int kSecondRoundMaxWidth = 12;

struct Candidates {
    int minLength;
    int maxWidth;
};

Candidates candidatesFor(int sens) {
    if (sens == 10) {
        return {15, 10};
    }
    if (sens <= 9) {
        return {10, 10};
    }
    if (sens == 20) {
        return {15, 12};
    }
    return {10, 12};
}

// The rounds' values by sens. Their irregular pattern is deliberate: 3 and 4 loosen the angle
// where 1, 2 and 5 do not; 7 and 9 loosen it twice as much as 6 and 8.
void roundsFor(int sens, MergeRound& first, MergeRound& second) {
    switch (sens) {
        case 1:
        case 2:
        case 5:
            first = {0.1, 10, 100}, second = {0.1, 10, 100};
            return;
        case 3:
        case 4:
            first = {0.1, 10, 100}, second = {0.2, 10, 100};
            return;
        case 6:
        case 8:
            first = {0.12, 10, 100}, second = {0.15, 10, 120};
            return;
        case 7:
        case 9:
            first = {0.12, 10, 100}, second = {0.3, 10, 120};
            return;
        case 10:
            first = {0.12, 6, 100}, second = {0.1, 6, 200};
            return;
        case 17:
        case 19:
            first = {0.1, 10, 150}, second = {0.2, 10, 200};
            return;
        case 20:
            first = {0.1, 6, 150}, second = {0.1, 8, 350};
            return;
        default:  // 11 to 16 and 18
            first = {0.1, 10, 150}, second = {0.1, 10, 200};
    }
}

// The smallest extent along x or y of a kept scratch. The pairing with sens is deliberate and
// not monotonic.
double minSpanFor(int sens) {
    switch (sens) {
        case 1:
        case 3:
        case 16:
        case 17:
            return 50;
        case 2:
        case 4:
        case 5:
        case 10:
            return 40;
        case 6:
        case 7:
            return 30;
        case 8:
        case 9:
            return 25;
        case 11:
        case 13:
            return 70;
        case 12:
        case 14:
        case 15:
        case 20:
            return 60;
        case 18:
        case 19:
            return 45;
        default:
            return 35;
    }
}

}  // namespace

MergeSettings mergeSettingsFor(int sens) {
    MergeSettings settings{};
    const Candidates candidates = candidatesFor(sens);
    settings.minLength = candidates.minLength;
    settings.maxWidth = candidates.maxWidth;
    roundsFor(sens, settings.first, settings.second);
    settings.minSpan = minSpanFor(sens);
    return settings;
}

int MergeLumaspecSegment(const ScratchRecord* segments, int n, int cx, int cy,
                         std::vector<ScratchRecord>& out, int sens) {
    return minusOneOnBadAlloc([&] {
        if (sens < 1 || sens > 20) {
            return 0;
        }
        const MergeSettings settings = mergeSettingsFor(sens);
        LineMerge merge;
        merge.FillDataCenter(segments, n, cx, cy, settings.minLength, settings.maxWidth);
        merge.SortAry();
        std::vector<ScratchRecord> firstRound;
        if (merge.MultiMergeLine(settings.first.angleTol, settings.first.p, settings.first.gap,
                                 firstRound) == 0) {
            return 0;
        }
        merge.FillData(firstRound, kSecondRoundMinLength, kSecondRoundMaxWidth);
        merge.SortAry();
        std::vector<ScratchRecord> scratches;
        merge.MultiMergeLine(settings.second.angleTol, settings.second.p, settings.second.gap,
                             scratches);
        LineMerge::ExcludeLength(scratches, settings.minSpan);
        out.insert(out.end(), scratches.begin(), scratches.end());
        return int(scratches.size());
    });
}
