// A run that cannot grade, or cannot save, says why through its signals: the instrument shows
// the reason instead of a verdict nobody can trust.

#include <gtest/gtest.h>

#include <QDir>
#include <functional>

#include "factorytasks.h"
#include "measuresinglefiberthread.h"
#include "readonlyfolder.h"
#include "resultrecord.h"
#include "temproot.h"
#include "testpicture.h"

namespace {

struct Signals {
    QStringList failed, notSaved;
    QList<bool> finished;

    explicit Signals(MeasureSingleFiberThread& thread) {
        QObject::connect(&thread, &MeasureSingleFiberThread::measureSingleFiberFailed,
                         [this](const QString& reason) { failed << reason; });
        QObject::connect(&thread, &MeasureSingleFiberThread::resultFilesNotSaved,
                         [this](const QString& reason) { notSaved << reason; });
        QObject::connect(&thread, &MeasureSingleFiberThread::measureSingleFiberFinished,
                         [this](bool pass) { finished << pass; });
    }
};

void measure(MeasureSingleFiberThread& thread, TestPicture& picture, const TaskInfoSetting& task) {
    ASSERT_TRUE(thread.startMeasureSingleFiber(
        task, picture.pixels.data(), nullptr, picture.width, picture.height, 0, 0,
        picture.width / 2, picture.height / 2, 1, kSaveDataAndReport, "SN1", 0));
    thread.wait();
}

}  // namespace

TEST(MeasureFailure, ATaskThatGradesNothingFailsWithItsReasonAndSavesNothing) {
    TempRoot root;
    ASSERT_TRUE(QDir().mkpath(root.file("mnt/sdcard/sd")));
    TestPicture picture(300, 300, 40);
    picture.disc(150, 150, 120, 200);
    const struct {
        const char* name;
        std::function<void(TaskInfoSetting&)> change;
        const char* reason;
    } cases[] = {
        {"numbers read as zeros",
         [](TaskInfoSetting& task) {
             for (TaskZoneSetting& zone : task.sections) {
                 zone.diameterMin = zone.diameterMax = 0;
             }
         },
         "grades nothing: no zone has an outer diameter above its inner one"},
        {"no zones", [](TaskInfoSetting& task) { task.sectionNum = 0; },
         "grades nothing: no zone has an outer diameter above its inner one"},
        {"a checked zone without extent",
         [](TaskInfoSetting& task) {
             task.sections[1].diameterMin = 30;
             task.sections[1].diameterMax = 20;
         },
         "grades nothing in zone \"B\": its outer diameter (20 um) is not above its inner one "
         "(30 um)"},
    };
    for (const auto& c : cases) {
        TaskInfoSetting task = factoryTasks().value(0);
        c.change(task);
        MeasureSingleFiberThread thread;
        const Signals seen(thread);
        measure(thread, picture, task);
        ASSERT_EQ(seen.failed.size(), 1) << c.name;
        EXPECT_TRUE(seen.failed[0].contains(c.reason)) << seen.failed[0].toStdString();
        EXPECT_EQ(thread.failure(), seen.failed[0]) << c.name;
        EXPECT_EQ(seen.finished, QList<bool>{false}) << c.name;
        EXPECT_TRUE(thread.results().isEmpty()) << c.name;
    }
    EXPECT_FALSE(QFileInfo::exists(root.file("mnt/sdcard/sd/Measure_Result")));
}

TEST(MeasureFailure, ResultFilesThatCannotBeWrittenAreSignalledWithTheReason) {
    TempRoot root;
    ASSERT_TRUE(QDir().mkpath(root.file("mnt/sdcard/sd")));
    const ReadOnlyFolder card(root.file("mnt/sdcard/sd"));
    if (!card.active()) {
        GTEST_SKIP() << "cannot make a folder read-only here";
    }
    TestPicture picture(300, 300, 40);
    picture.disc(150, 150, 120, 200);
    MeasureSingleFiberThread thread;
    const Signals seen(thread);
    measure(thread, picture, factoryTasks().value(0));
    ASSERT_EQ(seen.notSaved.size(), 1);
    EXPECT_TRUE(seen.notSaved[0].contains("Read-only file system"))
        << seen.notSaved[0].toStdString();
    EXPECT_TRUE(seen.failed.isEmpty()) << "the end face itself was graded";
    EXPECT_EQ(seen.finished.size(), 1);
}
