"""What `tarvo get` and `tarvo put` may cost: system calls and memory."""

import shutil
import sys

from counting import TARVO, make_volume, peak_memory, run_well, system_calls

LARGE = 30_000_000
LARGEST_IN = 16_000_000  # a file on a volume has at most 65,535 records
LARGEST_TEXT_IN = 15_000_000  # becomes larger
MOST_CALLS_OUT = 1200  # of LARGE bytes
MOST_CALLS_IN = 650  # of LARGEST_IN bytes
FEW = 100  # files; what each costs is seen by twice as many
MOST_CALLS_EACH = 6  # beyond the file's data
MOST_CALLS_EACH_CONVERTED = 16  # the same where a conversion needs a temporary file
MOST_MEMORY = 8_000_000  # beyond that of --version
READS = {"read", "pread64", "readv", "preadv", "preadv2"}
WRITES = {"write", "pwrite64", "writev", "pwritev", "pwritev2"}


def fresh_folder(folder, name):
    target = folder / name
    shutil.rmtree(target, ignore_errors=True)
    target.mkdir()
    return target


def get(folder, volume, *options):
    """The command that copies a volume's files into a folder that holds nothing yet."""
    return [TARVO, "get", volume, "-d", fresh_folder(folder, "out"), *options]


def put(folder, sources, *options):
    """The command that copies files into a volume that holds nothing yet."""
    volume = folder / "in.lif"
    shutil.copyfile(make_volume(folder, "empty", 65535, 1000), volume)
    return [TARVO, "put", volume, *sources, *options]


def large_source(folder):
    source = folder / "LARGE"
    source.write_bytes(make_volume(folder, "raw", LARGE).read_bytes()[-LARGEST_IN:])
    return source


def texts_out(folder, count, *options):
    """Small texts on the host, as the program itself copies them."""
    target = fresh_folder(folder, f"texts-{count}")
    run_well([TARVO, "get", make_volume(folder, "texts", count), "-d", target, *options])
    found = sorted(target.iterdir())
    if len(found) != count:
        sys.exit(f"get copies {len(found)} files of {count}")
    return found


def large_file_faults(folder):
    out = get(folder, make_volume(folder, "raw", LARGE))
    calls_out = sum(system_calls(folder, out).values())
    (written,) = (folder / "out").iterdir()
    if written.stat().st_size < LARGE:
        yield f"get copies only {written.stat().st_size} bytes"
    calls_in = sum(system_calls(folder, put(folder, [large_source(folder)])).values())
    print(f"system calls for 30 MB out: {calls_out}, at most {MOST_CALLS_OUT}")
    print(f"system calls for 16 MB in: {calls_in}, at most {MOST_CALLS_IN}")
    if calls_out > MOST_CALLS_OUT or calls_in > MOST_CALLS_IN:
        yield "too many system calls for one large file"


def calls_each(fewer, more, passes):
    """What FEW more files cost each, beyond their data: no file is larger than a read or write may be, so that each
    pass over it is worth one of both."""
    growth = {name: (more.get(name, 0) - fewer.get(name, 0)) / FEW for name in fewer | more}
    data = sum(min(passes, sum(growth.get(name, 0) for name in kind)) for kind in (READS, WRITES))
    return sum(growth.values()) - data


def many_file_faults(folder):
    few, more = make_volume(folder, "texts", FEW), make_volume(folder, "texts", 2 * FEW)
    plain = [texts_out(folder, count) for count in (FEW, 2 * FEW)]
    texts = [texts_out(folder, count, "--text") for count in (FEW, 2 * FEW)]
    rows = (
        ("out", lambda i: get(folder, (few, more)[i]), 1, MOST_CALLS_EACH),
        ("out as text", lambda i: get(folder, (few, more)[i], "--text"), 1, MOST_CALLS_EACH),
        ("in", lambda i: put(folder, plain[i]), 1, MOST_CALLS_EACH),
        ("in as text", lambda i: put(folder, texts[i], "--text"), 2, MOST_CALLS_EACH_CONVERTED),
    )
    for name, command, passes, most in rows:
        each = calls_each(*(system_calls(folder, command(i)) for i in range(2)), passes)
        print(f"system calls for each of many files {name}, beyond its data: {each:.2f}, at most {most}")
        if each > most:
            yield f"too many system calls for many files {name}"


def memory_faults(folder):
    text = make_volume(folder, "text", LARGEST_TEXT_IN)
    run_well(get(folder, text, "--text"))
    (as_text,) = (folder / "out").iterdir()
    as_text = as_text.rename(folder / as_text.name)
    rows = (
        ("30 MB out", lambda: get(folder, make_volume(folder, "raw", LARGE))),
        ("15 MB of text out", lambda: get(folder, text, "--text")),
        ("16 MB in", lambda: put(folder, [large_source(folder)])),
        ("15 MB of text in", lambda: put(folder, [as_text], "--text")),
    )
    own = peak_memory([TARVO, "--version"])
    for name, command in rows:
        extra = peak_memory(command()) - own
        print(f"memory for {name}: {extra:,} bytes beyond {own:,}, at most {MOST_MEMORY:,}")
        if extra > MOST_MEMORY:
            yield f"too much memory for {name}"


COUNTS = (large_file_faults, many_file_faults, memory_faults)
