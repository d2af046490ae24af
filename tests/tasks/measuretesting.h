#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "endfacerenderer.h"
#include "factorytasks.h"
#include "measuresinglefiberthread.h"

// What the measurement thread's tests share: a 960 x 960 region rendered around a centered
// fiber, defects placed by their distance from it, and runs of the first built-in task.

constexpr int kRegion = kMeasureWindowSide;

inline sim::EndFaceScene centeredScene() {
    sim::EndFaceScene scene;
    scene.centerX = 800.0;
    scene.centerY = 600.0;
    scene.blurSigmaPx = 0.7;
    return scene;
}

inline sim::Spot spotAt(double radiusUm, double angleDeg, double diameterUm, double contrast) {
    return sim::spotAtRadius(centeredScene(), radiusUm, angleDeg, diameterUm, contrast);
}

// A scratch across zone B, 30 um from the fiber center, clear of zone A.
inline sim::Scratch scratchInZoneB(double widthUm) {
    const double offset = 30.0 / kUmPerPixel;
    return {650.0, 600.0 - offset, 950.0, 600.0 - offset + 40.0, widthUm, 35.0, false};
}

// The 960 x 960 region of the frame around the fiber, rendered.
struct RenderedRegion {
    std::vector<unsigned char> gray = std::vector<unsigned char>(kRegion * kRegion);
    sim::EndFaceScene scene = centeredScene();
    int left = 320, top = 120;

    explicit RenderedRegion(std::vector<sim::Spot> spots = {},
                            std::vector<sim::Scratch> scratches = {}) {
        scene.spots = std::move(spots);
        scene.scratches = std::move(scratches);
        render();
    }
    void render() { sim::renderGray(scene, left, top, kRegion, kRegion, gray.data()); }
};

inline TaskInfoSetting firstTask() {
    return factoryTasks().value(0);
}

// Starts a run on the region, its fiber at the scene's center; false when refused.
inline bool startOn(MeasureSingleFiberThread& thread, RenderedRegion& region,
                    const TaskInfoSetting& task = firstTask(), int saveType = 0,
                    const QString& id = "SN1") {
    return thread.startMeasureSingleFiber(
        task, region.gray.data(), nullptr, kRegion, kRegion, region.left, region.top,
        int(region.scene.centerX) - region.left, int(region.scene.centerY) - region.top, 1,
        saveType, id, 0);
}

// A whole run on the region.
inline void measure(MeasureSingleFiberThread& thread, RenderedRegion& region,
                    const TaskInfoSetting& task = firstTask(), int saveType = 0,
                    const QString& id = "SN1") {
    ASSERT_TRUE(startOn(thread, region, task, saveType, id));
    thread.wait();
}
