#pragma once

#include <linux/input.h>

#include <cstddef>
#include <vector>

namespace fakekernel {

// The simulated instrument's key device: a FIFO at "<root>/dev/event0" that this object creates
// when it is missing and holds open for writing while it lives. The key thread reads it as the
// instrument's input device; writers (lumaspecter-keys, tests) come and go, and because the
// simulation itself always holds a writer the key thread never sees an end of file between
// them.
class KeyEventFifo {
public:
    KeyEventFifo();
    // Closes the FIFO; the file stays for the next simulation.
    ~KeyEventFifo();
    KeyEventFifo(const KeyEventFifo&) = delete;
    KeyEventFifo& operator=(const KeyEventFifo&) = delete;

    // False when the FIFO could not be made or opened (another kind of file at the path).
    bool isOpen() const { return fd_ >= 0; }

    // Writes the bytes into the FIFO in one write; false when not all of them went in.
    bool write(const void* bytes, size_t count);
    bool write(const std::vector<input_event>& records);

private:
    int fd_ = -1;
};

// The records the input layer sends for one key: the key record with `value` (1 press,
// 0 release, 2 auto-repeat) and the synchronisation record behind it, stamped with the time now.
std::vector<input_event> keyRecords(unsigned short code, int value);

}  // namespace fakekernel
