#include "surfacetexture.h"

#include "pixelhash.h"

namespace sim {

namespace {

// Brightness variation of the ferrule's mottling (share of the level, about one standard
// deviation) at two scales, from the real pictures: blocks of 40 px differ by about 1 %, and a
// finer blotchiness of a few tenths of a level remains between 2 and 8 px.
constexpr int kCoarsePeriodPx = 150;
constexpr float kCoarseAmplitude = 0.011f;
constexpr int kFinePeriodPx = 9;
constexpr float kFineAmplitude = 0.004f;

int floorDiv(int value, int divisor) {
    return value >= 0 ? value / divisor : -((-value + divisor - 1) / divisor);
}

// Smoothstep: the interpolated surface has no creases at the lattice lines.
float smoothWeight(float t) {
    return t * t * (3.0f - 2.0f * t);
}

}  // namespace

SurfaceTexture::SurfaceTexture(uint32_t seed, int left, int width)
    : seed_(seed), left_(left), width_(width) {
    octaves_.push_back(makeOctave(kCoarsePeriodPx, kCoarseAmplitude));
    octaves_.push_back(makeOctave(kFinePeriodPx, kFineAmplitude));
}

SurfaceTexture::Octave SurfaceTexture::makeOctave(int period, float amplitude) const {
    Octave octave{period, amplitude, floorDiv(left_, period), {}, {}};
    octave.cell.resize(width_);
    octave.weight.resize(width_);
    for (int i = 0; i < width_; ++i) {
        const int x = left_ + i;
        const int cell = floorDiv(x, period);
        octave.cell[i] = cell - octave.firstCell;
        octave.weight[i] = smoothWeight(float(x - cell * period) / float(period));
    }
    return octave;
}

float SurfaceTexture::latticeValue(const Octave& octave, int column, int row) const {
    const uint32_t key = lineKey(seed_ ^ uint32_t(octave.period), HashStream::Shading, row);
    return octave.amplitude * normalFromHash(pixelHash(key, column));
}

void SurfaceTexture::addOctaveRow(const Octave& octave, int y, float* out) const {
    const int cellRow = floorDiv(y, octave.period);
    const float ty = smoothWeight(float(y - cellRow * octave.period) / float(octave.period));
    const int cells = octave.cell[width_ - 1] + 2;
    std::vector<float> column(cells);
    for (int c = 0; c < cells; ++c) {
        const float top = latticeValue(octave, octave.firstCell + c, cellRow);
        const float bottom = latticeValue(octave, octave.firstCell + c, cellRow + 1);
        column[c] = top + (bottom - top) * ty;
    }
    for (int i = 0; i < width_; ++i) {
        const float a = column[octave.cell[i]];
        const float b = column[octave.cell[i] + 1];
        out[i] += a + (b - a) * octave.weight[i];
    }
}

void SurfaceTexture::fillShadingRow(int y, float* out) const {
    for (int i = 0; i < width_; ++i) {
        out[i] = 1.0f;
    }
    for (const Octave& octave : octaves_) {
        addOctaveRow(octave, y, out);
    }
}

void SurfaceTexture::fillGrainRow(int y, float* out) const {
    const uint32_t key = lineKey(seed_, HashStream::Grain, y);
    for (int i = 0; i < width_; ++i) {
        out[i] = normalFromHash(pixelHash(key, left_ + i));
    }
}

}  // namespace sim
