#pragma once

#include <cstdint>

#include "instrumentoptics.h"

// The inspection task records. They are plain fixed-size values without pointers, so they are
// copied whole: through queued signals, into the measurement threads, into lists.
// Lengths are micrometres; in a limit, -1 means unlimited and 0 means none allowed.

constexpr int kTaskTextCapacity = 256;  // bytes of a text field, the terminating NUL included
constexpr int kMaxZones = 6;            // zones a task record holds

// The criteria of one zone, a ring of the end face between two diameters.
struct TaskZoneSetting {
    char sectionName[kTaskTextCapacity];  // "A", "B", "D", or "Zone n" for an added zone
    char sectionId[kTaskTextCapacity];    // UUID text
    int16_t dCheck;                       // 1: defects are detected and graded here
    int16_t sCheck;                       // 1: scratches are detected here
    int16_t diameterMin;                  // inner diameter of the ring
    int16_t diameterMax;                  // outer diameter of the ring
    int16_t dSensitivity;                 // 1 .. 10, larger finds fainter defects
    int16_t sSensitivity;                 // 1 .. 10
    int16_t sWidthLimit;                  // narrower scratches are "not bigger"
    int16_t sNoBiggerLimit;               // narrow scratches allowed
    int16_t sBiggerLimit;                 // wide scratches allowed
    int16_t dLimit1;                      // first defect size boundary
    int16_t dLimit2;                      // second boundary; equal to dLimit1 for two size classes
    int16_t dNoBiggerLimit;               // defects smaller than dLimit1 allowed
    int16_t dMidLimit;                    // defects from dLimit1 to dLimit2 allowed
    int16_t dBiggerLimit;                 // defects larger than dLimit2 allowed
};

// The outcome of one zone after a run: counts, and verdicts (1 pass, 0 fail).
struct TaskZoneResult {
    int16_t sNoBiggerNum;
    int16_t sNoBiggerResult;
    int16_t sBiggerNum;
    int16_t sBiggerResult;
    int16_t dNoBiggerNum;
    int16_t dNoBiggerResult;
    int16_t dMidNum;
    int16_t dMidResult;
    int16_t dBiggerNum;
    int16_t dBiggerResult;
    double dArea;  // defect area in the zone, square micrometres
};

struct TaskInfoSetting {
    char taskName[kTaskTextCapacity];  // unique among the tasks
    char taskId[kTaskTextCapacity];    // UUID text; the key of a task
    int16_t opticalType;               // 0 "SM", 1 "MM"
    int16_t contactorType;             // 0 "SF" (single fiber), 1 "MF" (MT ferrule)
    int16_t sectionNum;                // zones in use, innermost first
    TaskZoneSetting sections[kMaxZones];
    TaskZoneResult zoneResults[kMaxZones];  // parallel to sections, zeroed at every run
};

// The zones of a task that are in use: its zone count, kept within the record's capacity.
constexpr int zonesInUse(const TaskInfoSetting& task) {
    return task.sectionNum < 0 ? 0 : task.sectionNum > kMaxZones ? kMaxZones : task.sectionNum;
}

// The verdict on a count against its limit: 1 (pass) when the limit is -1 or the count does
// not exceed it, else 0.
constexpr int16_t verdictWithinLimit(int count, int limit) {
    return limit == -1 || count <= limit ? 1 : 0;
}

// Zone diameters become pixel radii (at the single-fiber scale) by an integer halving
// before the division: a 25 um zone has a radius of 12 / scale pixels.
constexpr double zoneRadiusPx(int diameterUm, double scale = kUmPerPixel) {
    return (diameterUm / 2) / scale;
}
