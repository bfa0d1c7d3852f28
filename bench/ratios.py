#!/usr/bin/env python3
"""Prints each benchmark's median beside the references of the same run and its target,
then the targets for a full handwritten page, notetool's among them when its times are given.

Usage: note_bench --benchmark_repetitions=9 --benchmark_report_aggregates_only=true \
           --benchmark_out=run.json --benchmark_out_format=json
       bench/notetool_times.py BUILD_DIR --json times.json     (optional)
       bench/ratios.py run.json [--notetool times.json]

Times are CPU times: on a shared machine the wall clock also counts the time other
processes hold the core. Ratios are taken against memset and memcpy measured in the same run.
"""
import argparse
import json

MEMSET = "reference/memset"
MEMCPY_COLOURS = "reference/memcpy/4"  # the 10 MB colour array of loadImageData
PICTURES = ("blank", "ruled", "dense", "full_page", "alternating")
STROKES = ("2000_strokes", "full_page")


def medians(path):
    with open(path) as f:
        run = json.load(f)
    out = {}
    for b in run["benchmarks"]:
        if b.get("aggregate_name", "median") == "median":
            out[b["run_name"]] = b
    return out


def benchmark_rows(m, ns):
    """(name, median ns, value, unit, target) for every benchmark of the run; a run with
    --benchmark_filter leaves some out."""
    memset = ns[MEMSET]
    image_ref = memset + ns[MEMCPY_COLOURS]
    rows = []

    def row(name, value, unit, target="-"):
        """value(name) gives the measure; rows whose benchmarks did not run are left out."""
        try:
            rows.append((name, ns[name], value(name), unit, target))
        except KeyError:
            pass

    def rate(key, scale):
        return lambda name: m[name][key] / scale

    decode_targets = {"blank": "<= 1.5", "ruled": "<= 1.5", "dense": "<= 8"}
    for kind in PICTURES:
        row(f"uncompresseDataByRLE/{kind}", lambda n: ns[n] / memset, "x memset", decode_targets.get(kind, "-"))
    encode_targets = {"blank": ">= 4.0", "dense": ">= 1.0", "full_page": ">= 2.0"}
    for kind in PICTURES:
        row(f"compresseDataByRLE/{kind}", rate("bytes_per_second", 1e9), "GB/s", encode_targets.get(kind, "-"))
    for kind in PICTURES:
        row(f"fetchNoteDataFromFileByLayer/{kind}", lambda n, k=kind: ns[n] / ns[f"uncompresseDataByRLE/{k}"],
            "x decode", "<= 1.5")
    for kind in PICTURES:
        row(f"loadImageData/{kind}", lambda n: ns[n] / image_ref, "x (memset + memcpy 10 MB)", "<= 5")
    for kind in STROKES:
        row(f"fetchNotePathFromFile/{kind}", rate("strokes", 1e3), "k strokes/s", ">= 200")
    for kind in STROKES:
        row(f"data2Trail/{kind}", rate("bytes_per_second", 1e6), "MB/s of records", ">= 500")
    for kind in STROKES:
        row(f"mappingTrailPoints2imageSize/{kind}", rate("points", 1e6), "M points/s")
    for pages, target in ((1, "-"), (100, ">= 60")):
        row(f"fetchTotalPageNumOfNote/{pages}", rate("items_per_second", 1e3), "k calls/s", target)
    return rows


def page_targets(m, ns):
    """(what, value, target text, met) for the codec and loadImageData on a full page."""
    decode = "uncompresseDataByRLE/full_page"
    code_bytes = m[decode]["code_bytes"]
    decode_rate = code_bytes / ns[decode]  # bytes per ns = GB/s
    encode_rate = m["compresseDataByRLE/full_page"]["bytes_per_second"] / 1e9
    budget = ns[decode] + 1.2 * ns[MEMCPY_COLOURS]
    load = ns["loadImageData/full_page"] / budget
    return [
        ("decode of a full page, GB/s of coded input", f"{decode_rate:.2f}", ">= 1.5", decode_rate >= 1.5),
        ("encode of a full page, GB/s of picture", f"{encode_rate:.2f}", ">= 2", encode_rate >= 2),
        (f"loadImageData of a full page / (decode + 1.2 x memcpy 10 MB = {budget / 1e3:,.0f} us)",
         f"{load:.2f}", "<= 1", load <= 1),
    ]


