#!/usr/bin/env python3
"""Writes the inputs from which fuzzing starts: fuzz_seeds.py FOLDER makes a folder for each target. What stands ahead
of an image, of bytes or of lines is told at the head of each target's source."""

import struct
import subprocess
import sys
from pathlib import Path

from project import BUILD, ROOT

MAKE_VOLUME = BUILD / "debug/tests/make_volume"
VOLUMES = {
    "demo": ("demo",),
    "few": ("files", 3),
    "many": ("files", 100),
    "texts": ("texts", 4),
    "empty": ("empty", 160, 16),
    "tree": ("tree",),
    "entries": ("sdf", 40),
}
RECORD = 256


def disk_entry(name, start, records, words=128, kind=0x2400, mark=0):
    kind |= start >> 16 & 0x7F
    return name.encode("latin-1").ljust(6, b"\0") + struct.pack(">HHHHBB", start & 0xFFFF, records, words, kind, 0, mark)


def tape_entry(name, start, records, words=128, kind=0x24):
    return name.encode("latin-1").ljust(6, b"\0") + struct.pack(">BBHH", kind | start >> 8, start & 0xFF, records, words)


def disk(entries, runs, magic=0x0500, long_runs=False, end=b"\0\0\xff\xff", records=100):
    """A disk of ten records a track: directory at 1 and 2, availability table at 3, their copies at 11, files from 20."""
    head = struct.pack(">10H", magic, 10, 10, 1, 1, 3, 4, 2, 8, 7) + bytes(7) + bytes((1 if long_runs else 0,))
    directory = b"".join(entries) + end
    table = b"".join(struct.pack(">LL" if long_runs else ">HH", *run) for run in runs)
    table += b"" if magic == 0 else b"\xff\xff\xff\xff"
    tables = directory.ljust(2 * RECORD, b"\0") + table.ljust(RECORD, b"\0")
    image = head.ljust(RECORD, b"\0") + tables + bytes(7 * RECORD) + bytes(RECORD) + tables
    return (image + bytes(6 * RECORD) + b"content".ljust(RECORD, b"x") * 10).ljust(records * RECORD, b"\0")


def tape(entries, end=b"\xff\xff", records=40):
    directory = (b"\x05\x00\xff\xff" + b"".join(entries[:21])).ljust(RECORD, b"\0") + b"".join(entries[21:])
    directory = (b"\x05\x00\xff\xff" + b"".join(entries) + end if len(entries) < 21 else directory + end)
    directory = directory.ljust(2 * RECORD, b"\0")
    return (bytes(RECORD) + directory * 2 + b"tape".ljust(RECORD, b"t") * 12).ljust(records * RECORD, b"\0")


def system45_images():
    """Disks and tapes of the 9845 family, and some that claim what can't be."""
    files = [disk_entry("ALPHA", 20, 2), disk_entry("BETA", 22, 3, 256, 0xC800, 0x70), disk_entry("GAMMA", 28, 1)]
    files_of_9825 = struct.pack(">10H", 0, 30, 67, 1, 1, 23, 24, 2, 65, 0).ljust(RECORD, b"\0") + b"\0\0\xff\xff"
    on_tape = [tape_entry("ALPHA", 5, 2), tape_entry("BETA", 7, 1, 256, 0xC8), tape_entry("GAMMA", 9, 1)]
    return {
        "disk45": disk(files, [(29, 71)]),
        "disk45-long": disk(files, [(29, 71)], 0x0600, True),
        "disk45-gaps": disk(files[1:], [(20, 2), (29, 71)]),
        "disk45-overlap": disk(files + [disk_entry("OVER", 21, 5)], [(19, 30), (25, 60), (0, 100), (0xFFFE, 0xFFFE)]),
        "disk45-wrap": disk(files, [(29, 71), (0xFFFFFFF0, 0x20), (0x7FFFFFFF, 0x80000001)], 0x0500, True),
        "disk45-endless": disk([disk_entry(f"F{i}", 20 + i, 1) for i in range(32)], [(50, 1)] * 64, end=b""),
        "disk45-claims": disk(files + [disk_entry("WIDE", 60, 0xFFFF, 0xFFFF), disk_entry("FAR", 0x7FFFFF, 1)], [(61, 9)]),
        "9825": files_of_9825.ljust(90 * RECORD, b"\0"),
        "tape45": tape(on_tape),
        "tape45-places": tape([tape_entry(f"T{start}", start, 1) for start in range(0, 1024, 73)]),
        "tape45-endless": tape([tape_entry(f"T{i}", 5 + i, 1) for i in range(42)], b""),
    }


