#!/usr/bin/env python3
"""Converts every note under the given folders on a Dask cluster, as `notetool convert` does
on one machine: the same output names and the same bytes, one task per note.

    cluster_convert.py notes/ -o converted/ --format pdf --scheduler tcp://host:8786
    cluster_convert.py notes/ -o converted/ --workers 8        # a local cluster of 8 processes

Folders are searched recursively for *.note files (in any case) and their structure is kept under the
output folder; files named on the command line go to the output folder itself. A note
becomes <note>.pdf, or one file per page <note>-p<N>.png (or .svg). On a cluster of several
machines, inputs and output must be on a file system that every worker sees under the same
paths.

Progress goes to standard error as notes finish; a note that fails is reported at the end,
one line each, and the others are converted (exit code 1). Files are written under a
temporary name and renamed when complete, so nothing is ever half-written under its name.
"""

import argparse
import logging
import os
import sys
import time

from dask.distributed import Client, LocalCluster, as_completed

import libnote

PROGRAM = "cluster_convert"


def find_notes(inputs):
    """(note, output subfolder) pairs for the inputs, and the failures of inputs that are
    missing; a folder's notes sorted by path, as notetool convert takes them."""
    found, failures = [], []
    for source in inputs:
        if os.path.isdir(source):
            in_folder = []
            for root, _, names in os.walk(source):
                for name in names:
                    path = os.path.join(root, name)
                    if os.path.splitext(name)[1].lower() == ".note" and os.path.isfile(path):
                        in_folder.append((path, os.path.relpath(root, source)))
            found += sorted(in_folder)
        elif os.path.exists(source):
            found.append((source, "."))
        else:
            failures.append(f"{source}: No such file or directory")
    return found, failures


def convert_note(note_path, out_dir, format, drawing):
    """The task: one note into out_dir. Returns its number of pages; raises what the note's
    reading or writing raises."""
    note = libnote.open(note_path)
    if not note.pages:
        raise libnote.NoteError(f"{note_path}: the note has no pages")
    note.save(os.path.join(out_dir, ""), format=format, **drawing)
    return note.page_count


def parse_arguments(argv):
    parser = argparse.ArgumentParser(prog=PROGRAM, description=__doc__.split("\n\n")[0])
    parser.add_argument("inputs", nargs="+", metavar="INPUT", help="note files and folders")
    parser.add_argument("-o", "--output", required=True, metavar="DIR", help="output folder")
    parser.add_argument("--format", default="png", choices=["png", "pdf", "svg"], help="output format (default png)")
    where = parser.add_mutually_exclusive_group()
    where.add_argument("--scheduler", metavar="ADDRESS", help="a running Dask scheduler, e.g. tcp://host:8786")
    where.add_argument("--workers", type=int, default=os.cpu_count() or 1,
                       help="worker processes of the local cluster when no scheduler is given (default: one per core)")
    parser.add_argument("--scale", type=float, default=1.0, help="scale the pages by this factor")
    parser.add_argument("--layers", help="draw only these layers (comma-separated)")
    parser.add_argument("--no-background", action="store_true", help="leave out the background layer")
    parser.add_argument("--transparent", action="store_true", help="leave out the white paper")
    parser.add_argument("--raster", action="store_true", help="PDF and SVG: embed the pages as images")
    parser.add_argument("--dpi", type=float, default=0, help="page pixels per inch on paper (default: the note's own)")
    parser.add_argument("--strict", action="store_true", help="write nothing of a note with a page that cannot be read")
    args = parser.parse_args(argv)
    if args.workers < 1:
        parser.error("--workers must be at least 1")
    return args


def connect(args):
    if args.scheduler:
        return Client(args.scheduler)
    cluster = LocalCluster(n_workers=args.workers, threads_per_worker=1, processes=True,
                           dashboard_address=None, silence_logs=logging.ERROR)
    return Client(cluster)


def submit_notes(client, args, drawing):
    """One task per note whose output is its own; the failures of those skipped."""
    found, failures = find_notes(args.inputs)
    tasks, claimed = {}, {}
    for note, subfolder in found:
        out_dir = os.path.normpath(os.path.join(args.output, subfolder))
        stem = os.path.join(out_dir, os.path.splitext(os.path.basename(note))[0])
        if stem in claimed:
            failures.append(f"{note}: skipped: its output {stem} is taken by {claimed[stem]}")
            continue
        claimed[stem] = note
        future = client.submit(convert_note, note, out_dir, args.format, drawing, pure=False)
        tasks[future] = note
    return tasks, failures


def run(args):
    drawing = {"scale": args.scale, "background": not args.no_background, "transparent": args.transparent,
               "raster": args.raster, "layers": args.layers.split(",") if args.layers else None, "dpi": args.dpi,
               "strict": args.strict}
    start = time.monotonic()
    with connect(args) as client:
        tasks, failures = submit_notes(client, args, drawing)
        pages = notes = 0
        # On a terminal the progress line is redrawn in place; elsewhere (a log) it is a line a note.
        redraw, end = ("\r", "") if sys.stderr.isatty() else ("", "\n")
        for done, future in enumerate(as_completed(tasks), 1):
            try:
                pages += future.result()
                notes += 1
            except (libnote.NoteError, OSError) as error:  # these name the file themselves
                failures.append(str(error))
            except Exception as error:  # a worker lost on the note, for one
                failures.append(f"{tasks[future]}: {type(error).__name__}: {error}")
            seconds = time.monotonic() - start
            print(f"{redraw}{PROGRAM}: {done}/{len(tasks)} notes, {pages} pages, {pages / seconds:.1f} pages/s",
                  end=end, file=sys.stderr, flush=True)
        if tasks and not end:
            print(file=sys.stderr)
    for failure in failures:
        print(f"{PROGRAM}: {failure}", file=sys.stderr)
    print(f"{PROGRAM}: converted {pages} pages of {notes} notes to {args.format} in "
          f"{time.monotonic() - start:.2f} s; {len(failures)} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(run(parse_arguments(sys.argv[1:])))
