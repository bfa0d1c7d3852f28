#!/usr/bin/env python3
"""Prints each benchmark's median beside the references of the same run and its target.

Usage: note_bench --benchmark_repetitions=9 --benchmark_report_aggregates_only=true \
           --benchmark_out=run.json --benchmark_out_format=json
       bench/ratios.py run.json

Times are CPU times: on a shared machine the wall clock also counts the time other
processes hold the core. Ratios are taken against memset and memcpy measured in the same run.
"""
import json
import sys

MEMSET = "reference/memset"
MEMCPY_COLOURS = "reference/memcpy/4"  # the 10 MB colour array of loadImageData


def medians(path):
    with open(path) as f:
        run = json.load(f)
    out = {}
    for b in run["benchmarks"]:
        if b.get("aggregate_name", "median") == "median":
            out[b["run_name"]] = b
    return out


def main(path):
    m = medians(path)
    ns = {name: b["cpu_time"] * {"ns": 1, "us": 1e3, "ms": 1e6}[b["time_unit"]] for name, b in m.items()}
    memset = ns[MEMSET]
    image_ref = memset + ns[MEMCPY_COLOURS]

    def rate(name, key):
        return m[name].get(key, 0.0)

    rows = []
    for kind in ("blank", "ruled"):
        name = f"uncompresseDataByRLE/{kind}"
        rows.append((name, ns[name], ns[name] / memset, "x memset", "<= 1.5"))
    name = "uncompresseDataByRLE/handwriting"
    rows.append((name, ns[name], ns[name] / memset, "x memset", "<= 8"))
    name = "uncompresseDataByRLE/alternating"
    rows.append((name, ns[name], ns[name] / memset, "x memset", "-"))
    for kind, target in (("blank", 4.0), ("ruled", None), ("handwriting", 1.0), ("alternating", None)):
        name = f"compresseDataByRLE/{kind}"
        rows.append((name, ns[name], rate(name, "bytes_per_second") / 1e9, "GB/s",
                     f">= {target}" if target else "-"))
    for kind in ("blank", "ruled", "handwriting", "alternating"):
        name = f"fetchNoteDataFromFileByLayer/{kind}"
        rows.append((name, ns[name], ns[name] / ns[f"uncompresseDataByRLE/{kind}"], "x decode", "<= 1.5"))
    for kind in ("blank", "ruled", "handwriting", "alternating"):
        name = f"loadImageData/{kind}"
        rows.append((name, ns[name], ns[name] / image_ref, "x (memset + memcpy 10 MB)", "<= 5"))
    name = "fetchNotePathFromFile/2000_strokes"
    rows.append((name, ns[name], rate(name, "strokes") / 1e3, "k strokes/s", ">= 200"))
    name = "data2Trail/200_records"
    rows.append((name, ns[name], rate(name, "bytes_per_second") / 1e6, "MB/s of records", ">= 500"))
    name = "mappingTrailPoints2imageSize/2000_strokes"
    rows.append((name, ns[name], rate(name, "points") / 1e6, "M points/s", "-"))
    for pages, target in ((1, "-"), (100, ">= 60")):
        name = f"fetchTotalPageNumOfNote/{pages}"
        rows.append((name, ns[name], rate(name, "items_per_second") / 1e3, "k calls/s", target))

    print(f"memset of the picture: {memset / 1e3:.1f} us; memcpy of the picture: "
          f"{ns['reference/memcpy/1'] / 1e3:.1f} us; memcpy of the colours: {ns[MEMCPY_COLOURS] / 1e3:.1f} us")
    print(f"| benchmark | median (CPU) | measure | target |")
    print(f"|---|---|---|---|")
    for name, t, value, unit, target in rows:
        print(f"| {name} | {t / 1e3:,.1f} us | {value:.2f} {unit} | {target} |")


if __name__ == "__main__":
    main(sys.argv[1])
