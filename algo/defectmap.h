#pragma once

// The binary defect map: pixels inside the inspected rings whose local contrast exceeds their
// ring's threshold.

// Local contrast of pixel (x, y) of a gray image with the given row length. Mode 0: the
// largest of |p(x+1) - p(x-2)|, |p(x) - p(x-1)| and the same two along the column. The stencil
// is asymmetric on purpose (two pixels back, one ahead): it needs 2 pixels of margin on the
// left and top and 1 on the right and bottom. Mode 1: the gray value itself.
double GetPixelDefectThresh(const unsigned char* image, int x, int y, int width, int mode);

class GetFiberDefectMap {
public:
    static constexpr int kMaxRings = 10;

    GetFiberDefectMap() = default;

    // Loads `count` rings: radii holds (inner, outer) pixel radius pairs, thresholds one
    // contrast threshold per ring. Returns count, or -1 (nothing loaded) beyond kMaxRings.
    int SetRadiusList(const int* radii, const double* thresholds, int count);

    // Clears defectMap and sets 255 on every pixel of a ring (strictly between its radii, the
    // first ring in list order) whose contrast exceeds the ring's threshold. Only the square
    // of half-side R - 4 around (cx, cy) is examined, R being the largest radius, and never
    // the 4-pixel border of the image.
    void GetNearBwDefectImgMap(const unsigned char* image, unsigned char* defectMap, int width,
                               int height, int cx, int cy) const;

private:
    void markRow(const unsigned char* image, unsigned char* defectMap, int width, int y, int cx,
                 int colFirst, int colLast, long dy2, const int* wholeThresholds) const;
    int largestRadius() const;

    int radii_[2 * kMaxRings] = {};
    double thresholds_[kMaxRings] = {};
    int count_ = 0;
};
