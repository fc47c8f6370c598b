#pragma once

#include <windows.h>

namespace window {

/// Runs the thread's messages until PostQuitMessage; returns its exit code.
int runMessageLoop();

/// Hands on what waits in the thread's queue, for a caller that waits for something
/// else beside it. False once the thread is to quit; the loop further out sees that
/// too.
[[nodiscard]] bool dispatchPending();

/// Hands one message on as the loop does. Windows with WS_EX_CONTROLPARENT get the
/// dialog keys (Tab, arrows, mnemonics, Enter, Esc).
void dispatch(MSG& message);

}  // namespace window
