// lsd_agreement: our line segment detector against OpenCV's implementation of the same
// published method, as an independent yardstick. It prints how well the two agree on rendered
// 960 x 960 measurement regions with scratches, spots and the end face's texture; there is no
// pass or fail, the figures are to be read (and compared before and after a change). Both run with
// the instrument's settings (scale 0.6, sigma_scale 0.8, quant 1, 22.5 degrees, log_eps 0, density
// 0.7, 1024 bins) and ours with exact square roots.
//
// OpenCV 4.6 departs from the method in three places, and each moves its segments:
//  - it sub-samples differently: an 8-bit gaussian blur, then bilinear resampling on a grid
//    shifted by 0.5 / scale - 0.5 = 1/3 pixel (coordinates are shifted back by the same);
//  - it counts the pixels of a rectangle wrongly: its -log10(NFA) of one clean 300 px edge
//    goes from 196 to 28,700 with the edge's angle, and at some angles the edge is not
//    meaningful to it at all (ours stays at 440-500, what the count of pixels gives), so it
//    improves, keeps and drops other rectangles;
//  - it keeps the region's angle in single precision with an approximate arctangent, so
//    pixels at the edge of the angle tolerance join other regions than in the method;
//  - it visits the pixels of a gradient bin, and a region's neighbours, row by row where the
//    published implementation goes column by column (turned row by row, ours agrees with it
//    on 76 to 94 % of the ends after a common sub-sampling instead of 59 to 82 %).
// Where a curve (a spot's outline, the fiber's rim) is cut into chords is decided by such
// small differences, so two faithful detectors do not cut it alike. Three measures are taken:
// the segments whose two ends match one of the other's (within 1.5 px, either order), first
// as both run, then with the sub-sampling made common; and the share of the segments' length
// that lies on the other's segments (within 1.5 px): whether both find the same lines in the
// same places. As last measured: what OpenCV finds lies on ours for 90 % or more of its
// length, ours on OpenCV's for 70 % or more; with a common sub-sampling three cuts in four
// agree; of the 24 edges of lone scratches at 12 angles we find all, equally meaningful at
// every angle (-log10(NFA) within 25 %), while OpenCV misses some.

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "endfacerenderer.h"
#include "lsd.h"

