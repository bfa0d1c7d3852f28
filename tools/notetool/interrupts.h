#ifndef NOTETOOL_INTERRUPTS_H
#define NOTETOOL_INTERRUPTS_H

// What notetool does on a signal. Ctrl-C (SIGINT), SIGTERM and a closed terminal (SIGHUP)
// end the run at once, leaving nothing behind: every temporary file is removed, the progress
// line is ended, and the exit code is 128 + the signal, as a shell reports it. A terminal
// that changes its size (SIGWINCH) gets a progress bar that fits it.
//
// The signals are taken by a thread of their own that waits for them (sigwait), not by a
// handler that interrupts whatever a thread was doing: the thread may take locks and call
// anything, so the list of temporary files needs no care beyond its lock.

namespace notetool {

// Blocks the signals in the calling thread and starts the thread that waits for them. Call
// it first in main(), before any other thread starts: threads inherit the blocked signals,
// which then reach only the waiting thread.
void handleSignals();

}  // namespace notetool

#endif
