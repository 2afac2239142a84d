#!/usr/bin/env python3
"""Measures the search through the index side by side with the walk, fd, plocate, and a bare loop of
status calls.

Prints tables in Markdown. The exit code shows whether all programs gave the same answers; no limit
on time or space makes it fail, since the machine may be busy.
"""

import os
import re
import shutil
import sys
import time

from comparison import (Report, add_scratch_options, compare, measure_in_scratch, option_parser,
                        print_machine, print_table)
from measuring import Series, figures, run, side_by_side, timed
from programs import EXTENSIONS, WORD, Program, installed, programs

PROGRAMS = ["ssfind", "make_tree", "listing_floor", "run_timed", "status_floor"]
# What the index may take on the disk, per name that it records.
MOST_BYTES_PER_ENTRY = 30
# Half of the names in the trees are not ASCII; this keyword is in many of them.
FOREIGN_WORD = "été"


class Cache:
    """A cache folder of our own, so that the user's index is left alone."""

    def __init__(self, scratch):
        self.folder = scratch / "cache"
        os.environ["XDG_CACHE_HOME"] = str(self.folder)
        self.clear()

    def clear(self):
        self.remove()
        self.folder.mkdir(mode=0o700)

    def remove(self):
        shutil.rmtree(self.folder, ignore_errors=True)

    def size(self):
        return sum(path.stat().st_size for path in self.folder.rglob("*") if path.is_file())


def searches(tools, has_word=True):
    """The search through the index, the walk, and fd."""
    walk, *others = programs(tools, has_word)
    indexed = [part for part in walk.command if part != "--no-index"]
    peers = [program for program in others if program.label.startswith("fd")]
    return [Program("ssfind", indexed), Program("ssfind --no-index", walk.command), *peers]


def measure_first(report, tools, cache, by_name, tree, rounds):
    """A search that finds no index and fills it, and the walk."""
    indexed, walk = (timed(tools, search.on(tree)) for search in by_name[:2])
    series = {"filling the index": Series(), "the walk": Series()}
    for _ in range(rounds):
        cache.clear()
        series["filling the index"].add(figures(indexed))
        series["the walk"].add(figures(walk))
    first, second = series.values()
    print("## First search")
    print_table(["search", "median ms", "least ms", "least CPU ms", "lrrr"],
                [[label, f"{one.median():.1f}", f"{one.minimum():.1f}",
                  f"{one.minimum('cpu_ms'):.1f}"] for label, one in series.items()])
    limit_cpu(report, "first search: of the walk's", 1.2, first, second)


def limit_cpu(report, what, most, ours, peer):
    """A limit on processor time, by the medians of both."""
    report.limit(f"{what} processor time", most, ours.median("cpu_ms") / peer.median("cpu_ms"),
                 note=f"by the least {ours.minimum('cpu_ms') / peer.minimum('cpu_ms'):.2f}, "
                      f"of the time {ours.median() / peer.median():.2f}")


def visible_paths(tree):
    """The folders that a search meets, and the files with one of the extensions."""
    folders, candidates = [], []
    for folder, names, files in os.walk(tree):
        names[:] = [name for name in names if not name.startswith(".")]
        folders.append(folder)
        candidates += [os.path.join(folder, name) for name in files
                       if not name.startswith(".") and
                       name.rpartition(".")[2].lower() in EXTENSIONS]
    return folders, candidates


def measure_floor(report, what, tools, by_name, tree, scratch, rounds):
    """The second search beside one status call for each folder, or each candidate of the dates."""
    folders, candidates = visible_paths(tree)
    lists = {}
    for name, paths in (("folders", folders), ("candidates", candidates)):
        lists[name] = scratch / f"{name}.list"
        lists[name].write_bytes(b"\n".join(os.fsencode(path) for path in paths) + b"\n")
    floor = [[tools["status_floor"], lists[name]] for name in lists]
    search = by_name[0]
    by_date = searches(tools, has_word=False)[0]
    foreign = [FOREIGN_WORD if part == WORD else part for part in search.on(tree)]
    run(timed(tools, search.on(tree)))
    series = side_by_side({"name": timed(tools, search.on(tree)),
                           f"name, {FOREIGN_WORD}": timed(tools, foreign),
                           "a status for each folder": floor[0],
                           "dates": timed(tools, by_date.on(tree)),
                           "a status for each candidate": floor[1]}, rounds)
    for path in lists.values():
        path.unlink()
    print(f"## Beside bare status calls, {what}: {len(folders):,} folders, "
          f"{len(candidates):,} candidates")
    print_table(["search", "median ms", "median CPU ms", "least CPU ms", "lrrr"],
                [[label, f"{one.median():.1f}", f"{one.median('cpu_ms'):.1f}",
                  f"{one.minimum('cpu_ms'):.1f}"] for label, one in series.items()])
    name, other, per_folder, dates, per_candidate = series.values()
    limit_cpu(report, f"name, {what}: of a status for each folder, the", 1.8, name, per_folder)
    limit_cpu(report, f"keyword that is not ASCII, {what}: of an ASCII one's", 1.5, other, name)
    limit_cpu(report, f"dates, {what}: of a status for each candidate, the", 1.15, dates,
              per_candidate)


