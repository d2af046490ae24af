#pragma once

// The rings of the end face left out of the scratch search. Each zone with scratch checking
// on contributes its diameters, cut by the excluded ranges (the cladding edge); with 0 and the
// outer diameter added, the sorted values taken in pairs bound the gaps between the searched
// zones: pairs of equal values (where searched zones meet) drop out.

namespace scratch {

// Appends to boundaries[n...] the diameters of the zone [diameterMin, diameterMax] cut by the
// excluded ranges (pairs of inner and outer diameters, in order), truncated to integers.
// Returns the new count. A zone adds at most 2 + 2 * rangeCount values.
int GetFiberRegion(int diameterMin, int diameterMax, const double* ranges, int rangeCount,
                   int* boundaries, int n);

}  // namespace scratch

// Appends 0 and the outer diameter, sorts the values and keeps the pairs of unequal values:
// the gaps, each an (inner, outer) pair of diameters. Returns the number of values kept.
// boundaries needs room for n + 2 values.
int GetValidCheckRadius(int* boundaries, int n, int zero, int outerDiameter);
