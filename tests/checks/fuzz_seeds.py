#!/usr/bin/env python3
"""Writes the inputs from which fuzzing starts: fuzz_seeds.py FOLDER makes a folder for each target. What stands ahead
of an image, of bytes or of lines is told at the head of each target's source."""

import struct
import subprocess
import sys
from pathlib import Path

from project import BUILD

MAKE_VOLUME = BUILD / "debug/tests/make_volume"
VOLUMES = {
    "demo": ("demo",),
    "few": ("files", 3),
    "many": ("files", 100),
    "texts": ("texts", 4),
    "empty": ("empty", 160, 16),
}
RECORD = 256


def make_images(folder):
    """The volumes as bytes, by name."""
    images = {}
    for name, words in VOLUMES.items():
        subprocess.run([str(word) for word in (MAKE_VOLUME, *words, folder / "volume")], check=True)
        images[name] = (folder / "volume").read_bytes()
    (folder / "volume").unlink()
    images["short"] = images["demo"][:1024]
    return images


def open_seeds(images):
    for image in ("demo", "few", "many", "short"):
        for flags in (0x0404, 0x145E, 0x4AE4, 0x802C):
            yield f"{image}-{flags:04x}", struct.pack("<H", flags) + images[image]


def names_seeds(_):
    yield "typed", b"NAME.BDAT.&256\nASCII\nNAME"
    yield "path", b"C:/folder/LONGNAME_.TEXT\n"
    yield "pattern", b"*A?C*\nABC\nTEXT"
    yield "target", b"70012:FILE/NAME"
    yield "hexadecimal", b"#E0D0\n9845"


def get_seeds(images):
    rows = ((0x00, 0), (0x03, 0), (0x08, 5), (0x10, 1), (0x20, 1), (0x41, 0), (0x84, 1))
    for image in ("demo", "texts", "short"):
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
    for image in ("demo", "texts", "empty"):
        for seed, (flags, options, number, file_type, name, source) in PUT_ROWS.items():
            head = struct.pack(">BBBHB", flags, options, number, file_type, len(name)) + struct.pack("<H", len(source))
            yield f"{image}-{seed}", head + name + source + images[image]


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


TARGETS = {
    "open": open_seeds,
    "names": names_seeds,
    "get": get_seeds,
    "put": put_seeds,
    "content": content_seeds,
    "lines": lines_seeds,
}


def main(folder):
    images = make_images(folder)
    for target, seeds in TARGETS.items():
        (folder / target).mkdir()
        for name, content in seeds(images):
            (folder / target / name).write_bytes(content)


main(Path(sys.argv[1]))
