#pragma once

#include <cstdint>
#include <vector>

namespace sim {

// The look of a polished ceramic ferrule: a gentle mottling over tens to hundreds of pixels
// and a fine grain from pixel to pixel. Both are functions of the absolute frame position and
// the seed only, so any window of a frame gets the same texture as the whole frame.
class SurfaceTexture {
public:
    // Texture for the frame columns left .. left + width - 1.
    SurfaceTexture(uint32_t seed, int left, int width);

    // The mottling along frame row y as a brightness factor around 1.
    void fillShadingRow(int y, float* out) const;

    // The grain along frame row y, about normal with unit standard deviation.
    void fillGrainRow(int y, float* out) const;

private:
    // Smoothly interpolated random values on a square lattice of one period.
    struct Octave {
        int period;
        float amplitude;
        int firstCell;              // lattice column left of the first pixel
        std::vector<int> cell;      // per pixel: lattice column to its left, from firstCell
        std::vector<float> weight;  // per pixel: smoothed share of the right lattice column
    };

    Octave makeOctave(int period, float amplitude) const;
    void addOctaveRow(const Octave& octave, int y, float* out) const;
    float latticeValue(const Octave& octave, int column, int row) const;

    uint32_t seed_;
    int left_;
    int width_;
    std::vector<Octave> octaves_;
};

}  // namespace sim
