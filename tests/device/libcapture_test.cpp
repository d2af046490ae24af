#include "libcapture.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

using GrayConversion = int (*)(const uint16_t*, uint8_t*, unsigned, unsigned, unsigned, unsigned,
                               unsigned, unsigned);

constexpr unsigned kLine = kSensorLineSamples;
constexpr uint8_t kGuard = 0xA5;
constexpr std::size_t kGuardBytes = 32;

// A raw frame of width x height samples, all 0 unless set.
struct Frame {
    unsigned width, height;
    std::vector<uint16_t> samples;

    Frame(unsigned w, unsigned h) : width(w), height(h), samples(std::size_t(w) * h, 0) {}

    void set(unsigned x, unsigned y, uint16_t value) {
        samples[std::size_t(y) * width + x] = value;
    }
    uint16_t at(unsigned x, unsigned y) const { return samples[std::size_t(y) * width + x]; }

    // Every sample a different 10-bit value, so that a sample taken from the wrong place shows.
    static Frame ramp(unsigned w, unsigned h) {
        Frame frame(w, h);
        for (std::size_t k = 0; k < frame.samples.size(); ++k) {
            frame.samples[k] = uint16_t((k * 37 + 11) % 1024);
        }
        return frame;
    }
};

// A destination of `size` bytes, all `fill`, followed by guard bytes that no conversion may
// touch.
struct Output {
    std::size_t size;
    std::vector<uint8_t> bytes;

    explicit Output(std::size_t n, uint8_t fill = 0) : size(n), bytes(n, fill) {
        bytes.resize(n + kGuardBytes, kGuard);
    }

    uint8_t* data() { return bytes.data(); }
    uint8_t operator[](std::size_t k) const { return bytes[k]; }

    bool guardIntact() const {
        for (std::size_t k = size; k < bytes.size(); ++k) {
            if (bytes[k] != kGuard) {
                return false;
            }
        }
        return true;
    }
};

uint8_t shifted(uint16_t sample) {
    return uint8_t(sample >> 2);
}

// ---- convert_y10bit_to_y8bit ------------------------------------------------------------------

TEST(Y10ToY8, KeepsTheUpperEightBits) {
    Frame frame(4, 1);
    frame.set(0, 0, 1023);
    frame.set(1, 0, 3);
    frame.set(2, 0, 4);
    frame.set(3, 0, 514);
    Output out(4);
    EXPECT_EQ(0, convert_y10bit_to_y8bit(frame.samples.data(), out.data(), 4, 1, 0, 0, 4, 1));
    EXPECT_EQ(255, out[0]);
    EXPECT_EQ(0, out[1]);
    EXPECT_EQ(1, out[2]);
    EXPECT_EQ(128, out[3]);
    EXPECT_TRUE(out.guardIntact());
}

TEST(Y10ToY8, ConvertsTheRectangleAtItsOffset) {
    const Frame frame = Frame::ramp(40, 30);
    const unsigned x0 = 7, y0 = 5, w = 13, h = 9;
    Output out(w * h);
    convert_y10bit_to_y8bit(frame.samples.data(), out.data(), frame.width, frame.height, x0, y0, w,
                            h);
    for (unsigned j = 0; j < h; ++j) {
        for (unsigned i = 0; i < w; ++i) {
            ASSERT_EQ(shifted(frame.at(x0 + i, y0 + j)), out[j * w + i]) << i << "," << j;
        }
    }
    EXPECT_TRUE(out.guardIntact());
}

// ---- convert_y10bit_to_y8bit_scaleIn ----------------------------------------------------------

// One 2 x 2 block at the frame's origin in a frame of sensor line length.
uint8_t grayBlockMean(uint16_t upperLeft, uint16_t upperRight, uint16_t lowerLeft,
                      uint16_t lowerRight) {
    Frame frame(kLine, 2);
    frame.set(0, 0, upperLeft);
    frame.set(1, 0, upperRight);
    frame.set(0, 1, lowerLeft);
    frame.set(1, 1, lowerRight);
    Output out(1);
    convert_y10bit_to_y8bit_scaleIn(frame.samples.data(), out.data(), kLine, 2, 0, 0, 2, 2);
    EXPECT_TRUE(out.guardIntact());
    return out[0];
}

