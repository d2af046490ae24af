#pragma once

#include <string>

#include "templatetexts.h"

// The daily data workbooks: maker and product on top, the titles of a measurement in rows 3
// and 4, then one row per measurement, which the program appends.

// Single fiber: per zone its name, inner and outer diameter, defects and scratches.
bool writeDataTemplate(const std::string& path, const TemplateTexts& texts);

// MT ferrule with 12 fibers: per fiber its verdict, defects and scratches.
bool writeMultiFiberDataTemplate(const std::string& path, const TemplateTexts& texts);
