#!/usr/bin/env python3
"""Measures whether a keyword occurs in PDF documents: the library's reader side by side with
pdfgrep, pdftotext and grep, with a loop that does the least that this takes, and with a bare read of
the same bytes.

Prints tables in Markdown. The exit code shows whether all programs gave the same answers; no limit
on time makes it fail, since the machine may be busy.
"""

import os
import pathlib
import sys
import tempfile

from comparison import build, exit_code_of, option_parser, print_table
from measuring import Series, answer, figures, run, timed
from programs import installed

PROGRAMS = ["make_documents", "pdf_texts", "run_timed"]
KEYWORD = "lighthouse"
PEER_PACKAGES = {"pdfgrep": "pdfgrep", "pdftotext": "poppler-utils"}
PEERS = ["pdfgrep", "pdftotext, grep"]
KINDS = {"documents": [], "sparse documents": ["--sparse"]}


def programs(tools, folder, threads):
    """Labels and commands; peers get as many processes as the reader gets threads."""
    pool = f"find '{folder}' -name '*.pdf' -print0 | xargs -0 -P {threads}"
    each = ('for path do if pdftotext -q "$path" - | grep -qi ' + KEYWORD +
            '; then printf "%s\\n" "$path"; fi; done')
    return {
        "reader": [tools["pdf_texts"], folder, KEYWORD, "--threads", threads],
        "loop": [tools["pdf_texts"], folder, KEYWORD, "--threads", threads, "--lines"],
        "bare read": [tools["pdf_texts"], folder, "--threads", threads],
        "pdfgrep": ["sh", "-c", f"{pool} -n 50 pdfgrep -li {KEYWORD} || true"],
        "pdftotext, grep": ["sh", "-c", f"{pool} -n 50 sh -c '{each}' sh"],
    }


def measure(tools, folder, options, scratch):
    commands = programs(tools, folder, options.threads)
    if options.without_peers:
        commands = {label: command for label, command in commands.items() if label not in PEERS}
    answers = {label: answer(tools, command, scratch)
               for label, command in commands.items() if label != "bare read"}
    series = {label: Series() for label in commands}
    for number in range(options.rounds):
        for label, command in commands.items():
            # The peers take minutes; once is enough to tell that apart.
            if number == 0 or label not in PEERS:
                series[label].add(figures(timed(tools, command)))
    return answers, series


def print_report(name, answers, series, size):
    found = {label: len(lines) for label, lines in answers.items()}
    print(f"\n### {name}\n\n{size / 1e6:,.0f} MB. Documents found: "
          + ", ".join(f"{count:,} by {label}" for label, count in found.items()) + ".\n")
    reader, floor = series["reader"], series["bare read"]
    print_table(["program", "median ms", "least ms", "least CPU ms", "peak MB",
                 "of the reader's time", "of the bare read's", "lrrrrrr"],
                [[label, f"{one.median():,.1f}", f"{one.minimum():,.1f}",
                  f"{one.minimum('cpu_ms'):,.1f}", f"{one.maximum('peak_kib') / 1024:,.1f}",
                  f"{one.minimum() / reader.minimum():,.2f}",
                  f"{one.minimum() / floor.minimum():,.2f}"] for label, one in series.items()])
    loop = series["loop"]
    limits = [("loop's time", reader.minimum() / loop.minimum(), 2, True),
              ("bare read's time", reader.minimum() / floor.minimum(), 12, True)]
    peers = [series[label].minimum() for label in PEERS if label in series]
    if peers:
        limits.append(("faster than the faster peer", min(peers) / reader.minimum(), 50, False))
    rows = []
    for what, value, limit, is_most in limits:
        holds = value <= limit if is_most else value >= limit
        rows.append([what, str(limit), f"{value:,.1f}", "PASS" if holds else "FAIL"])
    print_table(["what", "limit", "measured", "", "lrrl"], rows)


def benchmark(options):
    tools = build(options.build_dir.resolve(), *PROGRAMS)
    with tempfile.TemporaryDirectory() as scratch:
        scratch = pathlib.Path(scratch)
        are_equal = True
        for kind, flags in KINDS.items():
            folder = (options.keep or scratch) / kind
            run([tools["make_documents"], folder, "--files", options.files, *flags])
            size = sum(path.stat().st_size for path in folder.glob("*.pdf"))
            answers, series = measure(tools, folder, options, scratch)
            print_report(f"A keyword in {options.files:,} {kind}, {options.threads} at once",
                         answers, series, size)
            are_equal &= len({tuple(lines) for lines in answers.values()}) == 1
    return 0 if are_equal else 1


def main():
    parser = option_parser(__doc__)
    parser.add_argument("--files", type=int, default=5000, help="how many documents")
    parser.add_argument("--rounds", type=int, default=5, help="how often the reader is timed")
    parser.add_argument("--threads", type=int, default=os.cpu_count(), help="at once, for all")
    parser.add_argument("--without-peers", action="store_true", help="measure the reader alone")
    parser.add_argument("--keep", type=pathlib.Path,
                        help="folder for the documents, kept for later")
    options = parser.parse_args()
    missing = [package for name, package in PEER_PACKAGES.items() if not installed(name)]
    if missing and not options.without_peers:
        sys.exit("Not installed: " + " ".join(missing))
    return exit_code_of(lambda: benchmark(options))


if __name__ == "__main__":
    sys.exit(main())
