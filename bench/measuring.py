"""What the measurements share: where things are, how processes and benchmarks are timed, a row of the table."""

import json
import subprocess
import sys
from pathlib import Path

BUILD = Path(__file__).resolve().parents[1] / "build/bench"
TARVO = BUILD / "tarvo"
PROGRAMS = BUILD / "bench"


def run_quietly(words):
    """Tools that measure chat; what they say matters only when they fail."""
    result = subprocess.run([str(word) for word in words], capture_output=True, text=True, check=False)
    if result.returncode != 0:
        sys.exit(result.stdout + result.stderr)


def quoted(word):
    return "'" + str(word).replace("'", "'\\''") + "'"


def line_of(command):
    return " ".join(quoted(word) for word in command)


def hyperfine(folder, commands, runs, prepare=(), to=None):
    """The median times of whole processes, in seconds; what they print goes to a file, or to "null". `prepare` holds
    for each command one that is run before each of its runs and isn't measured."""
    result = folder / "hyperfine.json"
    prepared = [word for command in prepare for word in ("--prepare", line_of(command))]
    run_quietly(["hyperfine", "-N", "--style=none", "--warmup", "3", "--runs", str(runs), "--output", to or folder / "output",
                 "--export-json", result, *prepared, *map(line_of, commands)])  # fmt: skip
    return [row["median"] for row in json.loads(result.read_text())["results"]]


def benchmark_medians(folder, program, time="real_time"):
    """The median times of a program of Google Benchmark, in seconds, by name. For what only computes, time is
    cpu_time."""
    result = folder / "benchmark.json"
    run_quietly([PROGRAMS / program, "--benchmark_repetitions=7", "--benchmark_report_aggregates_only=true",
                 f"--benchmark_out={result}", "--benchmark_out_format=json"])  # fmt: skip
    return {entry["run_name"]: entry[time] / 1000
            for entry in json.loads(result.read_text())["benchmarks"]
            if entry.get("aggregate_name") == "median"}  # fmt: skip


def row(name, ours, theirs, aim):
    return {"name": name, "ours": ours, "theirs": theirs, "ratio": ours / theirs, "aim": aim}


def make_volume(folder, *words):
    """A volume as make_volume knows them, made once."""
    volume = folder / ("-".join(map(str, words)) + ".lif")
    if not volume.exists():
        run_quietly([PROGRAMS / "make_volume", *words, volume])
    return volume
