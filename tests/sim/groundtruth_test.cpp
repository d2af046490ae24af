// The scene's ground truth as JSON, and placing spots by their distance from the fiber.

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

#include "endfacerenderer.h"

namespace {

sim::EndFaceScene sceneWithDefects() {
    sim::EndFaceScene scene;
    scene.centerX = 811.25;
    scene.centerY = 587.5;
    scene.coreDiameterUm = 50.0;
    scene.blurSigmaPx = 1.5;
    scene.seed = 4000000000u;
    scene.spots.push_back({700.5, 500.25, 3.0, 40.0, false});
    scene.spots.push_back({900.0, 650.0, 10.0, 25.0, true});
    scene.scratches.push_back({600.0, 400.0, 1000.0, 420.0, 1.5, 18.0, true});
    return scene;
}

QJsonObject parsed(const std::string& json) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(json), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    EXPECT_TRUE(document.isObject());
    return document.object();
}

}  // namespace

// Read from the whole frame and from a region: positions are in the region's own coordinates,
// sizes stay.
TEST(GroundTruth, TellsTheFiberTheCameraAndEveryDefectInPixelsAndMicrometres) {
    for (const auto& origin : {std::make_pair(0, 0), std::make_pair(331, 107)}) {
        SCOPED_TRACE(testing::Message() << "from " << origin.first << "," << origin.second);
        const int ox = origin.first, oy = origin.second;
        const QJsonObject truth = parsed(sim::groundTruthJson(sceneWithDefects(), ox, oy));
        EXPECT_DOUBLE_EQ(truth["centerX"].toDouble(), 811.25 - ox);
        EXPECT_DOUBLE_EQ(truth["centerY"].toDouble(), 587.5 - oy);
        EXPECT_DOUBLE_EQ(truth["claddingDiameterUm"].toDouble(), 125.0);
        EXPECT_DOUBLE_EQ(truth["coreDiameterUm"].toDouble(), 50.0);
        EXPECT_NEAR(truth["claddingRadiusPx"].toDouble(), 122.0, 0.05);
        EXPECT_NEAR(truth["coreRadiusPx"].toDouble(), 48.8, 0.05);
        EXPECT_DOUBLE_EQ(truth["umPerPixel"].toDouble(), kUmPerPixel);
        EXPECT_DOUBLE_EQ(truth["blurSigmaPx"].toDouble(), 1.5);
        EXPECT_DOUBLE_EQ(truth["noiseSigma"].toDouble(), 1.0);
        EXPECT_DOUBLE_EQ(truth["exposure"].toDouble(), 1.0);
        EXPECT_DOUBLE_EQ(truth["ferruleLevel"].toDouble(), sim::kDefaultFerruleLevel);
        EXPECT_EQ(truth["seed"].toVariant().toLongLong(), 4000000000LL);

        const QJsonArray spots = truth["spots"].toArray();
        ASSERT_EQ(spots.size(), 2);
        const QJsonObject dark = spots[0].toObject(), bright = spots[1].toObject();
        EXPECT_DOUBLE_EQ(dark["x"].toDouble(), 700.5 - ox);
        EXPECT_DOUBLE_EQ(dark["y"].toDouble(), 500.25 - oy);
        EXPECT_DOUBLE_EQ(dark["diameterUm"].toDouble(), 3.0);
        EXPECT_NEAR(dark["radiusPx"].toDouble(), 2.928, 0.001);
        EXPECT_DOUBLE_EQ(dark["contrast"].toDouble(), 40.0);
        EXPECT_FALSE(dark["bright"].toBool());
        EXPECT_TRUE(bright["bright"].toBool());

        const QJsonArray scratches = truth["scratches"].toArray();
        ASSERT_EQ(scratches.size(), 1);
        const QJsonObject scratch = scratches[0].toObject();
        EXPECT_DOUBLE_EQ(scratch["x1"].toDouble(), 600.0 - ox);
        EXPECT_DOUBLE_EQ(scratch["y1"].toDouble(), 400.0 - oy);
        EXPECT_DOUBLE_EQ(scratch["y2"].toDouble(), 420.0 - oy);
        EXPECT_NEAR(scratch["widthPx"].toDouble(), 2.928, 0.001);
        EXPECT_DOUBLE_EQ(scratch["widthUm"].toDouble(), 1.5);
        EXPECT_TRUE(scratch["bright"].toBool());
    }
}

TEST(SpotAtRadius, PlacesTheSpotAtItsDistanceAndDirectionFromTheFiber) {
    sim::EndFaceScene scene;
    scene.centerX = 700.0;
    scene.centerY = 500.0;
    const sim::Spot right = sim::spotAtRadius(scene, 30.0, 0.0, 4.0, 22.0, true);
    EXPECT_NEAR(right.x, 700.0 + 30.0 / kUmPerPixel, 1e-9);
    EXPECT_NEAR(right.y, 500.0, 1e-9);
    EXPECT_DOUBLE_EQ(right.diameterUm, 4.0);
    EXPECT_DOUBLE_EQ(right.contrast, 22.0);
    EXPECT_TRUE(right.bright);

    const sim::Spot up = sim::spotAtRadius(scene, 10.0, 90.0, 4.0, 22.0);
    EXPECT_NEAR(up.x, 700.0, 1e-9);
    EXPECT_NEAR(up.y, 500.0 - 10.0 / kUmPerPixel, 1e-9);  // y grows downward
    EXPECT_FALSE(up.bright);

    const sim::Spot slanted = sim::spotAtRadius(scene, 50.0, 225.0, 4.0, 22.0);
    EXPECT_NEAR(std::hypot(slanted.x - 700.0, slanted.y - 500.0) * kUmPerPixel, 50.0, 1e-9);
    EXPECT_LT(slanted.x, 700.0);
    EXPECT_GT(slanted.y, 500.0);
}