TEST(Y10ToY8ScaleIn, AveragesEachBlockTruncating) {
    EXPECT_EQ(255, grayBlockMean(1023, 1023, 1023, 1023));
    EXPECT_EQ(0, grayBlockMean(2, 2, 2, 2));
    EXPECT_EQ(126, grayBlockMean(1023, 1000, 4, 3));  // 2030 / 16 = 126.875
    EXPECT_EQ(16, grayBlockMean(0, 0, 0, 256));       // the lower right sample counts too
}

TEST(Y10ToY8ScaleIn, ConvertsBlocksOfTheRectangleAtItsOffset) {
    const Frame frame = Frame::ramp(kLine, 12);
    const unsigned x0 = 3, y0 = 1, w = 8, h = 6;
    Output out(4 * 3);
    convert_y10bit_to_y8bit_scaleIn(frame.samples.data(), out.data(), kLine, 12, x0, y0, w, h);
    for (unsigned j = 0; j < 3; ++j) {
        for (unsigned i = 0; i < 4; ++i) {
            const unsigned a = x0 + 2 * i, b = y0 + 2 * j;
            const unsigned sum =
                frame.at(a, b) + frame.at(a + 1, b) + frame.at(a, b + 1) + frame.at(a + 1, b + 1);
            ASSERT_EQ(sum >> 4, out[j * 4 + i]) << i << "," << j;
        }
    }
    EXPECT_TRUE(out.guardIntact());
}

// With a stride of half the sensor line, the line below the upper row (+800) must be skipped:
// the lower row is +1600, and the next pair of rows starts 2 x 800 = 1600 after the first.
// Frame rows here are 800 samples: row 0 upper, row 1 ignored, row 2 lower of the first pair
// and upper of the second, row 3 ignored, row 4 lower of the second.
Frame halfStrideFrame() {
    Frame frame(800, 5);
    for (unsigned x = 0; x < 2; ++x) {
        frame.set(x, 0, 1023);
        frame.set(x, 1, 0);
        frame.set(x, 2, 511);
        frame.set(x, 3, 0);
        frame.set(x, 4, 1);
    }
    return frame;
}

constexpr unsigned kFirstPairMean = (2 * 1023 + 2 * 511) >> 4;  // 191
constexpr unsigned kSecondPairMean = (2 * 511 + 2 * 1) >> 4;    // 64

TEST(Y10ToY8ScaleIn, FindsTheLowerRowOneSensorLineBelowWhateverTheStride) {
    const Frame frame = halfStrideFrame();
    Output out(2);
    convert_y10bit_to_y8bit_scaleIn(frame.samples.data(), out.data(), 800, 5, 0, 0, 2, 4);
    EXPECT_EQ(kFirstPairMean, out[0]);
    EXPECT_EQ(kSecondPairMean, out[1]);
    EXPECT_TRUE(out.guardIntact());
}

// ---- convert_y10bit_to_y8bit_scaleIn_skip -----------------------------------------------------

TEST(Y10ToY8ScaleInSkip, TakesEverySecondSampleOfEverySecondRow) {
    const Frame frame = Frame::ramp(40, 30);
    const unsigned x0 = 5, y0 = 2, w = 10, h = 8;
    Output out(5 * 4);
    convert_y10bit_to_y8bit_scaleIn_skip(frame.samples.data(), out.data(), 40, 30, x0, y0, w, h);
    for (unsigned j = 0; j < 4; ++j) {
        for (unsigned i = 0; i < 5; ++i) {
            ASSERT_EQ(shifted(frame.at(x0 + 2 * i, y0 + 2 * j)), out[j * 5 + i]) << i << "," << j;
        }
    }
    EXPECT_TRUE(out.guardIntact());
}

// ---- the 2 x 2 conversions with odd sides ------------------------------------------------------

