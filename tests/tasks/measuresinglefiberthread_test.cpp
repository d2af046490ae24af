// The single-fiber measurement run on rendered regions: its rules, its verdicts and its
// overlay.

#include "measuresinglefiberthread.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QDir>
#include <vector>

#include "endfacerenderer.h"
#include "factorytasks.h"
#include "temproot.h"

namespace {

constexpr int kRegion = 960;

struct RenderedRegion {
    std::vector<unsigned char> gray = std::vector<unsigned char>(kRegion * kRegion);
    sim::EndFaceScene scene;
    int left = 320, top = 120;

    RenderedRegion() {
        scene.centerX = 800.0;
        scene.centerY = 600.0;
        scene.blurSigmaPx = 0.7;
    }
    void render() { sim::renderGray(scene, left, top, kRegion, kRegion, gray.data()); }
    int centerX() const { return int(scene.centerX) - left; }
    int centerY() const { return int(scene.centerY) - top; }
};

TaskInfoSetting firstTask() {
    return factoryTasks().value(0);
}

void measure(MeasureSingleFiberThread& thread, RenderedRegion& region, const TaskInfoSetting& task,
             const std::vector<unsigned char>* mask = nullptr) {
    ASSERT_TRUE(thread.startMeasureSingleFiber(
        task, region.gray.data(), mask ? const_cast<unsigned char*>(mask->data()) : nullptr,
        kRegion, kRegion, region.left, region.top, region.centerX(), region.centerY(), 1, 0, "SN1",
        0));
    thread.wait();
}

}  // namespace

TEST(MeasureSingleFiber, AZoneMapIsReusedOnlyForTheSameZonesSizeAndCenter) {
    MeasureSingleFiberThread thread;
    RenderedRegion region;
    region.render();
    measure(thread, region, firstTask());
    EXPECT_EQ(thread.zoneMapPaints(), 1) << "a fresh thread paints even for a centered fiber";
    measure(thread, region, firstTask());
    EXPECT_EQ(thread.zoneMapPaints(), 1) << "the same centered fiber and task";
    region.scene.centerX += 1.0;
    region.render();
    measure(thread, region, firstTask());
    EXPECT_EQ(thread.zoneMapPaints(), 2) << "a one-pixel move";
    measure(thread, region, factoryTasks().value(3));
    EXPECT_EQ(thread.zoneMapPaints(), 3) << "another task's zones";
}

TEST(MeasureSingleFiber, ACleanEndFacePassesWithOneResultPerZone) {
    MeasureSingleFiberThread thread;
    RenderedRegion region;
    region.render();
    QList<TaskZoneResult> reported;
    bool reportedPass = false;
    QObject::connect(&thread, &MeasureSingleFiberThread::measureSingleFiberFinished,
                     [&](bool pass, QImage* overlay, QImage* image, QList<TaskZoneResult>* list) {
                         reportedPass = pass;
                         reported = *list;
                         EXPECT_EQ(overlay->size(), QSize(kRegion, kRegion));
                         EXPECT_EQ(image->format(), QImage::Format_Grayscale8);
                     });
    measure(thread, region, firstTask());
    EXPECT_TRUE(reportedPass);
    EXPECT_EQ(thread.defectCount(), 0);
    EXPECT_EQ(thread.scratchCount(), 0);
    EXPECT_EQ(reported.size(), 3);
}

TEST(MeasureSingleFiber, ATaskWithoutZonesPassesWithAnEmptyList) {
    MeasureSingleFiberThread thread;
    RenderedRegion region;
    region.scene.spots.push_back(sim::spotAtRadius(region.scene, 30, 0, 8, 60));
    region.render();
    TaskInfoSetting none = firstTask();
    none.sectionNum = 0;
    measure(thread, region, none);
    EXPECT_TRUE(thread.passed());
    EXPECT_TRUE(thread.results().isEmpty());
}