def measure_changed(report, what, tools, by_name, tree, rounds):
    """A search after one folder in a thousand has changed, and after none; one of a single folder,
    and its walk."""
    search, walk = by_name[:2]
    folders = visible_paths(tree)[0]
    one = folders[len(folders) // 2]
    commands = {"after none": search.on(tree), "one folder": search.on(one),
                "its walk": walk.on(one)}
    series = {label: Series() for label in ["after a change", *commands]}
    for number in range(rounds):
        for folder in folders[number::1000]:
            path = os.path.join(folder, ".changed")
            os.close(os.open(path, os.O_CREAT | os.O_WRONLY))
            os.unlink(path)
        time.sleep(0.1)
        series["after a change"].add(figures(timed(tools, search.on(tree))))
        for label, command in commands.items():
            # The larger search leaves nothing of the small ones in the processor's caches.
            if label == "one folder":
                run(timed(tools, command))
            series[label].add(figures(timed(tools, command)))
    print(f"## Changes and a small scope, {what}")
    print_table(["search", "median ms", "median CPU ms", "least CPU ms", "lrrr"],
                [[label, f"{one.median():.1f}", f"{one.median('cpu_ms'):.1f}",
                  f"{one.minimum('cpu_ms'):.1f}"] for label, one in series.items()])
    limit_cpu(report, f"after a change, {what}: of that after none, the", 1.3,
              series["after a change"], series["after none"])
    limit_cpu(report, f"one folder, {what}: of its walk's", 1.2, series["one folder"],
              series["its walk"])


def limit_second(report, what, series, most):
    if "fd -uu" not in series:
        return
    ours, peer = series["ssfind"], series["fd -uu"]
    report.limit(f"{what}: of the time of fd -uu", most, ours.median() / peer.median(),
                 note=f"by the least times {ours.minimum() / peer.minimum():.2f}")


def plocate_programs(plocate, database, tree):
    """The same question, which it can only ask each name in turn; and the nearest one that its own
    index answers: names with the word, hidden ones and other extensions among them. It does not know
    folders from files, so that its answers are not ours."""
    name = rf"({WORD}|[^/.][^/]*{WORD})[^/]*\.({'|'.join(EXTENSIONS)})"
    pattern = rf"^{re.escape(str(tree))}(/[^/.][^/]*)*/{name}$"
    common = [plocate, "-d", database, "-i"]
    return [Program("plocate", [*common, "--regex", pattern], gives_paths=False),
            Program("plocate, the word alone", [*common, "-b", WORD], gives_paths=False)]


def measure_plocate(report, tools, by_name, tree, entries, scratch, rounds, most):
    """plocate answers from its database alone; ours looks at the disk."""
    plocate, updatedb = installed("plocate"), installed("updatedb.plocate", "updatedb")
    if not plocate or not updatedb:
        print("plocate is not installed, and so not measured", file=sys.stderr)
        return
    database = scratch / "plocate.db"
    # Whatever the system's configuration leaves out belongs to the answer here.
    everything = [part for what in ("paths", "names", "fs") for part in (f"--prune{what}", "")]
    try:
        made = figures(timed(tools, [updatedb, "-l", "no", *everything, "--prune-bind-mounts", "no",
                                     "-U", tree, "-o", database]))
        print(f"updatedb has made a database of {database.stat().st_size / entries:.1f} bytes per "
              f"entry in {made['total_ms']:.0f} ms.\n")
        series, _ = compare(report, f"Name, second search in {entries:,} entries, beside plocate",
                            tools, scratch,
                            [by_name[0], *plocate_programs(plocate, database, tree)], tree, rounds)
        limit_cpu(report, f"name, {entries:,}: of plocate's", most, series["ssfind"],
                  series["plocate, the word alone"])
    finally:
        database.unlink(missing_ok=True)


def measure(options, tools, trees):
    cache = Cache(trees.scratch)
    try:
        return measure_with(cache, options, tools, trees)
    finally:
        cache.remove()


def measure_with(cache, options, tools, trees):
    report = Report()
    few = trees.make("few", entries=options.entries)
    print_machine(tools, 0)
    by_name = searches(tools)
    measure_first(report, tools, cache, by_name, few, options.rounds)
    entries = sum(not name.startswith(".") for _, folders, files in os.walk(few)
                  for name in [*folders, *files])
    report.limit("size of the index", MOST_BYTES_PER_ENTRY, cache.size() / entries,
                 "bytes", f"per entry, {entries:,} of them")

    series, _ = compare(report, f"Name, second search in {options.entries:,} entries", tools,
                        trees.scratch, by_name, few, options.rounds)
    limit_second(report, "name search", series, 0.2)
    compare(report, f"Modification date, second search in {options.entries:,} entries", tools,
            trees.scratch, searches(tools, has_word=False), few, options.rounds)

    measure_plocate(report, tools, by_name, few, options.entries, trees.scratch, options.rounds, 0.8)
    measure_floor(report, f"{options.entries:,}", tools, by_name, few, trees.scratch,
                  options.rounds)
    if options.large:
        large = trees.make("large", entries=5 * options.entries)
        entries = 5 * options.entries
        first = figures(timed(tools, by_name[0].on(large)))
        series, _ = compare(report, f"Name, second search in {entries:,} entries", tools,
                            trees.scratch, by_name, large, options.rounds)
        report.limit(f"peak memory, {entries:,}", 20,
                     max(first["peak_kib"], series["ssfind"].maximum("peak_kib")) / 1024, "MB",
                     "the first search included")
        measure_plocate(report, tools, by_name, large, entries, trees.scratch, options.rounds, 0.6)
        measure_floor(report, f"{entries:,}", tools, by_name, large, trees.scratch, options.rounds)
        measure_changed(report, f"{entries:,}", tools, by_name, large, options.rounds)
    return report.finish()


def main():
    parser = option_parser(__doc__)
    parser.add_argument("--entries", type=int, default=200_000, help="of the tree (%(default)s)")
    parser.add_argument("--no-large", dest="large", action="store_false",
                        help="leave out the tree with five times the entries")
    add_scratch_options(parser, "trees", "searchsystem-bench", rounds=9)
    return measure_in_scratch(parser.parse_args(), PROGRAMS, "make_tree", measure)


if __name__ == "__main__":
    sys.exit(main())
