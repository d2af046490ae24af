#pragma once

#include <QString>
#include <QStringList>

#include "endfacescene.h"

// What the user asked lumaspecter-render for.
struct RenderRequest {
    sim::EndFaceScene scene;
    QString root;  // empty: the environment's platform root
    QString output;
    bool raw = false;     // raw little-endian words (8-bit bytes for a region) instead of PNG
    bool region = false;  // a 960 x 960 region around (regionX, regionY) instead of the frame
    int regionX = 0;
    int regionY = 0;
};

// The region's side, pixels.
constexpr int kRegionSide = kMeasureWindowSide;

// Fills request from the command line (arguments[0] is the program). Returns an empty string,
// or the message telling what is wrong. Sets wantsHelp (and returns "") for --help.
QString parseRenderRequest(const QStringList& arguments, RenderRequest& request, bool& wantsHelp);

QString renderUsage();