namespace {

constexpr int kRegion = 960;
constexpr double kScale = 0.6;
constexpr double kTolerance = 1.5;  // pixels
constexpr double kMinLength = 10.0;

struct Segment {
    double x1, y1, x2, y2;
    double length() const { return std::hypot(x2 - x1, y2 - y1); }
};

// The 960 x 960 region about the scene's center.
cv::Mat renderRegion(const sim::EndFaceScene& scene) {
    cv::Mat gray(kRegion, kRegion, CV_8UC1);
    sim::renderGray(scene, int(scene.centerX) - kRegion / 2, int(scene.centerY) - kRegion / 2,
                    kRegion, kRegion, gray.data);
    return gray;
}

// Our segments of an 8-bit image sub-sampled by scale, with their -log10(NFA).
std::vector<Segment> ours(const cv::Mat& gray, double scale = kScale,
                          std::vector<double>* nfa = nullptr) {
    const std::vector<double> pixels(gray.begin<unsigned char>(), gray.end<unsigned char>());
    setLsdExactSquareRoot(true);
    int n = 0;
    double* t = LineSegmentDetection(&n, pixels.data(), gray.cols, gray.rows, scale, 0.8, 1.0, 22.5,
                                     0.0, 0.7, 1024, 0.0, 0.1, 22.5, 0.7, nullptr, nullptr, nullptr,
                                     1, 0.0, 0.0, 0.0, 0.0, nullptr, nullptr, 0);
    setLsdExactSquareRoot(false);
    std::vector<Segment> out;
    for (int i = 0; i < n; ++i) {
        out.push_back(Segment{t[7 * i], t[7 * i + 1], t[7 * i + 2], t[7 * i + 3]});
        if (nfa != nullptr) {
            nfa->push_back(t[7 * i + 6]);
        }
    }
    freeLineSegments(t);
    return out;
}

// OpenCV's segments, moved onto the convention of ours (pixel middles): by 1/3 pixel when it
// sub-samples, not at all at scale 1.
std::vector<Segment> opencv(const cv::Mat& gray, double scale = kScale,
                            std::vector<double>* nfa = nullptr) {
    cv::Ptr<cv::LineSegmentDetector> lsd =
        cv::createLineSegmentDetector(cv::LSD_REFINE_ADV, scale, 0.8, 1.0, 22.5, 0.0, 0.7, 1024);
    std::vector<cv::Vec4f> lines;
    std::vector<double> widths, precisions, logNfa;
    lsd->detect(gray, lines, widths, precisions, logNfa);
    const double shift = 0.5 / scale - 0.5;
    std::vector<Segment> out;
    for (const cv::Vec4f& l : lines) {
        out.push_back(Segment{l[0] + shift, l[1] + shift, l[2] + shift, l[3] + shift});
    }
    if (nfa != nullptr) {
        *nfa = logNfa;
    }
    return out;
}

// The region sub-sampled once, by the method's gaussian (sigma = sigma_scale / scale, kernel
// out to 10^-3 of its peak) and OpenCV's 8-bit resampling, for both detectors to run on at
// scale 1.
cv::Mat subsampledOnce(const cv::Mat& gray) {
    const double sigma = 0.8 / kScale;
    const int half = int(std::ceil(sigma * std::sqrt(2.0 * 3.0 * std::log(10.0))));
    cv::Mat blurred, small;
    cv::GaussianBlur(gray, blurred, cv::Size(2 * half + 1, 2 * half + 1), sigma);
    cv::resize(blurred, small, cv::Size(), kScale, kScale, cv::INTER_LINEAR_EXACT);
    return small;
}

std::vector<Segment> longOnes(const std::vector<Segment>& all) {
    std::vector<Segment> out;
    std::copy_if(all.begin(), all.end(), std::back_inserter(out),
                 [](const Segment& s) { return s.length() >= kMinLength; });
    return out;
}

bool sameEnds(const Segment& a, const Segment& b) {
    auto near = [](double x1, double y1, double x2, double y2) {
        return std::hypot(x1 - x2, y1 - y2) <= kTolerance;
    };
    return (near(a.x1, a.y1, b.x1, b.y1) && near(a.x2, a.y2, b.x2, b.y2)) ||
           (near(a.x1, a.y1, b.x2, b.y2) && near(a.x2, a.y2, b.x1, b.y1));
}

double distanceToSegment(double x, double y, const Segment& s) {
    const double dx = s.x2 - s.x1, dy = s.y2 - s.y1;
    const double l2 = dx * dx + dy * dy;
    const double t =
        l2 > 0.0 ? std::clamp(((x - s.x1) * dx + (y - s.y1) * dy) / l2, 0.0, 1.0) : 0.0;
    return std::hypot(x - (s.x1 + t * dx), y - (s.y1 + t * dy));
}

// Share of the segments of a whose two ends match one of b's.
double endMatchRate(const std::vector<Segment>& a, const std::vector<Segment>& b) {
    int matched = 0;
    for (const Segment& s : a) {
        matched +=
            std::any_of(b.begin(), b.end(), [&](const Segment& t) { return sameEnds(s, t); });
    }
    return a.empty() ? 1.0 : double(matched) / a.size();
}

// Share of the length of a's segments within tolerance of one of b's (all of b's, also the
// short ones, so that a long segment cut in two on the other side still counts).
double lengthOnOther(const std::vector<Segment>& a, const std::vector<Segment>& b,
                     double tolerance = kTolerance) {
    double total = 0.0, covered = 0.0;
    for (const Segment& s : a) {
        const int steps = int(std::ceil(s.length() / 0.5));
        for (int k = 0; k <= steps; ++k) {
            const double x = s.x1 + (s.x2 - s.x1) * k / steps, y = s.y1 + (s.y2 - s.y1) * k / steps;
            total += 1.0;
            covered += std::any_of(b.begin(), b.end(), [&](const Segment& t) {
                return distanceToSegment(x, y, t) <= tolerance;
            });
        }
    }
    return total > 0.0 ? covered / total : 1.0;
}

// Prints the three measures for two lists of segments.
void compare(const std::vector<Segment>& a, const std::vector<Segment>& b,
             const std::string& name) {
    const std::vector<Segment> oursLong = longOnes(a), opencvLong = longOnes(b);
    std::printf(
        "[ %s ] segments: ours %zu (%zu of 10 px or more), OpenCV %zu (%zu)\n"
        "    both ends matched: ours in OpenCV's %.1f %%, OpenCV's in ours %.1f %%\n"
        "    length on the other's segments: ours %.1f %%, OpenCV's %.1f %%\n",
        name.c_str(), a.size(), oursLong.size(), b.size(), opencvLong.size(),
        100.0 * endMatchRate(oursLong, b), 100.0 * endMatchRate(opencvLong, a),
        100.0 * lengthOnOther(oursLong, b), 100.0 * lengthOnOther(opencvLong, a));
}

// Both detectors as they run, each sub-sampling the region itself, then both on the same
// sub-sampled image: the rest of the method compared alone.
void compareBothWays(const cv::Mat& gray, const std::string& name) {
    compare(ours(gray), opencv(gray), name);
    const cv::Mat small = subsampledOnce(gray);
    compare(ours(small, 1.0), opencv(small, 1.0), name + ", sub-sampled once");
}

// A fiber with the scratches and spots of a worn end face; seed varies their places, the
// texture and the noise.
sim::EndFaceScene wornFace(uint32_t seed) {
    sim::EndFaceScene scene;
    scene.seed = seed;
    const double turn = seed * 0.7;
    for (int i = 0; i < 5; ++i) {
        const double a = turn + i * 1.3, d = -120.0 + 60.0 * i, half = 90.0 + 50.0 * (i % 3);
        const double mx = scene.centerX - d * std::sin(a), my = scene.centerY + d * std::cos(a);
        scene.scratches.push_back(sim::Scratch{mx - half * std::cos(a), my - half * std::sin(a),
                                               mx + half * std::cos(a), my + half * std::sin(a),
                                               1.0 + 0.5 * i, 15.0 + 5.0 * i, i % 2 == 1});
    }
    for (int i = 0; i < 25; ++i) {
        scene.spots.push_back(sim::spotAtRadius(scene, 8.0 + 5.0 * i, 137.5 * i + seed, 2.0 + i % 7,
                                                30.0 + 2.0 * i, i % 4 == 0));
    }
    return scene;
}

// A plain face (no fiber rim, no spots) with the given scratches.
sim::EndFaceScene plainFace(std::vector<sim::Scratch> scratches) {
    sim::EndFaceScene scene;
    scene.ferruleLevel = scene.claddingLevel = scene.coreLevel = 160.0;
    scene.edgeDarkRing = scene.edgeBrightHalo = 0.0;
    scene.scratches = std::move(scratches);
    return scene;
}

// True when the segment runs along one of the scene's scratches (region pixels): both ends
// within the scratch's half width plus 3 px of its middle line, and within its length plus 6.
bool onAScratch(const Segment& s, const sim::EndFaceScene& scene) {
    const double left = scene.centerX - kRegion / 2, top = scene.centerY - kRegion / 2;
    for (const sim::Scratch& k : scene.scratches) {
        const double x1 = k.x1 - left, y1 = k.y1 - top, x2 = k.x2 - left, y2 = k.y2 - top;
        const double len = std::hypot(x2 - x1, y2 - y1), ux = (x2 - x1) / len, uy = (y2 - y1) / len;
        const double across = sim::micronsToPixels(k.widthUm) / 2.0 + 3.0;
        auto near = [&](double x, double y) {
            const double along = (x - x1) * ux + (y - y1) * uy;
            return std::fabs(-(x - x1) * uy + (y - y1) * ux) <= across && along >= -6.0 &&
                   along <= len + 6.0;
        };
        if (near(s.x1, s.y1) && near(s.x2, s.y2)) {
            return true;
        }
    }
    return false;
}

// A 300 px scratch 3 um wide at 12 angles: both of its edges are clear lines. OpenCV's NFA
// swings with the angle, and its rectangle improvement, which that sets off, may move an edge
// sideways by up to 5 x 0.5 / 2 sub-sampled pixels (2.1 px), hence the wider tolerance.
void compareLoneScratches() {
    int oursEdges = 0, opencvEdges = 0, opencvOnOurs = 0, oursOffScratch = 0;
    std::vector<double> oursNfa, opencvNfa;
    for (int deg = 0; deg < 180; deg += 15) {
        const double a = deg * M_PI / 180.0;
        const sim::EndFaceScene scene = plainFace({sim::Scratch{
            800.0 - 150.0 * std::cos(a), 600.0 - 150.0 * std::sin(a), 800.0 + 150.0 * std::cos(a),
            600.0 + 150.0 * std::sin(a), 3.0, 35.0, false}});
        const cv::Mat gray = renderRegion(scene);
        std::vector<double> nfaA, nfaB;
        const std::vector<Segment> all = ours(gray, kScale, &nfaA),
                                   others = opencv(gray, kScale, &nfaB);
        for (size_t i = 0; i < all.size(); ++i) {
            if (all[i].length() > 280.0) {
                oursNfa.push_back(nfaA[i]);
                oursOffScratch += onAScratch(all[i], scene) ? 0 : 1;
            }
        }
        for (size_t i = 0; i < others.size(); ++i) {
            if (others[i].length() > 280.0) {
                opencvNfa.push_back(nfaB[i]);
            }
        }
        const std::vector<Segment> a1 = longOnes(all), b1 = longOnes(others);
        oursEdges += int(a1.size());
        opencvEdges += int(b1.size());
        for (const Segment& s : b1) {
            opencvOnOurs += lengthOnOther({s}, a1, 2.5) >= 0.95 ? 1 : 0;
        }
    }
    const auto [oursLow, oursHigh] = std::minmax_element(oursNfa.begin(), oursNfa.end());
    const auto [cvLow, cvHigh] = std::minmax_element(opencvNfa.begin(), opencvNfa.end());
    std::printf(
        "[ lone scratches ] edges found of 24: ours %d (%d off the scratch), OpenCV %d, of "
        "which on ours %d\n"
        "    -log10(NFA) of a 300 px edge: ours %.0f to %.0f, OpenCV %.0f to %.0f\n",
        oursEdges, oursOffScratch, opencvEdges, opencvOnOurs, *oursLow, *oursHigh, *cvLow, *cvHigh);
}

}  // namespace

int main() {
    for (uint32_t seed : {1u, 2u, 3u}) {
        compareBothWays(renderRegion(wornFace(seed)), "worn face " + std::to_string(seed));
    }
    // Scratches alone: what only we find should still lie on a scratch.
    const sim::EndFaceScene scratched = plainFace(wornFace(3).scratches);
    const cv::Mat gray = renderRegion(scratched);
    compareBothWays(gray, "scratches only");
    const std::vector<Segment> found = longOnes(ours(gray));
    const long offScratch = std::count_if(
        found.begin(), found.end(), [&](const Segment& s) { return !onAScratch(s, scratched); });
    std::printf("    of our %zu segments of 10 px or more, %ld lie off the scratches\n",
                found.size(), offScratch);
    compareLoneScratches();
    return 0;
}
