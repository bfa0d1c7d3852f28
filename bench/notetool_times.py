#!/usr/bin/env python3
"""Times the real notetool binary on a note of full handwritten pages.

Usage: bench/notetool_times.py BUILD_DIR [--pages 60] [--repetitions 3] [--json times.json]

BUILD_DIR is a Release build with notetool and make-handwritten-note in it. The note is
written into a temporary folder at the start of the run, and so is a folder of six notes
that share its pages out. For each output (png, pdf, pdf --raster, pdf --vector where
notetool has it, svg) and each -j (1, 2), `notetool render` of the note and `notetool
convert` of the folder run --repetitions times; the median run is reported: CPU time
(user + system, all threads) and wall time per page, output bytes per page, and the
process's peak resident memory. The wall-time speed-up of -j 2 over -j 1 is printed beside
each.

Where the build has trace-fidelity, it also measures how closely the traced PDF follows the
picture on page 1 (bench/trace_fidelity.cpp).

With --json the figures are also written for bench/ratios.py, which sets them beside their
targets.
"""
import argparse
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

JOBS = (1, 2)
FOLDER_NOTES = 6  # convert's folder: the pages shared out among this many notes


def outputs(notetool):
    """The outputs to time, as (name, format, extra options); --vector only where it exists."""
    help_text = subprocess.run([notetool, "render", "--help"], capture_output=True, text=True).stdout
    found = [("png", "png", []), ("pdf", "pdf", []), ("pdf --raster", "pdf", ["--raster"])]
    if "--vector" in help_text:
        found.append(("pdf --vector", "pdf", ["--vector"]))
    found.append(("svg", "svg", []))
    return found


def output_bytes(path):
    if os.path.isfile(path):
        return os.path.getsize(path)
    return sum(os.path.getsize(os.path.join(top, name)) for top, _, names in os.walk(path) for name in names)


def run_once(notetool, command_name, source, fmt, extra, jobs, scratch):
    """One render of a note or convert of a folder: CPU seconds, wall seconds, output bytes
    and peak RSS in bytes."""
    out = os.path.join(scratch, "out.pdf" if fmt == "pdf" and command_name == "render" else "out")
    if os.path.isdir(out):
        shutil.rmtree(out)
    elif os.path.exists(out):
        os.remove(out)
    command = [notetool, command_name, source, "-o", out, "--format", fmt, "-j", str(jobs)] + extra
    with tempfile.TemporaryFile() as errors:
        start = time.perf_counter()
        child = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=errors)
        # wait4 gives this child's own CPU time and peak memory.
        _, status, usage = os.wait4(child.pid, 0)
        wall = time.perf_counter() - start
        child.returncode = os.waitstatus_to_exitcode(status)
        if child.returncode != 0:
            errors.seek(0)
            sys.exit(f"notetool_times: {' '.join(command)} failed: {errors.read().decode(errors='replace').strip()}")
    return usage.ru_utime + usage.ru_stime, wall, output_bytes(out), usage.ru_maxrss * 1024


def measure(notetool, sources, pages, repetitions, scratch):
    """sources: (command, note or folder) pairs."""
    results = []
    for command, source in sources:
        for name, fmt, extra in outputs(notetool):
            for jobs in JOBS:
                runs = [run_once(notetool, command, source, fmt, extra, jobs, scratch) for _ in range(repetitions)]
                results.append(summary(command, name, jobs, runs, pages))
    return results


def summary(command, name, jobs, runs, pages):
    median = sorted(runs, key=lambda r: r[0])[len(runs) // 2]  # the run of median CPU time
    return {
        "command": command,
        "output": name,
        "jobs": jobs,
        "cpu_ms_per_page": 1e3 * median[0] / pages,
        "wall_ms_per_page": 1e3 * statistics.median(r[1] for r in runs) / pages,
        "bytes_per_page": median[2] / pages,
        "peak_rss_bytes": max(r[3] for r in runs),
    }


def fidelity(build, notetool, note):
    """trace-fidelity's figures for the traced PDF of page 1, or None without the program."""
    program = os.path.join(build, "bench", "trace-fidelity")
    if not os.access(program, os.X_OK):
        return None
    vector = [name for name, _, extra in outputs(notetool) if name == "pdf --vector"]
    command = [program, notetool, note, "1"] + (["--", "--vector"] if vector else [])
    return json.loads(subprocess.run(command, check=True, capture_output=True, text=True).stdout)


def print_table(results, pages, traced):
    print(f"notetool on {pages} full handwritten pages: render of one note, convert of a folder of "
          f"{FOLDER_NOTES} notes (medians; CPU = user + system of all threads)")
    print("| command | output | -j | CPU ms/page | wall ms/page | KB/page | peak RSS MB | -j 2 speed-up (wall) |")
    print("|---|---|---|---|---|---|---|---|")
    wall = {(r["command"], r["output"], r["jobs"]): r["wall_ms_per_page"] for r in results}
    for r in results:
        speedup = ""
        if r["jobs"] == 2 and (r["command"], r["output"], 1) in wall:
            speedup = f"{wall[(r['command'], r['output'], 1)] / r['wall_ms_per_page']:.2f}x"
        print(f"| {r['command']} | {r['output']} | {r['jobs']} | {r['cpu_ms_per_page']:.1f} | "
              f"{r['wall_ms_per_page']:.1f} | {r['bytes_per_page'] / 1e3:.1f} | {r['peak_rss_bytes'] / 2**20:.1f} | "
              f"{speedup} |")
    if traced:
        print(f"traced PDF, page 1: {traced['differing_share_1x']:.2%} of pixels show another shade at 1x; "
              f"at 4x the area between outline and picture is {traced['area_share_4x']:.1%} of the ink, "
              f"{traced['mean_offset_4x_px']:.3f} source pixels from the edges on average")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", help="a Release build folder")
    parser.add_argument("--pages", type=int, default=60)
    parser.add_argument("--repetitions", type=int, default=3)
    parser.add_argument("--json", help="also write the figures to this file, for bench/ratios.py")
    args = parser.parse_args()
    notetool = os.path.join(args.build, "tools", "notetool", "notetool")
    make_note = os.path.join(args.build, "bench", "make-handwritten-note")
    for program in (notetool, make_note):
        if not os.access(program, os.X_OK):
            sys.exit(f"notetool_times: {program}: not built")
    if args.pages < 1 or args.repetitions < 1:
        sys.exit("notetool_times: --pages and --repetitions take a positive number")

    with tempfile.TemporaryDirectory(prefix="notetool-times-") as scratch:
        note = os.path.join(scratch, "handwritten.note")
        subprocess.run([make_note, note, str(args.pages)], check=True)
        folder = os.path.join(scratch, "notes")
        os.mkdir(folder)
        share = [args.pages // FOLDER_NOTES + (i < args.pages % FOLDER_NOTES) for i in range(FOLDER_NOTES)]
        for i, pages in enumerate(p for p in share if p > 0):
            subprocess.run([make_note, os.path.join(folder, f"note{i + 1}.note"), str(pages)], check=True)
        results = measure(notetool, [("render", note), ("convert", folder)], args.pages, args.repetitions, scratch)
        traced = fidelity(args.build, notetool, note)
    print_table(results, args.pages, traced)
    if args.json:
        with open(args.json, "w") as f:
            json.dump({"pages": args.pages, "repetitions": args.repetitions, "results": results, "traced": traced},
                      f, indent=1)


if __name__ == "__main__":
    main()
