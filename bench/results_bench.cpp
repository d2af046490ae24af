// Result files: appending the 500th row of a day's data workbook (the workbook is re-read and
// rewritten whole, so this is the cost that grows over a day), and writing one report with its
// two 960 x 960 pictures. Each runs five repetitions and reports mean, median and spread.

#include <benchmark/benchmark.h>

#include <QFile>
#include <QTemporaryDir>

#include "platformroot.h"
#include "resultdata.h"
#include "resultreport.h"
#include "resultsample.h"
#include "resulttemplates.h"

namespace {

// A platform root with the templates and a data workbook that holds 499 measurements,
// made once for all repetitions.
struct PrefilledDay {
    QTemporaryDir root;
    QString prefilled;
    SingleFiberResultRecord record = sampleRecord("SN1234567890");

    PrefilledDay() {
        setPlatformRoot(root.path());
        installTemplatesIfMissing();
        prefilled = root.path() + "/prefilled.xlsx";
        QFile::copy(platformPath("/etc/MeasureResultDataTemplate_EN.xlsx"), prefilled);
        for (int row = 0; row < 499; ++row) {
            saveMeasureResultDataAsXlsxSF(prefilled, record);
        }
    }
};

PrefilledDay& prefilledDay() {
    static PrefilledDay day;
    return day;
}

void BM_AppendFiveHundredthRow(benchmark::State& state) {
    PrefilledDay& day = prefilledDay();
    const QString data = day.root.path() + "/data.xlsx";
    for (auto _ : state) {
        state.PauseTiming();
        QFile::remove(data);
        QFile::copy(day.prefilled, data);
        state.ResumeTiming();
        if (!saveMeasureResultDataAsXlsxSF(data, day.record)) {
            state.SkipWithError("the row was not saved");
        }
    }
}
BENCHMARK(BM_AppendFiveHundredthRow)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

void BM_WriteReportWithTwoPictures(benchmark::State& state) {
    PrefilledDay& day = prefilledDay();
    const QString report = day.root.path() + "/SN1234567890_EN.xlsx";
    const QString reportTemplate = platformPath("/etc/MeasureResultReportTemplate_EN.xlsx");
    for (auto _ : state) {
        if (!saveMeasureResultReportAsXlsxSF(report, reportTemplate, day.record)) {
            state.SkipWithError("the report was not saved");
        }
    }
}
BENCHMARK(BM_WriteReportWithTwoPictures)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

}  // namespace
