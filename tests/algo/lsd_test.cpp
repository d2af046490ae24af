// The fast arctangent and the line segment detector, on synthetic images whose edges are known
// exactly.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "fastatan2.h"
#include "lsd.h"
#include "nearvalues.h"

namespace {

constexpr float kPi = 3.1415927f;

// ---- fastAtan2 ---------------------------------------------------------------------------------

TEST(FastAtan2, StaysWithin2e3RadOfAtan2AndInsideMinusPiPi) {
    // Every quadrant and octant, so a lost sign shows as an error near 2 pi.
    double worst = 0.0;
    for (int iy = -200; iy <= 200; ++iy) {
        for (int ix = -200; ix <= 200; ++ix) {
            const float y = iy * 0.37f;
            const float x = ix * 0.29f;
            const float a = fastAtan2(y, x);
            ASSERT_GT(a, -kPi);
            ASSERT_LE(a, kPi);
            if (ix != 0 || iy != 0) {
                double e = std::fabs(a - std::atan2(double(y), double(x)));
                e = std::min(e, 2.0 * M_PI - e);  // pi and -pi are the same direction
                worst = std::max(worst, e);
            }
        }
    }
    EXPECT_LT(worst, 2e-3);
    EXPECT_GT(worst, 1e-3) << "the 1/255 table indexed by 256 leaves an error of this size";
    EXPECT_EQ(fastAtan2(0.0f, 0.0f), 0.0f);
}

// ---- synthetic images and running the detector -------------------------------------------------

struct Image {
    int width;
    int height;
    std::vector<double> px;
    Image(int w, int h, double level) : width(w), height(h), px(size_t(w) * h, level) {}
    double& at(int x, int y) { return px[size_t(y) * width + x]; }
    template <typename F>
    void add(F delta) {  // delta(x, y) added to every pixel
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                at(x, y) += delta(x, y);
            }
        }
    }
};

// Share of a blurred band |t| <= halfWidth at signed distance t; an infinite band is a step.
double blurredStep(double t, double blur) {
    return 0.5 * (1.0 + std::erf(t / (std::sqrt(2.0) * blur)));
}

// A straight edge through (x0, y0): brighter (by contrast) on the side the unit normal
// (nx, ny) points to.
void drawEdge(Image& im, double x0, double y0, double nx, double ny, double contrast, double blur) {
    im.add(
        [&](int x, int y) { return contrast * blurredStep((x - x0) * nx + (y - y0) * ny, blur); });
}

// A dark scratch of the given width from (x1, y1) to (x2, y2), with rounded ends.
void drawScratch(Image& im, double x1, double y1, double x2, double y2, double width,
                 double contrast, double blur) {
    const double dx = x2 - x1, dy = y2 - y1;
    im.add([&](int x, int y) {
        const double t =
            std::clamp(((x - x1) * dx + (y - y1) * dy) / (dx * dx + dy * dy), 0.0, 1.0);
        const double d = std::hypot(x - (x1 + t * dx), y - (y1 + t * dy));
        return -contrast * (blurredStep(width / 2 - d, blur) - blurredStep(-width / 2 - d, blur));
    });
}

void addNoise(Image& im, double sigma, unsigned seed) {
    std::mt19937 rng(seed);
    std::normal_distribution<double> noise(0.0, sigma);
    for (double& v : im.px) {
        v += noise(rng);
    }
}

struct Segment {
    double x1, y1, x2, y2, width, direction, logNfa;
    double length() const { return std::hypot(x2 - x1, y2 - y1); }
};

// The instrument's settings (sens 16), the whole image searched.
struct Settings {
    double scale = 0.6, sigmaScale = 0.8, quant = 1.0, angTh = 22.5, density = 0.7;
    int bins = 1024, mode = 1;
    double faintQuant = 0.1;
    double cx = 0.0, cy = 0.0, r = HUGE_VAL;
    std::vector<double> annuli;  // (inner, outer) pairs
    std::vector<defect_info_struct> exclusions;
};

