#!/usr/bin/env python3
"""Prints the lines covered of each file of the library and its host, the least covered first.

Usage: coverage.py BUILD-FOLDER
"""

import collections
import json
import os
import pathlib
import subprocess
import sys

SOURCES = ("FileSharchFunction/", "hosts/", "pdf_reader/", "platform/", "streams/")


def reports(build):
    """What gcov tells of each object, all copies of a source one after the other."""
    for notes in sorted(build.rglob("*.gcda")):
        result = subprocess.run(["gcov", "--json-format", "--stdout", notes], check=True,
                                capture_output=True, cwd=build)
        for line in result.stdout.splitlines():
            yield json.loads(line)


def main():
    root = pathlib.Path.cwd()
    build = pathlib.Path(sys.argv[1]).resolve()
    counts = collections.defaultdict(dict)
    for report in reports(build):
        folder = pathlib.Path(report["current_working_directory"])
        for file in report["files"]:
            path = os.path.relpath((folder / file["file"]).resolve(), root)
            if not path.startswith(SOURCES):
                continue
            lines = counts[path]
            for line in file["lines"]:
                number = line["line_number"]
                lines[number] = max(lines.get(number, 0), line["count"])

    def share(lines):
        return sum(1 for count in lines.values() if count) / len(lines)

    total = 0
    covered = 0
    with_lines = [entry for entry in counts.items() if entry[1]]
    for path, lines in sorted(with_lines, key=lambda entry: share(entry[1])):
        missed = sorted(number for number, count in lines.items() if not count)
        total += len(lines)
        covered += len(lines) - len(missed)
        print(f"{share(lines):6.1%} {len(lines):5} {path}"
              + (f"  not: {', '.join(map(str, missed))}" if missed else ""))
    if total == 0:
        print("nothing has been run")
        return 1
    print(f"{covered / total:6.1%} {total:5} all files")
    return 0


if __name__ == "__main__":
    sys.exit(main())