def make_images(folder):
    """The volumes as bytes, by name."""
    images = {}
    for name, words in VOLUMES.items():
        subprocess.run([str(word) for word in (MAKE_VOLUME, *words, folder / "volume")], check=True)
        images[name] = (folder / "volume").read_bytes()
    (folder / "volume").unlink()
    images["short"] = images["demo"][:1024]
    images.update(system45_images())
    return images


SYSTEM45 = tuple(system45_images())


def open_seeds(images):
    for image in ("demo", "few", "many", "short", *SYSTEM45):
        for flags in (0x0404, 0x145E, 0x4AE4, 0x802C):
            yield f"{image}-{flags:04x}", struct.pack("<H", flags) + images[image]


def sdf_seeds(images):
    rows = ((0x00, 0), (0x07, 0), (0x20, 0), (0x08, 3), (0x10, 4), (0x40, 0), (0x80, 0))
    for image in ("tree", "entries"):
        for options, number in rows:
            yield f"{image}-{options:02x}", bytes((options, number)) + images[image]


def names_seeds(_):
    yield "typed", b"NAME.BDAT.&256\nASCII\nNAME"
    yield "path", b"C:/folder/LONGNAME_.TEXT\n"
    yield "pattern", b"*A?C*\nABC\nTEXT"
    yield "target", b"70012:FILE/NAME"
    yield "hexadecimal", b"#E0D0\n9845"


def get_seeds(images):
    rows = ((0x00, 0), (0x03, 0), (0x08, 5), (0x10, 1), (0x20, 1), (0x41, 0), (0x84, 1))
    for image in ("demo", "texts", "short", *SYSTEM45):
        for options, number in rows:
            yield f"{image}-{options:02x}", bytes((options, number)) + images[image]


WORKSPACE = b"WS_FILE   " + struct.pack(">HLL", 0xE020, 2, 1) + bytes(12)
VOLUME_RECORD = b"\x80\x00HFSLIF".ljust(RECORD, b"\0")
HPBASIC = VOLUME_RECORD + WORKSPACE.ljust(RECORD, b"\0") + b"content".ljust(RECORD, b"\0")
HPCALC = b"NAME".ljust(10, b"\0") + struct.pack(">HLL", 0xE052, 0, 1) + bytes(12) + b"content"

# name of the seed: flags, options, number of what fails, type, name, source
PUT_ROWS = {
    "plain": (0x00, 0x01, 0, 0x0000, b"NEW", b"bytes"),
    "as-ascii": (0x06, 0x01, 0, 0x0001, b"NEW.ASCII", b"two\nlines\n"),
    "as-data": (0x06, 0x00, 0, 0xE848, b"DATA", b"two\nlines\n" + b"X" * 700),
    "as-pascal-text": (0x46, 0x04, 0, 0xEA3E, b"PAGE", b"  a page\n" * 150),
    "as-hp75-text": (0x06, 0x04, 0, 0xE052, b"HP75", b"10 LINE\n20\n"),
    "over": (0x01, 0x01, 0, 0x0001, b"F000001.ASCII", b"over"),
    "txt": (0x0A, 0x02, 0, 0x0000, b"NOTE.TXT", b"text\n"),
    "behind-hpbasic-header": (0x10, 0x00, 0, 0x0000, b"BASIC", HPBASIC),
    "behind-hpcalc-header": (0x60, 0x00, 0, 0x0000, b"CALC", HPCALC),
    "failing-write": (0x00, 0x40, 1, 0x0000, b"FAILS", b"x" * 600),
    "failing-allocation": (0x00, 0x20, 0, 0x0000, b"FAILS", b"bytes"),
    "stopped": (0x00, 0x80, 0, 0x0000, b"STOPS", b"x" * 600),
    "planned": (0x80, 0x00, 0, 0x0000, b"PLAN", b"bytes"),
}