double* runOn(const double* data, int width, int height, const Settings& s, int* n) {
    return LineSegmentDetection(n, data, width, height, s.scale, s.sigmaScale, s.quant, s.angTh,
                                0.0, s.density, s.bins, 0.0, s.faintQuant, 22.5, 0.7, nullptr,
                                nullptr, nullptr, s.mode, s.cx, s.cy, s.r, s.annuli.size() / 2.0,
                                s.annuli.data(), s.exclusions.data(), int(s.exclusions.size()));
}

std::vector<Segment> detect(const Image& im, const Settings& s = Settings()) {
    int n = -1;
    double* t = runOn(im.px.data(), im.width, im.height, s, &n);
    EXPECT_NE(t, nullptr) << "an empty list, not null";
    EXPECT_GE(n, 0);
    std::vector<Segment> out;
    for (int i = 0; i < n; ++i) {
        out.push_back(Segment{t[7 * i], t[7 * i + 1], t[7 * i + 2], t[7 * i + 3], t[7 * i + 4],
                              t[7 * i + 5], t[7 * i + 6]});
    }
    freeLineSegments(t);
    return out;
}

// Distance of a point from the infinite line through (x0, y0) with unit normal (nx, ny).
double offLine(double x, double y, double x0, double y0, double nx, double ny) {
    return std::fabs((x - x0) * nx + (y - y0) * ny);
}

// ---- geometry of a detection -------------------------------------------------------------------

TEST(LineSegmentDetection, AStraightEdgeGivesOneSegmentOnItWithTheBrightSideOnTheRight) {
    // The sixth value is the angle of (x2 - x1, y2 - y1), and the gradient (dark to bright)
    // runs along (dy, -dx).
    for (double deg : {0.0, 20.0, 30.0, 75.0, 135.0, 200.0, 290.0}) {
        const double a = deg * M_PI / 180.0, nx = std::cos(a), ny = std::sin(a);
        Image im(160, 160, 60.0);
        drawEdge(im, 80.0, 80.0, nx, ny, 80.0, 1.0);  // brighter along (nx, ny)
        const std::vector<Segment> found = detect(im);
        ASSERT_EQ(found.size(), 1u) << deg;
        const Segment& s = found[0];
        EXPECT_LT(offLine(s.x1, s.y1, 80.0, 80.0, nx, ny), 0.3) << deg;
        EXPECT_LT(offLine(s.x2, s.y2, 80.0, 80.0, nx, ny), 0.3) << deg;
        // across the image, to within two sub-sampled pixels of its border at either end
        EXPECT_GT(s.length(), 160.0 / std::max(std::fabs(nx), std::fabs(ny)) - 8.0) << deg;
        EXPECT_GT(s.width, 1.0) << deg;
        EXPECT_LT(s.width, 8.0) << deg;
        EXPECT_GT(s.logNfa, 50.0) << deg;
        const double dx = s.x2 - s.x1, dy = s.y2 - s.y1;
        EXPECT_FLOAT_EQ(float(s.direction), fastAtan2(float(dy), float(dx))) << deg;
        EXPECT_GT((dy * nx - dx * ny) / s.length(), 0.999) << deg;
    }
}

TEST(LineSegmentDetection, AnEdgeIsAsMeaningfulAsItsPixelCountSays) {
    // Every pixel of a clean edge's rectangle is aligned, so -log10(NFA) = n log10(1 / p) -
    // log10(NT) with p = 1/8, n the rectangle's pixels (length x width at the sub-sampled
    // scale, to within the pixels its outline cuts) and NT = 11 (X Y)^(5/2).
    const int X = 300, Y = 300;
    const int sx = int(std::ceil(X * 0.6)), sy = int(std::ceil(Y * 0.6));
    const double logNT = 2.5 * std::log10(double(sx) * sy) + std::log10(11.0);
    for (int deg = 0; deg < 180; deg += 20) {
        const double a = deg * M_PI / 180.0, c = std::cos(a), s = std::sin(a);
        Image im(X, Y, 150.0);
        drawScratch(im, 150.0 - 100.0 * c, 150.0 - 100.0 * s, 150.0 + 100.0 * c, 150.0 + 100.0 * s,
                    12.0, 50.0, 1.0);
        const std::vector<Segment> found = detect(im);
        ASSERT_EQ(found.size(), 2u) << deg << " degrees";
        for (const Segment& e : found) {
            const double n = (e.length() * 0.6) * (e.width * 0.6);
            EXPECT_NEAR(e.logNfa, n * std::log10(8.0) - logNT, 0.15 * e.logNfa)
                << deg << " degrees";
        }
    }
}

