#pragma once

#include <string>

#include "templatetexts.h"

// The per-connector report workbooks: title, maker, the measurement's values beside their
// labels, a result table, the measured image and the overlay under their captions, and fields
// for a signature and a date. Rows 4 to 8 are left free for a logo.

// Single fiber: one table row per zone.
bool writeReportTemplate(const std::string& path, const TemplateTexts& texts);

// MT ferrule with 12 fibers: one table row per fiber.
bool writeMultiFiberReportTemplate(const std::string& path, const TemplateTexts& texts);
