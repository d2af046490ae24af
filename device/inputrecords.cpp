#include "inputrecords.h"

#include <cstring>

std::vector<input_event> InputRecordBuffer::take(size_t count) {
    used_ += count;
    const size_t whole = used_ / kRecordSize;
    if (whole == 0) {
        return {};  // only the start of a record so far
    }
    std::vector<input_event> records(whole);
    std::memcpy(records.data(), bytes_, whole * kRecordSize);
    used_ -= whole * kRecordSize;
    std::memmove(bytes_, bytes_ + whole * kRecordSize, used_);
    return records;
}
