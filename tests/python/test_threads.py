"""Threads read and write notes in parallel and get what one thread gets."""

import threading
import time
from concurrent.futures import ThreadPoolExecutor

import numpy

import libnote
from conftest import files_in


def read_all(path):
    note = libnote.open(path)
    out = []
    for page in note:
        out += [page.layer(name) for name in page.layers]
        out += [page.colours(name) for name in page.layers]
        out.append(page.render())
        out += [stroke.to_image(300, 400) for stroke in page.strokes]
    return out


def test_threads_give_what_one_thread_gives(notes, tmp_path):
    alone = {path: read_all(path) for path in notes}
    work = list(notes) * 3
    with ThreadPoolExecutor(4) as pool:
        together = list(pool.map(read_all, work))
    for path, result in zip(work, together):
        assert len(result) == len(alone[path])
        for a, b in zip(result, alone[path]):
            numpy.testing.assert_array_equal(a, b)

    note = libnote.open(notes[0])
    note.save(tmp_path / "one/", format="png")
    note.save(tmp_path / "one/all.pdf")
    with ThreadPoolExecutor(4) as pool:
        saves = [pool.submit(note.save, tmp_path / f"threads{k}/", format="png") for k in range(4)]
        saves += [pool.submit(note.save, tmp_path / f"threads{k}/all.pdf", workers=2) for k in range(4)]
        for save in saves:
            save.result()
    for k in range(4):
        assert files_in(tmp_path / f"threads{k}") == files_in(tmp_path / "one")


def test_the_gil_is_released_while_the_library_works(notes, tmp_path):
    """Python code runs on another thread while a save is inside the library."""
    note = libnote.open(notes[0])
    inside = []
    ticks = []

    def save():
        start = time.monotonic()
        note.save(tmp_path / "note.pdf")
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
