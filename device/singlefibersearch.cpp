#include "singlefibersearch.h"

#include <opencv2/imgproc.hpp>
#include <vector>

#include "fibercenter.h"
#include "instrumentoptics.h"
#include "libcapture.h"

namespace {

// The refinement works on a crop of this size around the coarse center, and only when the
// whole crop lies inside the frame.
constexpr unsigned kRefineCrop = 320;
constexpr unsigned kRefineMargin = kRefineCrop / 2;

// Keeps a window of `window` pixels around `center` inside a frame of `size` pixels.
unsigned clampToWindow(unsigned center, unsigned size, unsigned window) {
    const unsigned half = window / 2;
    if (center <= half) {
        return half;
    }
    if (center >= size - half) {
        return size - half - 1;
    }
    return center;
}

bool insideRefineMargin(unsigned x, unsigned y, unsigned width, unsigned height) {
    return x > kRefineMargin && x < width - kRefineMargin && y > kRefineMargin &&
           y < height - kRefineMargin;
}

}  // namespace

int cvSearchSingleFiber(const unsigned char* image8, unsigned width, unsigned height, double scale,
                        unsigned minDiameter, unsigned maxDiameter, unsigned& x, unsigned& y) {
    const int scaledWidth = static_cast<int>(width * scale);
    const int scaledHeight = static_cast<int>(height * scale);
    const cv::Mat frame(static_cast<int>(height), static_cast<int>(width), CV_8UC1,
                        const_cast<unsigned char*>(image8));
    cv::Mat small;
    cv::resize(frame, small, cv::Size(scaledWidth, scaledHeight), 0.0, 0.0, cv::INTER_LINEAR);
    cv::GaussianBlur(small, small, cv::Size(5, 5), 0.0);

    std::vector<cv::Vec3f> circles;
    // The minimum distance between centers is the scaled width, so one circle survives.
    cv::HoughCircles(small, circles, cv::HOUGH_GRADIENT, 1.0, width * scale, 50.0, 25.0,
                     static_cast<int>(minDiameter * scale * 0.5),
                     static_cast<int>(maxDiameter * scale * 0.5));
    if (circles.empty()) {
        x = width / 2;
        y = height / 2;
        return 0;
    }
    // The transform lists the best-supported circle first.
    x = static_cast<unsigned>(circles[0][0] / scale);
    y = static_cast<unsigned>(circles[0][1] / scale);
    return static_cast<int>(circles.size());
}

int searchSingleFiber(const uint16_t* frame10, unsigned width, unsigned height, unsigned char* gray,
                      unsigned& x, unsigned& y, unsigned& rawX, unsigned& rawY,
                      unsigned windowWidth, unsigned windowHeight, bool refine) {
    convert_y10bit_to_y8bit(frame10, gray, width, height, 0, 0, width, height);

    // A quarter-size picture keeps the transform cheap; half size is the second chance.
    int found = cvSearchSingleFiber(gray, width, height, 0.25, 0, 0, x, y);
    rawX = x;
    rawY = y;
    if (found == 0) {
        found = cvSearchSingleFiber(gray, width, height, 0.5, 0, 0, x, y);
        rawX = x;
        rawY = y;
        if (found == 0) {
            return 0;
        }
    }

    if (refine && insideRefineMargin(x, y, width, height)) {
        convert_y10bit_to_y8bit(frame10, gray, width, height, x - kRefineMargin, y - kRefineMargin,
                                kRefineCrop, kRefineCrop);
        int cx = kRefineMargin, cy = kRefineMargin, r = kCladdingRadiusPx;
        // Whatever center the refinement leaves is used: the fitted one, the blob's, or the
        // crop's own center when it found nothing, which keeps the coarse center.
        AlgGetFiberCenterXY(gray, kRefineCrop, kRefineCrop, kCladdingRadiusPx, cx, cy, r);
        x += cx - static_cast<int>(kRefineMargin);
        y += cy - static_cast<int>(kRefineMargin);
        rawX = x;
        rawY = y;
    }

    x = clampToWindow(x, width, windowWidth);
    y = clampToWindow(y, height, windowHeight);
    return 1;
}
