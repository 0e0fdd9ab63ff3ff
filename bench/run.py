#!/usr/bin/env python3
"""Measures Tarvo against what the system itself takes for the same amount of work. Both sides of a ratio are measured
in the same run, and each is the median of its repetitions. Prints a table, saves it in build/bench/results.json, and
ends with 1 when an aim is missed."""

import json
import subprocess
import sys
import tempfile
from pathlib import Path

BUILD = Path(__file__).resolve().parents[1] / "build/bench"
TARVO = BUILD / "tarvo"
EMPTY = BUILD / "bench/empty"
MAKE_VOLUME = BUILD / "bench/make_volume"
RECORDS_BENCH = BUILD / "bench/records_bench"
LISTING_BENCH = BUILD / "bench/listing_bench"
PLUGIN = BUILD / "tarvo.wfx"

MANY = 20000
SIZES = (2000, 20000, 200000)


def hyperfine(folder, commands, runs):
    """The median times of whole processes, in seconds; what they print goes to a file."""
    result = folder / "hyperfine.json"
    words = ["hyperfine", "-N", "--style=none", "--warmup", "3", "--runs", str(runs), "--output", folder / "output",
             "--export-json", result, *(" ".join(quoted(word) for word in command) for command in commands)]  # fmt: skip
    run_quietly(words)
    return [row["median"] for row in json.loads(result.read_text())["results"]]


def run_quietly(words):
    """Tools that measure chat; what they say matters only when they fail."""
    result = subprocess.run([str(word) for word in words], capture_output=True, text=True, check=False)
    if result.returncode != 0:
        sys.exit(result.stdout + result.stderr)


def quoted(word):
    return "'" + str(word).replace("'", "'\\''") + "'"


def row(name, ours, theirs, aim):
    return {"name": name, "ours": ours, "theirs": theirs, "ratio": ours / theirs, "aim": aim}


def make_volume(folder, entries):
    volume = folder / f"{entries}.lif"
    if not volume.exists():
        subprocess.run([MAKE_VOLUME, "files", str(entries), volume], check=True)
    return volume


def start(folder):
    ours, theirs = hyperfine(folder, [[TARVO, "--version"], [EMPTY]], 300)
    yield row("--version : an empty program", ours, theirs, 1.5)


def listing(folder):
    volume = make_volume(folder, MANY)
    ours, theirs = hyperfine(folder, [[TARVO, "ls", volume], ["cat", volume]], 60)
    yield row(f"ls of {MANY:,} files : cat of the image", ours, theirs, 3)

    text = folder / "listing.json"
    with text.open("wb") as output:
        subprocess.run([TARVO, "ls", "--json", volume], check=True, stdout=output)
    ours, theirs = hyperfine(folder, [[TARVO, "ls", "--json", volume], ["cat", text]], 60)
    yield row("ls --json : cat of what it prints", ours, theirs, 3)


def plugin_listing(folder):
    volume = make_volume(folder, MANY)
    ours, theirs = hyperfine(folder, [[LISTING_BENCH, PLUGIN, volume], [TARVO, "ls", volume]], 60)
    yield row(f"{MANY:,} files through the plug-in : ls", ours, theirs, 2)


def growth(folder):
    commands = [[TARVO, "ls", make_volume(folder, entries)] for entries in SIZES]
    times = hyperfine(folder, commands, 20)
    for few, many, less, more in zip(SIZES, SIZES[1:], times, times[1:]):
        yield row(f"ls of {many:,} : of {few:,} files", more, less, 12)


def records(folder):
    result = folder / "records.json"
    run_quietly([RECORDS_BENCH, "--benchmark_repetitions=7", "--benchmark_report_aggregates_only=true",
                 f"--benchmark_out={result}", "--benchmark_out_format=json"])  # fmt: skip
    medians = {entry["run_name"]: entry["real_time"] / 1000
               for entry in json.loads(result.read_text())["benchmarks"]
               if entry.get("aggregate_name") == "median"}  # fmt: skip
    ours = medians["records_in_order"]
    yield row("128 MB in records : in blocks of 64 KB", ours, medians["blocks_in_order"], 3)
    yield row("128 MB in records : seek and read of each", ours, medians["seek_and_read_each_record"], None)


def print_table(rows):
    print(f"{'':44}{'ms':>10}{'ms':>10}{'ratio':>9}{'at most':>9}")
    for entry in rows:
        aim = "" if entry["aim"] is None else f"{entry['aim']:.1f}"
        verdict = "  missed" if missed(entry) else ""
        times = f"{entry['ours'] * 1000:10.3f}{entry['theirs'] * 1000:10.3f}"
        print(f"{entry['name']:44}{times}{entry['ratio']:9.2f}{aim:>9}{verdict}")


def missed(entry):
    return entry["aim"] is not None and entry["ratio"] > entry["aim"]


def main():
    rows = []
    with tempfile.TemporaryDirectory() as name:
        for measure in (start, listing, plugin_listing, growth, records):
            rows += measure(Path(name))
    print_table(rows)
    (BUILD / "results.json").write_text(json.dumps(rows, indent=2) + "\n")
    sys.exit(1 if any(map(missed, rows)) else 0)


main()
