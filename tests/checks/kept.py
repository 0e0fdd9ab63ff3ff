#!/usr/bin/env python3
"""Every behaviour that looks wrong and stays has a test of its name, and every such test has its place in a source."""

import re

from project import SOURCE_SUFFIXES, finish, name_of, project_files, source_text

MARK = "Kept" + ":"
TEST = re.compile(r"^\s*TEST(?:_F|_P)?\(\s*(\w+)\s*,\s*(\w+)\s*\)", flags=re.MULTILINE)


def is_test(path):
    return name_of(path).startswith("tests/")


def main():
    files = list(project_files(SOURCE_SUFFIXES))
    tests = {}
    for path in filter(is_test, files):
        for suite, name in TEST.findall(without_joints(source_text(path))):
            tests.setdefault(name, f"{name_of(path)}: {suite}.{name}")

    faults = []
    named = set()
    for path in files:
        if is_test(path):
            continue
        for number, line in enumerate(source_text(path).splitlines(), 1):
            if MARK not in line:
                continue
            match = re.search(r"(?://|/\*) " + MARK + r" \S.*\S  \[((?:\w+\.)?Keeps\w+)\](?: \*/)?$", line)
            if not match:
                faults.append(f"{name_of(path)}:{number}: not of the form \"{MARK} what it does.  [KeepsTestName]\"")
                continue
            name = match.group(1).split(".")[-1]
            named.add(name)
            if name not in tests:
                faults.append(f"{name_of(path)}:{number}: there is no test {name}")
    faults += [f"{place}: no source says what it pins" for name, place in tests.items()
               if name.startswith("Keeps") and name not in named]  # fmt: skip
    finish(faults)


def without_joints(text):
    """Lines that a formatter has divided inside TEST( ) are one again."""
    return re.sub(r"(TEST(?:_F|_P)?\([^)\n]*)\n\s*", r"\1 ", text)


main()
