// The rendered end face against real microscope pictures (when they are beside the project):
// the same measurements on both must land in the same range.

#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <vector>

#include "endfacerenderer.h"
#include "realsamples.h"

namespace {

struct Look {
    int ferrule;   // most frequent level: the ferrule covers most of the middle
    int cladding;  // most frequent level well below it
    double grain;  // typical spread of the ferrule's detail finer than about 8 px
};

int mostFrequentLevel(const std::vector<int>& histogram, int below) {
    return int(std::max_element(histogram.begin(), histogram.begin() + below) - histogram.begin());
}

// Median over clean 64 px blocks of the ferrule of the spread of (picture - blurred picture).
double ferruleGrain(const cv::Mat& middle, int ferrule) {
    cv::Mat picture, smooth;
    middle.convertTo(picture, CV_32F);
    cv::GaussianBlur(picture, smooth, cv::Size(), 8.0);
    const cv::Mat detail = picture - smooth;
    std::vector<double> spreads;
    for (int y = 0; y + 64 <= middle.rows; y += 64) {
        for (int x = 0; x + 64 <= middle.cols; x += 64) {
            const cv::Rect block(x, y, 64, 64);
            cv::Scalar mean, spread;
            cv::meanStdDev(picture(block), mean, spread);
            if (std::abs(mean[0] - ferrule) < 4.0 && spread[0] < 6.0) {
                cv::meanStdDev(detail(block), mean, spread);
                spreads.push_back(spread[0]);
            }
        }
    }
    std::nth_element(spreads.begin(), spreads.begin() + spreads.size() / 2, spreads.end());
    return spreads.empty() ? 0.0 : spreads[spreads.size() / 2];
}

// Measured on the middle of the frame, where the real pictures are real (their borders are
// made up) and the fiber lies.
Look lookOf(const cv::Mat& gray) {
    const cv::Mat middle = gray(cv::Rect(400, 250, 800, 700));
    std::vector<int> histogram(256, 0);
    for (int y = 0; y < middle.rows; ++y) {
        for (int x = 0; x < middle.cols; ++x) {
            ++histogram[middle.at<uint8_t>(y, x)];
        }
    }
    const int ferrule = mostFrequentLevel(histogram, 256);
    const int cladding = mostFrequentLevel(histogram, ferrule * 3 / 4);
    return {ferrule, cladding, ferruleGrain(middle, ferrule)};
}

}  // namespace

TEST(RealPictures, RenderedFramesLookLikeRealOnes) {
    const QStringList pictures = realSamplePictures();
    if (pictures.isEmpty()) {
        GTEST_SKIP() << "no real end-face pictures in " << realSamplesDir().toStdString();
    }
    std::vector<Look> real;
    for (const QString& path : pictures) {
        const cv::Mat gray = cv::imread(path.toStdString(), cv::IMREAD_GRAYSCALE);
        ASSERT_EQ(gray.size(), cv::Size(kSensorWidth, kSensorHeight));
        real.push_back(lookOf(gray));
    }
    const auto lowest = [&](auto field) {
        return std::min_element(real.begin(), real.end(),
                                [&](const Look& a, const Look& b) { return field(a) < field(b); });
    };
    const auto highest = [&](auto field) {
        return std::max_element(real.begin(), real.end(),
                                [&](const Look& a, const Look& b) { return field(a) < field(b); });
    };

    for (uint32_t seed : {1u, 2u, 3u}) {
        sim::EndFaceScene scene;
        scene.seed = seed;
        cv::Mat rendered(kSensorHeight, kSensorWidth, CV_8UC1);
        ASSERT_EQ(sim::renderGray(scene, 0, 0, kSensorWidth, kSensorHeight, rendered.data), 1);
        const Look look = lookOf(rendered);
        const auto ferrule = [](const Look& l) { return l.ferrule; };
        const auto cladding = [](const Look& l) { return l.cladding; };
        const auto grain = [](const Look& l) { return l.grain; };
        EXPECT_GE(look.ferrule, lowest(ferrule)->ferrule - 5);
        EXPECT_LE(look.ferrule, highest(ferrule)->ferrule + 5);
        EXPECT_GE(look.cladding, lowest(cladding)->cladding - 5);
        EXPECT_LE(look.cladding, highest(cladding)->cladding + 5);
        EXPECT_GE(look.grain, 0.7 * lowest(grain)->grain);
        EXPECT_LE(look.grain, 1.5 * highest(grain)->grain);
    }
}
