// The focus measure, the squares it is taken over in each work mode, and the bar that shows it.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "focuscal.h"
#include "sharpnessbar.h"
#include "sharpnessregions.h"

namespace {

TEST(FocusCal, MeasuresTheWeightedDifferencesToTheNeighboursTwoAway) {
    MathCal::FocusCal focus;
    std::vector<unsigned char> uniform(30 * 20, 77);
    EXPECT_EQ(focus.GetAllGDEndface(uniform.data(), 30, 20), 0.0);

    // 5 x 5, one interior pixel: straight neighbours differ by 10, 20, 30, 40; diagonal ones by
    // 1, 2, 3, 4 (weighted 1.41).
    std::vector<unsigned char> five(25, 100);
    five[12] = 100;
    five[2] = 110, five[10] = 120, five[14] = 130, five[22] = 140;
    five[0] = 101, five[4] = 102, five[20] = 103, five[24] = 104;
    EXPECT_DOUBLE_EQ(focus.GetAllGDEndface(five.data(), 5, 5), 100 + 1.41 * 10);

    std::vector<unsigned char> four(16, 50);
    EXPECT_TRUE(std::isnan(focus.GetAllGDEndface(four.data(), 4, 4)));
}

struct PlanCase {
    int mode, live;
    unsigned fiberX, fiberY, sharpX, sharpY;
    int squares;
    SharpnessSquare first, second;
    double factor;
    bool announced;
};

// Squares near the frame's edge are moved inside it.
const PlanCase kPlans[] = {
    {8, 8, 900, 700, 0, 0, 1, {776, 576, 124}, {}, 1.0, true},
    {8, 8, 60, 1190, 0, 0, 1, {0, 1066, 124}, {}, 1.0, true},
    {2, 8, 0, 0, 800, 600, 2, {676, 476, 124}, {800, 600, 124}, 0.5, true},
    {2, 0, 0, 0, 1550, 30, 2, {1426, 0, 124}, {1476, 30, 124}, 0.5, true},
    {2, 9, 0, 0, 800, 600, 1, {720, 520, 161}, {}, 0.5, true},
    {9, 9, 100, 100, 0, 0, 1, {720, 520, 161}, {}, 0.5, true},
    {7, 8, 100, 100, 0, 0, 1, {738, 538, 124}, {}, 1.0, false},
    {2, 5, 800, 600, 800, 600, 0, {}, {}, 1.0, true},
    {0, 0, 800, 600, 800, 600, 0, {}, {}, 1.0, true},
};

TEST(SharpnessPlan, TheSquaresFollowTheModeAndStayInTheFrame) {
    for (const PlanCase& c : kPlans) {
        SCOPED_TRACE(testing::Message() << "mode " << c.mode << " from " << c.live);
        const SharpnessPlan plan =
            sharpnessPlan(c.mode, c.live, c.fiberX, c.fiberY, c.sharpX, c.sharpY);
        ASSERT_EQ(plan.squares, c.squares);
        const SharpnessSquare expected[2] = {c.first, c.second};
        for (int i = 0; i < plan.squares; ++i) {
            EXPECT_EQ(plan.square[i].left, expected[i].left);
            EXPECT_EQ(plan.square[i].top, expected[i].top);
            EXPECT_EQ(plan.square[i].side, expected[i].side);
        }
        EXPECT_EQ(plan.factor, c.factor);
        EXPECT_EQ(plan.announced, c.announced);
    }
}

TEST(SharpnessBar, FillsTwiceTheValueInTheColourOfItsRange) {
    const char* red = "rgb(255, 0, 0)";
    const char* yellow = "rgb(255, 255, 0)";
    const char* green = "rgb(0, 255, 0)";
    const struct {
        int sharpness, value;
        SharpnessBar::Colour colour;
        const char* chunk;
    } cases[] = {{0, 0, SharpnessBar::Red, red},         {17, 34, SharpnessBar::Red, red},
                 {18, 36, SharpnessBar::Yellow, yellow}, {31, 62, SharpnessBar::Yellow, yellow},
                 {32, 64, SharpnessBar::Green, green},   {80, 100, SharpnessBar::Green, green}};
    for (const auto& c : cases) {
        const SharpnessBar bar = sharpnessBar(c.sharpness);
        EXPECT_EQ(bar.value, c.value) << c.sharpness;
        EXPECT_EQ(bar.colour, c.colour) << c.sharpness;
        EXPECT_EQ(bar.styleSheet,
                  QString("QProgressBar{border:none;background:rgb(255, 255, 255);} "
                          "QProgressBar::chunk{background: %1;}")
                      .arg(c.chunk));
    }
}

}  // namespace
