#pragma once

#include <vector>

// The blob stage of the fiber refinement. The cladding is the darker disc of the picture: the
// picture is binarised with an Otsu threshold at half resolution, eroded once, and its dark
// objects are labelled by tracing their outer boundary (each traced object is erased so the
// raster scan skips its interior). The object whose bounding box is about as high as the
// expected fiber diameter and about as wide as it is high is the fiber.
//
// One object is built per search: it holds the labelling's object table and boundary scratch,
// sized for pictures of up to 2000 x 2000 pixels.
class GetFiberCenterRegion {
public:
    GetFiberCenterRegion();

    // Stores the working parameters; when the size or scale changed, sizes the object table
    // (once) and grows the boundary scratch to (height / scale) x (width / scale + 1) entries.
    // The spare parameter is accepted for the callers' sake and not used by the search.
    void InitPara(int width, int height, int scale, int spare, int invert, int erodeSize,
                  int erodeCount, int fullResInvert);

    // The blob stage on a width x height picture. On 1: (x, y) is the chosen object's center,
    // r is scaled by scale / 2 and work (width x height bytes, the caller's) holds the full
    // resolution binary picture, 255 where the picture is darker than the threshold. Otherwise
    // (x, y) is the picture's center, work is untouched, and the code is 0 (no dark object),
    // -1 (as many objects as the table holds, a picture larger than the table's size, or no
    // memory) or -2 (no object of fiber shape).
    int AlgGetFiberCenterXY2(const unsigned char* image8, unsigned char* work, int width,
                             int height, int expectedRadius, int& x, int& y, int& r);

    // Otsu threshold over every second pixel of every second row.
    int ClarityGetPriThresh(const unsigned char* image, int width, int height) const;

    int objectCount() const { return objectCount_; }

private:
    struct Box {
        int rowMin, rowMax, colMin, colMax;
    };

    static float ClarityGetRef(const int* histogram, int t);
    void ClarityImage2BW(const unsigned char* image, int width, int height, int thresh,
                         unsigned char* bw, int bwWidth, int bwHeight) const;
    void ImgErode(unsigned char* bw, int bwWidth, int bwHeight) const;
    void ClarityLabeling(unsigned char* bw, int bwWidth, int bwHeight);
    int ClaritySearchOutBoundary(unsigned char* bw, int bwWidth, int x0, int y0, int index);
    void TraceBoundary(const unsigned char* bw, int bwWidth, int x0, int y0, Box& box);
    void EraseTracedInterior(unsigned char* bw, int bwWidth, const Box& box);
    void ClearRowLists();
    void AppendToRowList(int row, int col);
    int ClarityGetObjCenter2(int& x, int& y, int expectedRadius) const;
    void CenterOrgBitmap2(const unsigned char* image, unsigned char* work, int width, int height,
                          int thresh) const;

    static void Sort(int* values, int count);
    static void FillLine(unsigned char* row, const int* cols, int count);
    static void FillLineBlack(unsigned char* row, int colFirst, int colLast);
    static void SetNum2MinMax(int value, int& minimum, int& maximum);
    static void SetPointColor(unsigned char* bw, int bwWidth, int x, int y, unsigned char value);
    static void BWImageThresh(const unsigned char* image, unsigned char* out, int count, int thresh,
                              int invert);

    int width_ = 0;
    int height_ = 0;
    int maxObjects_ = 200;
    int objectCount_ = 0;
    std::vector<Box> objects_;
    std::vector<int> rowLists_;  // per row: a count, then up to cols_ - 1 column numbers
    int rows_ = 0;
    int cols_ = 0;
    int scale_ = 0;
    int invert_ = 0;
    int erodeSize_ = 0;  // the kernel is always 3 x 3; the size travels along
    int erodeCount_ = 0;
    int fullResInvert_ = 0;  // travels along, the full-resolution picture uses invert_
};
