#!/usr/bin/env python3
"""What `tarvo ls` may cost, in counts that are the same on every machine: system calls and instructions."""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

from project import BUILD, SKIPPED, finish

TARVO = BUILD / "release/tarvo"
MAKE_VOLUME = BUILD / "debug/tests/make_volume"
MANY = 20000
FEW = 1000
MOST_CALLS = 60  # of MANY entries, beyond those of --version
MOST_INSTRUCTIONS = 40_000_000  # of MANY entries
MOST_TIMES = 25  # MANY entries against FEW, in instructions


class CannotRun(Exception):
    """The tool that counts doesn't work on this machine."""


def run(command, **options):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False, **options)


def make_volume(folder, entries):
    volume = folder / f"{entries}.lif"
    subprocess.run([str(MAKE_VOLUME), "files", str(entries), str(volume)], check=True)
    return volume


def listing(volume, entries):
    """The arguments that list a volume; that they do list it is seen here, once."""
    arguments = [TARVO, "ls", volume]
    lines = subprocess.run([str(word) for word in arguments], check=True, capture_output=True).stdout.count(b"\n")
    if lines < entries:
        sys.exit(f"ls of {entries} entries prints {lines} lines")
    return arguments


def system_calls(folder, arguments):
    table = folder / "calls"
    result = run(["strace", "-f", "-c", "-o", table, *arguments])
    total = re.search(r"^\s*100\.00\s+\S+\s+\S+\s+(\d+)\s.*total$", table.read_text() if table.exists() else "", flags=re.M)
    if result.returncode != 0 or not total:
        raise CannotRun("strace can't run here: " + result.stderr.strip()[-200:])
    return int(total.group(1))


def instructions(arguments):
    tool = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"]
    result = run([*tool, *arguments])
    collected = re.search(r"Collected : (\d+)", result.stderr)
    if result.returncode != 0 or not collected:
        raise CannotRun("callgrind can't run here: " + result.stderr.strip()[-200:])
    return int(collected.group(1))


def call_faults(folder, many):
    extra = system_calls(folder, many) - system_calls(folder, [TARVO, "--version"])
    print(f"system calls of ls with {MANY} entries beyond --version: {extra}, at most {MOST_CALLS}")
    if extra > MOST_CALLS:
        yield "too many system calls"


def instruction_faults(few, many):
    of_few, of_many = instructions(few), instructions(many)
    print(f"instructions of ls with {MANY} entries: {of_many:,}, at most {MOST_INSTRUCTIONS:,}")
    print(f"that is {of_many / of_few:.1f} times those of {FEW} entries, at most {MOST_TIMES}")
    if of_many > MOST_INSTRUCTIONS:
        yield "too many instructions"
    if of_many > MOST_TIMES * of_few:
        yield "instructions grow faster than the entries"


def main():
    for needed in (TARVO, MAKE_VOLUME):
        if not needed.exists():
            sys.exit(f"{needed} is missing: build it first")
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        few = listing(make_volume(folder, FEW), FEW)
        many = listing(make_volume(folder, MANY), MANY)
        faults, unable = [], []
        for count in (lambda: call_faults(folder, many), lambda: instruction_faults(few, many)):
            try:
                faults += count()
            except CannotRun as reason:
                unable.append(str(reason))
    if unable and not faults:
        print("skipped: " + "; ".join(unable))
        sys.exit(SKIPPED)
    finish(faults)


main()
