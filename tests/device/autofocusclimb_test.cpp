// The autofocus's hill climb on scripted sharpness samples: the moves it orders, one row per
// rule, and where each script leaves it.

#include "autofocusclimb.h"

#include <gtest/gtest.h>

#include <map>
#include <vector>

namespace {

using Values = std::vector<double>;
using Moves = std::vector<int>;

Values times(int n, double value) {
    return Values(size_t(n), value);
}

Moves times(int n, int move) {
    return Moves(size_t(n), move);
}

template <typename T>
std::vector<T> then(std::vector<T> first, const std::vector<T>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

struct ClimbCase {
    const char* rule;
    Values samples;
    Moves moves;
    bool peak;
    bool end;
    int speedStatus;
    // After the move of the sample with this index a limit switch stopped the lens this many
    // units short.
    std::map<int, int> limits = {};
};

// A climb from a slow stage started by a first sample of 40, then: a rise, a small fall,
// a clear fall tolerated, the second reversing by 6 units (position 3 afterwards).
const Values kSlowStart = {40, 40, 41, 40, 40};
const Moves kSlowStartMoves = {0, 3, 3, 3, -6};

const ClimbCase kCases[] = {
    {"a first sample above 37 ends the fast stage without a move",
     {40, 40},
     {0, 3},
     false,
     false,
     1},
    {"rises and falls below 1.6 move 32 on", {10, 12, 10.5, 14}, {32, 32, 32, 32}, false, false, 0},
    {"two clear falls are tolerated, the third reverses by 64",
     {10, 8, 8, 8},
     {32, 32, 32, -64},
     false,
     false,
     0},
    {"more than two fast reversals start the slow stage where the lens is",
     {10, 8, 8, 8, 8, 6, 6, 6, 8, 6, 6, 6, 8},
     {32, 32, 32, -64, -32, -32, -32, 64, 32, 32, 32, 0, 3},
     false,
     false,
     1},
    {"beyond 1000 units a return to the start", times(33, 10.0), then(times(32, 32), Moves{-1024}),
     false, false, 0},
    {"after two returns 2000 units, and more than 100 moves end", times(101, 10.0),
     then(then(times(32, 32), Moves{-1024}),
          then(times(32, -32), then(Moves{1024}, times(35, 32)))),
     false, true, 0},
    {"slow: rises and falls up to 0.8 move 3 on, two clear falls reverse by 6", kSlowStart,
     kSlowStartMoves, false, false, 1},
    {"slow: falls moving back pass the peak; the last rise is within 0.4 of the best",
     then(kSlowStart, Values{40.2, 40.7, 39.8, 39.8}), then(kSlowStartMoves, Moves{-3, -3, -3, 6}),
     true, false, 1},
    {"slow: falls moving back pass the peak; else the best position",
     then(kSlowStart, Values{40.2, 40.5, 39.6, 39.6}), then(kSlowStartMoves, Moves{-3, -3, -3, 9}),
     true, false, 1},
    {"slow: no peak while moving forward, even after a reversal",
     {10, 8, 8, 8, 40, 40, 39, 39, 38, 37, 37, 38, 37, 37},
     {32, 32, 32, -64, 0, -3, -3, 6, 3, 3, -6, -3, -3, 6},
     true,
     false,
     1},
    {"slow: beyond 1000 units a return", then(Values{40}, times(335, 40.0)),
     then(then(Moves{0}, times(334, 3)), Moves{-1002}), false, true, 1},
    {"a limit switch: the real position, then a return",
     {10, 10, 10},
     {32, -12, -32},
     false,
     false,
     0,
     {{0, 20}}},
    {"returns after the second take back the last one; more than three end",
     times(8, 10.0),
     {32, 0, -32, 0, 32, -20, -32, 50},
     false,
     true,
     0,
     {{0, 32}, {2, -32}, {4, 12}, {6, -2}}},
};

TEST(AutoFocusClimbTest, EachRuleOrdersItsMoves) {
    for (const ClimbCase& c : kCases) {
        SCOPED_TRACE(c.rule);
        AutoFocusClimb climb;
        climb.reset();
        Moves moves;
        for (size_t i = 0; i < c.samples.size(); ++i) {
            moves.push_back(climb.adjust(c.samples[i]));
            const auto limit = c.limits.find(int(i));
            if (limit != c.limits.end()) {
                climb.limitReached(limit->second);
            }
        }
        EXPECT_EQ(moves, c.moves);
        EXPECT_EQ(climb.isMax(), c.peak);
        EXPECT_EQ(climb.isEndAdjust(), c.end);
        EXPECT_EQ(climb.speedStatus(), c.speedStatus);
    }
}

}  // namespace
