// The single-fiber measurement run on rendered regions: its rules, its verdicts and its
// overlay.

#include "measuresinglefiberthread.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QDir>

#include "measuretesting.h"
#include "temproot.h"

TEST(MeasureSingleFiber, AZoneMapIsReusedOnlyForTheSameZonesSizeAndCenter) {
    MeasureSingleFiberThread thread;
    RenderedRegion region;
    measure(thread, region);
    EXPECT_EQ(thread.zoneMapPaints(), 1) << "a fresh thread paints even for a centered fiber";
    measure(thread, region);
    EXPECT_EQ(thread.zoneMapPaints(), 1) << "the same centered fiber and task";
    region.scene.centerX += 1.0;
    region.render();
    measure(thread, region);
    EXPECT_EQ(thread.zoneMapPaints(), 2) << "a one-pixel move";
    measure(thread, region, factoryTasks().value(3));
    EXPECT_EQ(thread.zoneMapPaints(), 3) << "another task's zones";
}

TEST(MeasureSingleFiber, ACleanEndFacePassesWithOneResultPerZone) {
    MeasureSingleFiberThread thread;
    RenderedRegion region;
    QList<TaskZoneResult> reported;
    bool reportedPass = false;
    QObject::connect(&thread, &MeasureSingleFiberThread::measureSingleFiberFinished,
                     [&](bool pass, QImage* overlay, QImage* image, QList<TaskZoneResult>* list) {
                         reportedPass = pass;
                         reported = *list;
                         EXPECT_EQ(overlay->size(), QSize(kRegion, kRegion));
                         EXPECT_EQ(image->format(), QImage::Format_Grayscale8);
                     });
    measure(thread, region);
    EXPECT_TRUE(reportedPass);
    EXPECT_EQ((std::vector<int>{thread.defectCount(), thread.scratchCount(), int(reported.size())}),
              (std::vector<int>{0, 0, 3}));
}

TEST(MeasureSingleFiber, ATaskWithoutZonesFailsWithAnEmptyList) {
    MeasureSingleFiberThread thread;
    RenderedRegion region({spotAt(30, 0, 8, 60)});
    TaskInfoSetting none = firstTask();
    none.sectionNum = 0;
    measure(thread, region, none);
    EXPECT_FALSE(thread.passed()) << "a task that grades nothing passes nothing";
    EXPECT_TRUE(thread.results().isEmpty());
}

TEST(MeasureSingleFiber, AFailedDefectSearchFailsTheRunButTheZonesAreStillListed) {
    std::vector<sim::Spot> spots;
    for (int ring = 0; ring < 15; ++ring) {  // 675 spots in zone D: more than the run takes
        for (int k = 0; k < 45; ++k) {
            spots.push_back(spotAt(70.0 + 3.5 * ring, 8.0 * k + 3.0 * ring, 2.5, 80));
        }
    }
    RenderedRegion region(spots);
    MeasureSingleFiberThread thread;
    measure(thread, region);
    EXPECT_FALSE(thread.passed());
    EXPECT_EQ((std::vector<int>{thread.defectCount(), int(thread.results().size())}),
              (std::vector<int>{-1, 3}));
}

TEST(MeasureSingleFiber, TheOverlayColoursDefectsByClass) {
    RenderedRegion region({spotAt(30, 0, 12, 60), spotAt(30, 180, 3, 60)});  // large, small
    MeasureSingleFiberThread thread;
    measure(thread, region);
    ASSERT_EQ(thread.defectCount(), 2);
    for (int i = 0; i < 2; ++i) {
        const defect_info_struct& d = thread.defects()[i];
        int red = 0, yellow = 0;
        for (int y = d.top; y <= d.bottom; ++y) {
            for (int x = d.left; x <= d.right; ++x) {
                const QColor c = thread.overlay().pixelColor(x, y);
                red += c == QColor(Qt::red);
                yellow += c == QColor(Qt::yellow);
            }
        }
        const bool large = d.sizeClass == 2;
        EXPECT_EQ(red > 0, large) << i;
        EXPECT_EQ(yellow > 0, !large) << i;
    }
}

