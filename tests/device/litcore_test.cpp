// The fiber search where the middle of the fiber holds a strong small structure of its own: a
// core lit from the cable's far end, a scratch through the center.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

#include "endfacerenderer.h"
#include "singlefibersearch.h"

namespace {

struct Frame {
    sim::EndFaceScene scene;
    std::vector<uint16_t> raw = std::vector<uint16_t>(size_t(kSensorPixels));
    std::vector<unsigned char> gray = std::vector<unsigned char>(size_t(kSensorPixels));

    void render() { sim::renderRaw(scene, 0, 0, kSensorWidth, kSensorHeight, raw.data()); }
    // (x, y) within `tolerance` px of the fiber's center on both axes.
    bool near(unsigned x, unsigned y, double tolerance) const {
        return std::abs(x - scene.centerX) <= tolerance && std::abs(y - scene.centerY) <= tolerance;
    }
};

// Every fourth fiber lies in the frame's 160 px margin, where the refinement cannot run.
void placeFiber(std::mt19937& random, int i, sim::EndFaceScene& scene) {
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const double fromEdge = 125.0 + 20.0 * unit(random);
    scene.centerX = 200.0 + unit(random) * (kSensorWidth - 400.0);
    scene.centerY = 200.0 + unit(random) * (kSensorHeight - 400.0);
    if (i % 8 == 3) {
        scene.centerX = random() % 2 ? fromEdge : kSensorWidth - fromEdge;
    } else if (i % 8 == 7) {
        scene.centerY = random() % 2 ? fromEdge : kSensorHeight - fromEdge;
    }
    scene.blurSigmaPx = 0.5 + 2.0 * unit(random);
    scene.noiseSigma = 0.5 + 2.5 * unit(random);
    scene.seed = random();
}

sim::Scratch scratchThroughCenter(std::mt19937& random, const sim::EndFaceScene& scene) {
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const double a = M_PI * unit(random);
    sim::Scratch s;
    s.x1 = scene.centerX - 200.0 * std::cos(a);
    s.y1 = scene.centerY - 200.0 * std::sin(a);
    s.x2 = scene.centerX + 200.0 * std::cos(a);
    s.y2 = scene.centerY + 200.0 * std::sin(a);
    s.widthUm = 2.0 + 6.0 * unit(random);
    s.contrast = 20.0 + 40.0 * unit(random);
    s.bright = random() % 2 == 0;
    return s;
}

// The coarse center as OpenCV's transform gave it, at quarter and then half scale.
bool openCvCoarseCenter(const unsigned char* gray, unsigned& x, unsigned& y) {
    const cv::Mat frame(kSensorHeight, kSensorWidth, CV_8UC1, const_cast<unsigned char*>(gray));
    for (double scale : {0.25, 0.5}) {
        cv::Mat small;
        cv::resize(frame, small, cv::Size(), scale, scale, cv::INTER_LINEAR);
        cv::GaussianBlur(small, small, cv::Size(5, 5), 0.0);
        std::vector<cv::Vec3f> circles;
        cv::HoughCircles(small, circles, cv::HOUGH_GRADIENT, 1.0, kSensorWidth * scale, 50.0, 25.0,
                         0, 0);
        if (!circles.empty()) {
            x = unsigned(circles[0][0] / scale), y = unsigned(circles[0][1] / scale);
            return true;
        }
    }
    return false;
}

}  // namespace

TEST(LitCore, TheFiberIsFoundAroundALitCoreOrAScratchThroughItsCenter) {
    std::mt19937 random(14);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    Frame f;
    for (int i = 0; i < 100; ++i) {
        f.scene = sim::EndFaceScene();
        placeFiber(random, i, f.scene);
        f.scene.coreDiameterUm = std::array<double, 3>{9.0, 50.0, 62.5}[i % 3];
        f.scene.coreLevel = 160.0 + 90.0 * unit(random);
        if (i % 2 == 0) {
            f.scene.scratches.push_back(scratchThroughCenter(random, f.scene));
        }
        f.render();
        SCOPED_TRACE(testing::Message() << "frame " << i << ", core " << f.scene.coreDiameterUm);
        unsigned x, y, coarseX, coarseY, refinedX, refinedY;
        ASSERT_EQ(searchSingleFiber(f.raw.data(), kSensorWidth, kSensorHeight, f.gray.data(), x, y,
                                    coarseX, coarseY, 960, 960, false),
                  1);
        EXPECT_TRUE(f.near(coarseX, coarseY, 1.5)) << coarseX << "," << coarseY;
        searchSingleFiber(f.raw.data(), kSensorWidth, kSensorHeight, f.gray.data(), x, y, refinedX,
                          refinedY, 960, 960, true);
        // The refinement's sweeps stop where the pixels at the center and 8 px from it are both
        // outside the dark fiber: inside a lit 9 um core (8.8 px across its radius) they often
        // are, and the edge fitted from the sweeps that ran can lie 12 px off.
        if (f.scene.coreDiameterUm > 9.0) {
            EXPECT_TRUE(f.near(refinedX, refinedY, 1.5)) << refinedX << "," << refinedY;
        }
    }
}

TEST(LitCore, WhereOpenCvFoundTheFiberTheRefinedCenterStaysWithinAPixel) {
    std::mt19937 random(15);
    Frame f;
    for (int i = 0; i < 40; ++i) {
        f.scene = sim::EndFaceScene();
        placeFiber(random, i * 4, f.scene);  // never in the margin
        f.scene.coreDiameterUm = i % 3 == 0 ? 50.0 : 9.0;
        f.render();
        unsigned x, y, rawX, rawY, todayX, todayY;
        ASSERT_EQ(searchSingleFiber(f.raw.data(), kSensorWidth, kSensorHeight, f.gray.data(), x, y,
                                    rawX, rawY, 960, 960, true),
                  1);
        ASSERT_TRUE(openCvCoarseCenter(f.gray.data(), todayX, todayY)) << "frame " << i;
        refineSingleFiber(f.raw.data(), kSensorWidth, kSensorHeight, f.gray.data(), todayX, todayY);
        EXPECT_NEAR(rawX, todayX, 1.0) << "frame " << i;
        EXPECT_NEAR(rawY, todayY, 1.0) << "frame " << i;
    }
}
