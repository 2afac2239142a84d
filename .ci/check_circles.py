#!/usr/bin/env python3
"""No files of the library and its hosts include one another in a circle, of any length.

A header and the sources of the same name count as one.
"""

import os
import pathlib
import re
import subprocess
import sys

FOLDERS = ("FileSharchFunction", "hosts", "pdf_reader", "platform", "streams")

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]*)"', re.MULTILINE)


def name_of(path):
    return str(pathlib.PurePath(path).with_suffix(""))


def included_file(path, name):
    """Public headers include each other by where they stand to one another."""
    beside = os.path.normpath(os.path.join(os.path.dirname(path), name))
    return beside if os.path.isfile(beside) else name


def read_includes():
    """For each file the files that it includes, all by their names without the ending."""
    listed = subprocess.run(["git", "ls-files", "--", *FOLDERS], check=True, capture_output=True,
                            text=True).stdout.split("\n")
    includes = {}
    for path in listed:
        if path.endswith((".h", ".c", ".cpp")):
            names = INCLUDE.findall(pathlib.Path(path).read_text())
            includes.setdefault(name_of(path), set()).update(
                name_of(included_file(path, name)) for name in names)
    return includes


def reachable_from(start, includes):
    reached = set()
    waiting = [start]
    while waiting:
        for name in includes.get(waiting.pop(), ()):
            if name not in reached:
                reached.add(name)
                waiting.append(name)
    return reached


def circles_of(includes):
    reachable = {name: reachable_from(name, includes) for name in includes}
    groups = {tuple(sorted(other for other in reachable[name] if name in reachable.get(other, ())))
              for name in includes}
    return sorted(group for group in groups if len(group) > 1)


def main():
    includes = read_includes()
    circles = circles_of(includes)
    faults = ["these include one another: " + ", ".join(circle) for circle in circles]
    print("\n".join(faults) if faults else f"{len(includes)} files are in no circle of includes")
    return 1 if faults or not includes else 0


if __name__ == "__main__":
    sys.exit(main())
