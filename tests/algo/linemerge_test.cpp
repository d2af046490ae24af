#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "mergesegment.h"
#include "nearvalues.h"

namespace {

ScratchRecord segment(double x1, double y1, double x2, double y2, double width = 3.0) {
    return {x1, y1, x2, y2, width, std::atan2(y2 - y1, x2 - x1), 5.0};
}

std::vector<ScratchRecord> merged(const std::vector<ScratchRecord>& segments, int sens = 16,
                                  int cx = 480, int cy = 480) {
    std::vector<ScratchRecord> out;
    MergeLumaspecSegment(segments.data(), int(segments.size()), cx, cy, out, sens);
    return out;
}

}  // namespace

TEST(LineMerge, CollinearPiecesBecomeOneScratchBetweenTheExtremeEnds) {
    // Pieces of one diagonal scratch, out of order and with gaps, the last one reversed.
    const std::vector<ScratchRecord> pieces = {segment(300, 200, 360, 260, 3.0),
                                               segment(400, 300, 470, 370, 4.5),
                                               segment(560, 460, 500, 400, 3.5)};
    const std::vector<ScratchRecord> out = merged(pieces);
    ASSERT_EQ(out.size(), 1u);
    expectNear({300, 560, 460},
               {std::min(out[0].x1, out[0].x2), std::max(out[0].x1, out[0].x2),
                std::max(out[0].y1, out[0].y2)},
               1e-6);
    EXPECT_EQ(out[0].width, 4.5) << "as wide as its widest piece";
}

TEST(LineMerge, TheTwoEdgesOfAWideScratchBecomeOneScratchBetweenThem) {
    // A scratch 8 px wide is seen as its two edges, with opposite directions.
    const std::vector<ScratchRecord> out =
        merged({segment(100, 296, 400, 296, 4.0), segment(390, 304, 120, 304, 4.5)});
    ASSERT_EQ(out.size(), 1u);
    expectNear({300.0, 300.0, 8.0, 100.0},
               {out[0].y1, out[0].y2, out[0].width, std::min(out[0].x1, out[0].x2)}, 1e-9);
}

TEST(LineMerge, PiecesOfACircleAboutTheFiberCenterAreNoScratch) {
    // Chords of the core's edge, radius 49 px about the center (480, 480).
    std::vector<ScratchRecord> arcs;
    for (int k = 0; k < 24; ++k) {
        const double a = k * M_PI / 12, b = a + M_PI / 10;
        arcs.push_back(segment(480 + 49 * std::cos(a), 480 + 49 * std::sin(a),
                               480 + 49 * std::cos(b), 480 + 49 * std::sin(b)));
    }
    EXPECT_TRUE(merged(arcs).empty());
    arcs.push_back(segment(380, 430, 600, 520));  // a scratch across the core
    EXPECT_EQ(merged(arcs).size(), 1u);
}

TEST(LineMerge, WhichCandidatesAreKeptAndJoined) {
    struct Case {
        std::vector<ScratchRecord> segments;
        int sens;
        size_t scratches;
        const char* why;
    };
    const ScratchRecord base = segment(200, 300, 400, 300),
                        diagonal = segment(200, 200, 242.4, 242.4);
    const ScratchRecord line = segment(100, 100, 300, 100, 11.0);
    const Case cases[] = {
        {{base, segment(420, 300, 560, 330)}, 16, 2, "12 degrees apart"},
        {{base, segment(420, 316, 560, 316)}, 16, 2, "16 px to the side"},
        {{base, segment(620, 300, 760, 300)}, 16, 2, "a 220 px gap"},
        {{base, segment(420, 302, 560, 302)}, 16, 1, "joined"},
        {{segment(100, 100, 108, 100)}, 16, 0, "shorter than 10 px"},
        {{segment(100, 100, 300, 100, 12.5)}, 16, 0, "wider than 12 px"},
        {{line}, 10, 0, "sens 10: no wider than 10 px"},
        {{line}, 9, 0, "sens 9, the last of the fine ones: no wider than 10 px"},
        {{line}, 16, 1, "11 px at sens 16"},
        // The span test is on the axes, not the length: the diagonal is 60 long, 42.4 on both.
        {{diagonal}, 18, 0, "spans 42 against 45"},
        {{diagonal}, 6, 1, "spans 42 against 30"},
        {{segment(200, 200, 270, 200)}, 11, 0, "70 is not above 70"},
        {{segment(200, 200, 271, 200)}, 11, 1, "71 is"},
        {{line}, 0, 0, "sens 0 is out of range"},
        {{line}, 21, 0, "sens 21 is out of range"},
        {{segment(100, 100, 400, 100)}, 1, 1, "sens 1"},
        {{segment(100, 100, 400, 100)}, 20, 1, "sens 20"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(merged(c.segments, c.sens).size(), c.scratches) << c.why;
    }
}
