#!/usr/bin/env python3
"""Measures searches in documents of many makers: ssfind with its sealed readers side by side with
pdfgrep, one folder beside many, the first result, and what deep searches cost where no document is
asked.

The documents are those of `deep.py`, linked into folders of 5,000. Prints tables in Markdown. The
exit code says whether one folder gave the same documents as many; no limit on time makes it fail.
"""

import itertools
import os
import pathlib
import sys

from comparison import Report, build, exit_code_of, option_parser, print_table
from deep_documents import obtain
from measuring import ToolError, answer, side_by_side, timed

# Hardly anywhere, so that documents are read to their ends.
RARE = "lighthouses"
MOST_BYTES = 200_000


def linked(documents, folder, count, folders):
    """`count` documents in `folders` folders; the given ones again and again."""
    if folder.exists():
        return folder
    for number, path in zip(range(count), itertools.cycle(documents)):
        place = folder / f"{number % folders:03}"
        place.mkdir(parents=True, exist_ok=True)
        os.link(path, place / f"{number:05}.pdf")
    return folder


def sought(tools, folder, keyword=RARE):
    return timed(tools, [tools["ssfind"], "--no-index", "-k", keyword, "--in", "pdf", folder])


def grepped(tools, folder, per_process):
    """As many processes as there are processors."""
    return timed(tools, ["sh", "-c",
                         f"find '{folder}' -type f -print0 | xargs -0 -n {per_process} "
                         f"-P {os.cpu_count()} pdfgrep -li {RARE} 2>/dev/null || true"])


def print_series(series, first):
    ours = series[first]
    print_table(["program", "median ms", "least ms", "least CPU ms", f"it / {first}, medians",
                 "CPU, least", "lrrrrr"],
                [[label, f"{one.median():,.1f}", f"{one.minimum():,.1f}",
                  f"{one.minimum('cpu_ms'):,.1f}", f"{one.median() / ours.median():.2f}",
                  f"{one.minimum('cpu_ms') / ours.minimum('cpu_ms'):.2f}"]
                 for label, one in series.items()])


def measure_peer(report, tools, folder, rounds):
    print("## Beside pdfgrep, all processors\n")
    series = side_by_side({"ssfind": sought(tools, folder),
                           "pdfgrep, one process each": grepped(tools, folder, 1),
                           "pdfgrep, 20 documents each": grepped(tools, folder, 20)}, rounds)
    print_series(series, "ssfind")
    ours, peer = series["ssfind"], series["pdfgrep, one process each"]
    report.limit("of pdfgrep's time", 0.2, ours.median() / peer.median())
    report.limit("of pdfgrep's processor time, seal included", 0.2,
                 ours.minimum("cpu_ms") / peer.minimum("cpu_ms"))


def measure_folders(report, tools, options, one, many):
    print("## 5,000 documents in one folder and in 100\n")
    names = [sorted(path.rpartition(b"/")[2] for path in
                    answer(tools, sought(tools, folder, "chapter")[1:], options.scratch))
             for folder in (one, many)]
    report.answers_differ = names[0] != names[1]
    print(f"{len(names[0]):,} and {len(names[1]):,} documents with a common word.")
    series = side_by_side({"one folder": sought(tools, one), "100 folders": sought(tools, many)},
                          options.rounds)
    print_series(series, "one folder")
    report.limit("one folder: of the time of 100", 1.1,
                 series["one folder"].median() / series["100 folders"].median())


def measure_first(report, tools, folder, options):
    print("## The first result\n")
    series = side_by_side({"a common word": sought(tools, folder, "the")}, options.rounds)
    firsts = series["a common word"].values("first_byte_ms")
    print_table(["what", "median ms", "most ms", "lrr"],
                [["first result", f"{series['a common word'].median('first_byte_ms'):.1f}",
                  f"{max(firsts):.1f}"]])
    report.limit("first result", 300, max(firsts), "ms")


def measure_plain_kinds(report, tools, options):
    print("## Where no document is asked\n")
    tree = options.scratch / "tree"
    timed_tree = [tools["make_tree"], "--entries", "50000", tree]
    answer(tools, timed_tree, options.scratch)
    for what, condition in (("name", ["-n", "beach"]), ("date", ["--modified", "2019-03..2019-08"])):
        commands = {depth: timed(tools, [tools["ssfind"], "--no-index", *option, *condition, tree])
                    for depth, option in (("plain", ["--plain"]), ("deep", []))}
        series = side_by_side(commands, 4 * options.rounds)
        print_series(series, "plain")
        report.limit(f"{what}: deep, of the plain time", 1.1,
                     series["deep"].median() / series["plain"].median())


def benchmark(options):
    tools = build(options.build_dir.resolve(), "ssfind", "run_timed", "make_tree")
    documents = [path for path in obtain(options.cache.resolve())
                 if path.stat().st_size <= MOST_BYTES]
    if not documents:
        raise ToolError("no documents")
    options.scratch = options.cache.resolve() / "searched"
    options.scratch.mkdir(exist_ok=True)
    report = Report()
    measure_peer(report, tools, linked(documents, options.scratch / "few", options.timed, 10),
                 options.rounds)
    one, many = (linked(documents, options.scratch / str(folders), 5000, folders)
                 for folders in (1, 100))
    measure_folders(report, tools, options, one, many)
    measure_first(report, tools, one, options)
    measure_plain_kinds(report, tools, options)
    return report.finish()


def main():
    parser = option_parser(__doc__)
    parser.add_argument("--cache", type=pathlib.Path,
                        default=pathlib.Path.home() / ".cache" / "searchsystem-bench",
                        help="folder for packages and documents (%(default)s)")
    parser.add_argument("--timed", type=int, default=300, help="documents that pdfgrep gets")
    parser.add_argument("--rounds", type=int, default=5, help="how often each is timed")
    options = parser.parse_args()
    return exit_code_of(lambda: benchmark(options))


if __name__ == "__main__":
    sys.exit(main())
