#ifndef LIBNOTE_PYTHON_LOG_SINK_H
#define LIBNOTE_PYTHON_LOG_SINK_H

// Where the library's log goes inside a Python program.
//
// The library prints its diagnostics through the C stream `stdout` from whichever thread
// calls it. A Python program's own output does not use that stream: sys.stdout writes to
// file descriptor 1 itself, and so do subprocesses, which inherit the descriptor. Moving
// descriptor 1 away (as notetool does) would therefore silence the program; instead the
// module points `stdout` at a stream of its own that passes every write through to
// descriptor 1 unchanged, except the writes made by the library's work, which go to the
// log file or nowhere. What else in the process writes to `stdout` (the interactive prompt
// of input(), other extensions) still reaches the terminal.
//
// Which writes are the library's is decided per thread at the moment of the write, so the
// stream is unbuffered: a write is routed by the thread that makes it, never by the thread
// that happens to flush a buffer later.

#include <string>

namespace libnote_python {

// Puts the routing stream in place of `stdout`, once per process. The previous stream is
// flushed and kept, never closed, so a thread that loaded it before the switch still writes
// into a valid stream.
void installLogSink();

// Sends the library's log to `path`, appended, or discards it when `path` is empty (the
// default). Throws std::system_error when the file cannot be opened; the log then keeps
// going where it went before.
void setLog(const std::string& path);

// The calling thread does the library's work while one of these lives: its writes to
// `stdout` are the library's log. Nests.
class LibraryWork {
public:
    LibraryWork();
    ~LibraryWork();
    LibraryWork(const LibraryWork&) = delete;
    LibraryWork& operator=(const LibraryWork&) = delete;
};

// While one of these lives, the threads that Python does not know (those the page pipeline
// starts to render on several workers) count as the library's work too.
class PipelineWork {
public:
    PipelineWork();
    ~PipelineWork();
    PipelineWork(const PipelineWork&) = delete;
    PipelineWork& operator=(const PipelineWork&) = delete;
};

}  // namespace libnote_python

#endif