TEST(MeasureSingleFiber, LimitsOfZeroAndMinusOneDecideTheVerdict) {
    RenderedRegion region;
    region.scene.spots.push_back(sim::spotAtRadius(region.scene, 30, 45, 12, 60));  // zone B
    region.render();
    TaskInfoSetting task = firstTask();
    task.sections[1].dBiggerLimit = 0;
    MeasureSingleFiberThread thread;
    measure(thread, region, task);
    ASSERT_EQ(thread.defectCount(), 1);
    EXPECT_EQ(thread.defects()[0].sizeClass, 2);
    EXPECT_FALSE(thread.passed());
    EXPECT_EQ(thread.results()[1].dBiggerResult, 0);

    task.sections[1].dBiggerLimit = -1;
    measure(thread, region, task);
    EXPECT_TRUE(thread.passed());
}

TEST(MeasureSingleFiber, AFailedDefectSearchFailsTheRunButTheZonesAreStillListed) {
    RenderedRegion region;
    for (int ring = 0; ring < 15; ++ring) {  // 675 spots in zone D: more than the run takes
        for (int k = 0; k < 45; ++k) {
            region.scene.spots.push_back(
                sim::spotAtRadius(region.scene, 70.0 + 3.5 * ring, 8.0 * k + 3.0 * ring, 2.5, 80));
        }
    }
    region.render();
    MeasureSingleFiberThread thread;
    measure(thread, region, firstTask());
    EXPECT_EQ(thread.defectCount(), -1);
    EXPECT_FALSE(thread.passed());
    EXPECT_EQ(thread.results().size(), 3);
}

TEST(MeasureSingleFiber, TheOverlayColoursDefectsByClass) {
    RenderedRegion region;
    region.scene.spots.push_back(sim::spotAtRadius(region.scene, 30, 0, 12, 60));   // large
    region.scene.spots.push_back(sim::spotAtRadius(region.scene, 30, 180, 3, 60));  // small
    region.render();
    MeasureSingleFiberThread thread;
    measure(thread, region, firstTask());
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
        if (d.sizeClass == 2) {
            EXPECT_GT(red, 0);
            EXPECT_EQ(yellow, 0);
        } else {
            EXPECT_GT(yellow, 0);
            EXPECT_EQ(red, 0);
        }
    }
}

namespace {

// The first built-in task: zone A (0-25 um) allows nothing; zone B (25-115) any small defect,
// five middle ones (2 to 5 um) and no large one, any scratch narrower than 3 um (with the
// quarter's allowance) and no wider one; zone D (135-250) any defect up to 10 um, none larger.
bool passes(std::vector<sim::Spot> spots, std::vector<sim::Scratch> scratches = {}) {
    RenderedRegion region;
    region.scene.spots = std::move(spots);
    region.scene.scratches = std::move(scratches);
    region.render();
    MeasureSingleFiberThread thread;
    measure(thread, region, firstTask());
    return thread.passed();
}

std::vector<sim::Spot> middleSpotsInZoneB(int count) {
    RenderedRegion region;
    std::vector<sim::Spot> spots;
    for (int i = 0; i < count; ++i) {
        spots.push_back(sim::spotAtRadius(region.scene, 35.0, 50.0 * i, 2.0, 40.0));
    }
    return spots;
}

// A scratch across zone B, 30 um from the fiber center, clear of zone A.
sim::Scratch scratchInZoneB(double widthUm) {
    const double offset = 30.0 / sim::kMicronsPerPixel;
    return {650.0, 600.0 - offset, 950.0, 600.0 - offset + 40.0, widthUm, 35.0, false};
}

}  // namespace

TEST(MeasureSingleFiberVerdicts, MiddleDefectsPassUpToTheirLimit) {
    EXPECT_TRUE(passes(middleSpotsInZoneB(5)));
    EXPECT_FALSE(passes(middleSpotsInZoneB(6)));
}

TEST(MeasureSingleFiberVerdicts, DefectSizesAgainstEachZonesLimits) {
    RenderedRegion r;
    EXPECT_FALSE(passes({sim::spotAtRadius(r.scene, 35.0, 10.0, 10.0, 40.0)})) << "large in B";
    EXPECT_TRUE(passes({sim::spotAtRadius(r.scene, 100.0, 10.0, 4.0, 60.0)})) << "small in D";
    EXPECT_FALSE(passes({sim::spotAtRadius(r.scene, 100.0, 10.0, 12.0, 60.0)})) << "large in D";
    EXPECT_FALSE(passes({sim::spotAtRadius(r.scene, 7.0, 10.0, 3.0, 40.0)})) << "any in A";
    EXPECT_TRUE(passes({sim::spotAtRadius(r.scene, 35.0, 10.0, 10.0, 5.0)}))
        << "below zone B's threshold: not seen";
}