// ---- what gives no detection -------------------------------------------------------------------

TEST(LineSegmentDetection, ImagesWithoutAGradientGiveAnEmptyList) {
    // One row or one column has no gradient, however striped.
    Image row(300, 1, 0.0), column(1, 300, 0.0);
    for (int i = 0; i < 300; ++i) {
        row.px[size_t(i)] = column.px[size_t(i)] = i % 50 < 25 ? 20.0 : 200.0;
    }
    Settings unscaled;
    unscaled.scale = 1.0;
    EXPECT_TRUE(detect(Image(64, 48, 128.0)).empty()) << "flat";
    EXPECT_TRUE(detect(row).empty());
    EXPECT_TRUE(detect(column).empty());
    EXPECT_TRUE(detect(Image(1, 1, 7.0)).empty());
    EXPECT_TRUE(detect(row, unscaled).empty());
}

TEST(LineSegmentDetection, NoiseAloneGivesNoMeaningfulSegment) {
    // The a-contrario guarantee: on noise, on average at most one false detection per image.
    int total = 0;
    for (unsigned seed = 1; seed <= 4; ++seed) {
        Image im(256, 256, 128.0);
        addNoise(im, 20.0, seed);
        total += int(detect(im).size());
    }
    EXPECT_LE(total, 2);
}

TEST(LineSegmentDetection, AFloodOfSegmentsIsReturnedWhole) {
    // Gratings in random directions, tile by tile: thousands of short segments.
    Image im(960, 960, 128.0);
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> angle(0.0, M_PI);
    std::vector<double> tileAngles(40 * 40);
    for (double& a : tileAngles) {
        a = angle(rng);
    }
    im.add([&](int x, int y) {
        const double a = tileAngles[size_t(y / 24 * 40 + x / 24)];
        return 90.0 * std::sin((x * std::cos(a) + y * std::sin(a)) * M_PI / 5.0);
    });
    EXPECT_GT(detect(im).size(), 4096u);
}

// ---- annuli and exclusion rectangles -----------------------------------------------------------

// True when the segment stays between the radii lo and hi about (150, 150).
bool within(const Segment& s, double lo, double hi) {
    for (double t = 0.0; t <= 1.0; t += 0.05) {
        const double d =
            std::hypot(s.x1 + t * (s.x2 - s.x1) - 150.0, s.y1 + t * (s.y2 - s.y1) - 150.0);
        if (d < lo || d > hi) {
            return false;
        }
    }
    return true;
}

TEST(LineSegmentDetection, OnlyTheAnnuliWithinTheSearchRadiusAreSearched) {
    // Two scratches about the center (150, 150): 60 to 72 px from it and 112 to 123 px.
    Image im(300, 300, 150.0);
    drawScratch(im, 110.0, 90.0, 190.0, 90.0, 3.0, 50.0, 1.0);
    drawScratch(im, 100.0, 262.0, 200.0, 262.0, 3.0, 50.0, 1.0);
    struct Case {
        double r;
        std::vector<double> annuli;
        size_t count;
        double lo, hi;  // where the segments lie, 2 px of a sub-sampled block allowed
    };
    const Case cases[] = {
        {HUGE_VAL, {}, 4, 0.0, 1e9},  // no annuli: both edges of both
        {200.0, {40.0, 85.0}, 2, 38.0, 87.0},
        {200.0, {0.0, 20.0, 100.0, 140.0}, 2, 98.0, 142.0},
        {200.0, {0.0, 40.0, 140.0, 300.0}, 0, 0.0, 0.0},  // both between the annuli
        {300.0, {40.0, 300.0}, 4, 0.0, 1e9},
        {100.0, {40.0, 300.0}, 2, 40.0, 102.0},  // the radius cuts the annulus
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("case " + std::to_string(&c - cases));
        Settings s;
        s.cx = s.cy = 150.0;
        s.r = c.r;
        s.annuli = c.annuli;
        const std::vector<Segment> found = detect(im, s);
        EXPECT_EQ(found.size(), c.count);
        for (const Segment& seg : found) {
            EXPECT_TRUE(within(seg, c.lo, c.hi));
        }
    }
}

