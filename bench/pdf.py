#!/usr/bin/env python3
"""Measures whether a keyword occurs in PDF documents: the library's reader side by side with pdfgrep,
pdftotext and grep, and a bare read of the same bytes.

Prints tables in Markdown. The exit code tells whether all programs gave the same answers; no limit
on time makes it fail, since the machine may be busy.
"""

import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

from measuring import Series, ToolError, answer, figures, run, timed

ROOT = pathlib.Path(__file__).resolve().parent.parent
TARGETS = ["make_documents", "pdf_texts", "run_timed"]
KEYWORD = "lighthouse"
PEER_PACKAGES = {"pdfgrep": "pdfgrep", "pdftotext": "poppler-utils"}


def build(folder):
    if not (folder / "CMakeCache.txt").exists():
        run(["cmake", "-S", ROOT, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=RelWithDebInfo",
             "-DSEARCHSYSTEM_BENCHMARKS=ON"], stderr=subprocess.PIPE)
    run(["cmake", "--build", folder, "--target", *TARGETS], stderr=subprocess.PIPE)
    return {name: folder / "bench" / name for name in TARGETS}


def programs(tools, folder, threads):
    """Labels and commands; peers get as many processes as the reader gets threads."""
    pool = f"find '{folder}' -name '*.pdf' -print0 | xargs -0 -P {threads}"
    each = ('for path do if pdftotext -q "$path" - | grep -qi ' + KEYWORD +
            '; then printf "%s\\n" "$path"; fi; done')
    return {
        "reader": [tools["pdf_texts"], folder, KEYWORD, "--threads", threads],
        "bare read": [tools["pdf_texts"], folder, "--threads", threads],
        "pdfgrep": ["sh", "-c", f"{pool} -n 50 pdfgrep -li {KEYWORD} || true"],
        "pdftotext, grep": ["sh", "-c", f"{pool} -n 50 sh -c '{each}' sh"],
    }


def measure(tools, folder, arguments, scratch):
    commands = programs(tools, folder, arguments.threads)
    answers = {label: answer(tools, command, scratch)
               for label, command in commands.items() if label != "bare read"}
    series = {label: Series() for label in commands}
    for number in range(arguments.rounds):
        for label, command in commands.items():
            # The peers take minutes; once is enough to tell that apart.
            if number == 0 or label not in PEERS:
                series[label].add(figures(timed(tools, command)))
    return answers, series


PEERS = ["pdfgrep", "pdftotext, grep"]


def print_report(name, answers, series, size):
    found = {label: len(lines) for label, lines in answers.items()}
    print(f"\n### {name}\n\n{size / 1e6:,.0f} MB. Documents found: "
          + ", ".join(f"{count:,} by {label}" for label, count in found.items()) + ".\n")
    print("| program | median ms | least ms | least CPU ms | peak MB | of the reader's time | of the "
          "bare read's |\n| --- | ---: | ---: | ---: | ---: | ---: | ---: |")
    reader, floor = series["reader"], series["bare read"]
    for label, one in series.items():
        print(f"| {label} | {one.median():,.1f} | {one.minimum():,.1f} | {one.minimum('cpu_ms'):,.1f} "
              f"| {one.maximum('peak_kib') / 1024:,.1f} | {one.minimum() / reader.minimum():,.2f} "
              f"| {one.minimum() / floor.minimum():,.2f} |")
    peer = min(series[label].minimum() for label in PEERS)
    limits = [("bare read's time", reader.minimum() / floor.minimum(), 12, True),
              ("faster than the faster peer", peer / reader.minimum(), 50, False)]
    print("\n| what | limit | measured | |\n| --- | ---: | ---: | --- |")
    for what, value, limit, is_most in limits:
        holds = value <= limit if is_most else value >= limit
        print(f"| {what} | {limit} | {value:,.1f} | {'PASS' if holds else 'FAIL'} |")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--files", type=int, default=5000, help="how many documents")
    parser.add_argument("--rounds", type=int, default=5, help="how often the reader is timed")
    parser.add_argument("--threads", type=int, default=os.cpu_count(), help="at once, for all")
    parser.add_argument("--keep", type=pathlib.Path, help="folder for the documents, kept for later")
    parser.add_argument("--build-dir", type=pathlib.Path, default=ROOT / "build/bench")
    arguments = parser.parse_args()
    missing = [package for name, package in PEER_PACKAGES.items() if shutil.which(name) is None]
    if missing:
        sys.exit("Not installed: " + " ".join(missing))
    try:
        tools = build(arguments.build_dir)
        with tempfile.TemporaryDirectory() as scratch:
            scratch = pathlib.Path(scratch)
            folder = (arguments.keep or scratch) / "documents"
            run([tools["make_documents"], folder, "--files", arguments.files])
            size = sum(path.stat().st_size for path in folder.glob("*.pdf"))
            answers, series = measure(tools, folder, arguments, scratch)
            print_report(f"A keyword in {arguments.files:,} documents, {arguments.threads} at once",
                         answers, series, size)
    except ToolError as error:
        print(error, file=sys.stderr)
        return 2
    return 0 if len({tuple(lines) for lines in answers.values()}) == 1 else 1


if __name__ == "__main__":
    sys.exit(main())
