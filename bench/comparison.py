"""Shared by the benchmarks: their options, building, folders made to be searched, the comparison
of programs, and the tables of results."""

import argparse
import os
import pathlib
import platform
import shutil
import subprocess
import sys
import tempfile

from measuring import ToolError, answer, run, side_by_side, timed
from programs import installed, missing_packages

ROOT = pathlib.Path(__file__).resolve().parent.parent


def build(folder, *programs):
    """Builds programs of this folder, and ssfind if it is among them; returns the path of each."""
    if not (folder / "CMakeCache.txt").exists():
        run(["cmake", "-S", ROOT, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=RelWithDebInfo",
             "-DSEARCHSYSTEM_BENCHMARKS=ON"], stderr=subprocess.PIPE)
    run(["cmake", "--build", folder, "--target", *programs], stderr=subprocess.PIPE)
    return {name: folder / ("hosts/ssfind" if name == "ssfind" else "bench") / name
            for name in programs}


class MadeFolders:
    """The folders that are searched, made by `maker` where they are missing. It is asked for one
    that exists, too, unless that is to be taken as it is."""

    def __init__(self, maker, scratch, takes_existing=False):
        self.maker = maker
        self.scratch = scratch
        self.takes_existing = takes_existing
        self.made = []

    def make(self, name, **parameters):
        folder = self.scratch / name
        existed = folder.exists()
        if existed and self.takes_existing:
            return folder
        options = [part for key, value in parameters.items()
                   for part in (f"--{key.replace('_', '-')}", value)]
        try:
            run([self.maker, folder, *options])
        finally:
            if not existed:
                self.made.append(folder)
        return folder

    def remove(self):
        for folder in self.made:
            shutil.rmtree(folder, ignore_errors=True)
        if self.made and not any(self.scratch.iterdir()):
            self.scratch.rmdir()


def option_parser(description):
    parser = argparse.ArgumentParser(description=description.partition("\n\n")[0])
    parser.add_argument("--build-dir", type=pathlib.Path, default=ROOT / "build" / "bench",
                        help="where to build (%(default)s)")
    return parser


def add_scratch_options(parser, what, name, rounds):
    """The options of a benchmark that searches `what` it makes in the scratch folder `name`."""
    parser.add_argument("--rounds", type=int, default=rounds,
                        help="runs of each program (%(default)s)")
    parser.add_argument("--keep", action="store_true", help=f"keep the {what} for the next run")
    parser.add_argument("scratch", nargs="?", type=pathlib.Path,
                        default=pathlib.Path(tempfile.gettempdir()) / name,
                        help=f"folder for the {what} (%(default)s)")


def exit_code_of(benchmark):
    """Runs `benchmark`; the exit code is its own, or that of the failure that stopped it."""
    try:
        return benchmark()
    except ToolError as error:
        print(f"{pathlib.Path(sys.argv[0]).name}: {error}", file=sys.stderr)
        return 2
    except KeyboardInterrupt:
        return 130


def measure_in_scratch(options, programs, maker, measure, takes_existing=False):
    """Builds `programs` and runs `measure`, which gets their places and the folders that the one of
    them called `maker` makes. Answers the exit code."""

    def benchmark():
        scratch = options.scratch.resolve()
        scratch.mkdir(parents=True, exist_ok=True)
        tools = build(options.build_dir.resolve(), *programs)
        folders = MadeFolders(tools[maker], scratch, takes_existing)
        try:
            return measure(options, tools, folders)
        finally:
            if not options.keep:
                folders.remove()

    return exit_code_of(benchmark)


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

    def finish(self):
        """Prints the limits, and answers the exit code."""
        print("## Limits")
        print_table(["what", "at most", "measured", "", "note", "lrrll"], self.limits)
        print(f"Load at the end {os.getloadavg()[0]:.1f}")
        return 1 if self.answers_differ else 0


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
