#pragma once

#include <cstdint>

// The search for a single fiber in a whole frame. Free functions over buffers the caller owns,
// so that the capture loop and any other caller (the batch inspection, a test) each search with
// their own memory and can never share a work buffer.

// Bytes of the gray work buffer a search of a width x height frame needs.
constexpr unsigned singleFiberSearchBufferSize(unsigned width, unsigned height) {
    return width * height;
}

// Finds the fiber in a raw 10-bit frame: a coarse circle search over the whole frame, then,
// with `refine`, a fit of the cladding's edge in a 320 x 320 crop around it. `gray` is the
// caller's work buffer of singleFiberSearchBufferSize(width, height) bytes. Returns 1 when a
// fiber was found. (rawX, rawY) is its center; (x, y) the same center moved, where needed, so
// that a windowWidth x windowHeight window around it lies inside the frame. Without a fiber,
// both are the frame's center and 0 is returned.
int searchSingleFiber(const uint16_t* frame10, unsigned width, unsigned height, unsigned char* gray,
                      unsigned& x, unsigned& y, unsigned& rawX, unsigned& rawY,
                      unsigned windowWidth, unsigned windowHeight, bool refine);

// The refinement of a coarse center (x, y) in a raw 10-bit frame: where the 320 x 320 crop
// around it lies inside the frame, the center becomes the one fitted to the cladding's edge in
// that crop (or the blob's, when the fit cannot run); otherwise it stays. `gray` is a work
// buffer of at least 320 x 320 bytes.
void refineSingleFiber(const uint16_t* frame10, unsigned width, unsigned height,
                       unsigned char* gray, unsigned& x, unsigned& y);

// The coarse search: the 8-bit picture shrunk by `scale`, smoothed, and searched with the
// circle Hough transform; the best-supported circle's center in full-size pixels goes to
// (x, y). Diameters of 0 set no limit. Returns the number of circles found; with none, (x, y)
// is the picture's center.
int cvSearchSingleFiber(const unsigned char* image8, unsigned width, unsigned height, double scale,
                        unsigned minDiameter, unsigned maxDiameter, unsigned& x, unsigned& y);