def put_seeds(images):
    for image in ("demo", "texts", "empty", "disk45", "disk45-gaps", "disk45-overlap", "disk45-wrap", "tape45"):
        for seed, (flags, options, number, file_type, name, source) in PUT_ROWS.items():
            head = struct.pack(">BBBHB", flags, options, number, file_type, len(name)) + struct.pack("<H", len(source))
            yield f"{image}-{seed}", head + name + source + images[image]


# name of the seed: command, options, number of what fails, mask, type, pattern, new name
OPERATION_ROWS = {
    "list": (0, 0x00, 0, 0, 0, b"", b""),
    "create": (1, 0x00, 3, 128, 0x2400, b"", b"NEW"),
    "copy": (2, 0x18, 0, 0, 0, b"ALPHA", b"COPY.DATA"),
    "copy-all-to-lif": (2, 0x01, 0, 0, 0, b"", b""),
    "copy-all-to-disk": (2, 0x03, 0, 0, 0, b"", b""),
    "copy-to-tape": (2, 0x0D, 0, 0, 0, b"*A*", b""),
    "delete": (3, 0x08, 0, 0, 0, b"ALPHA", b""),
    "delete-all": (3, 0x00, 0, 0, 0, b"", b""),
    "move": (4, 0x01, 0, 0, 0, b"", b""),
    "rename": (4, 0x18, 0, 0, 0, b"BETA", b"NEW"),
    "attributes": (5, 0x08, 0, 0x0F, 0x2400, b"GAMMA", b""),
    "pack": (6, 0x00, 0, 0, 0, b"", b""),
    "failing-write": (3, 0x48, 1, 0, 0, b"ALPHA", b""),
    "failing-read": (2, 0x58, 2, 1, 0, b"ALPHA", b"COPY"),
}


def operations_seeds(images):
    for image in ("demo", *SYSTEM45):
        for seed, (command, options, number, mask, file_type, pattern, name) in OPERATION_ROWS.items():
            head = struct.pack(">BBBBHBB", command, options, number, mask, file_type, len(pattern), len(name))
            yield f"{image}-{seed}", head + pattern + name + images[image]


