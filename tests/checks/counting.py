"""What the counting checks share: volumes, and the tools that count. All of them run the release program."""

import ctypes
import os
import re
import subprocess
import sys

from project import BUILD

TARVO = BUILD / "release/tarvo"
MAKE_VOLUME = BUILD / "debug/tests/make_volume"
BECOME_SUBREAPER = 36  # PR_SET_CHILD_SUBREAPER


class CannotRun(Exception):
    """The tool that counts doesn't work on this machine."""


def run(command, **options):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False, **options)


def run_well(command):
    """What a command prints; it must succeed."""
    result = run(command)
    if result.returncode != 0:
        sys.exit(f"{command[0]} {command[1]} ends with {result.returncode}: {(result.stdout + result.stderr)[-500:]}")
    return result.stdout


def make_volume(folder, *words):
    """A volume as make_volume knows them, made once."""
    volume = folder / ("-".join(map(str, words)) + ".lif")
    if not volume.exists():
        run_well([MAKE_VOLUME, *words, volume])
    return volume


def system_calls(folder, command):
    """How often each system call was made."""
    table = folder / "calls"
    result = run(["strace", "-f", "-c", "-U", "name,calls", "-o", table, *command])
    rows = re.findall(r"^\s*(\w+)\s+(\d+)\s*$", table.read_text() if table.exists() else "", flags=re.M)
    calls = {name: int(count) for name, count in rows}
    if result.returncode != 0 or not calls.pop("total", 0):
        raise CannotRun("strace can't run here: " + result.stderr.strip()[-200:])
    return calls


def instructions(command):
    tool = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"]
    result = run([*tool, *command])
    collected = re.search(r"Collected : (\d+)", result.stderr)
    if result.returncode != 0 or not collected:
        raise CannotRun("callgrind can't run here: " + result.stderr.strip()[-200:])
    return int(collected.group(1))


def peak_memory(command):
    """The largest resident size of a program, in bytes. The system's figure begins with what the process was before it
    became the program, which must therefore come from a small shell and not from here; once the shell has left, its
    child is ours to wait for."""
    if ctypes.CDLL(None).prctl(BECOME_SUBREAPER, 1, 0, 0, 0) != 0:
        raise CannotRun("this system hands over no orphans")
    waits, goes = os.pipe()  # the child begins when the shell has left, who would wait for one that ends earlier
    words = f'{{ read -r _ <&{waits}; exec "$@"; }} >/dev/null & echo $!'
    shell = ["sh", "-c", words, "sh", *map(str, command)]
    result = subprocess.run(shell, check=True, stdout=subprocess.PIPE, text=True, pass_fds=(waits,))
    child = int(result.stdout)
    os.write(goes, b"\n")
    _, status, usage = os.wait4(child, 0)
    os.close(waits)
    os.close(goes)
    if status != 0:
        sys.exit(f"{command[0]} {command[1]} fails while its memory is measured")
    return usage.ru_maxrss * 1024
