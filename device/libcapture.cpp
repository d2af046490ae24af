#include "libcapture.h"

#include <cstddef>
#include <cstring>

// Every conversion walks its rectangle row by row. Each row gets its source and destination
// pointers once and then runs a plain inner loop over restrict-qualified pointers, which the
// compiler vectorises: the conversions then run at the speed of memory. A rectangle with w or h
// of 0 leaves every loop empty, so nothing is written.

namespace {

// The rectangle to convert, located in the source frame.
struct SourceRect {
    const uint16_t* first;  // sample (x0, y0)
    std::size_t stride;     // samples from one row to the next
    unsigned w, h;

    const uint16_t* row(unsigned y) const { return first + y * stride; }
};

SourceRect locate(const uint16_t* src, unsigned srcWidth, unsigned x0, unsigned y0, unsigned w,
                  unsigned h) {
    return {src + std::size_t(y0) * srcWidth + x0, srcWidth, w, h};
}

// Outputs of the 2 x 2 conversions along a side of n samples: the last block of an odd side
// still counts, reading one sample past the rectangle.
unsigned halfRoundedUp(unsigned n) {
    return (n + 1) / 2;
}

uint8_t eightBits(unsigned tenBits) {
    return uint8_t(tenBits >> 2);
}

// Mean of the 2 x 2 block at upper[0..1] and lower[0..1] in 8 bits: the sum of its four
// samples (at most 12 bits) shifted down by 4. Each row's pair of samples is read as one 32-bit
// word and the two words are added first: their 16-bit halves cannot carry into each other, as
// 10-bit samples sum far below 2^16. Adding the two halves then gives the block's sum, in either
// byte order. A loop over whole words vectorises without the shuffles that picking out even and
// odd samples would cost, and keeps these conversions at the speed of memory.
uint8_t blockMean(const uint16_t* upper, const uint16_t* lower) {
    uint32_t upperPair, lowerPair;
    std::memcpy(&upperPair, upper, sizeof upperPair);
    std::memcpy(&lowerPair, lower, sizeof lowerPair);
    const uint32_t columnSums = upperPair + lowerPair;
    return uint8_t(((columnSums & 0xFFFF) + (columnSums >> 16)) >> 4);
}

// How a row of 8-bit pixels is stored: one byte a pixel in gray; two in UYVY, chroma then
// luma, where only the luma changes. The UYVY pair is still updated as one 16-bit word: the
// compiler does not vectorise a loop whose stores skip every second byte (nor a chroma byte
// written back as read, which it removes first), and the conversion would run several times
// slower.
struct GrayPixels {
    static constexpr std::size_t kBytes = 1;
    static void put(uint8_t* __restrict row, std::size_t i, uint8_t value) { row[i] = value; }
};

// The word's low byte is the first one in memory, the chroma byte.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "UYVY luma update assumes little-endian");

struct UyvyLuma {
    static constexpr std::size_t kBytes = 2;
    static void put(uint8_t* __restrict row, std::size_t i, uint8_t luma) {
        uint16_t pair;
        std::memcpy(&pair, row + 2 * i, sizeof pair);
        pair = uint16_t((pair & 0x00FF) | (luma << 8));
        std::memcpy(row + 2 * i, &pair, sizeof pair);
    }
};

// Row loops count in std::size_t: with an unsigned counter, 2 * i may wrap around as far as
// the compiler knows, and it then leaves the loop unvectorised.
// The vectorised body of this loop is only a handful of instructions, and how its few bytes of
// code happen to fall on the processor's fetch boundaries made the UYVY conversion up to twice
// as slow from one build to the next; unrolled, it runs the same whatever the placement.
template <typename Pixels>
void shiftRow(const uint16_t* __restrict in, uint8_t* __restrict out, std::size_t count) {
#pragma GCC unroll 4
    for (std::size_t i = 0; i < count; ++i) {
        Pixels::put(out, i, eightBits(in[i]));
    }
}

template <typename Pixels>
void blockMeanRow(const uint16_t* __restrict upper, const uint16_t* __restrict lower,
                  uint8_t* __restrict out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        Pixels::put(out, i, blockMean(upper + 2 * i, lower + 2 * i));
    }
}

