#!/usr/bin/env python3
"""What Tarvo may cost, in counts that are the same on every machine: system calls, instructions, memory."""

import sys
import tempfile
from pathlib import Path

import counts_of_copying
import counts_of_listing
import counts_of_tapes
from counting import MAKE_VOLUME, TARVO, CannotRun
from project import finish, skip


def main():
    for needed in (TARVO, MAKE_VOLUME):
        if not needed.exists():
            sys.exit(f"{needed} is missing: build it first")
    faults, unable = [], []
    with tempfile.TemporaryDirectory() as folder:
        for count in (*counts_of_listing.COUNTS, *counts_of_copying.COUNTS, *counts_of_tapes.COUNTS):
            try:
                faults += count(Path(folder))
            except CannotRun as reason:
                unable.append(str(reason))
    if unable and not faults:
        skip("; ".join(unable))
    finish(faults)


main()
