// The inspection tool given what a careless or hostile user gives it: pictures that claim to be
// huge, FIFOs, centres outside the region, absurd job counts, tasks that grade nothing, cards
// that cannot be written. Each input is refused with its reason, the others still inspected.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <zlib.h>
#include <QDir>
#include <QThread>
#include <opencv2/imgcodecs.hpp>
#include <vector>

#include "endfacerenderer.h"
#include "readonlyfolder.h"
#include "temproot.h"
#include "testfiles.h"

extern char** environ;

namespace {

struct ToolRun {
    int status = -1;  // -1: killed after the time limit
    QStringList lines;
    QString errors;
    long peakKb = 0;  // the tool's largest resident size
};

// Runs the tool with stdout and stderr in files, so that its own peak memory can be read.
ToolRun runTool(const TempRoot& root, const QStringList& arguments, int limitSeconds = 60) {
    std::vector<QByteArray> texts{INSPECT_TOOL};
    for (const QString& argument : arguments) {
        texts.push_back(argument.toLocal8Bit());
    }
    std::vector<char*> argv;
    for (QByteArray& text : texts) {
        argv.push_back(text.data());
    }
    argv.push_back(nullptr);
    const QByteArray out = root.file("tool.out").toLocal8Bit();
    const QByteArray err = root.file("tool.err").toLocal8Bit();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, out.constData(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    posix_spawn_file_actions_addopen(&actions, 2, err.constData(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    pid_t pid = 0;
    ToolRun run;
    const bool started = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    rusage usage{};
    for (int waited = 0; started && wait4(pid, &status, WNOHANG, &usage) == 0; ++waited) {
        if (waited == limitSeconds * 100) {
            kill(pid, SIGKILL);
        }
        QThread::msleep(10);
    }
    if (started && WIFEXITED(status)) {
        run.status = WEXITSTATUS(status);
    }
    run.peakKb = usage.ru_maxrss;
    run.lines = QString::fromUtf8(fileContents(out)).split('\n', Qt::SkipEmptyParts);
    run.errors = QString::fromUtf8(fileContents(err));
    return run;
}

QByteArray bigEndian32(quint32 value) {
    return QByteArray(1, char(value >> 24)) + char(value >> 16) + char(value >> 8) + char(value);
}

QByteArray littleEndian32(quint32 value) {
    return QByteArray(1, char(value)) + char(value >> 8) + char(value >> 16) + char(value >> 24);
}

QByteArray pngChunk(const QByteArray& type, const QByteArray& data) {
    const QByteArray body = type + data;
    const auto crc = crc32(0, reinterpret_cast<const Bytef*>(body.constData()), uInt(body.size()));
    return bigEndian32(quint32(data.size())) + body + bigEndian32(quint32(crc));
}

// A few dozen bytes that declare a gray picture of width x height.
QByteArray hugePng(quint32 width, quint32 height) {
    const QByteArray header =
        bigEndian32(width) + bigEndian32(height) + QByteArray("\x08\0\0\0\0", 5);
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + pngChunk("IHDR", header) +
           pngChunk("IDAT", QByteArray("\x78\x9c\x03\x00\x00\x00\x00\x01", 8)) +
           pngChunk("IEND", QByteArray());
}

QByteArray hugeBmp(quint32 width, quint32 height) {
    return "BM" + littleEndian32(1078) + littleEndian32(0) + littleEndian32(1078) +
           littleEndian32(40) + littleEndian32(width) + littleEndian32(height) +
           QByteArray("\x01\0\x08\0", 4) + QByteArray(24, '\0') + QByteArray(1024, '\0');
}

void writePicture(const QString& path, const cv::Mat& picture) {
    ASSERT_TRUE(cv::imwrite(path.toStdString(), picture)) << path.toStdString();
}

// A region of the frame around a rendered fiber with its spots, as a PNG; the fiber is at
// (side / 2, side / 2).
void writeRegion(const QString& path, int side, const std::vector<sim::Spot>& spots = {}) {
    sim::EndFaceScene scene;
    scene.spots = spots;
    cv::Mat region(side, side, CV_8UC1);
    sim::renderGray(scene, 800 - side / 2, 600 - side / 2, side, side, region.data);
    writePicture(path, region);
}

// Runs the tool and expects status 2, each named input's reason on stderr and the good inputs
// still inspected.
void expectRefused(const TempRoot& root, const QStringList& options,
                   const QList<QPair<QString, QString>>& refused, const QStringList& good) {
    QStringList inputs = good;
    for (const auto& input : refused) {
        inputs << input.first;
    }
    const ToolRun run = runTool(root, options + inputs);
    EXPECT_EQ(run.status, 2) << run.errors.toStdString();
    EXPECT_EQ(run.lines.size(), good.size()) << run.errors.toStdString();
    for (const auto& input : refused) {
        EXPECT_TRUE(run.errors.contains(input.first + ": " + input.second))
            << input.second.toStdString() << " in: " << run.errors.toStdString();
    }
}

}  // namespace

TEST(HostileInput, PicturesThatClaimAHugeSizeOrDepthAreRefusedBeforeDecoding) {
    TempRoot root;
    ASSERT_TRUE(writeFile(root.file("huge.png"), hugePng(65535, 65535)));
    ASSERT_TRUE(writeFile(root.file("huge.bmp"), hugeBmp(100000, 100000)));
    ASSERT_TRUE(writeFile(root.file("wide.png"), hugePng(30000, 30000)));
    writePicture(root.file("deep.tif"), cv::Mat(1200, 1600, CV_16UC1, cv::Scalar(7)));
    ASSERT_TRUE(writeFile(root.file("flat.raw"), QByteArray(3840000, '\0')));
    writeRegion(root.file("region.png"), 64);
    expectRefused(root, {"--json"},
                  {{root.file("huge.png"), "picture is 65535 x 65535, expected 1600 x 1200"},
                   {root.file("huge.bmp"), "picture is 100000 x 100000, expected 1600 x 1200"},
                   {root.file("deep.tif"), "not an 8-bit grayscale picture: 1 x 16-bit"}},
                  {root.file("flat.raw")});
    expectRefused(root, {"--json", "--center", "32,32"},
                  {{root.file("huge.png"), "picture of 65535 x 65535 is larger than a frame"},
                   {root.file("huge.bmp"), "picture of 100000 x 100000 is larger than a frame"},
                   {root.file("wide.png"), "picture of 30000 x 30000 is larger than a frame"}},
                  {root.file("region.png")});
}

TEST(HostileInput, AFifoOrDeviceIsNoInputAndNoSensorMask) {
    TempRoot root;
    ASSERT_EQ(mkfifo(root.file("fifo").toLocal8Bit().constData(), 0600), 0);
    ASSERT_TRUE(writeFile(root.file("flat.raw"), QByteArray(3840000, '\0')));
    expectRefused(root, {},
                  {{root.file("fifo"), "not a regular file"}, {"/dev/zero", "not a regular file"}},
                  {root.file("flat.raw")});

    ASSERT_TRUE(QDir().mkpath(root.file("etc")));
    ASSERT_EQ(mkfifo(root.file("etc/ccd_mask.dat").toLocal8Bit().constData(), 0600), 0);
    const ToolRun run = runTool(root, {root.file("flat.raw")});
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(run.errors.contains(root.file("etc/ccd_mask.dat") + ": not a regular file"))
        << run.errors.toStdString();
}

TEST(HostileInput, TheCenterMustLieInsideARegionOfAtLeastFiveByFive) {
    TempRoot root;
    writeRegion(root.file("region.png"), 40);
    writePicture(root.file("tiny.png"), cv::Mat(3, 3, CV_8UC1, cv::Scalar(100)));
    const struct {
        const char* center;
        const char* input;
        const char* reason;
    } cases[] = {
        {"-1,-1", "region.png", "the fiber center (-1, -1) lies outside the region of 40 x 40"},
        {"40,20", "region.png", "the fiber center (40, 20) lies outside the region of 40 x 40"},
        {"2147483647,-2147483648", "region.png",
         "the fiber center (2147483647, -2147483648) lies outside the region of 40 x 40"},
        {"1,1", "tiny.png", "the region of 3 x 3 pixels is too small (at least 5 x 5)"},
    };
    for (const auto& c : cases) {
        expectRefused(root, {"--center", c.center}, {{root.file(c.input), c.reason}}, {});
    }
}

TEST(HostileInput, JobsAreBoundedByTheCoresAndMemoryStaysFlatOverManyInputs) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer's own memory (shadow, freed blocks held back) hides the tool's";
#endif
    TempRoot root;
    writeRegion(root.file("region.png"), 48);
    auto manyRegions = [&](int count) {
        return QStringList({"--json", "--center", "24,24", "--jobs", "100000"}) +
               QStringList(QVector<QString>(count, root.file("region.png")).toList());
    };
    const ToolRun few = runTool(root, manyRegions(64));
    ASSERT_EQ(few.status, 0) << few.errors.toStdString();
    EXPECT_EQ(few.lines.size(), 64);
    const long coresKb = 60 * 1024 * QThread::idealThreadCount();
    EXPECT_LT(few.peakKb, 100 * 1024 + coresKb) << "no more workers than cores";
    const ToolRun many = runTool(root, manyRegions(2000));
    ASSERT_EQ(many.status, 0) << many.errors.toStdString();
    EXPECT_EQ(many.lines.size(), 2000);
    EXPECT_LT(many.peakKb - few.peakKb, 2 * 1024) << "printed results are not kept";
}

TEST(HostileInput, ATaskThatGradesNothingOrARunThatFailsIsAnErrorNotAVerdict) {
    TempRoot root;
    writeRegion(root.file("region.png"), 120);
    std::vector<sim::Spot> spots;
    for (int ring = 0; ring < 15; ++ring) {  // 675 spots in zone D: more than a run takes
        for (int k = 0; k < 45; ++k) {
            spots.push_back(sim::spotAtRadius(sim::EndFaceScene(), 70.0 + 3.5 * ring,
                                              8.0 * k + 3.0 * ring, 2.5, 80));
        }
    }
    writeRegion(root.file("dirty.png"), 600, spots);
    expectRefused(root, {"--center", "300,300"},
                  {{root.file("dirty.png"), "not graded: the defect search failed"}}, {});

    ASSERT_TRUE(QDir().mkpath(root.file("etc")));
    const QByteArray numbers = R"({"taskInfo": [{"taskName": "numbers", "taskId": "n1",
        "sections": [{"sectionName": "A", "dCheck": 1, "diameterMin": 0, "diameterMax": 25}]}]})";
    ASSERT_TRUE(writeFile(root.file("etc/taskinfo.conf"), numbers));
    expectRefused(root, {"--center", "60,60"},
                  {{root.file("region.png"), "not graded: the task \"numbers\" grades nothing"}},
                  {});

    ASSERT_TRUE(writeFile(root.file("etc/taskinfo.conf"), "{ not json"));
    const ToolRun run = runTool(root, {"--center", "60,60", root.file("region.png")});
    EXPECT_EQ(run.status, 0) << run.errors.toStdString();
    EXPECT_EQ(run.lines.size(), 1);
    EXPECT_TRUE(run.errors.contains(root.file("etc/taskinfo.conf") +
                                    ": not a task file; inspecting with the factory tasks"))
        << run.errors.toStdString();
}

TEST(HostileInput, ResultFilesAndOverlaysThatCannotBeWrittenAreNamedWithTheirReason) {
    TempRoot root;
    writeRegion(root.file("region.png"), 120);
    ASSERT_TRUE(QDir().mkpath(root.file("mnt/sdcard/sd")));
    ASSERT_TRUE(QDir().mkpath(root.file("overlays")));
    const ReadOnlyFolder card(root.file("mnt/sdcard/sd"));
    const ReadOnlyFolder overlays(root.file("overlays"));
    if (!card.active() || !overlays.active()) {
        GTEST_SKIP() << "cannot make a folder read-only here";
    }
    const ToolRun run = runTool(root, {"--center", "60,60", "--save-type", "1", "--overlay",
                                       root.file("overlays"), root.file("region.png")});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.lines.size(), 1) << "the result is still printed";
    EXPECT_TRUE(run.errors.contains(root.file("region.png") + ": not saved: "))
        << run.errors.toStdString();
    EXPECT_TRUE(run.errors.contains(root.file("region.png") + ": overlay not written: "))
        << run.errors.toStdString();
    EXPECT_EQ(run.errors.count("Read-only file system"), 2) << run.errors.toStdString();
}
