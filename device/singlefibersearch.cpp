#include "singlefibersearch.h"

#include <opencv2/imgproc.hpp>

#include "fibercenter.h"
#include "houghcircles.h"
#include "instrumentoptics.h"
#include "libcapture.h"

namespace {

// The refinement works on a crop of this size around the coarse center, and only when the
// whole crop lies inside the frame.
constexpr unsigned kRefineCrop = 320;
constexpr unsigned kRefineMargin = kRefineCrop / 2;

// Circles the coarse search asks for; only the first is used, the count says whether any was
// found.
constexpr int kMaxCircles = 8;

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

    // The minimum distance between centers is the scaled width, so one circle survives.
    HoughCircle circles[kMaxCircles];
    const int found =
        houghCirclesGradient(small.data, scaledWidth, scaledHeight, width * scale, 50.0, 25.0,
                             static_cast<int>(minDiameter * scale * 0.5),
                             static_cast<int>(maxDiameter * scale * 0.5), circles, kMaxCircles);
    if (found <= 0) {
        x = width / 2;
        y = height / 2;
        return 0;
    }
    // The transform lists the best-supported circle first.
    x = static_cast<unsigned>(circles[0].x / scale);
    y = static_cast<unsigned>(circles[0].y / scale);
    return found;
}

void refineSingleFiber(const uint16_t* frame10, unsigned width, unsigned height,
                       unsigned char* gray, unsigned& x, unsigned& y) {
    if (!insideRefineMargin(x, y, width, height)) {
        return;
    }
    convert_y10bit_to_y8bit(frame10, gray, width, height, x - kRefineMargin, y - kRefineMargin,
                            kRefineCrop, kRefineCrop);
    int cx = kRefineMargin, cy = kRefineMargin, r = kCladdingRadiusPx;
    // Whatever center the refinement leaves is used: the fitted one, the blob's, or the crop's
    // own center when it found nothing, which keeps the coarse center.
    AlgGetFiberCenterXY(gray, kRefineCrop, kRefineCrop, kCladdingRadiusPx, cx, cy, r);
    x += cx - static_cast<int>(kRefineMargin);
    y += cy - static_cast<int>(kRefineMargin);
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

    if (refine) {
        refineSingleFiber(frame10, width, height, gray, x, y);
        rawX = x;
        rawY = y;
    }

    x = clampToWindow(x, width, windowWidth);
    y = clampToWindow(y, height, windowHeight);
    return 1;
}
