#pragma once

#include <cstdint>

#include "instrumentoptics.h"

// The capture layer: the camera at "/dev/video0" and the conversions of its frames.
//
// The device functions work on the one capture device of the process (module state, not
// guarded: only the capture thread streams, and set_exposure is a single request). They return
// 0, or -1 after reporting the failed request: the request's name and the system's error text
// on stderr, or, for the messages that end in a line break, the message on stdout.

// One driver buffer as mapped into the process.
struct capture_buffer_info {
    unsigned index;   // the driver's buffer index
    unsigned length;  // bytes mapped
    void* start;      // the mapping, null when not mapped
};

// Driver buffers the module holds.
constexpr unsigned kCaptureBuffers = 2;

// Opens "/dev/video0", selects input 0, sets 1600 x 1200 "BA10", the exposure 20, and maps and
// queues the driver's buffers. A driver that grants no buffer leaves the device open without
// buffers and returns 0. Every failure closes the device again.
int init_capture_device();
int start_capture();
int stop_capture();
// Waits for the next frame (at most a second) and takes its buffer: *frame is the mapped
// frame, 1600 x 1200 little-endian 10-bit samples, until release_capture_frame().
int get_capture_frame(void** frame);
int release_capture_frame();
// Unmaps the buffers and closes the device.
int release_capture_device();
int set_exposure(unsigned int exposure);
// Writes one 1600 x 1200 frame of `bytesPerPixel` bytes a pixel from `data` to the file at
// `path` (already under the platform root).
int save_capture_frame(const char* path, const void* data, int bytesPerPixel);

// Frame conversions of the capture layer. A raw frame holds one little-endian 16-bit word per
// sensor sample with a 10-bit gray value in its low bits; its line length is the sensor's
// 1600 samples. S(x, y) below is the sample src[y * srcWidth + x].
//
// Every conversion takes the same arguments: the source frame, the destination, the source
// width (its stride in samples), the source height (not used), and the rectangle x0, y0, w, h
// to convert. A rectangle with w or h of 0 converts nothing. The rectangle is not checked
// against the frame: callers clamp first. Each returns 0.
//
// The 2 x 2 conversions give ceil(w/2) x ceil(h/2) pixels: with an odd w or h, the last block
// of a row or column still counts and reads one sample past the rectangle.

// Line length of the sensor in samples; the 2 x 2 conversions always find the lower row of a
// block this far after the upper one, whatever srcWidth is, and use srcWidth only to step from
// one pair of rows to the next (2 * srcWidth samples).
constexpr unsigned kSensorLineSamples = kSensorWidth;

// Gray w x h, stride w: D(i, j) = S(x0 + i, y0 + j) >> 2.
int convert_y10bit_to_y8bit(const uint16_t* src, uint8_t* dst, unsigned srcWidth,
                            unsigned srcHeight, unsigned x0, unsigned y0, unsigned w, unsigned h);

// Gray ceil(w/2) x ceil(h/2), stride ceil(w/2): the mean of each 2 x 2 block, shifted to 8 bits,
// D(i, j) = (S(a, b) + S(a + 1, b) + lower(a) + lower(a + 1)) >> 4 with a = x0 + 2i,
// b = y0 + 2j, where lower(x) is the sample kSensorLineSamples after S(x, b).
int convert_y10bit_to_y8bit_scaleIn(const uint16_t* src, uint8_t* dst, unsigned srcWidth,
                                    unsigned srcHeight, unsigned x0, unsigned y0, unsigned w,
                                    unsigned h);

// Gray ceil(w/2) x ceil(h/2), stride ceil(w/2): every second sample of every second row, no
// averaging, D(i, j) = S(x0 + 2i, y0 + 2j) >> 2.
int convert_y10bit_to_y8bit_scaleIn_skip(const uint16_t* src, uint8_t* dst, unsigned srcWidth,
                                         unsigned srcHeight, unsigned x0, unsigned y0, unsigned w,
                                         unsigned h);

// UYVY w x h (two bytes a pixel, 2w bytes a row): only the luma (odd) bytes are written,
// dst[2 (j w + i) + 1] = S(x0 + i, y0 + j) >> 2; the chroma bytes keep whatever the output
// buffer holds (128 there, so the picture is gray).
int convert_y10bit_to_yuv422ile(const uint16_t* src, uint8_t* dst, unsigned srcWidth,
                                unsigned srcHeight, unsigned x0, unsigned y0, unsigned w,
                                unsigned h);

// UYVY ceil(w/2) x ceil(h/2), row stride w bytes: luma of the 2 x 2 mean of
// convert_y10bit_to_y8bit_scaleIn, dst[j w + 2i + 1] = D(i, j); chroma bytes untouched. With an
// odd w, the last luma byte of a row is the first byte of the next row, and the last row ends
// one byte past ceil(h/2) * w.
int convert_y10bit_to_yuv422ile_scaleIn(const uint16_t* src, uint8_t* dst, unsigned srcWidth,
                                        unsigned srcHeight, unsigned x0, unsigned y0, unsigned w,
                                        unsigned h);

// Raw w x h, stride w: the rectangle's samples copied unchanged.
int roi_y10bit_image(const uint16_t* src, uint16_t* dst, unsigned srcWidth, unsigned srcHeight,
                     unsigned x0, unsigned y0, unsigned w, unsigned h);
