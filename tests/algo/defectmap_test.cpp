#include <gtest/gtest.h>

#include <vector>

#include "defectmap.h"
#include "defectrings.h"
#include "finddefect.h"
#include "testpicture.h"

namespace {

std::vector<int> ringsOf(int dMin, int dMax, std::vector<int> bands) {
    std::vector<int> rings(2 * (bands.size() / 2 + 1), -99);
    const int end =
        defect::GetFiberRegion(dMin, dMax, bands.data(), int(bands.size() / 2), rings.data(), 0);
    rings.resize(2 * end);
    return rings;
}

TaskInfoSetting taskOf(int opticalType, int contactorType, std::vector<int> sensitivities) {
    TaskInfoSetting task{};
    task.opticalType = int16_t(opticalType);
    task.contactorType = int16_t(contactorType);
    task.sectionNum = int16_t(sensitivities.size());
    for (size_t i = 0; i < sensitivities.size(); ++i) {
        task.sections[i].dSensitivity = int16_t(sensitivities[i]);
        task.sections[i].dCheck = 1;
    }
    return task;
}

std::vector<unsigned char> mapOf(const TestPicture& picture, std::vector<int> radii,
                                 std::vector<double> thresholds, int cx, int cy) {
    GetFiberDefectMap map;
    EXPECT_EQ(map.SetRadiusList(radii.data(), thresholds.data(), int(thresholds.size())),
              int(thresholds.size()));
    std::vector<unsigned char> out(picture.pixels.size(), 77);
    map.GetNearBwDefectImgMap(picture.data(), out.data(), picture.width, picture.height, cx, cy);
    return out;
}

TestPicture checkerboard(int size) {
    TestPicture picture(size, size, 0);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            picture.pixels[y * size + x] = (x + y) % 2 ? 200 : 0;
        }
    }
    return picture;
}

}  // namespace

TEST(DefectRings, ExcludedBandsCutTheZones) {
    const std::vector<int> singleMode = {110, 135};
    const std::vector<int> multiMode = {48, 60, 110, 135};
    EXPECT_EQ(ringsOf(0, 25, singleMode), std::vector<int>({0, 25}));
    EXPECT_EQ(ringsOf(30, 120, singleMode), std::vector<int>({30, 110}));
    EXPECT_EQ(ringsOf(120, 130, singleMode), std::vector<int>({120, 110}));
    EXPECT_EQ(ringsOf(130, 250, singleMode), std::vector<int>({135, 250}));
    EXPECT_EQ(ringsOf(0, 115, multiMode), std::vector<int>({0, 48, 60, 110}));
    EXPECT_EQ(ringsOf(0, 250, multiMode), std::vector<int>({0, 48, 60, 110, 135, 250}));
    EXPECT_EQ(ringsOf(0, 110, singleMode), std::vector<int>({0, 110})) << "band starts at the edge";
    EXPECT_EQ(ringsOf(0, 135, singleMode), std::vector<int>({0, 110, 135, 135}));
    EXPECT_EQ(ringsOf(10, 40, {}), std::vector<int>({10, 40}));
}

TEST(DefectRings, ThresholdsFollowTheZonesPositionAndTheTaskKind) {
    const TaskInfoSetting smSf = taskOf(0, 0, {3, 6, 6});
    EXPECT_EQ(zoneDefectThreshold(smSf, 0), 11.0);
    EXPECT_EQ(zoneDefectThreshold(smSf, 1), 16 - 7);
    EXPECT_EQ(zoneDefectThreshold(smSf, 2), 40 - 8);
    const TaskInfoSetting mmSf = taskOf(1, 0, {3, 5});
    EXPECT_EQ(zoneDefectThreshold(mmSf, 0), 21.0);
    EXPECT_EQ(zoneDefectThreshold(mmSf, 1), 16 - 6);
    const TaskInfoSetting mmMf = taskOf(1, 1, {10, 6, 6});
    EXPECT_EQ(zoneDefectThreshold(mmMf, 0), 24 - 10 + 5.0);
    EXPECT_EQ(zoneDefectThreshold(mmMf, 1), 20 - 7);
    EXPECT_EQ(zoneDefectThreshold(mmMf, 2), 40 - 7);
    EXPECT_EQ(zoneDefectThreshold(taskOf(0, 1, {5}), 0), 14 - 5 + 5.0);
}

