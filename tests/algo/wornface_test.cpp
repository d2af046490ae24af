// Worn faces: many scratches, crossing one another or interrupted, each reported once.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "factorytasks.h"
#include "mergesegment.h"
#include "renderedscratches.h"

TEST(WornFace, EveryGroupOfARoundIsWrittenOnce) {
    // Six parallel scratches, each detected in two pieces: six groups in each round.
    std::vector<ScratchRecord> pieces;
    for (int k = 0; k < 6; ++k) {
        const double y = 100.0 + 60.0 * k;
        pieces.push_back({100, y, 300, y, 3.0, 0.0, 5.0});
        pieces.push_back({340, y, 500, y, 3.0, 0.0, 5.0});
    }
    std::vector<ScratchRecord> out;
    EXPECT_EQ(MergeLumaspecSegment(pieces.data(), int(pieces.size()), 480, 480, out, 16), 6);
}

TEST(WornFace, EveryCrossingScratchIsCountedOnce) {
    // Seven scratches crossing within 20 um of the center break one another into short
    // pieces, and now and then one of them is lost: a few faces may come out one short, none
    // further off, and none with a scratch twice.
    std::mt19937 random(14);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const QList<TaskInfoSetting> tasks = {factoryTasks().value(0), factoryTasks().value(3)};
    int faces = 0, countedRight = 0;
    for (int scratches = 4; scratches <= 7; ++scratches) {
        for (int face = 0; face < 6; ++face) {
            const TaskInfoSetting& task = tasks[face % 2];
            sim::EndFaceScene scene = randomFace(random, task);
            // Directions spread over the half turn, so that every pair crosses.
            const double turn = M_PI * unit(random);
            for (int k = 0; k < scratches; ++k) {
                scene.scratches.push_back(
                    crossingScratch(scene, 40.0 * (unit(random) - 0.5),
                                    turn + M_PI * (k + 0.3 * (unit(random) - 0.5)) / scratches,
                                    2.0 + 2.0 * unit(random), 20.0 + 20.0 * unit(random), false));
            }
            const int count = findRenderedScratches(scene, task).count;
            EXPECT_LE(count, scratches) << "face " << face;
            EXPECT_GE(count, scratches - 1) << "face " << face;
            ++faces;
            countedRight += count == scratches;
        }
    }
    EXPECT_GE(countedRight, faces * 9 / 10);
}

TEST(WornFace, AScratchInterruptedByAFaintStretchOrASpotIsOneScratch) {
    std::mt19937 random(15);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const QList<TaskInfoSetting> tasks = {factoryTasks().value(0), factoryTasks().value(3)};
    for (int gap = 20; gap <= 100; gap += 10) {
        for (int face = 0; face < 8; ++face) {
            const TaskInfoSetting& task = tasks[face % 2];
            sim::EndFaceScene scene = randomFace(random, task);
            const sim::Scratch whole =
                crossingScratch(scene, 30.0 * (unit(random) - 0.5), M_PI * unit(random),
                                2.0 + 2.0 * unit(random), 20.0 + 20.0 * unit(random), false);
            // The interruption lies near the middle of the chord.
            const double length = std::hypot(whole.x2 - whole.x1, whole.y2 - whole.y1);
            const double ux = (whole.x2 - whole.x1) / length, uy = (whole.y2 - whole.y1) / length;
            const double from = length / 2 + 40.0 * (unit(random) - 0.5) - gap / 2.0;
            sim::Scratch before = whole, after = whole;
            before.x2 = whole.x1 + from * ux, before.y2 = whole.y1 + from * uy;
            after.x1 = whole.x1 + (from + gap) * ux, after.y1 = whole.y1 + (from + gap) * uy;
            scene.scratches = {before, after};
            // A particle up to 30 um sits on some stretches (a bigger one is a defect, whose
            // rectangle the measurement keeps out of the scratch search).
            if (face % 4 >= 2 && gap <= 60) {
                sim::Spot spot;
                spot.x = whole.x1 + (from + gap / 2.0) * ux;
                spot.y = whole.y1 + (from + gap / 2.0) * uy;
                spot.diameterUm = gap * kUmPerPixel;
                spot.contrast = 40.0;
                scene.spots.push_back(spot);
            }

            const FoundScratches found = findRenderedScratches(scene, task);
            ASSERT_EQ(found.count, 1) << gap << " px gap, face " << face;
            EXPECT_TRUE(matchesScratch(found.scratches[0], whole)) << gap << " px gap";
        }
    }
}
