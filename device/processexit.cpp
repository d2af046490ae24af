#include "processexit.h"

#include <atomic>
#include <cstdlib>

namespace {

std::atomic<void (*)(int)> exitHook{nullptr};

}  // namespace

void exitProcess(int status) {
    void (*hook)(int) = exitHook.load();
    if (hook == nullptr) {
        std::exit(status);
    }
    hook(status);
}

void abortProcess() {
    void (*hook)(int) = exitHook.load();
    if (hook == nullptr) {
        std::abort();
    }
    hook(kAbortStatus);
}

void setProcessExitHook(void (*hook)(int)) {
    exitHook.store(hook);
}
