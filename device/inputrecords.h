#pragma once

#include <linux/input.h>

#include <cstddef>
#include <vector>

// The key device hands out native input_event records: 24 bytes on a 64-bit host, 16 on the
// 32-bit board. A read may end inside a record (a writer of the simulated device may write one
// in two parts), so the bytes read are gathered here and only whole records are handed on; the
// start of a record that is not complete yet waits for the next read. Reading a record from
// its middle would turn every key after it into garbage.
class InputRecordBuffer {
public:
    static constexpr size_t kCapacity = 1024;
    static constexpr size_t kRecordSize = sizeof(input_event);

    // Where the next read puts its bytes, and how many fit.
    char* freeSpace() { return bytes_ + used_; }
    size_t freeBytes() const { return kCapacity - used_; }

    // Takes `count` bytes just read into freeSpace(); returns the records they complete, in
    // order, and keeps the bytes of a partial record.
    std::vector<input_event> take(size_t count);

    // Forgets a partial record: its writer has gone and no rest will follow.
    void dropPartial() { used_ = 0; }

private:
    char bytes_[kCapacity];
    size_t used_ = 0;
};
