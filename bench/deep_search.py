"""Measures searches that read documents deep, side by side with one another, for deep.py."""

import os
import random
import shutil
import tempfile

from comparison import print_table
from measuring import run, side_by_side, timed

FILES, FOLDERS = 5000, 100
LARGEST = 25_000
PLAIN_KINDS = ["tif", "jpg", "pdf", "pct"]
TREE_FILES, TREE_FOLDER = 40_000, 20
KEYWORD = "zzqqxx"


def make_documents(scratch, documents):
    """The small ones of them, again and again, in one folder and spread over many."""
    small = [path for path in documents if path.stat().st_size < LARGEST]
    one, many = scratch / "one", scratch / "many"
    one.mkdir()
    for i in range(FILES):
        first = one / f"{i:05}.pdf"
        shutil.copyfile(small[i % len(small)], first)
        folder = many / f"{i % FOLDERS:03}"
        folder.mkdir(parents=True, exist_ok=True)
        os.link(first, folder / first.name)
    return one, many


def make_plain_kinds(scratch):
    """Empty files of the kinds that a plain search knows, too."""
    tree = scratch / "plain"
    for i in range(TREE_FILES):
        folder = tree / f"{i // TREE_FOLDER // 100:03}" / f"{i // TREE_FOLDER % 100:02}"
        if i % TREE_FOLDER == 0:
            folder.mkdir(parents=True)
        word = "beach" if i % 200 == 0 else "other"
        (folder / f"IMG {i:06} {word}.{PLAIN_KINDS[i % 4]}").touch()
    return tree


def beside_pdfgrep(tools, documents, options, scratch):
    """A word that is hardly anywhere; pdfgrep gets a process for each document, as many at once as
    there are processors. The processor time is that of all processes, the sealed ones included."""
    folder = scratch / "chosen"
    folder.mkdir()
    chosen = random.Random(2).sample(documents, min(options.timed, len(documents)))
    for i, path in enumerate(chosen):
        shutil.copyfile(path, folder / f"{i:05}.pdf")
    grep = (f"find '{folder}' -type f -print0 | xargs -0 -n 1 -P {os.cpu_count()} "
            "pdfgrep -li lighthouses 2>/dev/null || true")
    series = side_by_side(
        {"ssfind": timed(tools, [tools["ssfind"], folder, "-k", "lighthouses", "--in", "pdf"]),
         "pdfgrep": timed(tools, ["sh", "-c", grep])}, options.rounds)
    ours, theirs = series.values()
    return [[f"{len(chosen)} documents, {what}",
             f"ssfind {ours.median(key):,.0f} ms, pdfgrep {theirs.median(key):,.0f} ms",
             f"{ours.median(key) / theirs.median(key):.2f}", "0.20"]
            for what, key in (("by the clock", "total_ms"), ("processor time", "cpu_ms"))]


def first_match_ms(tools, one, rounds):
    """The time to the first result where one of the first ten files of a folder matches."""
    with os.scandir(one) as entries:
        early = [next(entries).path for _ in range(10)]
    marked = max(early, key=lambda path: os.stat(path).st_size)
    keyword = next((word for word in run(["pdftotext", marked, "-"]).split()
                    if word.isalpha() and word.isascii() and len(word) > 5), "the")
    command = timed(tools, [tools["ssfind"], one, "-k", keyword, "--in", "pdf", "--limit", "1"])
    return side_by_side({"first": command}, rounds)["first"].maximum("first_byte_ms")


def measure_search(tools, documents, options):
    rows = []

    def compare(what, most, commands, rounds=options.rounds):
        series = side_by_side({label: timed(tools, [tools["ssfind"], *command])
                               for label, command in commands.items()}, rounds)
        (one, ours), (other, theirs) = series.items()
        ratio = ours.median() / theirs.median()
        rows.append([what, f"{one} {ours.median():,.0f} ms, {other} {theirs.median():,.0f} ms",
                     f"{ratio:.2f}", most])

    with tempfile.TemporaryDirectory(prefix="deep search ") as scratch:
        scratch = type(options.cache)(scratch)
        rows += beside_pdfgrep(tools, documents, options, scratch)
        one, many = make_documents(scratch, documents)
        compare(f"{FILES:,} small documents, none matches", "1.1",
                {"one folder": [one, "-k", KEYWORD, "--in", "pdf", "-q"],
                 f"{FOLDERS} folders": [many, "-k", KEYWORD, "--in", "pdf", "-q"]})
        first = first_match_ms(tools, one, options.rounds)
        rows.append(["the first of them, where one of the first ten matches",
                     f"{first:,.0f} ms at most", "", "300 ms"])
        tree = make_plain_kinds(scratch)
        for what, condition in (("name", ["-n", "beach"]), ("date", ["-m", "2001..2002"])):
            command = [tree, *condition, "--no-index"]
            compare(f"{what}, {TREE_FILES:,} files of the plain kinds", "1.1",
                    {"deep": command, "plain": [*command, "--plain"]},
                    # They are short.
                    10 * options.rounds)
    print_table(["search", "medians", "ratio", "limit", "llrr"], rows)
