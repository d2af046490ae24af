// Scratches from 1 to 10 um wide, each reported once along its middle with its width.

#include <gtest/gtest.h>

#include <cstdio>
#include <vector>

#include "factorytasks.h"
#include "renderedscratches.h"
#include "scratchedges.h"

TEST(WideScratch, TwoEdgesAroundABandBecomeOneScratchAlongItsMiddle) {
    // Edges at rows 100 and 112 of a 200 x 200 picture of level 120, the band between them
    // painted at `band`, above them at `above`.
    const struct {
        int band, above;
        size_t lines;
        const char* why;
    } cases[] = {
        {60, 120, 1, "a dark band"},
        {200, 120, 1, "a bright band"},
        {120, 120, 2, "no band: two lines on a plain face"},
        {90, 60, 2, "a step: darker than one side only"},
    };
    for (const auto& c : cases) {
        std::vector<unsigned char> picture(200 * 200, 120);
        for (int y = 0; y < 112; ++y) {
            std::fill_n(picture.begin() + y * 200, 200, y < 100 ? c.above : c.band);
        }
        std::vector<ScratchRecord> lines = {{20, 100, 180, 100, 3, 0, 9},
                                            {170, 112, 30, 112, 3, 3.14, 8}};
        pairScratchEdges(picture.data(), 200, 200, lines);
        ASSERT_EQ(lines.size(), c.lines) << c.why;
        if (c.lines == 1) {
            EXPECT_EQ(lines[0].y1, 106.0) << c.why;
            EXPECT_EQ(lines[0].y2, 106.0) << c.why;
            EXPECT_EQ(std::min(lines[0].x1, lines[0].x2), 20.0) << c.why;
            EXPECT_EQ(std::max(lines[0].x1, lines[0].x2), 180.0) << c.why;
            EXPECT_EQ(lines[0].width, 12.0) << c.why;
        }
    }
}

TEST(WideScratch, ScratchesOneToTenMicronsWideAreFoundAndTheirWidthClassed) {
    std::mt19937 random(16);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const QList<TaskInfoSetting> tasks = {factoryTasks().value(0), factoryTasks().value(3)};
    int rendered = 0, found = 0, classed = 0, classRight = 0;
    for (int widthUm = 1; widthUm <= 10; ++widthUm) {
        int foundOfWidth = 0;
        for (int face = 0; face < 12; ++face) {
            const TaskInfoSetting& task = tasks[face % 2];
            sim::EndFaceScene scene = randomFace(random, task);
            const sim::Scratch truth = crossingScratch(
                scene, 50.0 * (unit(random) - 0.5), M_PI * unit(random),
                widthUm - 0.5 + unit(random), 15.0 + 25.0 * unit(random), random() % 4 == 0);
            scene.scratches = {truth};
            const FoundScratches result = findRenderedScratches(scene, task);
            ++rendered;
            for (int i = 0; i < result.count; ++i) {
                const int zone = result.zones[i];
                if (!matchesScratch(result.scratches[i], truth) || zone < 0) {
                    continue;
                }
                ++found, ++foundOfWidth;
                // The class is judged where the width lies a fifth or more off the limit.
                const double limit = task.sections[zone].sWidthLimit;
                if (std::abs(truth.widthUm - limit) >= 0.2 * std::max(limit, 1.0)) {
                    const bool narrow = 0.8 * kUmPerPixel * result.scratches[i].width < limit;
                    ++classed;
                    classRight += narrow == (truth.widthUm < limit);
                }
                break;
            }
        }
        std::printf("%2d um wide: %d of 12 found\n", widthUm, foundOfWidth);
    }
    EXPECT_GE(found, rendered * 95 / 100);
    EXPECT_GE(classRight, classed * 95 / 100);
}
