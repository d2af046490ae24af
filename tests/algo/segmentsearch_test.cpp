// The segment search on whole rendered frames: settings by sensitivity, the square cut out
// about the fiber, and coordinates back in the frame.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "endfacerenderer.h"
#include "segmentsearch.h"

namespace {

// A frame with a plain end face (no fiber edge) and the scene's scratches.
struct Frame {
    sim::EndFaceScene scene;
    std::vector<unsigned char> gray =
        std::vector<unsigned char>(size_t(kSensorWidth) * kSensorHeight);

    explicit Frame(std::vector<sim::Scratch> scratches) {
        scene.ferruleLevel = scene.claddingLevel = scene.coreLevel = 150.0;
        scene.edgeDarkRing = scene.edgeBrightHalo = 0.0;
        scene.scratches = std::move(scratches);
        sim::renderGray(scene, 0, 0, kSensorWidth, kSensorHeight, gray.data());
    }
};

struct Found {
    int count;
    std::vector<double> tuples;
};

Found search(const Frame& f, int cx, int cy, double r, double rLimit,
             const std::vector<double>& annuli = {},
             const std::vector<defect_info_struct>& exclusions = {}, int sens = 16) {
    double* segments = nullptr;
    int count = -1;
    const int returned = FindLumaspecSegment(
        f.gray.data(), kSensorWidth, kSensorHeight, cx, cy, r, rLimit, int(annuli.size() / 2),
        annuli.data(), exclusions.data(), int(exclusions.size()), sens, &segments, &count);
    EXPECT_EQ(returned, count);
    Found found{count, std::vector<double>(segments, segments + 7 * count)};
    freeLineSegments(segments);
    return found;
}

// True when segment i runs along the scratch: both ends within its half width plus 2 px of
// its middle line, and within its length plus 5 px.
bool alongScratch(const Found& found, int i, const sim::Scratch& s) {
    const double len = std::hypot(s.x2 - s.x1, s.y2 - s.y1);
    const double ux = (s.x2 - s.x1) / len, uy = (s.y2 - s.y1) / len;
    const double across = sim::micronsToPixels(s.widthUm) / 2.0 + 2.0;
    for (int end = 0; end < 2; ++end) {
        const double x = found.tuples[size_t(7 * i + 2 * end)] - s.x1;
        const double y = found.tuples[size_t(7 * i + 2 * end + 1)] - s.y1;
        const double along = x * ux + y * uy;
        if (std::fabs(-x * uy + y * ux) > across || along < -5.0 || along > len + 5.0) {
            return false;
        }
    }
    return true;
}

int countAlong(const Found& found, const sim::Scratch& s) {
    int n = 0;
    for (int i = 0; i < found.count; ++i) {
        n += alongScratch(found, i, s) ? 1 : 0;
    }
    return n;
}

// Near the bottom-left corner: the square about (60, 1150) with r = 150 is clipped to columns
// 0..209 and rows 1000..1199.
const sim::Scratch kInside{10.0, 1030.0, 190.0, 1180.0, 2.5, 40.0, false};
const sim::Scratch kOutside{600.0, 300.0, 1000.0, 500.0, 2.5, 40.0, false};

TEST(FindLumaspecSegment, ACropClippedByTheFrameReportsFramePixels) {
    const Frame f({kInside, kOutside});
    const Found found = search(f, 60, 1150, 150.0, 400.0);
    ASSERT_GE(found.count, 2);
    EXPECT_EQ(countAlong(found, kInside), found.count) << "all from the scratch in the square";
    for (int i = 0; i < found.count; ++i) {
        const double x1 = found.tuples[size_t(7 * i)], y1 = found.tuples[size_t(7 * i + 1)];
        EXPECT_TRUE(x1 >= 0.0 && x1 <= 210.0 && y1 >= 1000.0 && y1 <= 1200.0) << x1 << "," << y1;
    }
    // When r exceeds the inspection circle's radius the whole frame is searched.
    const Found whole = search(f, 60, 1150, 150.0, 100.0);
    EXPECT_GE(countAlong(whole, kInside), 2);
    EXPECT_GE(countAlong(whole, kOutside), 2);
}

TEST(FindLumaspecSegment, AnnuliAreAboutTheFiberCenterInFramePixels) {
    // Scratches 40 px and 120 px from the center, inside a clipped square.
    const sim::Scratch nearOne{20.0, 1110.0, 100.0, 1110.0, 2.5, 40.0, false};
    const sim::Scratch farOne{20.0, 1030.0, 100.0, 1030.0, 2.5, 40.0, false};
    const Frame f({nearOne, farOne});
    const Found inner = search(f, 60, 1150, 150.0, 400.0, {0.0, 70.0});
    EXPECT_GE(countAlong(inner, nearOne), 2);
    EXPECT_EQ(countAlong(inner, farOne), 0);
    const Found outer = search(f, 60, 1150, 150.0, 400.0, {100.0, 150.0});
    EXPECT_EQ(countAlong(outer, nearOne), 0);
    EXPECT_GE(countAlong(outer, farOne), 2);
}

TEST(FindLumaspecSegment, ExclusionsAreGivenInFramePixelsAndLeftUnchanged) {
    const Frame f({kInside});
    const std::vector<defect_info_struct> boxes = {
        defect_info_struct{1000, 1199, 0, 209, 2, 1},  // the whole square
    };
    EXPECT_EQ(search(f, 60, 1150, 150.0, 400.0, {}, boxes).count, 0);
    EXPECT_EQ((std::vector<int>{boxes[0].top, boxes[0].left}), (std::vector<int>{1000, 0}));
    const std::vector<defect_info_struct> elsewhere = {defect_info_struct{0, 900, 0, 1599, 2, 1}};
    EXPECT_GE(search(f, 60, 1150, 150.0, 400.0, {}, elsewhere).count, 2);
}

TEST(FindLumaspecSegment, ASquareWithNoPixelsFindsNothing) {
    const Frame f({kInside});
    double* segments = reinterpret_cast<double*>(1);
    int count = -1;
    EXPECT_EQ(FindLumaspecSegment(f.gray.data(), kSensorWidth, kSensorHeight, 60, 1150, 0.0, 400.0,
                                  0, nullptr, nullptr, 0, 16, &segments, &count),
              0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(segments, nullptr);
}

TEST(FindLumaspecSegment, TheFinerSensitivitiesTellCloseScratchesApart) {
    // Two faint scratches 3 um apart. Sens 5 to 9 and 15 to 19 blur less before the search and
    // see both, each by its two edges; the others see one dark band between two edges.
    const double gap = 3.0 / kUmPerPixel;
    const Frame f({{700.0, 600.0, 900.0, 630.0, 2.0, 40.0, false},
                   {700.0, 600.0 + gap, 900.0, 630.0 + gap, 2.0, 40.0, false}});
    const std::pair<int, int> expected[] = {{1, 2},  {4, 2},  {5, 4},  {9, 4},
                                            {11, 2}, {14, 2}, {15, 4}, {19, 4}};
    for (const auto& [sens, edges] : expected) {
        EXPECT_EQ(search(f, 800, 600, 200.0, 400.0, {}, {}, sens).count, edges) << "sens " << sens;
    }
}

}  // namespace
