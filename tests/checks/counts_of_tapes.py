"""What `tarvo tape` may cost: system calls and memory."""

import os

from counting import TARVO, peak_memory, run_well, system_calls

IMAGE = 128 * 1024 * 1024
MOST_CALLS_TESTED = 7000
MOST_CALLS_CONVERTED = 5000
MOST_MEMORY = 8_000_000  # beyond that of --version


def convert(folder, source, name, *options):
    """The command that makes a file that isn't there yet."""
    target = folder / name
    target.unlink(missing_ok=True)
    return [TARVO, "tape", "convert", source, target, *options]


def tape_faults(folder):
    plain = folder / "plain.hpi"
    plain.write_bytes(os.urandom(1024 * 1024) * (IMAGE // 1024 // 1024))
    simh, fixed = folder / "simh.tap", folder / "fixed.tap"
    run_well(convert(folder, plain, simh.name, "--to", "simh", "--block", 1024))
    run_well(convert(folder, plain, fixed.name, "--to", "fixed", "--block", 1024))
    rows = (
        ("test of 128 MB in records", lambda: [TARVO, "tape", "test", simh], MOST_CALLS_TESTED),
        ("test of 128 MB in slots", lambda: [TARVO, "tape", "test", fixed], MOST_CALLS_TESTED),
        ("128 MB to simh", lambda: convert(folder, plain, "new", "--to", "simh"), MOST_CALLS_CONVERTED),
        ("128 MB to fixed", lambda: convert(folder, simh, "new", "--to", "fixed"), MOST_CALLS_CONVERTED),
        ("128 MB to hpi", lambda: convert(folder, fixed, "new", "--to", "hpi"), MOST_CALLS_CONVERTED),
    )
    own = peak_memory([TARVO, "--version"])
    for name, command, most in rows:
        calls = sum(system_calls(folder, command()).values())
        extra = peak_memory(command()) - own
        print(f"{name}: {calls} system calls, at most {most}; {extra:,} bytes beyond {own:,}, at most {MOST_MEMORY:,}")
        if calls > most or extra > MOST_MEMORY:
            yield f"too much for the {name}"


COUNTS = (tape_faults,)
