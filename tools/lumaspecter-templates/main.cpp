// lumaspecter-templates OUTDIR: writes the eight result workbook templates (single-fiber and
// MT12 data and report workbooks, in English and Chinese) into OUTDIR. The build runs it and
// compiles the files into the program; installTemplatesIfMissing() puts them under /etc.

#include <cstdio>
#include <string>

#include "datatemplates.h"
#include "reporttemplates.h"

namespace {

bool writeLanguage(const std::string& dir, const TemplateTexts& texts) {
    const std::string suffix = std::string(texts.suffix) + ".xlsx";
    bool ok = writeDataTemplate(dir + "/MeasureResultDataTemplate" + suffix, texts);
    ok = writeReportTemplate(dir + "/MeasureResultReportTemplate" + suffix, texts) && ok;
    ok = writeMultiFiberDataTemplate(dir + "/DataEndfaceMT12" + suffix, texts) && ok;
    ok = writeMultiFiberReportTemplate(dir + "/ReportEndfaceMT12" + suffix, texts) && ok;
    return ok;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: lumaspecter-templates OUTDIR\n");
        return 2;
    }
    const bool ok =
        writeLanguage(argv[1], englishTexts()) && writeLanguage(argv[1], chineseTexts());
    return ok ? 0 : 1;
}
