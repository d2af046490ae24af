#pragma once

#include <cstdlib>
#include <memory>

#include "defectinfo.h"
#include "floodfill.h"

// Turns a binary defect map (255 = candidate pixel) into defect records: one-pixel gaps are
// closed, the map is split into 4-connected regions, regions under 16 pixels and the fiber's
// own edge ring are dropped, and each remaining region gives its bounding box and zone.
// Records are in the order of each region's first pixel in a row-major scan.
class GetFiberValidDefect {
public:
    GetFiberValidDefect();

    // defectMap is consumed; defectMap2 receives 255 on the pixels of the accepted defects.
    // zoneMap (may be null) gives each pixel's zone index. Returns the number of defects, or
    // -1 when the list could not grow.
    int GetValidDefect(unsigned char* defectMap, unsigned char* defectMap2,
                       const unsigned char* zoneMap, int width, int height, int cx, int cy);

    defect_info_struct* GetDefectList() { return list_.get(); }

private:
    struct FreeDeleter {
        void operator()(defect_info_struct* list) const { std::free(list); }
    };

    int ClarityLabelingFillFlood(unsigned char* map, int width, int height, int rowFrom, int rowTo,
                                 int colFrom, int colTo, int cx, int cy, unsigned char* regions);
    int FillRegion(unsigned char* map, unsigned char* regions, int width, int height, int x, int y,
                   int cx, int cy, int minSide);
    bool growList();

    std::unique_ptr<defect_info_struct, FreeDeleter> list_;
    int capacity_ = 0;
    int count_ = 0;
    const unsigned char* zoneMap_ = nullptr;
    FloodFill fill_;
};

// Marks the bounding box of every defect (in list order, so a later box wins where boxes
// overlap): `mask` (may be null) gets `value` and `labelMap` (may be null) the defect's index.
// Records with top 0, an inverted box or zone 255 are skipped.
void SetDefectRectPixel(const defect_info_struct* list, int width, int height, int count,
                        unsigned char* mask, short* labelMap, unsigned char value);
