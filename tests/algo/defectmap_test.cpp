#include <gtest/gtest.h>

#include <array>
#include <string>
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

std::vector<unsigned char> mapOf(const TestPicture& picture, std::vector<int> radii,
                                 std::vector<double> thresholds, int cx, int cy) {
    GetFiberDefectMap map;
    EXPECT_EQ(map.SetRadiusList(radii.data(), thresholds.data(), int(thresholds.size())),
              int(thresholds.size()));
    std::vector<unsigned char> out(picture.pixels.size(), 77);
    map.GetNearBwDefectImgMap(picture.data(), out.data(), picture.width, picture.height, cx, cy);
    return out;
}

// The probes (x, y, expected mark) the map gets wrong.
std::string wrongMarks(const std::vector<unsigned char>& map,
                       std::initializer_list<std::array<int, 3>> probes) {
    std::string wrong;
    for (const auto& p : probes) {
        if (map[p[1] * 64 + p[0]] != p[2]) {
            wrong += "(" + std::to_string(p[0]) + "," + std::to_string(p[1]) + ") ";
        }
    }
    return wrong;
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

TEST(DefectRings, DiametersBecomeTruncatedPixelRadii) {
    EXPECT_EQ(ringRadiusPx(25, float(kUmPerPixel)), 24);
    EXPECT_EQ(ringRadiusPx(110, float(kUmPerPixel)), 107);
    EXPECT_EQ(ringRadiusPx(250, float(kUmPerPixel)), 244) << "488.00001 / 2";
}

TEST(DefectMap, OneDarkPixelMarksAPlusShapedGroup) {
    TestPicture picture(64, 64, 100);
    picture.pixels[30 * 64 + 30] = 80;
    const std::vector<unsigned char> map = mapOf(picture, {0, 50}, {9.0}, 32, 32);
    std::vector<unsigned char> plus(64 * 64, 0);
    for (const auto& p :
         {std::pair{30, 29}, {29, 30}, {30, 30}, {31, 30}, {32, 30}, {30, 31}, {30, 32}}) {
        plus[p.second * 64 + p.first] = 255;
    }
    EXPECT_EQ(map, plus);
    EXPECT_EQ(mapOf(picture, {0, 50}, {20.0}, 32, 32)[30 * 64 + 30], 0) << "not above 20";
}

TEST(DefectMap, TheFirstRingHoldingAPixelDecidesWithinTheExaminedSquare) {
    const TestPicture busy = checkerboard(64);  // contrast 200 everywhere
    EXPECT_EQ(mapOf(busy, {0, 4}, {1.0}, 32, 32), std::vector<unsigned char>(64 * 64, 0))
        << "rings of radius 4 or less are not examined";
    // Pixels on a ring radius (d = 10 and d = 3) belong to no ring. A wide second ring that
    // never marks makes the examined square large enough.
    EXPECT_EQ(wrongMarks(mapOf(busy, {3, 10, 20, 40}, {1.0, 999.0}, 30, 30),
                         {{40, 30, 0}, {39, 30, 255}, {33, 30, 0}, {33, 31, 255}, {30, 30, 0}}),
              "");
    // The first ring in list order decides: its threshold 250 hides the second's 1, up to its
    // outer radius.
    EXPECT_EQ(
        wrongMarks(mapOf(busy, {0, 20, 0, 25}, {250.0, 1.0}, 32, 32), {{40, 32, 0}, {52, 32, 255}}),
        "");
    // Only the square of half-side R - 4 is examined, and not the image's border.
    EXPECT_EQ(wrongMarks(mapOf(busy, {0, 20}, {1.0}, 32, 32), {{47, 32, 255}, {48, 32, 0}}), "");
    EXPECT_EQ(
        wrongMarks(
            mapOf(busy, {0, 200}, {1.0}, 32, 32),
            {{20, 3, 0}, {20, 4, 255}, {20, 60, 255}, {20, 61, 0}, {60, 20, 255}, {61, 20, 0}}),
        "");
}

TEST(DefectMap, MoreThanTenRingsAreRefused) {
    GetFiberDefectMap map;
    const std::vector<int> radii(22, 5);
    const std::vector<double> thresholds(11, 1.0);
    EXPECT_EQ(map.SetRadiusList(radii.data(), thresholds.data(), 11), -1);
    EXPECT_EQ(map.SetRadiusList(radii.data(), thresholds.data(), 10), 10);
}
