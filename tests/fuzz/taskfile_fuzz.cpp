// Feeds arbitrary bytes to the task file loader. Whatever it accepts must survive a write and a
// second load unchanged: the saved form of the loaded tasks is a fixed point.

#include <QByteArray>
#include <QList>
#include <cstdint>
#include <cstdlib>

#include "taskjson.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray input(reinterpret_cast<const char*>(data), int(size));
    QList<TaskInfoSetting> loaded;
    if (parseTaskFile(input, loaded) != 0) {
        return 0;
    }
    const QByteArray saved = taskFileBytes(loaded);
    QList<TaskInfoSetting> reloaded;
    if (parseTaskFile(saved, reloaded) != 0 || taskFileBytes(reloaded) != saved) {
        std::abort();
    }
    return 0;
}