// The verdicts are tested here, for the whole inspection. The first built-in task: zone A
// (0-25 um) allows nothing; zone B (25-115) any small defect, five middle ones (2 to 5 um) and
// no large one, any scratch narrower than 3 um (with the quarter's allowance) and no wider
// one; zone D (135-250) any defect up to 10 um, none larger.
TEST(MeasureSingleFiberVerdicts, DefectsAgainstEachZonesLimits) {
    auto middleInB = [](int count) {
        std::vector<sim::Spot> spots;
        for (int i = 0; i < count; ++i) {
            spots.push_back(spotAt(35.0, 50.0 * i, 2.0, 40.0));
        }
        return spots;
    };
    const struct {
        const char* name;
        std::vector<sim::Spot> spots;
        bool passes;
        int16_t largeInB;  // zone B's limit of large defects
    } cases[] = {
        {"five middle in B", middleInB(5), true, 0},
        {"six middle in B", middleInB(6), false, 0},
        {"large in B", {spotAt(35.0, 10.0, 10.0, 40.0)}, false, 0},
        {"large in B, which allows any (-1)", {spotAt(35.0, 10.0, 10.0, 40.0)}, true, -1},
        {"small in D", {spotAt(100.0, 10.0, 4.0, 60.0)}, true, 0},
        {"large in D", {spotAt(100.0, 10.0, 12.0, 60.0)}, false, 0},
        {"any in A", {spotAt(7.0, 10.0, 3.0, 40.0)}, false, 0},
        {"below zone B's threshold: not seen", {spotAt(35.0, 10.0, 10.0, 5.0)}, true, 0},
    };
    for (const auto& c : cases) {
        RenderedRegion region(c.spots);
        TaskInfoSetting task = firstTask();
        task.sections[1].dBiggerLimit = c.largeInB;
        MeasureSingleFiberThread thread;
        measure(thread, region, task);
        EXPECT_EQ(thread.passed(), c.passes) << c.name;
    }
}

// A scratch this visible also marks zone B's defect map, so the run fails on its defect side
// whatever the width: only the scratch figures and the overlay tell the width class.
TEST(MeasureSingleFiberVerdicts, ScratchesAgainstTheirZonesWidthLimitAndTheirOverlayColour) {
    const QColor unchecked;
    const sim::Scratch acrossZoneA{650.0, 590.0, 950.0, 615.0, 2.0, 35.0, false};
    const struct {
        const char* name;
        sim::Scratch scratch;
        int zone, narrow, wide, wideResult;
        QColor colour;
    } cases[] = {
        {"2 um in B", scratchInZoneB(2.0), 1, 1, 0, 1, QColor(255, 165, 0)},
        {"3 um in B: within the quarter's allowance", scratchInZoneB(3.0), 1, 1, 0, 1, unchecked},
        {"4.5 um in B", scratchInZoneB(4.5), 1, 0, 1, 0, QColor(Qt::red)},
        {"2 um in A, whose width limit of 0 makes every scratch wide", acrossZoneA, 0, 0, 1, 0,
         unchecked},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        RenderedRegion region({}, {c.scratch});
        MeasureSingleFiberThread thread;
        measure(thread, region);
        const TaskZoneResult zone = thread.results().value(c.zone);
        EXPECT_EQ((std::vector<int>{zone.sNoBiggerNum, zone.sBiggerNum, zone.sBiggerResult}),
                  (std::vector<int>{c.narrow, c.wide, c.wideResult}));
        if (c.colour.isValid()) {
            ASSERT_EQ(thread.scratchCount(), 1);
            const ScratchRecord& s = thread.scratches()[0];
            const QPoint middle(int((s.x1 + s.x2) / 2), int((s.y1 + s.y2) / 2));
            EXPECT_EQ(thread.overlay().pixelColor(middle), c.colour);
        }
    }
}

TEST(MeasureSingleFiber, SavingProblemsAreSignalledAndTheRunStillReports) {
    TempRoot root;
    RenderedRegion region;
    MeasureSingleFiberThread thread;
    int noCard = 0, badName = 0, finished = 0;
    QObject::connect(&thread, &MeasureSingleFiberThread::noSDCard, [&] { ++noCard; });
    QObject::connect(&thread, &MeasureSingleFiberThread::invalidFileName, [&] { ++badName; });
    QObject::connect(&thread, &MeasureSingleFiberThread::measureSingleFiberFinished,
                     [&] { ++finished; });
    measure(thread, region, firstTask(), 1, "SN1");
    EXPECT_EQ(noCard, 1);
    ASSERT_TRUE(QDir().mkpath(root.file("mnt/sdcard/sd")));
    measure(thread, region, firstTask(), 3, "bad:name");
    EXPECT_EQ(badName, 1);
    measure(thread, region, firstTask(), 0, "bad:name");
    EXPECT_EQ(badName, 1) << "save mode 0 saves nothing and checks nothing";
    measure(thread, region, firstTask(), 3, "SN1");
    EXPECT_EQ(noCard + badName, 2);
    EXPECT_EQ(finished, 4);
    EXPECT_FALSE(QDir(root.file("mnt/sdcard/sd/Measure_Result")).isEmpty());
}
