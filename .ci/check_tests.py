#!/usr/bin/env python3
"""Every test file on disk is built, and every test that is built is run.

Usage: check_tests.py BUILD-FOLDER
"""

import json
import pathlib
import re
import subprocess
import sys

TEST = re.compile(r"^\s*(?:TEST|TEST_F|TEST_P)\s*\(\s*(\w+)\s*,\s*(\w+)", re.MULTILINE)


def main():
    build = pathlib.Path(sys.argv[1])
    commands = json.loads((build / "compile_commands.json").read_text())
    compiled = {pathlib.Path(command["file"]).resolve() for command in commands}
    listing = json.loads(subprocess.run(
        ["ctest", "--test-dir", build, "--show-only=json-v1"], check=True, capture_output=True,
        text=True).stdout)
    # A row of a table is run as Prefix/Suite.Name/Row.
    run = {re.sub(r"^\w+/|/[^.]*$", "", re.sub(r"(\.\w+)/.*$", r"\1", test["name"]))
           for test in listing["tests"]}

    faults = []
    count = 0
    for path in sorted(pathlib.Path("tests").rglob("*.cpp")):
        if path.resolve() not in compiled:
            faults.append(f"{path}: is not built")
        for suite, name in TEST.findall(path.read_text()):
            count += 1
            if f"{suite}.{name}" not in run:
                faults.append(f"{path}: {suite}.{name} is not run")
    print("\n".join(faults) if faults else f"{count} tests are built and run")
    return 1 if faults or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