def notetool_targets(path):
    """(what, value, target text, met) for notetool's times from bench/notetool_times.py."""
    with open(path) as f:
        times = json.load(f)
    # Runs of an older script timed render alone and had no "command".
    r = {(x.get("command", "render"), x["output"], x["jobs"]): x for x in times["results"]}
    runs = list(dict.fromkeys((x.get("command", "render"), x["output"]) for x in times["results"]))
    # Tracing was PDF's default before a --vector option made it a choice.
    vector = "pdf --vector" if ("render", "pdf --vector", 1) in r else "pdf"
    rows = []

    def at_most(what, value, limit, unit=""):
        rows.append((what, f"{value:.1f}{unit}", f"<= {limit:g}{unit}", value <= limit))

    def render(output, key):
        return r[("render", output, 1)][key]

    at_most("notetool png, CPU ms per page (-j 1)", render("png", "cpu_ms_per_page"), 3)
    at_most("notetool pdf, CPU ms per page (-j 1)", render("pdf", "cpu_ms_per_page"), 5)
    pdf_size = render("pdf", "bytes_per_page") / render("png", "bytes_per_page")
    rows.append(("notetool pdf / png, bytes per page", f"{pdf_size:.2f}", "<= 1.1", pdf_size <= 1.1))
    at_most(f"notetool vector pdf ({vector}), CPU ms per page (-j 1)", render(vector, "cpu_ms_per_page"), 40)
    at_most(f"notetool vector pdf ({vector}), KB per page", render(vector, "bytes_per_page") / 1e3, 150)
    svg = render("svg", "bytes_per_page") / render(vector, "bytes_per_page")
    rows.append(("notetool svg / vector pdf, bytes", f"{svg:.2f}", "<= 2.5", svg <= 2.5))
    for command, output in runs:
        speedup = r[(command, output, 1)]["wall_ms_per_page"] / r[(command, output, 2)]["wall_ms_per_page"]
        rows.append((f"notetool {command} {output}, -j 2 speed-up over -j 1 (wall)", f"{speedup:.2f}", ">= 1.7",
                     speedup >= 1.7))
    for command, output in runs:
        at_most(f"notetool {command} {output}, peak RSS at -j 2, MB", r[(command, output, 2)]["peak_rss_bytes"] / 2**20, 64)
    traced = times.get("traced")
    if traced:
        share = traced["differing_share_1x"]
        rows.append(("traced pdf at 1x, pixels of another shade than the picture", f"{share:.2%}", "<= 0.10%",
                     share <= 0.001))
        rows.append(("traced pdf at 4x, area between outline and picture / ink", f"{traced['area_share_4x']:.1%}", "-",
                     True))
        offset = traced["mean_offset_4x_px"]
        rows.append(("traced pdf at 4x, mean distance of the outline from the edges, source px", f"{offset:.3f}",
                     "<= 0.5", offset <= 0.5))
    return rows


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("run", help="note_bench's JSON output")
    parser.add_argument("--notetool", help="bench/notetool_times.py's JSON output")
    args = parser.parse_args()

    m = medians(args.run)
    ns = {name: b["cpu_time"] * {"ns": 1, "us": 1e3, "ms": 1e6}[b["time_unit"]] for name, b in m.items()}
    print(f"memset of the picture: {ns[MEMSET] / 1e3:.1f} us; memcpy of the picture: "
          f"{ns['reference/memcpy/1'] / 1e3:.1f} us; memcpy of the colours: {ns[MEMCPY_COLOURS] / 1e3:.1f} us")
    print("| benchmark | median (CPU) | measure | target |")
    print("|---|---|---|---|")
    for name, t, value, unit, target in benchmark_rows(m, ns):
        print(f"| {name} | {t / 1e3:,.1f} us | {value:.2f} {unit} | {target} |")

    targets = page_targets(m, ns)
    if args.notetool:
        targets += notetool_targets(args.notetool)
    print()
    print("| target on full handwritten pages | measured | target | met |")
    print("|---|---|---|---|")
    for what, value, target, met in targets:
        print(f"| {what} | {value} | {target} | {'yes' if met else 'NO'} |")


if __name__ == "__main__":
    main()
