#pragma once

#include <exception>

// No exception leaves the image algorithms (see README.md). A public function whose working
// lists live in standard containers runs its work through this guard: memory that runs out
// inside becomes the status -1, like any other failure the caller already handles.
template <typename Work>
int minusOneOnBadAlloc(Work&& work) noexcept {
    try {
        return work();
    } catch (const std::exception&) {  // bad_alloc, or length_error for an absurd size
        return -1;
    }
}