TEST(DefectRings, DiametersBecomeTruncatedPixelRadii) {
    EXPECT_EQ(ringRadiusPx(25, 0.5122950673103333f), 24);
    EXPECT_EQ(ringRadiusPx(110, 0.5122950673103333f), 107);
    EXPECT_EQ(ringRadiusPx(250, 0.5122950673103333f), 244) << "488.00001 / 2";
}

TEST(DefectMap, OneDarkPixelMarksAPlusShapedGroup) {
    TestPicture picture(64, 64, 100);
    picture.pixels[30 * 64 + 30] = 80;
    const std::vector<unsigned char> map = mapOf(picture, {0, 50}, {9.0}, 32, 32);
    std::vector<std::pair<int, int>> marked;
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            if (map[y * 64 + x] == 255) {
                marked.emplace_back(x, y);
            }
        }
    }
    const std::vector<std::pair<int, int>> plus = {{30, 29}, {29, 30}, {30, 30}, {31, 30},
                                                   {32, 30}, {30, 31}, {30, 32}};
    EXPECT_EQ(marked, plus);

    EXPECT_EQ(mapOf(picture, {0, 50}, {20.0}, 32, 32)[30 * 64 + 30], 0) << "not above 20";
}

TEST(DefectMap, PixelsOnARingRadiusBelongToNoRing) {
    const TestPicture busy = checkerboard(64);
    // A wide second ring that never marks makes the examined square large enough.
    const std::vector<unsigned char> map = mapOf(busy, {3, 10, 20, 40}, {1.0, 999.0}, 30, 30);
    EXPECT_EQ(map[30 * 64 + 40], 0) << "d = 10, the outer radius";
    EXPECT_EQ(map[30 * 64 + 39], 255);
    EXPECT_EQ(map[30 * 64 + 33], 0) << "d = 3, the inner radius";
    EXPECT_EQ(map[31 * 64 + 33], 255);
    EXPECT_EQ(map[30 * 64 + 30], 0) << "inside the inner radius";
}

TEST(DefectMap, TheFirstRingInListOrderDecides) {
    const TestPicture busy = checkerboard(64);
    // Contrast 200 everywhere: a first ring with threshold 250 hides the second's 1.
    const std::vector<unsigned char> map = mapOf(busy, {0, 20, 0, 25}, {250.0, 1.0}, 32, 32);
    EXPECT_EQ(map[32 * 64 + 40], 0);
    EXPECT_EQ(map[32 * 64 + 52], 255) << "on the first ring's outer radius: the second ring";
}

TEST(DefectMap, SmallRingsAndTheImageBorderAreNotExamined) {
    const TestPicture busy = checkerboard(64);
    EXPECT_EQ(mapOf(busy, {0, 4}, {1.0}, 32, 32), std::vector<unsigned char>(64 * 64, 0));
    // Only the square of half-side R - 4 is examined: the ring's outer 4 pixels on the axes
    // are not.
    const std::vector<unsigned char> square = mapOf(busy, {0, 20}, {1.0}, 32, 32);
    EXPECT_EQ(square[32 * 64 + 47], 255);
    EXPECT_EQ(square[32 * 64 + 48], 0);
    const std::vector<unsigned char> map = mapOf(busy, {0, 200}, {1.0}, 32, 32);
    EXPECT_EQ(map[3 * 64 + 20], 0);
    EXPECT_EQ(map[4 * 64 + 20], 255);
    EXPECT_EQ(map[60 * 64 + 20], 255);
    EXPECT_EQ(map[61 * 64 + 20], 0);
    EXPECT_EQ(map[20 * 64 + 60], 255);
    EXPECT_EQ(map[20 * 64 + 61], 0);
}

TEST(DefectMap, MoreThanTenRingsAreRefused) {
    GetFiberDefectMap map;
    const std::vector<int> radii(22, 5);
    const std::vector<double> thresholds(11, 1.0);
    EXPECT_EQ(map.SetRadiusList(radii.data(), thresholds.data(), 11), -1);
    EXPECT_EQ(map.SetRadiusList(radii.data(), thresholds.data(), 10), 10);
}
