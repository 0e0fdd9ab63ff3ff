"""What the Python checks share: where the project is, its files, and how a check ends."""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = ROOT / "build"
SKIPPED = 77
SOURCE_SUFFIXES = {".cpp", ".h", ".c"}
OUTSIDE = {"build", ".git"}


def project_files(suffixes):
    """The project's own files with one of these suffixes, in order."""
    for path in sorted(ROOT.rglob("*")):
        if path.is_file() and path.suffix in suffixes and path.relative_to(ROOT).parts[0] not in OUTSIDE:
            yield path


def name_of(path):
    """A path as messages show it: from the project's root, with slashes."""
    return path.relative_to(ROOT).as_posix()


def source_text(path):
    return path.read_text(encoding="utf-8", errors="replace")


def without_comments(text):
    """C or C++ text with its comments blanked; line ends stay."""

    def blank(match):
        found = match.group(0)
        return re.sub(r"[^\n]", " ", found) if found.startswith("/") else found

    pattern = r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\''
    return re.sub(pattern, blank, text, flags=re.DOTALL)


def skip(reason):
    print(f"skipped: {reason}")
    sys.exit(SKIPPED)


def finish(faults):
    for fault in faults:
        print(fault)
    sys.exit(1 if faults else 0)
