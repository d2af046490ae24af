#include "fibercenterregion.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "nobadalloc.h"

namespace {

constexpr unsigned char kSet = 255;

// Neighbour steps of the boundary trace; each step on turns clockwise on screen (y down).
constexpr int kStepX[8] = {0, -1, -1, -1, 0, 1, 1, 1};
constexpr int kStepY[8] = {1, 1, 0, -1, -1, -1, 0, 1};
constexpr int kTraceStartDirection = 5;

bool hasSetNeighbour(const unsigned char* bw, int bwWidth, int x, int y) {
    for (int d = 0; d < 8; ++d) {
        if (bw[(y + kStepY[d]) * bwWidth + x + kStepX[d]] == kSet) {
            return true;
        }
    }
    return false;
}

}  // namespace

GetFiberCenterRegion::GetFiberCenterRegion() {
    InitPara(2000, 2000, 2, 24, 0, 3, 1, 1);
}

void GetFiberCenterRegion::InitPara(int width, int height, int scale, int /*spare*/, int invert,
                                    int erodeSize, int erodeCount, int fullResInvert) {
    const bool geometryChanged = width != width_ || height != height_ || scale != scale_;
    width_ = width;
    height_ = height;
    scale_ = scale;
    invert_ = invert;
    erodeSize_ = erodeSize;
    erodeCount_ = erodeCount;
    fullResInvert_ = fullResInvert;
    if (!geometryChanged) {
        return;
    }
    if (objects_.empty()) {
        objects_.resize(maxObjects_);
    }
    rows_ = height / scale;
    cols_ = width / scale + 1;
    const size_t needed = static_cast<size_t>(rows_) * cols_;
    if (needed > rowLists_.size()) {
        rowLists_.assign(needed, 0);
    }
}

// ---------------------------------------------------------------------------------------------
// Otsu threshold

float GetFiberCenterRegion::ClarityGetRef(const int* histogram, int t) {
    // Both weights start at 1, so an empty class never divides by zero.
    float w0 = 1.0f, m0 = 0.0f, w1 = 1.0f, m1 = 0.0f;
    for (int i = 0; i <= t; ++i) {
        w0 += histogram[i];
        m0 += static_cast<float>(i) * histogram[i];
    }
    for (int i = t + 1; i < 256; ++i) {
        w1 += histogram[i];
        m1 += static_cast<float>(i) * histogram[i];
    }
    const float d = m1 / w1 - m0 / w0;
    return d * (w0 * w1 * d);
}

int GetFiberCenterRegion::ClarityGetPriThresh(const unsigned char* image, int width,
                                              int height) const {
    int histogram[256] = {0};
    for (int y = 0; y < height; y += 2) {
        for (int x = 0; x < width; x += 2) {
            ++histogram[image[y * width + x]];
        }
    }
    float scores[256];
    float best = 0.0f;
    for (int t = 0; t < 256; ++t) {
        scores[t] = ClarityGetRef(histogram, t);
        if (scores[t] > best) {
            best = scores[t];
        }
    }
    // Near-equal scores are ties: the darkest of them wins.
    for (int t = 0; t < 256; ++t) {
        if (std::abs(scores[t] - best) < 0.1f) {
            return t % 256;
        }
    }
    return 0;
}

// ---------------------------------------------------------------------------------------------
// Half-resolution binary picture and erosion

void GetFiberCenterRegion::ClarityImage2BW(const unsigned char* image, int width, int /*height*/,
                                           int thresh, unsigned char* bw, int bwWidth,
                                           int bwHeight) const {
    std::memset(bw, 0, static_cast<size_t>(bwWidth) * bwHeight);
    if (invert_ != 0) {
        return;  // the inverted polarity marks nothing: its "set" value is 0, like the background
    }
    // The outermost row and column stay clear, so the boundary trace never leaves the picture.
    for (int j = 1; j < bwHeight - 1; ++j) {
        const unsigned char* source = image + static_cast<size_t>(scale_) * j * width;
        for (int i = 1; i < bwWidth - 1; ++i) {
            if (source[scale_ * i] < thresh) {
                bw[j * bwWidth + i] = kSet;
            }
        }
    }
}

