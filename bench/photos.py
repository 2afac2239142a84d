#!/usr/bin/env python3
"""Measures searches in the EXIF data of photographs, plain and deep, side by side with exiftool, exiv2
and a bare loop that opens each file, reads its beginning and closes it.

Prints tables in Markdown. The exit code shows whether all programs gave the same answers; no limit
on time makes it fail, since the machine may be busy.
"""

import os
import sys

from comparison import (Report, add_scratch_options, compare, measure_in_scratch, option_parser,
                        print_table)
from measuring import Series, figures, run, timed
from programs import FOLDER, Program, installed

PROGRAMS = ["ssfind", "make_photos", "read_floor", "run_timed"]
THREADS = 5
YEAR = "2019"
TEXT_TAGS = ["Exif.Image.ImageDescription", "Exif.Image.Make", "Exif.Image.Model",
             "Exif.Photo.UserComment"]


def exiftool(condition):
    return ["exiftool", "-q", "-q", "-fast", "-r", "-if", condition, "-p", "$Directory/$FileName",
            FOLDER]


def exiv2(tags, pattern):
    keys = " ".join(f"-K {tag}" for tag in tags)
    # It names a file only beside several, hence the one that is none.
    each = (f'lines=$(exiv2 -q {keys} -Pv /dev/null "$@" 2>/dev/null | grep -aiE "{pattern}" | '
            'sed "s/  .*//" | sort -u); '
            # One at a time, so that lines stay whole.
            '[ -z "$lines" ] || flock "$0" printf "%s\\n" "$lines"')
    return ["sh", "-c", f'find "$1" -type f -print0 | xargs -0 -n 200 -P {THREADS} '
            f"sh -c '{each}' \"$1\"", "sh", FOLDER]


def searches(tools, by_keyword):
    """Ours, then the peers, then the floor."""
    if by_keyword:
        ours = ["--keyword", "beach", "--in", "exif"]
        condition = "($ImageDescription.$Make.$Model.$UserComment) =~ /beach/i"
        tags, pattern = TEXT_TAGS, "  .*beach"
    else:
        ours = ["--taken", YEAR]
        condition = f"$DateTimeOriginal =~ /^{YEAR}/"
        tags, pattern = ["Exif.Photo.DateTimeOriginal"], f"  {YEAR}"
    found = [Program("ssfind", [tools["ssfind"], "--plain", "--no-index", *ours, FOLDER])]
    if installed("exiftool"):
        found.append(Program("exiftool", exiftool(condition), is_peer=True))
    if installed("exiv2"):
        found.append(Program("exiv2", exiv2(tags, pattern), is_peer=True))
    for threads in (THREADS, 1):
        found.append(Program(f"floor, {threads} threads",
                             [tools["read_floor"], "--threads", threads, FOLDER],
                             gives_paths=False))
    # What a machine's memory can gain at most over the floor: its calls, and next to no bytes.
    found.append(Program("first 4 KiB", [tools["read_floor"], "--threads", THREADS, "--bytes", 4096,
                                         FOLDER], gives_paths=False))
    return found


def forget(folder):
    """Has the system drop the files' content from its cache, but not their names."""
    os.sync()
    for parent, _, names in os.walk(folder):
        for name in names:
            file = os.open(os.path.join(parent, name), os.O_RDONLY)
            os.posix_fadvise(file, 0, 0, os.POSIX_FADV_DONTNEED)
            os.close(file)


def warm(tools, folder):
    """Files that have just been written are kept in larger pieces, and read faster, than those that
    have been read, as a person's photographs have."""
    forget(folder)
    run([tools["read_floor"], "--threads", THREADS, folder])


def measure_cold(tools, folder, what, programs, rounds):
    print(f"## {what}, content not in memory")
    series = {program.label: Series() for program in programs}
    for _ in range(rounds):
        for program in programs:
            forget(folder)
            series[program.label].add(figures(timed(tools, program.on(folder))))
    ours = series["ssfind"].median()
    print_table(["program", "median ms", "ssfind / it, medians", "lrr"],
                [[label, f"{one.median():.1f}", f"{ours / one.median():.2f}"]
                 for label, one in series.items()])


def limit(report, what, series, floor, most_of_floor, peers=None):
    ours = series["ssfind"]
    for peer, times in (peers or {}).items():
        if peer in series:
            report.limit(f"{what}: of {peer}'s time", 1 / times,
                         ours.median() / series[peer].median())
    calls = series["first 4 KiB"]
    report.limit(f"{what}: of the floor's time", most_of_floor,
                 ours.median() / series[floor].median(),
                 note=f"by the least times {ours.minimum() / series[floor].minimum():.2f}; the first "
                      f"4 KiB alone take {calls.minimum() / series[floor].minimum():.2f}")


