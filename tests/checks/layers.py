#!/usr/bin/env python3
"""The house stands as docs/design.md draws it: who may include whom, who may know the system, how long a file may be."""

import re

from project import ROOT, SOURCE_SUFFIXES, finish, name_of, project_files, source_text, without_comments

# A folder includes from folders of a lower number and from itself.
FLOORS = {
    "platform": 0,
    "base": 1,
    "gpib/controllers": 2,
    "gpib/drives": 3,
    "floppy": 3,
    "tape": 3,
    "volume": 4,
    "config": 5,
    "plugin": 6,
    "console": 6,
}
NEIGHBOURS = {("floppy", "gpib/controllers"), ("tape", "gpib/controllers")}  # lower, and yet apart
APART = {"dialog"}  # includes nothing of the others
FREE = {"tests", "bench", "fuzz"}  # may include everything
KNOW_THE_SYSTEM = {"platform", "dialog"} | FREE
ROOF = "tarvo.h"  # includes all public headers; for those outside the house
SYSTEM_WORDS = re.compile(r"\b(_WIN32|_WIN64|WIN32|__linux__|__unix__|__APPLE__|__MINGW32__|__MINGW64__)\b")
EXPORT_MARK = "base/api.h"
LONGEST_FILE = 800
OTHER_LIBRARIES = {"console": ("CLI/", "rapidjson/")}

STANDARD = set(
    """algorithm any array atomic bit bitset cassert cctype cerrno cfloat charconv chrono cinttypes climits cmath compare
    complex concepts condition_variable csignal cstdarg cstddef cstdint cstdio cstdlib cstring ctime cwchar cwctype deque
    exception filesystem format forward_list fstream functional initializer_list iomanip ios iosfwd iostream istream iterator
    limits list locale map memory mutex new numbers numeric optional ostream queue random ranges ratio regex semaphore set
    span sstream stack stdexcept streambuf string string_view system_error thread tuple type_traits typeindex typeinfo
    unordered_map unordered_set utility variant vector version
    assert.h ctype.h errno.h float.h inttypes.h limits.h math.h stdarg.h stdbool.h stddef.h stdint.h stdio.h stdlib.h
    string.h time.h wchar.h wctype.h""".split()
)
UNFINISHED = re.compile(r"\b(" + "|".join(("XX" + "X", "FIX" + "ME", "TO" + "DO", "HA" + "CK")) + r")\b|#\s*if\s+0\b")


def folder_of(name):
    """The floor that a file stands on; sub-folders of a floor belong to it."""
    parts = name.split("/")
    if len(parts) == 1:
        return ""
    return "/".join(parts[:2]) if parts[0] == "gpib" and len(parts) > 2 else parts[0]


def includes_of(text):
    """(line number, quoted or angled, name) of each include."""
    for number, line in enumerate(text.splitlines(), 1):
        match = re.match(r'\s*#\s*include\s*(["<])([^">]+)[">]', line)
        if match:
            yield number, match.group(1), match.group(2)


def upward(name, included):
    """What is wrong with an include of a project file, or None."""
    here, there = folder_of(name), folder_of(included)
    if here in FREE or name == ROOF or here == there:
        return None
    if here in APART or here not in FLOORS:
        return "stands apart and includes nothing of the project"
    if there not in FLOORS:
        return f"includes {included}, which is for those outside"
    if FLOORS[there] >= FLOORS[here] or (here, there) in NEIGHBOURS:
        return f"includes {included}, which doesn't stand below it"
    return None


def angled_fault(name, included):
    folder = folder_of(name)
    if folder in KNOW_THE_SYSTEM or included in STANDARD:
        return None
    if included.startswith(OTHER_LIBRARIES.get(folder, ("\0",))):
        return None
    return f"includes <{included}>, which is no standard header"


def first_circle(graph):
    """The files of a circle of includes, or nothing."""
    done = set()

    def visit(name, path):
        if name in path:
            return path[path.index(name) :] + [name]
        if name in done:
            return []
        for included in graph.get(name, ()):
            circle = visit(included, path + [name])
            if circle:
                return circle
        done.add(name)
        return []

    for name in sorted(graph):
        circle = visit(name, [])
        if circle:
            return circle
    return []


def file_faults(name, text, graph):
    code = without_comments(text)
    for number, kind, included in includes_of(text):
        if kind == "<":
            fault = angled_fault(name, included)
        elif not (ROOT / included).is_file():
            fault = f"includes {included}, which isn't there from the project's root"
        else:
            graph.setdefault(name, []).append(included)
            fault = upward(name, included)
        if fault:
            yield f"{name}:{number}: {fault}"
    if folder_of(name) not in KNOW_THE_SYSTEM and name != EXPORT_MARK:
        for number, line in enumerate(code.splitlines(), 1):
            if SYSTEM_WORDS.search(line):
                yield f"{name}:{number}: knows the system outside of platform/"
    length = text.count("\n")
    if length > LONGEST_FILE:
        yield f"{name}: {length} lines, more than {LONGEST_FILE}"


def unfinished_faults():
    for path in project_files(SOURCE_SUFFIXES | {".py", ".sh", ".txt", ".cmake", ".md", ""}):
        for number, line in enumerate(source_text(path).splitlines(), 1):
            if UNFINISHED.search(line):
                yield f"{name_of(path)}:{number}: unfinished: {line.strip()}"


def main():
    graph = {}
    faults = []
    for path in project_files(SOURCE_SUFFIXES):
        faults += file_faults(name_of(path), source_text(path), graph)
    circle = first_circle(graph)
    if circle:
        faults.append("a circle of includes: " + " -> ".join(circle))
    faults += unfinished_faults()
    finish(faults)


main()
