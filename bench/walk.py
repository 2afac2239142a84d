#!/usr/bin/env python3
"""Measures the folder walk side by side with find, fd, bfs and a bare listing loop.

Prints tables in Markdown. The exit code shows whether all programs gave the same answers; no limit
on time or memory makes it fail, since the machine may be busy.
"""

import contextlib
import os
import subprocess
import sys

from comparison import (Report, add_scratch_options, compare, measure_in_scratch, option_parser,
                        print_machine, print_table)
from measuring import Series, figures, run, side_by_side, timed
from programs import programs

PROGRAMS = ["ssfind", "make_tree", "listing_floor", "run_timed", "search_host"]
# From the end of the walk, and from there to the end of the search.
CANCEL_DELAYS_MS = 1000 + 500


@contextlib.contextmanager
def kept_busy(count):
    """Other programs that compete for the processors until this object is closed."""
    loop = "while kill -0 $PPID; do i=0; while [ $i -lt 99999 ]; do i=$((i+1)); done; done"
    others = [subprocess.Popen(["sh", "-c", loop]) for _ in range(count)]
    try:
        yield
    finally:
        for other in others:
            other.kill()
            other.wait()


def limit_ratios(report, what, series, searches, most_of_peer, most_of_floor=None):
    ours = series["ssfind"]
    peers = [search.label for search in searches if search.is_peer]
    if peers:
        fastest = min(peers, key=lambda label: series[label].median())
        least = ours.minimum() / min(series[label].minimum() for label in peers)
        report.limit(f"{what}: of the faster peer's time", most_of_peer,
                     ours.median() / series[fastest].median(),
                     note=f"{fastest}; by the least times {least:.2f}")
    if most_of_floor is not None:
        floor = next(one for label, one in series.items() if label.startswith("floor"))
        report.limit(f"{what}: of the floor's time", most_of_floor, ours.median() / floor.median(),
                     note=f"by the least times {ours.minimum() / floor.minimum():.2f}")


def measure_growth(report, tools, few, large, rounds, factor):
    print("## Growth with the tree")
    search = programs(tools, has_word=True)[0]
    run(timed(tools, search.on(large)))
    series = side_by_side({"tree": timed(tools, search.on(few)),
                           f"{factor} times the tree": timed(tools, search.on(large))}, rounds)
    small, big = series.values()
    print_table(["searched", "median ms", "least ms", "peak MB", "lrrr"],
                [[label, f"{one.median():.1f}", f"{one.minimum():.1f}",
                  f"{one.median('peak_kib') / 1024:.1f}"] for label, one in series.items()])
    report.limit(f"time for {factor} times the entries", 1.1 * factor,
                 big.median() / small.median(),
                 note=f"by the least times {big.minimum() / small.minimum():.2f}")


def measure_host(report, tools, many, rounds):
    """The cost for an application with its own loop."""
    host = tools["search_host"]
    embedded = side_by_side({"": [host, "--embedded", many]}, rounds)[""]
    report.limit("longest call of PFMainLoopDispatch", 10, embedded.median("longest_dispatch_ms"),
                 "ms", f"longest of all {embedded.maximum('longest_dispatch_ms'):.1f}, "
                 f"in CPU time {embedded.maximum('longest_dispatch_cpu_ms'):.1f}")
    cancelled = side_by_side({"": [host, "--embedded", "--real-clock", "--cancel-after", "100",
                                   many]}, min(rounds, 3))[""]
    report.limit("from SS_SearchCancel to the end callback", CANCEL_DELAYS_MS + 50,
                 cancelled.median("cancel_to_end_ms"), "ms",
                 f"longest of all {cancelled.maximum('cancel_to_end_ms'):.1f}")
    idle = figures([host, "--embedded", "--real-clock", "--idle", many])
    report.limit("an idle loop, in a second before and one after a search", 0,
                 idle["idle_wake_ups_before"] + idle["idle_wake_ups_after"], "wake-ups")


def peak_growth(tools, folder):
    """By how many bytes a search adds to the memory of the host, and its number of results."""
    series = Series()
    for _ in range(3):
        series.add(figures([tools["search_host"], folder]))
    return series.median("peak_growth_kib") * 1024, int(series.median("results"))


def mean_length(paths):
    return sum(map(len, paths)) / len(paths)


def limit_memory_per(report, what, growth, paths):
    """`growth` is that for all the paths, with whatever else the search needs."""
    length = mean_length(paths)
    report.limit(f"memory per {what}", round(length + 96), growth / len(paths), "bytes",
                 f"{len(paths):,} of them; a path has {length:.0f} bytes")


def measure_memory(report, tools, few, many, paths_of_many, flat):
    growth_of_few, results_of_few = peak_growth(tools, few)
    growth_of_many, _ = peak_growth(tools, many)
    limit_memory_per(report, "result", growth_of_many - growth_of_few,
                     paths_of_many[results_of_few:])
    # All its folders lie side by side, and so wait in the queue together.
    growth_of_flat, _ = peak_growth(tools, flat)
    limit_memory_per(report, "queued folder", growth_of_flat,
                     [os.fsencode(entry.path) for entry in os.scandir(flat) if entry.is_dir()])


def measure(options, tools, trees):
    report = Report()
    entries, rounds = options.entries, options.rounds
    few = trees.make("few", entries=entries)
    many = trees.make("many", entries=entries, matches=entries // 2)
    print_machine(tools, options.busy)

    by_name = programs(tools, has_word=True)
    series, _ = compare(report, f"Name, few matches in {entries:,} entries", tools,
                        trees.scratch, by_name, few, rounds)
    limit_ratios(report, "name search", series, by_name, 1, 1.5)
    ours = series["ssfind"]
    report.limit("first match on the pipe", 50, ours.median("first_byte_ms"), "ms",
                 f"latest of all {ours.maximum('first_byte_ms'):.1f}")
    report.limit("peak memory", 24, ours.maximum("peak_kib") / 1024, "MB")

    series, paths_of_many = compare(
        report, f"Name, {entries // 2:,} matches in {entries:,} entries", tools, trees.scratch,
        by_name, many, rounds)
    limit_ratios(report, "name search, many matches", series, by_name, 1.5)
    report.limit("peak memory, many matches", 24, series["ssfind"].maximum("peak_kib") / 1024, "MB")

    by_date = programs(tools, has_word=False)
    series, _ = compare(report, f"Modification date, {entries:,} entries", tools, trees.scratch,
                        by_date, few, rounds)
    limit_ratios(report, "date search", series, by_date, 1, 1.5)

    factor = 5
    measure_growth(report, tools, few, trees.make("large", entries=factor * entries), rounds,
                   factor)
    measure_host(report, tools, many, rounds)
    folders = entries // 2
    flat = trees.make("flat", entries=folders + 1, folders=folders, depth=1, matches=0)
    measure_memory(report, tools, few, many, paths_of_many, flat)
    return report.finish()


def measure_while_busy(options, tools, trees):
    with kept_busy(options.busy):
        return measure(options, tools, trees)


def main():
    parser = option_parser(__doc__)
    parser.add_argument("--entries", type=int, default=200_000, help="of the tree (%(default)s)")
    parser.add_argument("--busy", type=int, default=0, metavar="N",
                        help="number of other programs that compete for the processors")
    add_scratch_options(parser, "trees", "searchsystem-bench", rounds=9)
    options = parser.parse_args()
    if options.entries < 1000 or options.rounds < 1:
        parser.error("at least 1000 entries and one round are needed")
    return measure_in_scratch(options, PROGRAMS, "make_tree", measure_while_busy)


if __name__ == "__main__":
    sys.exit(main())
