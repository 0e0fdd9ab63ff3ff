#!/usr/bin/env python3
"""The released files need nothing that a plain system lacks.

Usage: imports.py; looks at the Windows build and at the release build.
"""

import re
import subprocess

from project import BUILD, finish

WINDOWS_OWN = {
    "advapi32.dll", "comctl32.dll", "comdlg32.dll", "gdi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll",
    "setupapi.dll", "shell32.dll", "user32.dll", "winmm.dll",
}  # fmt: skip
LINUX_OWN = {"libc.so.6", "libm.so.6", "ld-linux-x86-64.so.2", "ld-linux-aarch64.so.1"}


def needs(command, pattern, path):
    text = subprocess.run([*command, str(path)], check=True, capture_output=True, text=True).stdout
    return set(re.findall(pattern, text))


def main():
    faults = []
    for name in ("tarvo.exe", "tarvo.wfx64", "tarvodialog64.dll"):
        found = needs(["objdump", "-p"], r"DLL Name: (\S+)", BUILD / "windows" / name)
        if not found:
            faults.append(f"{name}: no imports found, which can't be")
        faults += [f"{name} needs {dll}" for dll in sorted(found) if dll.lower() not in WINDOWS_OWN]
    for name in ("tarvo", "libtarvo.so", "tarvo.wfx"):
        found = needs(["objdump", "-p"], r"NEEDED\s+(\S+)", BUILD / "release" / name)
        faults += [f"{name} needs {library}" for library in sorted(found - LINUX_OWN)]
    finish(faults)


main()
