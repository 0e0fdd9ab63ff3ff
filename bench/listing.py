"""Starting, opening and listing."""

import subprocess

from measuring import BUILD, PROGRAMS, TARVO, benchmark_medians, hyperfine, make_volume, row

EMPTY = PROGRAMS / "empty"
LISTING_BENCH = PROGRAMS / "listing_bench"
PLUGIN = BUILD / "tarvo.wfx"

MANY = 20000
INODES = 10000
SIZES = (2000, 20000, 200000)


def start(folder):
    ours, theirs = hyperfine(folder, [[TARVO, "--version"], [EMPTY]], 300)
    yield row("--version : an empty program", ours, theirs, 1.5)


def listing(folder):
    volume = make_volume(folder, "files", MANY)
    ours, theirs = hyperfine(folder, [[TARVO, "ls", volume], ["cat", volume]], 60)
    yield row(f"ls of {MANY:,} files : cat of the image", ours, theirs, 3)

    text = folder / "listing.json"
    with text.open("wb") as output:
        subprocess.run([TARVO, "ls", "--json", volume], check=True, stdout=output)
    ours, theirs = hyperfine(folder, [[TARVO, "ls", "--json", volume], ["cat", text]], 60)
    yield row("ls --json : cat of what it prints", ours, theirs, 3)


def plugin_listing(folder):
    volume = make_volume(folder, "files", MANY)
    ours, theirs = hyperfine(folder, [[LISTING_BENCH, PLUGIN, volume], [TARVO, "ls", volume]], 60)
    yield row(f"{MANY:,} files through the plug-in : ls", ours, theirs, 2)


def growth(folder):
    commands = [[TARVO, "ls", make_volume(folder, "files", entries)] for entries in SIZES]
    times = hyperfine(folder, commands, 20)
    for few, many, less, more in zip(SIZES, SIZES[1:], times, times[1:]):
        yield row(f"ls of {many:,} : of {few:,} files", more, less, 12)


def tree(folder):
    volume = make_volume(folder, "sdf", INODES)
    ours, theirs = hyperfine(folder, [[TARVO, "info", volume], ["cat", volume]], 60)
    yield row(f"opening {INODES:,} inodes : cat of the image", ours, theirs, 3)
    ours, theirs = hyperfine(folder, [[TARVO, "ls", "-R", volume], ["cat", volume]], 60)
    yield row(f"ls -R of {INODES:,} inodes : cat of the image", ours, theirs, None)


def records(folder):
    medians = benchmark_medians(folder, "records_bench")
    ours = medians["records_in_order"]
    yield row("128 MB in records : in blocks of 64 KB", ours, medians["blocks_in_order"], 3)
    yield row("128 MB in records : seek and read of each", ours, medians["seek_and_read_each_record"], None)


MEASURES = (start, listing, plugin_listing, growth, tree, records)
