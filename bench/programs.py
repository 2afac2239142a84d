"""The same searches, said in each program's own options.

Hidden names and what lies below hidden folders are left out everywhere, and only files with one of
the four extensions are found, in any case. Each program gets the form of the question that it
answers fastest.
"""

import dataclasses
import shutil

EXTENSIONS = ["tif", "jpg", "pdf", "pct"]
WORD = "beach"
# No file of the trees was changed at just these moments.
FROM = "2019-03-01 00:00:00"
BEFORE = "2019-09-01 00:00:00"
RANGE = "2019-03..2019-08"


@dataclasses.dataclass(frozen=True)
class Program:
    """`command` is without the folder's place filled in, which is FOLDER."""

    label: str
    command: list
    is_peer: bool = False
    gives_paths: bool = True

    def on(self, folder):
        return [str(folder) if part == FOLDER else str(part) for part in self.command]


FOLDER = object()


def _extension_tests():
    tests = []
    for extension in EXTENSIONS:
        tests += ["-o", "-iname", "*." + extension]
    return ["(", *tests[1:], ")"]


def _unix_conditions(has_word):
    if has_word:
        return ["-type", "f", "-iname", f"*{WORD}*", *_extension_tests()]
    start, end = (moment.replace(" ", "T") for moment in (FROM, BEFORE))
    return ["-type", "f", *_extension_tests(), "-newermt", start, "!", "-newermt", end]


def _find(has_word):
    return ["find", FOLDER, "-mindepth", "1", "-name", ".*", "-prune", "-o",
            *_unix_conditions(has_word), "-print"]


def _bfs(has_word):
    return ["bfs", FOLDER, "-nohidden", *_unix_conditions(has_word), "-print"]


def _fd(program, options, has_word):
    pattern = r"\.(" + "|".join(EXTENSIONS) + ")$"
    if has_word:
        return [program, *options, "-i", "-t", "f", WORD + ".*" + pattern, FOLDER]
    return [program, *options, "-i", "-t", "f", "--changed-after", FROM, "--changed-before", BEFORE,
            pattern, FOLDER]


def installed(name, *others):
    return next((found for found in map(shutil.which, [name, *others]) if found), None)


def missing_packages():
    needed = {"fd-find": installed("fdfind", "fd"), "bfs": installed("bfs"),
              "findutils": installed("find")}
    return [package for package, path in needed.items() if path is None]


def programs(tools, has_word):
    """Those that search for the word, or else for the dates; those not installed are left out."""
    condition = ["--name", WORD] if has_word else ["--modified", RANGE]
    found = [Program("ssfind", [tools["ssfind"], "--plain", "--no-index", *condition, FOLDER])]
    if fd := installed("fdfind", "fd"):
        found.append(Program("fd -uu", _fd(fd, ["-uu", "-E", ".*"], has_word), is_peer=True))
        # Leaves hidden names out by itself, which is quicker than by a pattern.
        found.append(Program("fd -I", _fd(fd, ["--no-ignore"], has_word), is_peer=True))
    if installed("bfs"):
        found.append(Program("bfs", _bfs(has_word), is_peer=True))
    if installed("find"):
        found.append(Program("find", _find(has_word)))
    dates = [] if has_word else ["--dates"]
    found.append(Program(" ".join(["floor", *dates]), [tools["listing_floor"], *dates, FOLDER],
                         gives_paths=False))
    return found