def of_blocks(content):
    """Content up to the end of a block."""
    return content.ljust((len(content) + RECORD - 1) // RECORD * RECORD, b"\0")


DATA_ITEMS = (b"\x00\x0a\x01\x02" b"\x00\x3c\x00\x03ABC\x0d" b"\x00\x1a\x12\x34\x56\x78\x90\x12" b"\x00\x15\x34\x56"
              b"\x00\x3e")  # fmt: skip
DATA_PIECES = of_blocks(b"\x00\x1c\x01\x00ABCDEFGH") + b"\x00\x2c\x00\x03IJK\x0d\x00\x1e\x00\x3e"
ASCII_RECORDS = b"\x00\x05ABCDE \x00\x00\x00\x02FG\x01\x00" + b"H" * 256 + b"\xff\xff"
PASCAL_TEXT = b"\x10\x24INDENTED\x0d\x10\x20PLAIN\x0d" + bytes(20) + b"\x10\x20NEXT\x0d"
SDF_RECORDS = b"\x01\x00\x00\x00\x04ABCD\x01\x00\x00\x00\x03EF\xc7\x01\x00\x00\x01\x00" + b"G" * 256
BDAT_ITEMS = (b"\xdf\x03\x00ABC" b"\xcf\x02\x00DE" b"\x10\x20\x30\x40\x50\x60\x70\x12"
              b"\x00\x00\x00\x00\xff\x23\x41\x02" b"\xef")  # fmt: skip
HP75_TEXT = b"\x00\x00\x20\x00\xbeT".ljust(28, b"\0") + b"\x10\x00\x05HELLO\x20\x00\x02GO" + b"\x99\xa9\x02\x8a\x0e"

CONTENT_ROWS = {  # name: kind, content
    "data-items": (1, DATA_ITEMS),
    "data-pieces": (1, DATA_PIECES),
    "ascii-records": (3, ASCII_RECORDS),
    "pascal-text": (4, PASCAL_TEXT),
    "sdf-records": (5, SDF_RECORDS),
    "bdat-items": (6, BDAT_ITEMS),
    "hp75-text": (7, HP75_TEXT),
}


def content_seeds(_):
    for name, (kind, content) in CONTENT_ROWS.items():
        for lengths in (0, 7):
            yield f"{name}-{lengths}", bytes((kind, lengths)) + content


def lines_seeds(_):
    lines = {
        "short": b"10 FIRST LINE\n  20 SECOND\r\n\n30\n",
        "long": b"".join(b"%d\n" % length + b"L" * length + b"\n" for length in (95, 251, 252, 253, 600, 1021, 1100)),
        "indented": b"".join(b" " * count + b"TEXT\n" for count in (1, 9, 223, 224, 300)),
        "none": b"",
    }
    for kind in (1, 3, 4, 7):
        for name, text in lines.items():
            yield f"{name}-{kind}", bytes((kind,)) + text


CONFIG_ROWS = {
    "media": b'[fsinfo]\nNEW = "a disc, new", N, 1,2,3,4,5,6,7,8,9,10\n9895 = d,L,1,2,3,4,5,6,7,8,9\n',
    "drives": b"[driveinfo]\nNEW = d, CS80, 0x200, 0,0, 0x79080, 1, 370,5,35,256,1,0\n7905=d,AMIGO,1,2\n",
    "types": b'[liftypes]\n0xE123 = MINE\n1 = "A B",,SE80\n-1 x y z\n',
    "quotes": b'[liftypes]\n1 = "a \\"b\\" \\\\c"\n2 = "open\n',
    "unended": b"; a long comment ,, with = signs\n[defaults]\nboard = 1",
    "many": b"[liftypes]\n" + b"".join(b"%d = T\n" % (0x2000 + i) for i in range(970)),
}


def config_seeds(_):
    sample = (ROOT / "samples/tarvo.ini").read_bytes()
    for name, text in {**CONFIG_ROWS, "sample": sample}.items():
        for failing in (0, 3):
            yield f"{name}-{failing}", bytes((failing,)) + text


def words(*numbers):
    return struct.pack(f"<{len(numbers)}L", *numbers)


GAP, HALF_GAP, END = 0xFFFFFFFE, b"\xff\xff", words(0xFFFFFFFF)


def tape_record(content):
    length = words(len(content))
    return length + content + bytes(len(content) % 2) + length


def tape_slot(content, size):
    slot = words(GAP) + tape_record(content)
    return slot + words(GAP) * ((size + 16 - len(slot)) // 4)


TAPES = {
    "records": tape_record(b"ABC") + bytes(4) + tape_record(b"DEFGHIJK") + bytes(8) + tape_record(b"L") + END,
    "gaps": words(GAP, GAP) + tape_record(b"ABC") + HALF_GAP + words(GAP) + tape_record(b"DE") + bytes(4),
    "slots": b"".join(tape_slot(content, 16) for content in (b"A" * 16, b"B" * 12, b"C" * 4)) + END,
    "cut": tape_record(b"ABCDEF") + words(9) + b"GHI",
    "bad": tape_record(b"AB") + words(0x1000000, 0x80000003, 0x7F000000),
    "marks": bytes(16) + END + tape_record(b"behind"),
}


def tape_seeds(_):
    for name, image in TAPES.items():
        for options, block in ((0x0000, 16), (0x0001, 16), (0x0006, 4), (0x0074, 7), (0x0B20, 1024), (0x10D3, 8)):
            yield f"{name}-{options:04x}", struct.pack("<HH", options, block) + image


TARGETS = {
    "open": open_seeds,
    "names": names_seeds,
    "get": get_seeds,
    "put": put_seeds,
    "operations": operations_seeds,
    "content": content_seeds,
    "lines": lines_seeds,
    "sdf": sdf_seeds,
    "config": config_seeds,
    "tape": tape_seeds,
}


def main(folder):
    images = make_images(folder)
    for target, seeds in TARGETS.items():
        (folder / target).mkdir()
        for name, content in seeds(images):
            (folder / target / name).write_bytes(content)


main(Path(sys.argv[1]))