void GetFiberCenterRegion::ImgErode(unsigned char* bw, int bwWidth, int bwHeight) const {
    const size_t size = static_cast<size_t>(bwWidth) * bwHeight;
    std::unique_ptr<unsigned char[]> eroded(new (std::nothrow) unsigned char[size]);
    if (!eroded) {
        return;
    }
    for (int pass = 0; pass < erodeCount_; ++pass) {
        std::memset(eroded.get(), 0, size);
        for (int y = 1; y < bwHeight - 1; ++y) {
            for (int x = 1; x < bwWidth - 1; ++x) {
                const unsigned char* centre = bw + y * bwWidth + x;
                bool allSet = *centre == kSet;
                for (int d = 0; d < 8 && allSet; ++d) {
                    allSet = centre[kStepY[d] * bwWidth + kStepX[d]] == kSet;
                }
                eroded[y * bwWidth + x] = allSet ? kSet : 0;
            }
        }
        std::memcpy(bw, eroded.get(), size);
    }
}

// ---------------------------------------------------------------------------------------------
// Labelling: boundary trace and erasure

void GetFiberCenterRegion::ClarityLabeling(unsigned char* bw, int bwWidth, int bwHeight) {
    objectCount_ = 0;
    for (int y = 1; y < bwHeight - 1; ++y) {
        for (int x = 1; x < bwWidth - 1; ++x) {
            if (bw[y * bwWidth + x] != kSet) {
                continue;
            }
            objectCount_ += ClaritySearchOutBoundary(bw, bwWidth, x, y, objectCount_);
            if (objectCount_ >= maxObjects_) {
                return;
            }
        }
    }
}

int GetFiberCenterRegion::ClaritySearchOutBoundary(unsigned char* bw, int bwWidth, int x0, int y0,
                                                   int index) {
    if (!hasSetNeighbour(bw, bwWidth, x0, y0)) {
        SetPointColor(bw, bwWidth, x0, y0, 0);
        return 0;
    }
    // The box starts at the table's capacity, not the picture's size, as the trace expects.
    Box box = {height_, 0, width_, 0};
    TraceBoundary(bw, bwWidth, x0, y0, box);
    objects_[index] = box;
    if (box.rowMin <= box.rowMax) {
        EraseTracedInterior(bw, bwWidth, box);
    }
    ClearRowLists();
    return 1;
}

// Follows the outer boundary clockwise from the object's first raster pixel, recording every
// pixel entered in its row's list, until the trace enters the start pixel again.
void GetFiberCenterRegion::TraceBoundary(const unsigned char* bw, int bwWidth, int x0, int y0,
                                         Box& box) {
    // A trace visits each (pixel, direction) state at most once before it closes; the cap only
    // guards against a picture whose boundary would never lead back to the start.
    const long maxSteps = 8L * bwWidth * rows_ + 1;
    int x = x0, y = y0, d = kTraceStartDirection;
    for (long step = 0; step < maxSteps; ++step) {
        int tries = 0;
        while (tries < 9 && bw[(y + kStepY[d]) * bwWidth + x + kStepX[d]] != kSet) {
            d = (d + 1) % 8;
            ++tries;
        }
        if (tries == 9) {
            return;
        }
        x += kStepX[d];
        y += kStepY[d];
        AppendToRowList(y, x);
        SetNum2MinMax(y, box.rowMin, box.rowMax);
        SetNum2MinMax(x, box.colMin, box.colMax);
        d = (d + 6) % 8;  // two steps back
        if (x == x0 && y == y0) {
            return;
        }
    }
}

void GetFiberCenterRegion::EraseTracedInterior(unsigned char* bw, int bwWidth, const Box& box) {
    for (int row = box.rowMin; row <= box.rowMax; ++row) {
        int* list = &rowLists_[static_cast<size_t>(row) * cols_];
        if (list[0] == 0) {
            continue;
        }
        Sort(list + 1, list[0]);
        FillLine(bw + row * bwWidth, list + 1, list[0]);
    }
}

void GetFiberCenterRegion::ClearRowLists() {
    for (int row = 0; row < rows_; ++row) {
        rowLists_[static_cast<size_t>(row) * cols_] = 0;
    }
}

void GetFiberCenterRegion::AppendToRowList(int row, int col) {
    int* list = &rowLists_[static_cast<size_t>(row) * cols_];
    if (list[0] < cols_ - 1) {  // a full list keeps its first columns
        list[++list[0]] = col;
    }
}

void GetFiberCenterRegion::Sort(int* values, int count) {
    for (int i = 0; i < count - 1; ++i) {
        for (int j = i + 1; j < count; ++j) {
            if (values[j] < values[i]) {
                const int swap = values[i];
                values[i] = values[j];
                values[j] = swap;
            }
        }
    }
}

