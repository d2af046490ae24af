#pragma once

#include <QString>

#include "renderrequest.h"

// Renders the request's frame or region and writes it, with its ground truth beside it as
// OUTPUT.json. Returns an empty string, or the message telling what failed.
QString writeRendering(const RenderRequest& request);