TEST(LineSegmentDetection, ExclusionRectanglesProduceNoSegment) {
    Image im(300, 200, 150.0);
    drawScratch(im, 20.0, 100.0, 280.0, 100.0, 3.0, 50.0, 1.0);
    Settings s;
    std::vector<Segment> found = detect(im, s);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_LT(std::min(found[0].x1, found[0].x2), 30.0) << "whole, across x 120..180";

    // A defect box over the middle of the scratch: the pieces either side remain, nothing
    // reaches into the box (allowing the one sub-sampled pixel a gradient block spans).
    s.exclusions.push_back(defect_info_struct{80, 120, 120, 180, 0, 0});
    found = detect(im, s);
    EXPECT_EQ(found.size(), 4u);
    for (const Segment& seg : found) {
        const double lo = std::min(seg.x1, seg.x2), hi = std::max(seg.x1, seg.x2);
        EXPECT_TRUE(hi < 120.0 || lo > 180.0) << lo << " .. " << hi;
    }

    // Boxes elsewhere change nothing; a box over all of it leaves nothing.
    s.exclusions = {defect_info_struct{0, 50, 0, 299, 0, 0}};
    EXPECT_EQ(detect(im, s).size(), 2u);
    s.exclusions.push_back(defect_info_struct{90, 110, 0, 299, 3, 1});
    EXPECT_TRUE(detect(im, s).empty());
}

// ---- mode 2, the faint pass, and the fast square root ------------------------------------------

TEST(LineSegmentDetection, Mode2AlsoFindsEdgesTooFaintForTheFirstPass) {
    Image im(200, 160, 100.0);
    drawEdge(im, 100.0, 80.0, 0.6, 0.8, 4.0, 1.0);
    addNoise(im, 0.3, 11);
    Settings s;
    EXPECT_TRUE(detect(im, s).empty()) << "the gradient stays under rho";
    s.mode = 2;
    const std::vector<Segment> found = detect(im, s);
    ASSERT_FALSE(found.empty());
    EXPECT_LT(offLine(found[0].x1, found[0].y1, 100.0, 80.0, 0.6, 0.8), 1.0);
    EXPECT_LT(offLine(found[0].x2, found[0].y2, 100.0, 80.0, 0.6, 0.8), 1.0);
    EXPECT_GT(found[0].length(), 100.0);
}

TEST(LineSegmentDetection, Mode2KeepsTheFirstPassAndDoesNotFindItsSegmentsAgain) {
    Image im(240, 160, 150.0);
    drawScratch(im, 30.0, 40.0, 210.0, 120.0, 3.0, 50.0, 1.0);
    addNoise(im, 1.0, 3);
    Settings s;
    const std::vector<Segment> first = detect(im, s);
    s.mode = 2;
    const std::vector<Segment> both = detect(im, s);
    ASSERT_GE(both.size(), first.size());
    for (size_t i = 0; i < first.size(); ++i) {
        EXPECT_EQ(both[i].x1, first[i].x1);
        EXPECT_EQ(both[i].logNfa, first[i].logNfa);
    }
    for (size_t i = first.size(); i < both.size(); ++i) {
        EXPECT_LT(both[i].length(), 30.0) << "no second copy of the scratch's edges";
    }
}

