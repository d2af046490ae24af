#include "defectfilter.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// With a scale of 1 um per pixel the box sides are the micrometres themselves.
constexpr float kUnitScale = 1.0f;

defect_info_struct box(int w, int h, int zone = 0) {
    return {10, int16_t(10 + h), 10, int16_t(10 + w), int16_t(zone), -1};
}

TaskInfoSetting oneZone(int limit1, int limit2) {
    TaskInfoSetting task{};
    task.sectionNum = 1;
    task.sections[0].dLimit1 = int16_t(limit1);
    task.sections[0].dLimit2 = int16_t(limit2);
    task.sections[0].dNoBiggerLimit = task.sections[0].dMidLimit = task.sections[0].dBiggerLimit =
        -1;
    return task;
}

int classOf(defect_info_struct defect, int limit1, int limit2) {
    TaskInfoSetting task = oneZone(limit1, limit2);
    DefecetFilter(&defect, 1, task, kUnitScale);
    return defect.sizeClass;
}

}  // namespace

TEST(DefectGrading, ClassBoundariesBelongToTheUpperClassExceptTheLast) {
    // A 4 x 2 box: q = 0.8 (16 + 4) = 16 = 4^2.
    EXPECT_EQ(classOf(box(4, 1), 4, 5), 0) << "q = 13.6, below 16";
    EXPECT_EQ(classOf(box(4, 2), 4, 5), 1) << "q equal to L1^2 goes up";
    EXPECT_EQ(classOf(box(4, 2), 4, 4), 2) << "without a middle class it is large";
    EXPECT_EQ(classOf(box(4, 2), 3, 4), 1) << "q equal to L2^2 is still middle";
    EXPECT_EQ(classOf(box(4, 3), 3, 4), 2);
    EXPECT_EQ(classOf(box(0, 0), 0, 0), 2) << "limits of 0: everything is large";
}

TEST(DefectGrading, CountsAndAreaGoToTheDefectsZone) {
    TaskInfoSetting task = oneZone(2, 5);
    task.sectionNum = 2;
    task.sections[1] = task.sections[0];
    // At 0.5 um a pixel: q = 0.4 (small), 10 (middle), 32.4 (large) against 4 and 25.
    std::vector<defect_info_struct> defects = {box(1, 1, 1), box(5, 5, 1), box(9, 9, 1),
                                               box(5, 5, 0), box(5, 5, kNoZone)};
    DefecetFilter(defects.data(), int(defects.size()), task, 0.5f);
    const TaskZoneResult& zone1 = task.zoneResults[1];
    EXPECT_EQ((std::vector<int>{zone1.dNoBiggerNum, zone1.dMidNum, zone1.dBiggerNum}),
              (std::vector<int>{1, 1, 1}));
    EXPECT_DOUBLE_EQ(zone1.dArea, 0.8 * (0.25 + 6.25 + 20.25));
    EXPECT_EQ(task.zoneResults[0].dMidNum, 1);
    EXPECT_EQ(defects[4].sizeClass, -1) << "outside every zone: not graded";
}
