#!/usr/bin/env python3
"""exports.txt, what the public headers mark and what the libraries export are the same names.

Usage: exports.py; looks at the release build and at the Windows build.
"""

import re
import subprocess

from project import BUILD, ROOT, finish, project_files, without_comments

PLUGIN_PREFIX = "Fs"  # what a file manager calls is in the plug-in alone
DIALOG = {"TarvoDialog"}


def listed_names():
    lines = (ROOT / "exports.txt").read_text(encoding="ascii").splitlines()
    return [line for line in lines if line and not line.startswith("#")]


def marked_names():
    """The names of all declarations with TARVO_API in headers."""
    names = set()
    for path in project_files({".h"}):
        text = re.sub(r"^\s*#.*$", "", without_comments(path.read_text(encoding="utf-8")), flags=re.MULTILINE)
        for declaration in re.findall(r"\bTARVO_API\b([^;]*);", text):
            before = re.split(r"[(\[]", declaration, maxsplit=1)[0]
            names.add(re.findall(r"\w+", before)[-1])
    return names


def posix_exports(library):
    table = subprocess.run(["nm", "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    return {line.split()[-1].split("@")[0] for line in table.splitlines()}


def windows_exports(library):
    head = subprocess.run(["objdump", "-p", library], check=True, capture_output=True, text=True).stdout
    names = head.partition("[Ordinal/Name Pointer] Table")[2].partition("\n\n")[0]
    return set(re.findall(r"^\s*\[\s*\d+\]\s+(?:\+base\[\s*\d+\]\s+\S+\s+)?(\S+)$", names, flags=re.MULTILINE))


def differences(where, names, listed):
    for name in sorted(names - listed):
        yield f"{name} is in {where} and not in exports.txt"
    for name in sorted(listed - names):
        yield f"{name} is in exports.txt and not in {where}"


def main():
    listed = listed_names()
    engine = {name for name in listed if not name.startswith(PLUGIN_PREFIX)}
    faults = []
    if listed != sorted(set(listed)):
        faults.append("exports.txt is not in order, or names something twice")
    faults += differences("the headers", marked_names(), set(listed))
    faults += differences("libtarvo.so", posix_exports(BUILD / "release/libtarvo.so"), engine)
    faults += differences("tarvo.wfx", posix_exports(BUILD / "release/tarvo.wfx"), set(listed))
    faults += differences("tarvo.wfx64", windows_exports(BUILD / "windows/tarvo.wfx64"), set(listed))
    faults += differences("tarvodialog64.dll", windows_exports(BUILD / "windows/tarvodialog64.dll"), DIALOG)
    finish(faults)


main()