// Zone results of the first task for one scratch. (A scratch this visible also marks zone B's
// defect map, so the run fails on its defect side whatever the width: only the scratch
// figures tell the width class.)
TaskZoneResult zoneResultsWith(const sim::Scratch& scratch, int zone) {
    RenderedRegion region;
    region.scene.scratches.push_back(scratch);
    region.render();
    MeasureSingleFiberThread thread;
    measure(thread, region, firstTask());
    return thread.results().value(zone);
}

TEST(MeasureSingleFiberVerdicts, ScratchesAgainstTheirZonesWidthLimit) {
    for (double width : {2.0, 3.0}) {  // 3 um is within the quarter's allowance
        const TaskZoneResult b = zoneResultsWith(scratchInZoneB(width), 1);
        EXPECT_EQ(b.sNoBiggerNum, 1) << width;
        EXPECT_EQ(b.sBiggerNum, 0) << width;
        EXPECT_EQ(b.sBiggerResult, 1) << width;
    }
    const TaskZoneResult wide = zoneResultsWith(scratchInZoneB(4.5), 1);
    EXPECT_EQ(wide.sBiggerNum, 1);
    EXPECT_EQ(wide.sBiggerResult, 0);
    const TaskZoneResult a = zoneResultsWith({650.0, 590.0, 950.0, 615.0, 2.0, 35.0, false}, 0);
    EXPECT_EQ(a.sBiggerNum, 1) << "zone A's width limit is 0: every scratch is wide";
    EXPECT_EQ(a.sBiggerResult, 0);
}

TEST(MeasureSingleFiber, TheOverlayColoursScratchesByTheirZonesVerdicts) {
    for (double width : {2.0, 4.5}) {
        RenderedRegion region;
        region.scene.scratches.push_back(scratchInZoneB(width));
        region.render();
        MeasureSingleFiberThread thread;
        measure(thread, region, firstTask());
        ASSERT_EQ(thread.scratchCount(), 1) << width;
        const ScratchRecord& s = thread.scratches()[0];
        const QColor expected = width < 3.0 ? QColor(255, 165, 0) : QColor(Qt::red);
        const QPoint middle(int((s.x1 + s.x2) / 2), int((s.y1 + s.y2) / 2));
        EXPECT_EQ(thread.overlay().pixelColor(middle), expected) << width;
    }
}

TEST(MeasureSingleFiber, SavingProblemsAreSignalledAndTheRunStillReports) {
    TempRoot root;
    RenderedRegion region;
    region.render();
    MeasureSingleFiberThread thread;
    int noCard = 0, badName = 0, finished = 0;
    QObject::connect(&thread, &MeasureSingleFiberThread::noSDCard, [&] { ++noCard; });
    QObject::connect(&thread, &MeasureSingleFiberThread::invalidFileName, [&] { ++badName; });
    QObject::connect(&thread, &MeasureSingleFiberThread::measureSingleFiberFinished,
                     [&] { ++finished; });
    auto run = [&](int saveType, const QString& id) {
        ASSERT_TRUE(thread.startMeasureSingleFiber(
            firstTask(), region.gray.data(), nullptr, kRegion, kRegion, region.left, region.top,
            region.centerX(), region.centerY(), 1, saveType, id, 0));
        thread.wait();
    };
    run(1, "SN1");
    EXPECT_EQ(noCard, 1);
    ASSERT_TRUE(QDir().mkpath(root.file("mnt/sdcard/sd")));
    run(3, "bad:name");
    EXPECT_EQ(badName, 1);
    run(0, "bad:name");
    EXPECT_EQ(badName, 1) << "save mode 0 saves nothing and checks nothing";
    run(3, "SN1");
    EXPECT_EQ(noCard + badName, 2);
    EXPECT_EQ(finished, 4);
    EXPECT_FALSE(QDir(root.file("mnt/sdcard/sd/Measure_Result")).isEmpty());
}
