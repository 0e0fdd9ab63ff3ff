"""Files out of a medium and into it, against what cp and cat take for the same bytes. Each run writes files that
weren't there before it, on both sides; the medium for files that go in is fresh."""

import sys

from measuring import TARVO, benchmark_medians, hyperfine, make_volume, row, run_quietly

RUNS = 30
LARGE = 30_000_000
LARGEST_IN = 16_000_000  # a file on a volume has at most 65,535 records
MANY = 1000
CP = ("cp", "--reflink=never")


def get(volume, target, *options):
    return [TARVO, "get", volume, "-d", target, *options]



def files_of(folder, count):
    """What was copied into a folder, in order; that it is as many as it must be is seen here."""
    found = sorted(folder.iterdir())
    if len(found) != count:
        sys.exit(f"{folder.name} holds {len(found)} files instead of {count}")
    return found


def out_of(folder, volume, count, *options):
    """The files of a volume, as a run of the measured command writes them."""
    kept = folder / "kept"
    run_quietly(get(volume, kept, *options))
    return files_of(kept, count)


def against_copy_of_one(folder, volume, *options):
    """Median times of getting the one file of a volume, and of copying what that gives."""
    (written,) = out_of(folder, volume, 1, *options)
    ours, theirs = folder / "ours", folder / "theirs"
    ours.mkdir()
    theirs.mkdir()
    return hyperfine(folder, [get(volume, ours, *options), [*CP, written, theirs]], RUNS,
                     [["rm", "-f", ours / written.name], ["rm", "-f", theirs / written.name]])  # fmt: skip


def one_out(folder):
    volume = make_volume(folder, "raw", LARGE)
    yield row("30 MB out : cp of them", *against_copy_of_one(folder, volume), 1.2)


def one_out_as_text(folder):
    volume = make_volume(folder, "text", LARGE)
    yield row("30 MB of LIF ASCII out as text : cp of it", *against_copy_of_one(folder, volume, "--text"), 2)


def one_in(folder):
    source = folder / "LARGE"
    source.write_bytes(make_volume(folder, "raw", LARGE).read_bytes()[-LARGEST_IN:])
    empty = make_volume(folder, "empty", 65535, MANY)
    volume, copy = folder / "one.lif", folder / "one.copy"
    times = hyperfine(folder, [[TARVO, "put", volume, source], [*CP, source, copy]], RUNS,
                      [["cp", empty, volume], ["rm", "-f", copy]])  # fmt: skip
    yield row("16,000,000 bytes in : cp of them", *times, 1.5)


def many_out_as_text(folder):
    volume = make_volume(folder, "texts", MANY)
    written = out_of(folder, volume, MANY, "--text")
    ours, theirs = folder / "ours", folder / "theirs"
    fresh = [["sh", "-c", 'rm -rf "$1" && mkdir "$1"', "sh", target] for target in (ours, theirs)]
    times = hyperfine(folder, [get(volume, ours, "--text"), [*CP, *written, theirs]], RUNS, fresh)
    yield row(f"{MANY:,} small texts out : cp of them", *times, 1)


def many_in(folder):
    sources = out_of(folder, make_volume(folder, "texts", MANY), MANY)
    empty = make_volume(folder, "empty", 65535, MANY)
    volume = folder / "many.lif"
    # Both alike, since copying 16 MB leaves the processor's caches cold for whoever comes next.
    fresh = ["sh", "-c", 'cp "$1" "$2" && rm -f "$3"', "sh", empty, volume, folder / "output"]
    times = hyperfine(folder, [[TARVO, "put", volume, *sources], ["cat", *sources]], RUNS, [fresh, fresh])
    yield row(f"{MANY:,} small files in : cat of them into one", *times, 1.5)


def growth_in(folder):
    """The tables are written once, so that ten times as many files take about ten times as long."""
    sources = out_of(folder, make_volume(folder, "texts", MANY), MANY)
    empty = make_volume(folder, "empty", 65535, MANY)
    volume = folder / "growth.lif"
    times = hyperfine(folder, [[TARVO, "put", volume, *files] for files in (sources, sources[: MANY // 10])], RUNS,
                      [["cp", empty, volume]] * 2)  # fmt: skip
    yield row(f"{MANY:,} files in one put : {MANY // 10:,} of them", *times, 15)


def conversion(folder):
    medians = benchmark_medians(folder, "conversion_bench", "cpu_time")
    yield row("LIF ASCII to text in memory : memcpy", medians["ascii_to_text"], medians["plain_copy"], 10)


MEASURES = (one_out, one_out_as_text, one_in, many_out_as_text, many_in, growth_in, conversion)
