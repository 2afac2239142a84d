#!/usr/bin/env python3
"""Measures what conditions cost that one search of the library cannot have, beside the search that
gives the same answer without them.

Prints tables in Markdown. The exit code shows whether both gave the same answers; no limit on time
makes it fail, since the machine may be busy.
"""

import os
import sys

from comparison import (Report, add_scratch_options, compare, measure_in_scratch, option_parser)
from photos import warm
from programs import FOLDER, Program, installed

PROGRAMS = ["ssfind", "make_photos", "read_floor", "run_timed"]

# The name, the search without, the search with, and how many times its time the latter may take.
PAIRS = [
    ("A pattern of the name", ["-n", "1"], ["-g", "-n", "*1*"], 1.5),
    ("Two names", ["-n", "1"], ["-n", "1", "-n", "."], 1.5),
    ("Names, with an exclusion", ["-n", "1"], ["-n", "1", "-E", "nothing"], 1.5),
    ("Names, with sizes", ["-n", "1"], ["-n", "1", "-S", "0.."], 8),
    ("Names, without index, hidden folders too", ["-n", "1", "--no-index"],
     ["-n", "1", "--no-index", "-H"], 2.5),
    ("A keyword, with an exclusion", ["-k", "beach"], ["-k", "beach", "-E", "nothing"], 1.6),
    ("Two keywords", ["-k", "beach"], ["-k", "beach", "-k", "BEACH"], 1.3),
]


def measure(options, tools, photos):
    report = Report()
    os.environ["XDG_CACHE_HOME"] = str(photos.scratch / "cache")
    folder = photos.make("few", jpegs=options.jpegs, tiffs=options.jpegs // 10, keyword=0.01,
                         taken=0.01)
    warm(tools, folder)
    for title, without, with_, most in PAIRS:
        programs = [Program("ssfind", [tools["ssfind"], *with_, FOLDER]),
                    Program("without", [tools["ssfind"], *without, FOLDER])]
        if with_[0] == "-g" and installed("fdfind"):
            programs.append(Program("fd", ["fdfind", "--no-ignore", "-i", "-t", "f", "-g", with_[2],
                                           FOLDER], is_peer=True))
        series, _ = compare(report, title, tools, photos.scratch, programs, folder, options.rounds)
        report.limit(f"{title}: of the time without", most,
                     series["ssfind"].median() / series["without"].median())
    return report.finish()


def main():
    parser = option_parser(__doc__)
    parser.add_argument("--jpegs", type=int, default=20_000, help="and a tenth as many TIFF files")
    add_scratch_options(parser, "files", "searchsystem-further", rounds=7)
    return measure_in_scratch(parser.parse_args(), PROGRAMS, "make_photos", measure,
                              takes_existing=True)


if __name__ == "__main__":
    sys.exit(main())
