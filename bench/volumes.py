"""Making, filling and packing volumes, against what truncate, dd and cp take for the same bytes."""

import struct

from measuring import TARVO, hyperfine, row

RUNS = 20
MEDIUM = "7958A"  # 130 MB
MEDIUM_BYTES = 8104 * 63 * 256
RECORD = 256
FILES = 1000
FILE_RECORDS = 62
HOLE = 2  # records ahead of each file
TRACK = 63  # records
SYSTEM_TRACKS = 3


def words(*values):
    return struct.pack(f">{len(values)}H", *values)


def in_records(data, count):
    return data.ljust(count * RECORD, b"\0")


def packable_disk():
    """A System 45 disk with files of 15 KB each and a hole ahead of every one."""
    area = SYSTEM_TRACKS * TRACK
    step = FILE_RECORDS + HOLE
    data_tracks = (FILES * step + TRACK - 1) // TRACK
    dir_start, alloc_start, alloc_end = 1, 65, 82
    head = words(0x0500, TRACK, SYSTEM_TRACKS + data_tracks, 0, dir_start, alloc_start, alloc_end, SYSTEM_TRACKS,
                 data_tracks, 1)  # fmt: skip
    starts = [area + index * step + HOLE for index in range(FILES)]
    entries = b"".join(b"F%05d" % index + words(start, FILE_RECORDS, 128, 0xC800, 0)
                       for index, start in enumerate(starts))  # fmt: skip
    runs = b"".join(words(start - HOLE, HOLE) for start in starts)
    end = starts[-1] + FILE_RECORDS
    last = (SYSTEM_TRACKS + data_tracks) * TRACK - end
    runs += words(end, last) if last else b""
    system = in_records(head, dir_start) + in_records(entries + words(0, 0xFFFF), alloc_start - dir_start)
    system += in_records(runs + b"\xff\xff", alloc_end - alloc_start)
    files = b"".join(bytes(HOLE * RECORD) + bytes([index % 251 + 1]) * (FILE_RECORDS * RECORD)
                     for index in range(FILES))  # fmt: skip
    return in_records(system, area) + files + bytes(last * RECORD)


def init(volume, *options):
    return [TARVO, "init", volume, "--media", MEDIUM, "--system", "250", *options]


def filled(folder):
    ours, theirs = folder / "ours.hpi", folder / "theirs"
    dd = ["dd", "if=/dev/zero", f"of={theirs}", "bs=64K", f"count={MEDIUM_BYTES}", "iflag=count_bytes"]
    times = hyperfine(folder, [init(ours), dd], RUNS, [["rm", "-f", ours], ["rm", "-f", theirs]])
    yield row("init of 130 MB : dd of them", *times, 1.2)


def quick(folder):
    ours, theirs = folder / "ours.hpi", folder / "theirs"
    truncate = ["truncate", "-s", str(MEDIUM_BYTES), theirs]
    times = hyperfine(folder, [init(ours, "--quick"), truncate], 100, [["rm", "-f", ours], ["rm", "-f", theirs]])
    yield row("init --quick of 130 MB : truncate", *times, 3)


def pack(folder):
    original, ours, theirs = folder / "disk.hpi", folder / "ours.hpi", folder / "theirs.hpi"
    original.write_bytes(packable_disk())
    # Both alike, since copying 16 MB leaves the processor's caches cold for whoever comes next. The image is a new file:
    # one that was cut and written again goes to the disk at once, and whoever replaces it waits for that.
    fresh = ["sh", "-c", 'rm -f "$2" "$3" && cp "$1" "$2"', "sh", original, ours, theirs]
    times = hyperfine(folder, [[TARVO, "pack", ours], ["cp", "--reflink=never", original, theirs]], RUNS,
                      [fresh, fresh])  # fmt: skip
    yield row(f"pack of 16 MB, {FILES:,} files : cp of the image", *times, 4)


MEASURES = (filled, quick, pack)