// w = 5, h = 3 gives 3 x 2 pixels: the last column and row of blocks still count.
TEST(HalfSizeConversions, RoundOddSidesUp) {
    Frame frame(kLine, 4);
    frame.set(4, 0, 1020);  // in the last, half-outside block of the first row
    frame.set(0, 2, 1020);  // in the first block of the last, half-outside row of blocks
    Output mean(3 * 2), skip(3 * 2);
    convert_y10bit_to_y8bit_scaleIn(frame.samples.data(), mean.data(), kLine, 4, 0, 0, 5, 3);
    convert_y10bit_to_y8bit_scaleIn_skip(frame.samples.data(), skip.data(), kLine, 4, 0, 0, 5, 3);
    const std::vector<uint8_t> expectedMean = {0, 0, 63, 63, 0, 0};
    const std::vector<uint8_t> expectedSkip = {0, 0, 255, 255, 0, 0};
    EXPECT_EQ(expectedMean, std::vector<uint8_t>(mean.bytes.begin(), mean.bytes.begin() + 6));
    EXPECT_EQ(expectedSkip, std::vector<uint8_t>(skip.bytes.begin(), skip.bytes.begin() + 6));
    EXPECT_TRUE(mean.guardIntact());
    EXPECT_TRUE(skip.guardIntact());
}

// ---- convert_y10bit_to_yuv422ile --------------------------------------------------------------

TEST(Y10ToYuv422, WritesLumaOnlyAndLeavesChromaAlone) {
    const Frame frame = Frame::ramp(40, 30);
    const unsigned x0 = 9, y0 = 4, w = 7, h = 5;
    Output out(2 * w * h, 128);
    EXPECT_EQ(0,
              convert_y10bit_to_yuv422ile(frame.samples.data(), out.data(), 40, 30, x0, y0, w, h));
    for (unsigned j = 0; j < h; ++j) {
        for (unsigned i = 0; i < w; ++i) {
            const std::size_t pixel = 2 * (std::size_t(j) * w + i);
            ASSERT_EQ(128, out[pixel]) << i << "," << j;
            ASSERT_EQ(shifted(frame.at(x0 + i, y0 + j)), out[pixel + 1]) << i << "," << j;
        }
    }
    EXPECT_TRUE(out.guardIntact());
}

TEST(Y10ToYuv422, MapsFullScaleAndNoise) {
    Frame frame(2, 1);
    frame.set(0, 0, 1023);
    frame.set(1, 0, 3);
    Output out(4, 128);
    convert_y10bit_to_yuv422ile(frame.samples.data(), out.data(), 2, 1, 0, 0, 2, 1);
    EXPECT_EQ(128, out[0]);
    EXPECT_EQ(255, out[1]);
    EXPECT_EQ(128, out[2]);
    EXPECT_EQ(0, out[3]);
    EXPECT_TRUE(out.guardIntact());
}

// ---- convert_y10bit_to_yuv422ile_scaleIn ------------------------------------------------------

// Rows of w bytes: w = 8 gives 4 pixels of two bytes a row.
TEST(Y10ToYuv422ScaleIn, WritesBlockMeansAsLumaInRowsOfWBytes) {
    const Frame frame = Frame::ramp(kLine, 10);
    const unsigned x0 = 2, y0 = 3, w = 8, h = 6;
    Output out(w * 3, 128);
    convert_y10bit_to_yuv422ile_scaleIn(frame.samples.data(), out.data(), kLine, 10, x0, y0, w, h);
    Output gray(4 * 3);
    convert_y10bit_to_y8bit_scaleIn(frame.samples.data(), gray.data(), kLine, 10, x0, y0, w, h);
    for (unsigned j = 0; j < 3; ++j) {
        for (unsigned i = 0; i < 4; ++i) {
            ASSERT_EQ(128, out[j * w + 2 * i]) << i << "," << j;
            ASSERT_EQ(gray[j * 4 + i], out[j * w + 2 * i + 1]) << i << "," << j;
        }
    }
    EXPECT_TRUE(out.guardIntact());
}

