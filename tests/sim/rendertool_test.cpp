// The lumaspecter-render tool, run as a program: what it writes and how it refuses bad
// command lines.

#include <gtest/gtest.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <opencv2/imgcodecs.hpp>

#include "rendertesting.h"
#include "temproot.h"
#include "testfiles.h"

namespace {

struct ToolRun {
    int status;
    QString errors;
};

ToolRun runTool(const QStringList& arguments) {
    QProcess tool;
    tool.start(RENDER_TOOL, arguments);
    if (!tool.waitForFinished(60000) || tool.exitStatus() != QProcess::NormalExit) {
        return {-1, "did not finish"};
    }
    return {tool.exitCode(), QString::fromLocal8Bit(tool.readAllStandardError())};
}

sim::EndFaceScene toolScene() {
    sim::EndFaceScene scene;
    scene.seed = 9;
    scene.centerX = 700.5;
    scene.centerY = 650.25;
    scene.coreDiameterUm = 50.0;
    scene.blurSigmaPx = 1.5;
    scene.noiseSigma = 2.0;
    scene.exposure = 0.9;
    scene.spots.push_back({500.0, 400.0, 5.0, 30.0, true});
    scene.spots.push_back(sim::spotAtRadius(scene, 40.0, 45.0, 3.0, 50.0));
    scene.scratches.push_back({100.0, 100.0, 300.0, 200.0, 1.0, 20.0, false});
    return scene;
}

// The command line of toolScene().
QStringList toolSceneArguments() {
    return QString(
               "--seed 9 --center 700.5,650.25 --core 50 --blur 1.5 --noise 2 --exposure 0.9 "
               "--spot 500,400,5,30,bright --spot-at 40,45,3,50 --scratch 100,100,300,200,1,20")
        .split(' ');
}

}  // namespace

TEST(RenderTool, WritesTheFrameOrARegionAroundAPointWithItsTruth) {
    TempRoot root;
    const QString raw = root.file("frame.raw"), region = root.file("region.png");
    ToolRun run =
        runTool(toolSceneArguments() + QStringList{"--root", root.path(), "--format", "raw", raw});
    ASSERT_EQ(run.status, 0) << run.errors.toStdString();
    const QByteArray bytes = fileContents(raw);
    ASSERT_EQ(bytes.size(), 3840000);
    const RenderedWindow expected(toolScene());
    for (size_t i = 0; i < expected.raw.size(); ++i) {
        const int value = uint8_t(bytes[int(2 * i)]) | uint8_t(bytes[int(2 * i + 1)]) << 8;
        ASSERT_EQ(value, expected.raw[i]) << i;
    }
    QJsonObject truth = QJsonDocument::fromJson(fileContents(raw + ".json")).object();
    EXPECT_DOUBLE_EQ(truth["centerX"].toDouble(), 700.5);
    EXPECT_EQ(truth["spots"].toArray().size(), 2);

    // A 960 x 960 region centered on (650, 600), its truth in the region's coordinates.
    run = runTool(toolSceneArguments() + QStringList{"--region", "650,600", region});
    ASSERT_EQ(run.status, 0) << run.errors.toStdString();
    const cv::Mat picture = cv::imread(region.toStdString(), cv::IMREAD_UNCHANGED);
    ASSERT_EQ(picture.type(), CV_8UC1);
    ASSERT_EQ(picture.size(), cv::Size(960, 960));
    std::vector<uint8_t> gray(960 * 960);
    ASSERT_EQ(sim::renderGray(toolScene(), 170, 120, 960, 960, gray.data()), 1);
    EXPECT_TRUE(std::equal(gray.begin(), gray.end(), picture.data));
    // Its truth gives positions in the region's coordinates and the sizes drawn.
    truth = QJsonDocument::fromJson(fileContents(region + ".json")).object();
    EXPECT_DOUBLE_EQ(truth["centerX"].toDouble(), 700.5 - 170);
    EXPECT_DOUBLE_EQ(truth["centerY"].toDouble(), 650.25 - 120);
    EXPECT_NEAR(truth["claddingRadiusPx"].toDouble(), sim::micronsToPixels(125.0) / 2, 1e-3);
    EXPECT_NEAR(truth["coreRadiusPx"].toDouble(), sim::micronsToPixels(50.0) / 2, 1e-3);
    const QJsonObject spot = truth["spots"].toArray()[0].toObject();
    EXPECT_DOUBLE_EQ(spot["x"].toDouble(), 500.0 - 170);
    EXPECT_DOUBLE_EQ(spot["y"].toDouble(), 400.0 - 120);
    EXPECT_NEAR(spot["radiusPx"].toDouble(), sim::micronsToPixels(5.0) / 2, 1e-3);
    EXPECT_TRUE(spot["bright"].toBool());
    const QJsonObject scratch = truth["scratches"].toArray()[0].toObject();
    EXPECT_DOUBLE_EQ(scratch["x2"].toDouble(), 300.0 - 170);
    EXPECT_DOUBLE_EQ(scratch["y1"].toDouble(), 100.0 - 120);
    EXPECT_NEAR(scratch["widthPx"].toDouble(), sim::micronsToPixels(1.0), 1e-3);
}

TEST(RenderTool, BadCommandLinesExitWithStatusTwoAndSayWhyButHelpIsNoError) {
    TempRoot root;
    const QString out = root.file("x.png");
    const QList<QStringList> bad = {
        {},
        {out, root.file("y.png")},
        {"--bogus", out},
        {"--spot", "1,2,3", out},
        {"--spot", "1,2,3,4,shiny", out},
        {"--scratch", "1,2,3,4,5", out},
        {"--center", "abc,5", out},
        {"--format", "tiff", out},
        {"--blur", "-1", out},
        {"--seed", "1.5", out},
        {"--region", "5", out},
    };
    for (const QStringList& arguments : bad) {
        const ToolRun run = runTool(arguments);
        EXPECT_EQ(run.status, 2) << arguments.join(' ').toStdString();
        EXPECT_TRUE(run.errors.startsWith("lumaspecter-render: ")) << run.errors.toStdString();
    }
    EXPECT_FALSE(QFile::exists(out));
    EXPECT_EQ(runTool({"--help"}).status, 0);
}