void decimateRow(const uint16_t* __restrict in, uint8_t* __restrict out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        out[i] = eightBits(in[2 * i]);
    }
}

template <typename Pixels>
void shiftRows(const SourceRect& rect, uint8_t* dst) {
    const std::size_t dstStride = Pixels::kBytes * rect.w;
    for (unsigned y = 0; y < rect.h; ++y) {
        shiftRow<Pixels>(rect.row(y), dst + y * dstStride, rect.w);
    }
}

// The lower row of each block is found a sensor line after the upper one, whatever the stride:
// the sensor's line length is fixed, and the stride only steps from one pair of rows to the
// next.
template <typename Pixels>
void blockMeanRows(const SourceRect& rect, uint8_t* dst, std::size_t dstStride) {
    const unsigned columns = halfRoundedUp(rect.w);
    for (unsigned j = 0; j < halfRoundedUp(rect.h); ++j) {
        const uint16_t* upper = rect.row(2 * j);
        blockMeanRow<Pixels>(upper, upper + kSensorLineSamples, dst + j * dstStride, columns);
    }
}

void decimateRows(const SourceRect& rect, uint8_t* dst) {
    const unsigned columns = halfRoundedUp(rect.w);
    for (unsigned j = 0; j < halfRoundedUp(rect.h); ++j) {
        decimateRow(rect.row(2 * j), dst + std::size_t(j) * columns, columns);
    }
}

}  // namespace

int convert_y10bit_to_y8bit(const uint16_t* src, uint8_t* dst, unsigned srcWidth,
                            unsigned /*srcHeight*/, unsigned x0, unsigned y0, unsigned w,
                            unsigned h) {
    shiftRows<GrayPixels>(locate(src, srcWidth, x0, y0, w, h), dst);
    return 0;
}

int convert_y10bit_to_y8bit_scaleIn(const uint16_t* src, uint8_t* dst, unsigned srcWidth,
                                    unsigned /*srcHeight*/, unsigned x0, unsigned y0, unsigned w,
                                    unsigned h) {
    blockMeanRows<GrayPixels>(locate(src, srcWidth, x0, y0, w, h), dst, halfRoundedUp(w));
    return 0;
}

int convert_y10bit_to_y8bit_scaleIn_skip(const uint16_t* src, uint8_t* dst, unsigned srcWidth,
                                         unsigned /*srcHeight*/, unsigned x0, unsigned y0,
                                         unsigned w, unsigned h) {
    decimateRows(locate(src, srcWidth, x0, y0, w, h), dst);
    return 0;
}

int convert_y10bit_to_yuv422ile(const uint16_t* src, uint8_t* dst, unsigned srcWidth,
                                unsigned /*srcHeight*/, unsigned x0, unsigned y0, unsigned w,
                                unsigned h) {
    shiftRows<UyvyLuma>(locate(src, srcWidth, x0, y0, w, h), dst);
    return 0;
}

int convert_y10bit_to_yuv422ile_scaleIn(const uint16_t* src, uint8_t* dst, unsigned srcWidth,
                                        unsigned /*srcHeight*/, unsigned x0, unsigned y0,
                                        unsigned w, unsigned h) {
    blockMeanRows<UyvyLuma>(locate(src, srcWidth, x0, y0, w, h), dst, w);
    return 0;
}

int roi_y10bit_image(const uint16_t* src, uint16_t* dst, unsigned srcWidth, unsigned /*srcHeight*/,
                     unsigned x0, unsigned y0, unsigned w, unsigned h) {
    const SourceRect rect = locate(src, srcWidth, x0, y0, w, h);
    for (unsigned y = 0; y < h; ++y) {
        std::memcpy(dst + std::size_t(y) * w, rect.row(y), std::size_t(w) * sizeof(uint16_t));
    }
    return 0;
}