TEST(Y10ToYuv422ScaleIn, AveragesEachBlockTruncating) {
    Frame frame(kLine, 2);
    const uint16_t block[2][4] = {{1023, 1023, 1023, 1023}, {1023, 1000, 4, 3}};
    for (unsigned k = 0; k < 2; ++k) {
        frame.set(2 * k, 0, block[k][0]);
        frame.set(2 * k + 1, 0, block[k][1]);
        frame.set(2 * k, 1, block[k][2]);
        frame.set(2 * k + 1, 1, block[k][3]);
    }
    Output out(4, 128);
    convert_y10bit_to_yuv422ile_scaleIn(frame.samples.data(), out.data(), kLine, 2, 0, 0, 4, 2);
    EXPECT_EQ(255, out[1]);
    EXPECT_EQ(126, out[3]);
    EXPECT_EQ(128, out[0]);
    EXPECT_EQ(128, out[2]);
    EXPECT_TRUE(out.guardIntact());
}

TEST(Y10ToYuv422ScaleIn, FindsTheLowerRowOneSensorLineBelowWhateverTheStride) {
    const Frame frame = halfStrideFrame();
    Output out(2 * 2, 128);
    convert_y10bit_to_yuv422ile_scaleIn(frame.samples.data(), out.data(), 800, 5, 0, 0, 2, 4);
    EXPECT_EQ(kFirstPairMean, out[1]);
    EXPECT_EQ(kSecondPairMean, out[3]);
    EXPECT_EQ(128, out[0]);
    EXPECT_EQ(128, out[2]);
    EXPECT_TRUE(out.guardIntact());
}

// ---- roi_y10bit_image -------------------------------------------------------------------------

TEST(RoiY10, CopiesTheRectangleUnchanged) {
    Frame frame = Frame::ramp(40, 30);
    frame.set(11, 6, 0xFFFF);  // all 16 bits survive, not only the 10 of a sample
    const unsigned x0 = 11, y0 = 6, w = 9, h = 4;
    std::vector<uint16_t> out(w * h + 8, 0xA5A5);
    EXPECT_EQ(0, roi_y10bit_image(frame.samples.data(), out.data(), 40, 30, x0, y0, w, h));
    for (unsigned j = 0; j < h; ++j) {
        for (unsigned i = 0; i < w; ++i) {
            ASSERT_EQ(frame.at(x0 + i, y0 + j), out[j * w + i]) << i << "," << j;
        }
    }
    for (std::size_t k = w * h; k < out.size(); ++k) {
        EXPECT_EQ(0xA5A5, out[k]);
    }
}

// ---- empty rectangles ------------------------------------------------------------------------

TEST(EmptyRectangle, WritesNothingAndSucceeds) {
    const Frame frame = Frame::ramp(kLine, 4);
    const GrayConversion conversions[] = {convert_y10bit_to_y8bit, convert_y10bit_to_y8bit_scaleIn,
                                          convert_y10bit_to_y8bit_scaleIn_skip,
                                          convert_y10bit_to_yuv422ile,
                                          convert_y10bit_to_yuv422ile_scaleIn};
    const unsigned sizes[][2] = {{0, 2}, {2, 0}, {0, 0}};
    for (GrayConversion convert : conversions) {
        for (const auto& size : sizes) {
            Output out(0);
            EXPECT_EQ(0,
                      convert(frame.samples.data(), out.data(), kLine, 4, 1, 1, size[0], size[1]));
            EXPECT_TRUE(out.guardIntact()) << size[0] << " x " << size[1];
        }
    }
    for (const auto& size : sizes) {
        std::vector<uint16_t> out(4, 0xA5A5);
        EXPECT_EQ(0, roi_y10bit_image(frame.samples.data(), out.data(), kLine, 4, 1, 1, size[0],
                                      size[1]));
        EXPECT_EQ(std::vector<uint16_t>(4, 0xA5A5), out);
    }
}

}  // namespace
