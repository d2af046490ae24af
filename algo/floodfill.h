#pragma once

#include <vector>

// Scan-line flood fill of a 4-connected region with an explicit stack of seed points instead
// of recursion, so that a region as large as the whole image cannot exhaust the call stack.
// Spans run down columns; the stack starts with room for 1600 seeds and doubles when full.
class FloodFill {
public:
    FloodFill();

    // Recolours the region of oldColor pixels around (x, y) to newColor and writes markValue
    // into `mark` over it. Returns the number of pixels filled, with the region's bounding box
    // and the smallest zone index found in zoneMap over it (255 values ignored; 255 when all
    // were; 0 without a zone map). Nothing is filled when the colours are equal or the seed is
    // not oldColor.
    int Fill(unsigned char* image, unsigned char* mark, const unsigned char* zoneMap, int width,
             int height, int x, int y, unsigned char newColor, unsigned char oldColor,
             unsigned char markValue, int& minX, int& minY, int& maxX, int& maxY, int& minZone);

    // The same fill, recolouring only.
    int Fill(unsigned char* image, int width, int height, int x, int y, unsigned char newColor,
             unsigned char oldColor);

    int capacity() const { return static_cast<int>(xs_.size()); }

private:
    struct Region;
    int fillColumns(unsigned char* image, int width, int height, int x, int y,
                    unsigned char newColor, unsigned char oldColor, Region* region);

    void push(int x, int y);
    int popx() const;
    int popy();
    void emptyStack();

    std::vector<int> xs_;
    std::vector<int> ys_;
    int count_ = 0;
};
