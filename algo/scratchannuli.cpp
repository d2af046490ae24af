#include "scratchannuli.h"

#include <algorithm>

namespace scratch {

int GetFiberRegion(int diameterMin, int diameterMax, const double* ranges, int rangeCount,
                   int* boundaries, int n) {
    boundaries[n++] = diameterMin;
    for (int i = 0; i < rangeCount; ++i) {
        const double inner = ranges[2 * i], outer = ranges[2 * i + 1];
        if (outer > diameterMin && outer < diameterMax) {  // the range ends inside the zone
            if (inner >= diameterMin) {
                boundaries[n++] = int(inner);
            }
            boundaries[n++] = int(outer);
        } else if (outer > diameterMax && inner < diameterMax) {  // it cuts the zone's outside
            boundaries[n++] = int(inner);
            return n;
        } else if (inner > diameterMax) {
            break;
        }
    }
    boundaries[n++] = diameterMax;
    return n;
}

}  // namespace scratch

int GetValidCheckRadius(int* boundaries, int n, int zero, int outerDiameter) {
    boundaries[n++] = zero;
    boundaries[n++] = outerDiameter;
    std::sort(boundaries, boundaries + n);
    int kept = 0;
    for (int i = 0; i + 1 < n; i += 2) {
        if (boundaries[i] != boundaries[i + 1]) {
            boundaries[kept++] = boundaries[i];
            boundaries[kept++] = boundaries[i + 1];
        }
    }
    return kept;
}
