#!/usr/bin/env python3
"""Measures Tarvo against what the system itself takes for the same amount of work. Both sides of a ratio are measured
in the same run, and each is the median of its repetitions. Prints a table, saves it in build/bench/results.json, and
ends with 1 when an aim is missed. `run.py NAME...` measures only what has one of these names."""

import json
import sys
import tempfile
from pathlib import Path

import copying
import listing
import tapes
import volumes
from measuring import BUILD

ROOMS = (listing, copying, volumes, tapes)
MEASURES = {measure.__name__: measure for room in ROOMS for measure in room.MEASURES}


def print_table(rows):
    print(f"{'':44}{'ms':>10}{'ms':>10}{'ratio':>9}{'at most':>9}")
    for entry in rows:
        aim = "" if entry["aim"] is None else f"{entry['aim']:.1f}"
        verdict = "  missed" if missed(entry) else ""
        times = f"{entry['ours'] * 1000:10.3f}{entry['theirs'] * 1000:10.3f}"
        print(f"{entry['name']:44}{times}{entry['ratio']:9.2f}{aim:>9}{verdict}")


def missed(entry):
    return entry["aim"] is not None and entry["ratio"] > entry["aim"]


def main(names):
    unknown = [name for name in names if name not in MEASURES]
    if unknown:
        sys.exit(f"nothing is called {unknown[0]}; there are {', '.join(MEASURES)}")
    rows = []
    for name in names or MEASURES:
        with tempfile.TemporaryDirectory() as folder:
            rows += MEASURES[name](Path(folder))
    print_table(rows)
    if not names:
        (BUILD / "results.json").write_text(json.dumps(rows, indent=2) + "\n")
    sys.exit(1 if any(map(missed, rows)) else 0)


main(sys.argv[1:])
