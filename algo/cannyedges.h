#pragma once

#include <vector>

// Canny's edge detector on an 8-bit gray picture: 3 x 3 Sobel derivatives, the gradient's
// magnitude as |dx| + |dy| (no square root, as the small board wants), thinning to the
// magnitude's maxima across the edge, and hysteresis between the two thresholds: a pixel above
// `upper` is an edge, one above `lower` is one when it touches an edge through its eight
// neighbours.

struct EdgePixel {
    int x, y;
    int dx, dy;  // the Sobel derivatives there
};

// Fills `edges` with the edge pixels of the width x height picture, in raster order, and
// returns their number; -1 when memory ran out. Pixels on the picture's border are never
// edges.
int findCannyEdges(const unsigned char* image, int width, int height, double lower, double upper,
                   std::vector<EdgePixel>& edges);
