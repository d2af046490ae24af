#pragma once

// The device layers end the process when the video output cannot be set up (the screen would
// stay black) and when the focus motor's bus cannot be. Both go through here, so that a test can
// see the exit instead of losing its own process.

// Ends the process with `status`, or, when a hook is set, calls the hook and returns.
void exitProcess(int status);

// Aborts the process (std::abort), or, when a hook is set, calls the hook with kAbortStatus and
// returns.
constexpr int kAbortStatus = 134;
void abortProcess();

// Sets the hook (null: exit for real again).
void setProcessExitHook(void (*hook)(int status));
