// Feeds arbitrary bytes to the frame and region loaders of the tools, as a file's contents.
// Whatever they accept must be what they promise: a whole frame of 10-bit samples, or a
// region of at most a frame's pixels; whatever they refuse must say why. No input may make
// them reserve memory for a picture larger than a frame.

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "frameloader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), int(size));
    QString error;
    std::vector<uint16_t> frame;
    if (frameFromBytes(bytes, frame, error) == 1) {
        if (frame.size() != size_t(kSensorPixels)) {
            std::abort();
        }
        for (const uint16_t sample : frame) {
            if (sample > 1023) {
                std::abort();
            }
        }
    } else if (error.isEmpty()) {
        std::abort();
    }
    std::vector<unsigned char> region;
    int width = 0, height = 0;
    error.clear();
    if (regionFromBytes(bytes, region, width, height, error) == 1) {
        if (width < 1 || height < 1 || qint64(width) * height > kSensorPixels ||
            region.size() != size_t(width) * size_t(height)) {
            std::abort();
        }
    } else if (error.isEmpty()) {
        std::abort();
    }
    return 0;
}
