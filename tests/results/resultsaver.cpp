// results_saver ROOT COUNT [MODE]: a helper of the crash and concurrency tests. Saves the same
// connector's measurement COUNT times with the save mode MODE (by default a data row and the
// report each time) under the platform root ROOT and prints "saved N" after each completed
// save, so that a test can kill it in the middle of one.

#include <cstdio>
#include <cstdlib>

#include "platformroot.h"
#include "resultfiles.h"
#include "resultsample.h"

int main(int argc, char** argv) {
    if (argc != 3 && argc != 4) {
        std::fprintf(stderr, "usage: results_saver ROOT COUNT [MODE]\n");
        return 2;
    }
    setPlatformRoot(QString::fromLocal8Bit(argv[1]));
    const int mode = argc == 4 ? std::atoi(argv[3]) : kSaveDataAndReport;
    SingleFiberResultRecord record = sampleRecord("SN-CRASH", mode);
    for (int save = 1; save <= std::atoi(argv[2]); ++save) {
        record.describer = QString::number(save);
        if (saveMeasureResultSF(record) != SaveOutcome::Saved) {
            return 1;
        }
        std::printf("saved %d\n", save);
        std::fflush(stdout);
    }
    return 0;
}
