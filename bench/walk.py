#!/usr/bin/env python3
"""Measures the folder walk side by side with find, fd, bfs and a bare listing loop.

Prints tables in Markdown. The exit code tells whether all programs gave the same answers; no limit
on time or memory makes it fail, since the machine may be busy.
"""

import argparse
import contextlib
import os
import pathlib
import platform
import shutil
import subprocess
import sys
import tempfile

from measuring import Series, ToolError, answer, figures, run, side_by_side, timed
from programs import installed, missing_packages, programs

ROOT = pathlib.Path(__file__).resolve().parent.parent
TARGETS = {"ssfind": "hosts/ssfind", "make_tree": "bench", "listing_floor": "bench",
           "run_timed": "bench", "search_host": "bench"}
# From the end of the walk, and from there to the end of the search.
CANCEL_DELAYS_MS = 1000 + 500


def build(folder):
    if not (folder / "CMakeCache.txt").exists():
        run(["cmake", "-S", ROOT, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=RelWithDebInfo",
             "-DSEARCHSYSTEM_BENCHMARKS=ON"], stderr=subprocess.PIPE)
    run(["cmake", "--build", folder, "--target", *TARGETS], stderr=subprocess.PIPE)
    return {name: folder / place / name for name, place in TARGETS.items()}


class Trees:
    """The trees that are searched, made where they are missing."""

    def __init__(self, tools, scratch):
        self.tools = tools
        self.scratch = scratch
        self.made = []

    def make(self, name, **parameters):
        folder = self.scratch / name
        existed = folder.exists()
        options = [part for key, value in parameters.items() for part in (f"--{key}", value)]
        try:
            run([self.tools["make_tree"], folder, *options])
        finally:
            if not existed:
                self.made.append(folder)
        return folder

    def remove(self):
        for folder in self.made:
            shutil.rmtree(folder, ignore_errors=True)
        if self.made and not any(self.scratch.iterdir()):
            self.scratch.rmdir()


@contextlib.contextmanager
def kept_busy(count):
    """Other programs that want the processors for all the time, as long as this one lives."""
    loop = "while kill -0 $PPID; do i=0; while [ $i -lt 99999 ]; do i=$((i+1)); done; done"
    others = [subprocess.Popen(["sh", "-c", loop]) for _ in range(count)]
    try:
        yield
    finally:
        for other in others:
            other.kill()
            other.wait()


def print_table(head, rows):
    """`head` ends with how its columns stand: l or r for each."""
    *head, alignment = head
    print()
    for row in [head, ["---:" if side == "r" else "---" for side in alignment], *rows]:
        print("| " + " | ".join(row) + " |")
    print(flush=True)


class Report:
    """The limits, and whether all answers were the same."""

    def __init__(self):
        self.limits = []
        self.answers_differ = False

    def limit(self, what, most, value, unit="", note=""):
        verdict = "PASS" if value <= most else "FAIL"
        digits = 2 if unit in ("", "MB") else 0 if unit == "wake-ups" else 1
        self.limits.append([what, f"{most:g} {unit}".strip(), f"{value:.{digits}f} {unit}".strip(),
                            verdict, note])

    def print_limits(self):
        print("## Limits")
        print_table(["what", "at most", "measured", "", "note", "lrrll"], self.limits)


def check_answers(report, tools, scratch, searches, folder):
    """Compares all answers with the first one, and returns that."""
    answers = {search.label: answer(tools, search.on(folder), scratch)
               for search in searches if search.gives_paths}
    labels = list(answers)
    expected = answers[labels[0]]
    different = [label for label in labels[1:] if answers[label] != expected]
    if not different:
        print(f"The same {len(expected):,} paths from {', '.join(labels)}.")
    for label in different:
        report.answers_differ = True
        missing = set(expected) - set(answers[label])
        surplus = set(answers[label]) - set(expected)
        print(f"ANSWERS DIFFER: {label} has {len(answers[label]):,} lines, {labels[0]} "
              f"{len(expected):,}; it lacks {len(missing):,} and has {len(surplus):,} of its own, "
              f"as in {sorted(missing | surplus)[:3]}")
    return expected


def compare(report, title, tools, scratch, searches, folder, rounds):
    """One search by all programs; returns the series of each, and the paths found."""
    print(f"## {title}\n")
    paths = check_answers(report, tools, scratch, searches, folder)
    # To list the folders once more is all the warming that the floor still needs.
    for search in searches:
        if not search.gives_paths:
            run(search.on(folder))
    series = side_by_side({search.label: timed(tools, search.on(folder)) for search in searches},
                          rounds)
    ours = series["ssfind"]
    print_table(
        ["program", "median ms", "least ms", "least CPU ms", "peak MB", "ssfind / it, medians",
         "ssfind / it, least", "lrrrrrr"],
        [[label, f"{one.median():.1f}", f"{one.minimum():.1f}", f"{one.minimum('cpu_ms'):.1f}",
          f"{one.median('peak_kib') / 1024:.1f}", f"{ours.median() / one.median():.2f}",
          f"{ours.minimum() / one.minimum():.2f}"] for label, one in series.items()])
    return series, paths


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
    """What an application with a loop of its own notices."""
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


def print_machine(tools, busy):
    model = next((line.partition(":")[2].strip() for line in open("/proc/cpuinfo", encoding="utf-8")
                  if line.startswith("model name")), platform.machine())
    print(f"{model}, {os.cpu_count()} processors, Linux {platform.release()}, "
          f"load {os.getloadavg()[0]:.1f}"
          + (f", kept busy by {busy} programs" if busy else ""))
    for name in [tools["ssfind"], installed("fdfind", "fd"), installed("bfs"), installed("find")]:
        if name:
            print(run([name, "--version"]).partition("\n")[0])
    if missing := missing_packages():
        print(f"Not installed, and so not measured: {', '.join(missing)}", file=sys.stderr)
    print()


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
    report.print_limits()
    print(f"Load at the end {os.getloadavg()[0]:.1f}")
    return 1 if report.answers_differ else 0


def parse_options():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    default_scratch = pathlib.Path(tempfile.gettempdir()) / "searchsystem-bench"
    parser.add_argument("--entries", type=int, default=200_000, help="of the tree (%(default)s)")
    parser.add_argument("--rounds", type=int, default=9, help="runs of each program (%(default)s)")
    parser.add_argument("--busy", type=int, default=0, metavar="N",
                        help="let so many other programs compete for the processors")
    parser.add_argument("--keep", action="store_true", help="keep the trees for the next run")
    parser.add_argument("--build-dir", type=pathlib.Path, default=ROOT / "build" / "bench",
                        help="where to build (%(default)s)")
    parser.add_argument("scratch", nargs="?", type=pathlib.Path, default=default_scratch,
                        help="folder for the trees (%(default)s)")
    options = parser.parse_args()
    if options.entries < 1000 or options.rounds < 1:
        parser.error("at least 1000 entries and one round are needed")
    return options


def main():
    options = parse_options()
    scratch = options.scratch.resolve()
    scratch.mkdir(parents=True, exist_ok=True)
    try:
        tools = build(options.build_dir.resolve())
        trees = Trees(tools, scratch)
        try:
            with kept_busy(options.busy):
                return measure(options, tools, trees)
        finally:
            if not options.keep:
                trees.remove()
    except ToolError as error:
        print(f"walk.py: {error}", file=sys.stderr)
        return 2
    except KeyboardInterrupt:
        return 130


if __name__ == "__main__":
    sys.exit(main())
