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
    // The lower row of a 2 x 2 block is one sensor line on, whatever the frame's width.
    uint16_t below(unsigned x, unsigned y) const {
        return samples[std::size_t(y) * width + x + kLine];
    }

    // Every sample a different 10-bit value, so that a sample taken from the wrong place shows.
    static Frame ramp(unsigned w, unsigned h) {
        Frame frame(w, h);
        for (std::size_t k = 0; k < frame.samples.size(); ++k) {
            frame.samples[k] = uint16_t((k * 37 + 11) % 1024);
        }
        return frame;
    }
};

struct Conversion {
    const char* name;
    GrayConversion convert;
    unsigned step;   // 2 for the half-size conversions
    bool blockMean;  // the 2 x 2 mean rather than the block's upper left sample
    bool yuv;        // two bytes a pixel, luma second, chroma left alone
};

const Conversion kConversions[] = {
    {"y8", convert_y10bit_to_y8bit, 1, false, false},
    {"y8 scaleIn", convert_y10bit_to_y8bit_scaleIn, 2, true, false},
    {"y8 scaleIn skip", convert_y10bit_to_y8bit_scaleIn_skip, 2, false, false},
    {"yuv422", convert_y10bit_to_yuv422ile, 1, false, true},
    {"yuv422 scaleIn", convert_y10bit_to_yuv422ile_scaleIn, 2, true, true},
};
const Conversion &kY8Mean = kConversions[1], &kYuvMean = kConversions[4];

// Rows of w bytes for the half-size UYVY output: with an odd w, a row's last luma byte is the
// first byte of the next row.
unsigned rowBytes(const Conversion& c, unsigned w) {
    return c.yuv ? 2 * w / c.step : (w + c.step - 1) / c.step;
}

std::size_t outputBytes(const Conversion& c, unsigned w, unsigned h) {
    const unsigned cols = (w + c.step - 1) / c.step, rows = (h + c.step - 1) / c.step;
    return cols && rows ? (rows - 1) * rowBytes(c, w) + cols * (c.yuv ? 2 : 1) : 0;
}

// Converts into a buffer preset to 128 and followed by guard bytes that no conversion may touch;
// returns the output part.
std::vector<uint8_t> convert(const Conversion& c, const Frame& f, unsigned x0, unsigned y0,
                             unsigned w, unsigned h) {
    const std::size_t size = outputBytes(c, w, h);
    std::vector<uint8_t> out(size, 128);
    out.resize(size + kGuardBytes, kGuard);
    EXPECT_EQ(0, c.convert(f.samples.data(), out.data(), f.width, f.height, x0, y0, w, h))
        << c.name;
    EXPECT_EQ(std::vector<uint8_t>(kGuardBytes, kGuard),
              std::vector<uint8_t>(out.begin() + size, out.end()))
        << c.name << " wrote past its output";
    out.resize(size);
    return out;
}

// The output worked out pixel by pixel, chroma 128.
std::vector<uint8_t> expected(const Conversion& c, const Frame& f, unsigned x0, unsigned y0,
                              unsigned w, unsigned h) {
    const unsigned cols = (w + c.step - 1) / c.step, rows = (h + c.step - 1) / c.step;
    std::vector<uint8_t> out(outputBytes(c, w, h), 128);
    for (unsigned j = 0; j < rows; ++j) {
        for (unsigned i = 0; i < cols; ++i) {
            const unsigned a = x0 + c.step * i, b = y0 + c.step * j;
            const unsigned luma =
                c.blockMean ? (f.at(a, b) + f.at(a + 1, b) + f.below(a, b) + f.below(a + 1, b)) >> 4
                            : f.at(a, b) >> 2;
            out[j * rowBytes(c, w) + (c.yuv ? 2 * i + 1 : i)] = uint8_t(luma);
        }
    }
    return out;
}

TEST(Conversions, ConvertTheRectangleAtItsOffset) {
    const Frame frame = Frame::ramp(kLine, 30);
    for (const Conversion& c : kConversions) {
        for (const auto& r : {std::vector<unsigned>{7, 5, 13, 9}, {3, 1, 8, 6}, {9, 4, 7, 2}}) {
            SCOPED_TRACE(testing::Message() << c.name << " " << r[2] << " x " << r[3] << " at "
                                            << r[0] << "," << r[1]);
            EXPECT_EQ(expected(c, frame, r[0], r[1], r[2], r[3]),
                      convert(c, frame, r[0], r[1], r[2], r[3]));
        }
    }
}

// With a stride of half the sensor line, the line below the upper row (+800) must be skipped:
// the lower row is +1600, and the next pair of rows starts 2 x 800 = 1600 after the first.
// Frame rows here are 800 samples: row 0 upper, row 1 ignored, row 2 lower of the first pair
// and upper of the second, row 3 ignored, row 4 lower of the second.
TEST(Conversions, BlockMeansFindTheLowerRowOneSensorLineBelowWhateverTheStride) {
    Frame frame(800, 5);
    for (unsigned x = 0; x < 2; ++x) {
        frame.set(x, 0, 1023);
        frame.set(x, 2, 511);
        frame.set(x, 4, 1);
    }
    const uint8_t first = (2 * 1023 + 2 * 511) >> 4, second = (2 * 511 + 2 * 1) >> 4;
    EXPECT_EQ(std::vector<uint8_t>({first, second}), convert(kY8Mean, frame, 0, 0, 2, 4));
    EXPECT_EQ(std::vector<uint8_t>({128, first, 128, second}),
              convert(kYuvMean, frame, 0, 0, 2, 4));
}

TEST(RoiY10, CopiesTheRectangleUnchanged) {
    Frame frame = Frame::ramp(40, 30);
    frame.set(11, 6, 0xFFFF);  // all 16 bits survive, not only the 10 of a sample
    const unsigned x0 = 11, y0 = 6, w = 9, h = 4;
    std::vector<uint16_t> out(w * h + 8, 0xA5A5), want(w * h + 8, 0xA5A5);
    for (unsigned k = 0; k < w * h; ++k) {
        want[k] = frame.at(x0 + k % w, y0 + k / w);
    }
    EXPECT_EQ(0, roi_y10bit_image(frame.samples.data(), out.data(), 40, 30, x0, y0, w, h));
    EXPECT_EQ(want, out);
}

TEST(EmptyRectangle, WritesNothingAndSucceeds) {
    const Frame frame = Frame::ramp(kLine, 4);
    for (const auto& size : {std::make_pair(0u, 2u), {2u, 0u}, {0u, 0u}}) {
        for (const Conversion& c : kConversions) {
            SCOPED_TRACE(testing::Message() << c.name << " " << size.first << " x " << size.second);
            EXPECT_TRUE(convert(c, frame, 1, 1, size.first, size.second).empty());
        }
        std::vector<uint16_t> out(4, 0xA5A5);
        EXPECT_EQ(0, roi_y10bit_image(frame.samples.data(), out.data(), kLine, 4, 1, 1, size.first,
                                      size.second));
        EXPECT_EQ(std::vector<uint16_t>(4, 0xA5A5), out);
    }
}

}  // namespace