// Erases the runs between consecutive boundary columns whose inside starts set; a row with a
// single boundary column keeps its pixel (and may start a further, smaller object).
void GetFiberCenterRegion::FillLine(unsigned char* row, const int* cols, int count) {
    for (int k = 0; k + 1 < count; ++k) {
        if (row[cols[k] + 1] == kSet) {
            FillLineBlack(row, cols[k], cols[k + 1]);
        }
    }
}

void GetFiberCenterRegion::FillLineBlack(unsigned char* row, int colFirst, int colLast) {
    std::memset(row + colFirst, 0, static_cast<size_t>(colLast - colFirst + 1));
}

// A value above the maximum only raises the maximum; the minimum sees the other values.
void GetFiberCenterRegion::SetNum2MinMax(int value, int& minimum, int& maximum) {
    if (value > maximum) {
        maximum = value;
    } else if (value < minimum) {
        minimum = value;
    }
}

void GetFiberCenterRegion::SetPointColor(unsigned char* bw, int bwWidth, int x, int y,
                                         unsigned char value) {
    bw[y * bwWidth + x] = value;
}

// ---------------------------------------------------------------------------------------------
// Object choice and the full-resolution binary picture

int GetFiberCenterRegion::ClarityGetObjCenter2(int& x, int& y, int expectedRadius) const {
    if (objectCount_ == 0) {
        return 0;
    }
    if (objectCount_ >= maxObjects_) {
        return -1;
    }
    const int expectedDiameter = 2 * expectedRadius;
    int bestDistance = 10;
    const Box* best = nullptr;
    for (int i = 0; i < objectCount_; ++i) {
        const Box& box = objects_[i];
        const int h = box.rowMax - box.rowMin;
        const int w = box.colMax - box.colMin;
        const int distance = std::abs(h - expectedDiameter);
        // Only a round object of the fiber's size; a later one must be strictly closer.
        if (std::abs(h - w) < 5 && distance < 8 && distance < bestDistance) {
            bestDistance = distance;
            best = &box;
        }
    }
    if (best == nullptr) {
        return -2;
    }
    x = best->colMin + best->colMax;
    y = best->rowMin + best->rowMax;
    return 1;
}

void GetFiberCenterRegion::BWImageThresh(const unsigned char* image, unsigned char* out, int count,
                                         int thresh, int invert) {
    const unsigned char below = invert == 0 ? kSet : 0;
    for (int i = 0; i < count; ++i) {
        out[i] = image[i] < thresh ? below : kSet - below;
    }
}

void GetFiberCenterRegion::CenterOrgBitmap2(const unsigned char* image, unsigned char* work,
                                            int width, int height, int thresh) const {
    BWImageThresh(image, work, width * height, thresh, invert_);
}

// ---------------------------------------------------------------------------------------------
// The blob stage

int GetFiberCenterRegion::AlgGetFiberCenterXY2(const unsigned char* image8, unsigned char* work,
                                               int width, int height, int expectedRadius, int& x,
                                               int& y, int& r) {
    return minusOneOnBadAlloc([&] {
        if (width <= 0 || height <= 0 || width > width_ || height > height_) {
            return -1;
        }
        const int thresh = ClarityGetPriThresh(image8, width, height);
        const int bwWidth = width / scale_;
        const int bwHeight = height / scale_;
        std::unique_ptr<unsigned char[]> bw(
            new (std::nothrow) unsigned char[static_cast<size_t>(bwWidth) * bwHeight]);
        if (!bw) {
            return -1;
        }
        ClarityImage2BW(image8, width, height, thresh, bw.get(), bwWidth, bwHeight);
        ImgErode(bw.get(), bwWidth, bwHeight);
        ClarityLabeling(bw.get(), bwWidth, bwHeight);

        const int code = ClarityGetObjCenter2(x, y, expectedRadius / scale_);
        if (code == 1) {
            // The object's center is a sum of two half-resolution coordinates: scale / 2 of it is
            // the full-resolution center.
            x = scale_ * x / 2;
            y = scale_ * y / 2;
            r = scale_ * r / 2;
            CenterOrgBitmap2(image8, work, width, height, thresh);
        } else {
            x = width / 2;
            y = height / 2;
        }
        return code;
    });
}
