#pragma once

// Geometry of scratch lines about the fiber center.

// True when either endpoint lies strictly inside the circle of radius r about (cx, cy).
bool CheckInCircle(double x1, double y1, double x2, double y2, int cx, int cy, double r);

// The two points where the infinite line through (x1, y1) and (x2, y2) meets the circle of
// radius r about (cx, cy): the one with the larger x first (for a vertical line, the larger y).
// Returns false, leaving the outputs alone, when the line misses the circle.
bool GetLineCirclePoint(double x1, double y1, double x2, double y2, int cx, int cy, double r,
                        double& ox1, double& oy1, double& ox2, double& oy2);

// Perpendicular distance from (px, py) to the infinite line through (x1, y1) and (x2, y2).
double Point2LineDistance(double px, double py, double x1, double y1, double x2, double y2);
