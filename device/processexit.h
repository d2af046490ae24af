#pragma once

// The device layers end the process in two places, when the video output cannot be set up
// (the screen would stay black). Both go through here, so that a test can see the exit
// instead of losing its own process.

// Ends the process with `status`, or, when a hook is set, calls the hook and returns.
void exitProcess(int status);

// Sets the hook (null: exit for real again).
void setProcessExitHook(void (*hook)(int status));
