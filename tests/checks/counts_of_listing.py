"""What `tarvo ls` may cost."""

import sys

from counting import TARVO, instructions, make_volume, run_well, system_calls

MANY = 20000
FEW = 1000
MOST_CALLS = 60  # of MANY entries, beyond those of --version; three look for a configuration file
MOST_INSTRUCTIONS = 40_000_000  # of MANY entries
MOST_TIMES = 25  # MANY entries against FEW, in instructions


def listing(folder, entries):
    """The command that lists a volume; that it does list it is seen here."""
    command = [TARVO, "ls", make_volume(folder, "files", entries)]
    lines = run_well(command).count("\n")
    if lines < entries:
        sys.exit(f"ls of {entries} entries prints {lines} lines")
    return command


def call_faults(folder):
    own = sum(system_calls(folder, [TARVO, "--version"]).values())
    extra = sum(system_calls(folder, listing(folder, MANY)).values()) - own
    print(f"system calls of ls with {MANY} entries beyond --version: {extra}, at most {MOST_CALLS}")
    if extra > MOST_CALLS:
        yield "too many system calls of ls"


def instruction_faults(folder):
    of_few, of_many = instructions(listing(folder, FEW)), instructions(listing(folder, MANY))
    print(f"instructions of ls with {MANY} entries: {of_many:,}, at most {MOST_INSTRUCTIONS:,}")
    print(f"that is {of_many / of_few:.1f} times those of {FEW} entries, at most {MOST_TIMES}")
    if of_many > MOST_INSTRUCTIONS:
        yield "too many instructions of ls"
    if of_many > MOST_TIMES * of_few:
        yield "instructions of ls grow faster than the entries"


COUNTS = (call_faults, instruction_faults)
