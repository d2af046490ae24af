// The autofocus's hill climb on scripted sharpness samples: the moves it orders, one row per
// rule, and where each script leaves it.

#include "autofocusclimb.h"

#include <gtest/gtest.h>

#include "devicetesting.h"

#include <vector>

namespace {

// "10 8*3": the numbers, a number*n n times over.
template <typename T>
std::vector<T> numbers(const std::string& text) {
    std::vector<T> all;
    for (const std::string& word : expandWords(text)) {
        all.push_back(T(std::stod(word)));
    }
    return all;
}

struct ClimbCase {
    const char* rule;
    const char* samples;
    const char* moves;
    bool peak, end;
    int speedStatus;
    // "i s": after the move of sample i a limit switch stopped the lens s units short.
    const char* limits = "";
};

const ClimbCase kCases[] = {
    {"above 37 at once: the slow stage, no move", "40 40", "0 3", false, false, 1},
    {"fast: rises and falls below 1.6 move 32 on", "10 12 10.5 14", "32*4", false, false, 0},
    {"fast: two clear falls pass, the third reverses by 64", "10 8 8 8", "32*3 -64", false, false,
     0},
    {"fast: a third reversal starts the slow stage", "10 8 8 8 8 6 6 6 8 6 6 6 8",
     "32*3 -64 -32*3 64 32*3 0 3", false, false, 1},
    {"beyond 1000 units a return", "10*33", "32*32 -1024", false, false, 0},
    {"after two returns 2000; over 100 moves end", "10*101", "32*32 -1024 -32*32 1024 32*35", false,
     true, 0},
    // The slow stage begun by a first sample above 37, then a rise, a fall within 0.8, a clear
    // fall that passes and a second that reverses by 6 units.
    {"slow: falls within 0.8 pass, two clear ones reverse", "40 40 41 40 40", "0 3 3 3 -6", false,
     false, 1},
    {"slow: peak moving back, to the last rise within 0.4", "40 40 41 40 40 40.2 40.7 39.8 39.8",
     "0 3 3 3 -6 -3*3 6", true, false, 1},
    {"slow: peak moving back, else to the best", "40 40 41 40 40 40.2 40.5 39.6 39.6",
     "0 3 3 3 -6 -3*3 9", true, false, 1},
    {"slow: no peak moving forward after a reversal", "10 8 8 8 40 40 39 39 38 37 37 38 37 37",
     "32*3 -64 0 -3 -3 6 3 3 -6 -3 -3 6", true, false, 1},
    {"slow: beyond 1000 units a return", "40*336", "0 3*334 -1002", false, true, 1},
    {"a limit switch: the real position, then a return", "10*3", "32 -12 -32", false, false, 0,
     "0 20"},
    {"returns after the second take back the last; over three end", "10*8",
     "32 0 -32 0 32 -20 -32 50", false, true, 0, "0 32 2 -32 4 12 6 -2"},
};

TEST(AutoFocusClimbTest, EachRuleOrdersItsMoves) {
    for (const ClimbCase& c : kCases) {
        SCOPED_TRACE(c.rule);
        const std::vector<double> samples = numbers<double>(c.samples);
        const std::vector<int> limits = numbers<int>(c.limits);
        AutoFocusClimb climb;
        climb.reset();
        std::vector<int> moves;
        for (size_t i = 0, limit = 0; i < samples.size(); ++i) {
            moves.push_back(climb.adjust(samples[i]));
            if (limit < limits.size() && limits[limit] == int(i)) {
                climb.limitReached(limits[limit + 1]);
                limit += 2;
            }
        }
        EXPECT_EQ(moves, numbers<int>(c.moves));
        EXPECT_EQ(climb.isMax(), c.peak);
        EXPECT_EQ(climb.isEndAdjust(), c.end);
        EXPECT_EQ(climb.speedStatus(), c.speedStatus);
    }
}

}  // namespace
