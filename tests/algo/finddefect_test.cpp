#include "finddefect.h"

#include <gtest/gtest.h>

#include <vector>

#include "sectionmap.h"
#include "testpicture.h"

namespace {

constexpr int kSize = 200;
constexpr int kCenter = 100;
constexpr float kScale = kUmPerPixel;
const std::vector<int> kSingleModeBands = {110, 135};

// One zone 0-100 um (radius 97 px) with defect checking on, counting defects without limit.
TaskInfoSetting wideZoneTask(int zones = 1) {
    TaskInfoSetting task{};
    task.sectionNum = int16_t(zones);
    for (int i = 0; i < zones; ++i) {
        TaskZoneSetting& zone = task.sections[i];
        zone.dCheck = 1;
        zone.diameterMax = 100;
        zone.dSensitivity = 5;
        zone.dLimit1 = 3;
        zone.dLimit2 = 10;
        zone.dNoBiggerLimit = zone.dMidLimit = zone.dBiggerLimit = -1;
    }
    return task;
}

struct Detection {
    TestPicture picture = TestPicture(kSize, kSize, 150);
    std::vector<unsigned char> mask;
    std::vector<unsigned char> map = std::vector<unsigned char>(kSize * kSize);
    std::vector<unsigned char> map2 = std::vector<unsigned char>(kSize * kSize);
    std::vector<unsigned char> zones = std::vector<unsigned char>(kSize * kSize);
    std::vector<short> labels = std::vector<short>(kSize * kSize, -1);
    std::vector<defect_info_struct> defects = std::vector<defect_info_struct>(1000);
    TaskInfoSetting task = wideZoneTask();
    std::vector<int> bands = kSingleModeBands;

    int run(int maxDefects = 500) {
        initSectionMapByTaskInfoSF(task, zones.data(), kSize, kSize, kCenter, kCenter, kScale);
        return AlgGetFiberDefect(picture.data(), mask.empty() ? nullptr : mask.data(), map.data(),
                                 map2.data(), zones.data(), task, kSize, kSize, kCenter, kCenter,
                                 kScale, bands.data(), int(bands.size() / 2), defects.data(),
                                 labels.data(), maxDefects);
    }
};

}  // namespace

TEST(FindDefect, AMaskOf255HidesADefectAndOf254DoesNot) {
    for (unsigned char maskValue : {254, 255}) {
        Detection d;
        d.picture.rectangle(120, 90, 6, 6, 90);
        d.mask.assign(kSize * kSize, 0);
        for (int y = 80; y < 105; ++y) {
            for (int x = 110; x < 135; ++x) {
                d.mask[y * kSize + x] = maskValue;
            }
        }
        EXPECT_EQ(d.run(), maskValue == 255 ? 0 : 1) << int(maskValue);
    }
}

TEST(FindDefect, CleanImagesAndZonesWithoutDefectCheckingGiveNothing) {
    Detection uniform;
    EXPECT_EQ(uniform.run(), 0);

    Detection unchecked;
    unchecked.picture.rectangle(120, 90, 6, 6, 90);
    unchecked.task.sections[0].dCheck = 0;
    EXPECT_EQ(unchecked.run(), 0);
    EXPECT_EQ(unchecked.task.zoneResults[0].dNoBiggerResult, 1);
}

TEST(FindDefect, MoreDefectsThanTheCallerTakesIsAFailure) {
    Detection d;
    // The grid stays off the center: a spot there, as wide as high, would pass for the
    // fiber's own edge ring.
    for (int y = 42; y < 160; y += 12) {
        for (int x = 42; x < 160; x += 12) {
            d.picture.rectangle(x, y, 4, 4, 60);
        }
    }
    const int all = Detection(d).run(1000);
    ASSERT_EQ(all, 100);
    EXPECT_EQ(d.run(all), all);
    EXPECT_EQ(d.run(all - 1), -1);
}

TEST(FindDefect, ATaskThatWouldNeedMoreThanTenRingsIsRefused) {
    Detection d;
    d.task = wideZoneTask(6);
    for (int i = 0; i < 6; ++i) {
        d.task.sections[i].diameterMax = 250;  // each cut into three rings by two bands
    }
    d.bands = {48, 60, 110, 135};
    EXPECT_EQ(d.run(), -1);
    d.bands = kSingleModeBands;  // two rings each: twelve
    EXPECT_EQ(d.run(), -1);
    d.task.sectionNum = 5;  // ten
    EXPECT_EQ(d.run(), 0);
}

// Without blur the contrast stencil sees a spot's whole step, so a spot is a defect exactly when
// its contrast exceeds its zone's threshold, which depends on the zone's place (the first, the
// second, further out), the fiber kind and the zone's sensitivity. Zones 0-30, 30-60, 60-90 um.
TEST(FindDefect, ASpotIsADefectExactlyWhenItsContrastExceedsItsZonesThreshold) {
    const struct {
        int16_t opticalType;
        int zone;
        int16_t sensitivity;
        int threshold;
    } cases[] = {{0, 0, 3, 11}, {1, 0, 3, 21}, {0, 1, 6, 9}, {0, 2, 6, 32}};
    for (const auto& c : cases) {
        for (int contrast : {c.threshold, c.threshold + 1}) {
            Detection d;
            d.task = wideZoneTask(3);
            d.task.opticalType = c.opticalType;
            for (int z = 0; z < 3; ++z) {
                d.task.sections[z].diameterMin = int16_t(30 * z);
                d.task.sections[z].diameterMax = int16_t(30 * z + 30);
                d.task.sections[z].dSensitivity = c.sensitivity;
            }
            d.picture.rectangle(110 + 30 * c.zone, 97, 6, 6, uint8_t(150 - contrast));
            EXPECT_EQ(d.run(), contrast > c.threshold ? 1 : 0)
                << "zone " << c.zone << " of fiber kind " << c.opticalType << ", contrast "
                << contrast;
        }
    }
}