TEST(LineSegmentDetection, TheFastSquareRootMovesResultsOnlySlightly) {
    Image im(240, 160, 150.0);
    drawScratch(im, 30.0, 40.0, 210.0, 120.0, 3.0, 50.0, 1.0);
    drawEdge(im, 120.0, 80.0, 0.8, -0.6, 30.0, 1.0);
    addNoise(im, 1.0, 5);
    const std::vector<Segment> fast = detect(im);
    setLsdExactSquareRoot(true);
    const std::vector<Segment> exact = detect(im);
    setLsdExactSquareRoot(false);
    ASSERT_EQ(fast.size(), exact.size());
    ASSERT_FALSE(fast.empty());
    bool anyDifference = false;
    for (size_t i = 0; i < fast.size(); ++i) {
        expectNear({fast[i].x1, fast[i].y1, fast[i].x2, fast[i].y2},
                   {exact[i].x1, exact[i].y1, exact[i].x2, exact[i].y2}, 0.2);
        EXPECT_NEAR(fast[i].width, exact[i].width, 0.02 * exact[i].width);
        anyDifference = anyDifference || fast[i].x1 != exact[i].x1 || fast[i].y2 != exact[i].y2;
    }
    EXPECT_TRUE(anyDifference) << "the switch must take effect";
}

TEST(LineSegmentDetection, AScratchInNoiseIsCutIntoFewPieces) {
    // Noise makes a region ragged; the detector then shrinks it about its seed a quarter of its
    // radius at a time until its rectangle is dense again. Shrinking by larger steps would throw
    // away more of the scratch with each cut and leave it in more, shorter pieces.
    int pieces = 0;
    double length = 0.0;
    const double nx = 140.0 / std::hypot(160.0, 140.0), ny = -160.0 / std::hypot(160.0, 140.0);
    for (double contrast : {30.0, 40.0}) {
        for (unsigned seed = 1; seed <= 16; ++seed) {
            Image im(200, 200, 128.0);
            addNoise(im, 10.0, seed);
            drawScratch(im, 20.0, 30.0, 180.0, 170.0, 3.0, contrast, 1.0);
            for (const Segment& s : detect(im)) {
                if (offLine(s.x1, s.y1, 20.0, 30.0, nx, ny) < 5.0 &&
                    offLine(s.x2, s.y2, 20.0, 30.0, nx, ny) < 5.0) {
                    ++pieces;
                    length += s.length();
                }
            }
        }
    }
    EXPECT_GT(length, 0.85 * 2 * 32 * std::hypot(160.0, 140.0)) << "both edges, nearly whole";
    EXPECT_LE(pieces, 320) << "305 today; halving the radius gives 348";
}

// ---- errors ------------------------------------------------------------------------------------

TEST(LineSegmentDetectionDeathTest, InvalidArgumentsEndTheProcessWithTheirMessage) {
    const std::vector<double> px(64, 1.0);
    const auto run = [](const double* data, int width, int height, const Settings& s) {
        int n = 0;
        freeLineSegments(runOn(data, width, height, s, &n));
    };
    const auto fails = ::testing::ExitedWithCode(1);
    EXPECT_EXIT(run(nullptr, 8, 8, {}), fails, "LSD Error: invalid image input.");
    EXPECT_EXIT(run(px.data(), 0, 8, {}), fails, "LSD Error: invalid image input.");
    EXPECT_EXIT(run(px.data(), 8, -1, {}), fails, "LSD Error: invalid image input.");
    const struct {
        void (*spoil)(Settings&);
        const char* message;
    } cases[] = {
        {[](Settings& s) { s.scale = 0.0; }, "'scale' value must be positive."},
        {[](Settings& s) { s.sigmaScale = -1.0; }, "'sigma_scale' value must be positive."},
        {[](Settings& s) { s.quant = -0.5; }, "'quant' value must be positive."},
        {[](Settings& s) { s.angTh = 180.0; }, "'ang_th' value must be in the range \\(0,180\\)."},
        {[](Settings& s) { s.density = 1.5; },
         "'density_th' value must be in the range \\[0,1\\]."},
        {[](Settings& s) { s.bins = 0; }, "'n_bins' value must be positive."},
        {[](Settings& s) {
             s.mode = 2;
             s.faintQuant = -1.0;
         },
         "'quant' value must be positive."},
    };
    for (const auto& c : cases) {
        Settings s;
        c.spoil(s);
        EXPECT_EXIT(run(px.data(), 8, 8, s), fails, std::string("LSD Error: ") + c.message);
    }
    // The faint thresholds are only checked in mode 2: this one returns.
    Settings faint;
    faint.faintQuant = -1.0;
    run(px.data(), 8, 8, faint);
}

}  // namespace