def measure_deep(report, options, tools, photos, folder, files):
    """Deep searches, whose processor time is that of the reader's processes, too."""
    for title, by_keyword in (("EXIF keyword", True), ("Shooting date", False)):
        plain, *others = searches(tools, by_keyword)
        deep = Program("ssfind", [part for part in plain.command if part != "--plain"])
        peers = [peer for peer in others if peer.label == "exiv2"]
        title = f"{title}, deep"
        series, _ = compare(report, title, tools, photos.scratch,
                            [deep, Program("ssfind --plain", plain.command), *peers], folder,
                            options.rounds)
        if "exiv2" in series:
            report.limit(f"{title}: of exiv2's time", 1 / 4,
                         series["ssfind"].median() / series["exiv2"].median())
        report.limit(f"{title}: processor time a file, all processes", 60,
                     series["ssfind"].minimum("cpu_ms") * 1e3 / files, "µs")


def measure_names(report, options, tools, photos, folder):
    """What the many kinds of a deep search cost a search by name."""
    os.environ["XDG_CACHE_HOME"] = str(photos.scratch / "cache")
    for title, how, most in (("walk", ["--no-index"], 1.1), ("index", [], 1.2)):
        command = [tools["ssfind"], *how, "--name", "1", FOLDER]
        programs = [Program("ssfind", command),
                    Program("ssfind --plain", [*command[:1], "--plain", *command[1:]])]
        series, _ = compare(report, f"Names by the {title}", tools, photos.scratch, programs, folder,
                            4 * options.rounds)
        deep, plain = (series[program.label] for program in programs)
        report.limit(f"Names by the {title}: deep of plain", most, deep.median() / plain.median(),
                     note=f"by the least times {deep.minimum() / plain.minimum():.2f}")


def measure(options, tools, photos):
    report = Report()
    peers = {"exiftool": 50, "exiv2": 5}
    # It takes minutes; once is enough to tell.
    rounds = {"exiftool": 1}
    few = photos.make("few", jpegs=options.jpegs, tiffs=options.jpegs // 10, keyword=0.01,
                      taken=0.01)
    warm(tools, few)
    measure_deep(report, options, tools, photos, few, options.jpegs + options.jpegs // 10)
    measure_names(report, options, tools, photos, few)
    if options.deep:
        return report.finish()
    half = photos.make("half", jpegs=options.jpegs, tiffs=options.jpegs // 10, keyword=0.01,
                       taken=0.5)
    flat = photos.make("flat", jpegs=options.jpegs, tiffs=0, keyword=0.01, taken=0.01,
                       per_folder=options.jpegs)
    for folder in (few, half, flat):
        warm(tools, folder)
    by_keyword, by_date = searches(tools, True), searches(tools, False)
    floor = f"floor, {THREADS} threads"
    for title, programs, folder, most in (
            ("EXIF keyword", by_keyword, few, 0.5), ("Shooting date", by_date, few, 0.5),
            ("Shooting date that half of the photographs meet", by_date, half, 1)):
        patient = [program for program in programs if program.label not in rounds]
        series, _ = compare(report, title, tools, photos.scratch, patient, folder, options.rounds)
        for slow in [program for program in programs if program.label in rounds and most < 1]:
            once, _ = compare(report, f"{title}, {slow.label}", tools, photos.scratch,
                              [programs[0], slow], folder, rounds[slow.label])
            series[slow.label] = once[slow.label]
        limit(report, title, series, floor, most, peers if most < 1 else None)
    without_peers = [program for program in by_date if not program.is_peer]
    series, _ = compare(report, "All photographs in one folder", tools, photos.scratch,
                        without_peers, flat, options.rounds)
    ratio = series["ssfind"].median() / series["floor, 1 threads"].median()
    print_table(["one folder, one worker", "times the floor with one thread", "lr"],
                [["shooting date", f"{ratio:.2f}"]])
    for what, programs in (("EXIF keyword", by_keyword), ("Shooting date", by_date)):
        measure_cold(tools, few, what, [program for program in programs
                                        if program.label in ("ssfind", floor)], 3)
    return report.finish()


def main():
    parser = option_parser(__doc__)
    parser.add_argument("--jpegs", type=int, default=20_000, help="and a tenth as many TIFF files")
    parser.add_argument("--deep", action="store_true",
                        help="only deep searches, and what their many kinds of files cost")
    add_scratch_options(parser, "files", "searchsystem-photos", rounds=5)
    return measure_in_scratch(parser.parse_args(), PROGRAMS, "make_photos", measure,
                              takes_existing=True)


if __name__ == "__main__":
    sys.exit(main())
