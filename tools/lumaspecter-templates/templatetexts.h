#pragma once

// The words of the result templates in one language. The single-fiber and multi-fiber
// templates share the titles of the measurement; the rest is their own.
struct TemplateTexts {
    const char* suffix;  // "_EN" or "_CN" in the file names
    const char* maker;
    const char* product;
    const char* dataSheet;
    const char* reportSheet;
    const char* measurementTitles[7];  // ID, Description, Company, task, time, Operator, verdict
    const char* zone;                  // "Zone %d"
    const char* zoneSubtitles[5];      // Name, Inside, Outside, Defects, Scratches
    const char* reportTitle;
    const char* reportLabels[7];  // Product id ... Operator, then the verdict
    const char* tableZone;
    const char* tableZoneSubtitles[3];  // Name, Inner, Outer
    const char* tableDefects;
    const char* tableScratches;
    const char* tableCounts[2];  // Count, P/F
    const char* original;
    const char* analyse;
    const char* signature;
    const char* date;
    const char* fiber;              // "Fiber %d"
    const char* tableFiber;         // "Fiber"
    const char* fiberSubtitles[3];  // the verdict, defects, scratches of one fiber
};

const TemplateTexts& englishTexts();
const TemplateTexts& chineseTexts();
