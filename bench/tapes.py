"""The test of tape images, and their conversions, against what cat and cp take for the same bytes."""

import os

from measuring import TARVO, hyperfine, row, run_quietly

RUNS = 20
IMAGE = 128 * 1024 * 1024
PIECE = 1024 * 1024
CP = ("cp", "--reflink=never")


def plain_image(folder):
    """Bytes without a pattern, made once."""
    image = folder / "plain.hpi"
    if not image.exists():
        with image.open("wb") as file:
            for _ in range(IMAGE // PIECE):
                file.write(os.urandom(PIECE))
    return image


def tape_image(folder, layout, block):
    """The same bytes as records of one length, made once."""
    tape = folder / f"{layout}-{block}.tap"
    if not tape.exists():
        plain = plain_image(folder)
        run_quietly([TARVO, "tape", "convert", plain, tape, "--to", layout, "--block", block])
        run_quietly([TARVO, "tape", "test", tape])
    return tape


def tape_test(folder):
    commands = []
    for layout, block in (("fixed", 1024), ("fixed", 256), ("simh", 1024), ("simh", 256)):
        tape = tape_image(folder, layout, block)
        commands += [[TARVO, "tape", "test", tape], ["cat", tape]]
    folder.joinpath("plain.hpi").unlink()
    slots, slots_cat, short_slots, _, records, records_cat, short_records, _ = hyperfine(folder, commands, RUNS, to="null")
    yield row("test of 128 MB in slots of 1,024 : cat", slots, slots_cat, 4)
    yield row("the same in slots of 256 : of 1,024", short_slots, slots, 1.25)
    yield row("test of 128 MB in records of 1,024 : cat", records, records_cat, 4)
    yield row("the same in records of 256 : of 1,024", short_records, records, 1.25)


def conversions(folder):
    rows = (
        ("to simh", plain_image(folder), ("--to", "simh", "--block", 1024)),
        ("simh to fixed", tape_image(folder, "simh", 1024), ("--to", "fixed", "--block", 1024)),
        ("simh to fixed, packed", tape_image(folder, "simh", 1024), ("--to", "fixed", "--block", 1024, "--pack")),
        ("simh to hpi", tape_image(folder, "simh", 1024), ("--to", "hpi", "--block", 1024)),
        ("fixed to hpi", tape_image(folder, "fixed", 1024), ("--to", "hpi")),
    )
    for name, source, options in rows:
        ours, theirs = folder / "ours", folder / "theirs"
        commands = [[TARVO, "tape", "convert", source, ours, *options], [*CP, source, theirs]]
        times = hyperfine(folder, commands, RUNS, [["rm", "-f", ours], ["rm", "-f", theirs]])
        ours.unlink()
        theirs.unlink()
        yield row(f"128 MB, {name} : cp", *times, 1.6)


MEASURES = (tape_test, conversions)
