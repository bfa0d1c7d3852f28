#!/usr/bin/env python3
"""The Python package against the C++ it wraps, on the benchmarks' note of 60 handwritten
pages (make-handwritten-note):

  - Page.layer() against the C++ call it makes (bench/layer_call: the buffer set to
    transparent, then fetchNoteDataFromFileByLayer), target <= 1.2 x;
  - Note.save() of every page as PNG against `notetool render --format png -j 1`, both
    pinned to one core, target <= 1.2 x.

Usage: bench/python_bench.py [BUILD_DIR] (default build-release: a Release build with the
benchmarks and the Python package). Prints medians of CPU time and their ratios, measured in
this one run.
"""

import os
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

LAYER_REPETITIONS = 101
LAYER_ROUNDS = 3  # the C++ and the Python calls take turns, so that a busy spell hits both
RENDER_REPETITIONS = 5


def children_cpu() -> float:
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def layer_times(build: Path, note: Path, libnote):
    page = libnote.open(note).pages[0]
    cpp, python = [], []
    for _ in range(LAYER_ROUNDS):
        cpp += map(int, subprocess.run([build / "bench" / "layer_call", note, "1", "MAINLAYER", str(LAYER_REPETITIONS)],
                                       check=True, capture_output=True, text=True).stdout.split())
        for _ in range(LAYER_REPETITIONS):
            start = time.thread_time_ns()
            page.layer("MAINLAYER")
            python.append(time.thread_time_ns() - start)
    return statistics.median(cpp) / 1e6, statistics.median(python) / 1e6


def render_times(build: Path, note: Path, scratch: Path, libnote):
    notetool = build / "tools" / "notetool" / "notetool"
    tool, python = [], []
    for k in range(RENDER_REPETITIONS):
        by_tool, by_python = scratch / f"tool{k}", scratch / f"python{k}"
        before = children_cpu()
        subprocess.run([notetool, "render", note, "-o", f"{by_tool}/", "--format", "png", "-j", "1"], check=True)
        tool.append(children_cpu() - before)
        start = time.process_time()
        libnote.open(note).save(f"{by_python}/", format="png")
        python.append(time.process_time() - start)
        if sorted(os.listdir(by_tool)) != sorted(os.listdir(by_python)):
            sys.exit("python_bench: notetool and the package wrote different files")
        shutil.rmtree(by_tool)
        shutil.rmtree(by_python)
    return statistics.median(tool), statistics.median(python)


def main(build: Path) -> None:
    sys.path.insert(0, str(build / "python"))
    import libnote

    # One core for this process and the notetool it starts, so that both run alike.
    core = min(os.sched_getaffinity(0))
    os.sched_setaffinity(0, {core})
    with tempfile.TemporaryDirectory(prefix="libnote-python-bench-") as folder:
        scratch = Path(folder)
        note = scratch / "handwritten.note"
        subprocess.run([build / "bench" / "make-handwritten-note", note, "60"], check=True)
        cpp_layer, python_layer = layer_times(build, note, libnote)
        tool_render, python_render = render_times(build, note, scratch, libnote)

    rows = [
        ("Page.layer('MAINLAYER')", python_layer, "ms", python_layer / cpp_layer, "x the C++ call", "<= 1.2"),
        ("  C++: memset + fetchNoteDataFromFileByLayer", cpp_layer, "ms", None, "", ""),
        ("Note.save(60 pages, png)", python_render, "s", python_render / tool_render, "x notetool render -j 1",
         "<= 1.2"),
        ("  notetool render --format png -j 1", tool_render, "s", None, "", ""),
    ]
    print(f"CPU time, medians, on core {core}; {LAYER_ROUNDS * LAYER_REPETITIONS} layer calls each, "
          f"{RENDER_REPETITIONS} renders each")
    for name, value, unit, ratio, what, target in rows:
        print(f"{name:48} {value:9.3f} {unit:2}" + (f" {ratio:6.3f} {what:24} {target}" if ratio else ""))


if __name__ == "__main__":
    main(Path(sys.argv[1] if len(sys.argv) > 1 else "build-release").resolve())
