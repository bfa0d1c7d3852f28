"""The package lets other Python threads run while the library works. That parallel readers
agree is loading_test's Loading.ParallelReadersAgree, run under ThreadSanitizer, and that
parallel pages are written in order is notetool's -j tests'."""

import threading
import time

import libnote


def test_the_gil_is_released_while_the_library_works(notes, tmp_path):
    """Python code runs on another thread while a save is inside the library."""
    note = libnote.open(notes[0])
    inside = []
    ticks = []

    def save():
        start = time.monotonic()
        note.save(tmp_path / "note.pdf", vector=True)  # tracing: long enough to watch
        inside.append((start, time.monotonic()))

    worker = threading.Thread(target=save)
    worker.start()
    while worker.is_alive():
        time.sleep(0.001)  # then takes the GIL back to go on
        ticks.append(time.monotonic())
    worker.join()
    (start, end), = inside
    # Away from the call's ends, where the thread still runs Python code of its own.
    during = [t for t in ticks if start + 0.01 < t < end - 0.01]
    assert end - start > 0.05
    assert len(during) > 10
