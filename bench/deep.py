#!/usr/bin/env python3
"""Measures whether the document reader finds the words of PDF documents of many makers, with
pdftotext as the judge, and how fast it is side by side with pdfgrep and pdftotext.

Documents come from packages with manuals, and from every writer of PDF that is installed; they stay
in the cache folder for the next run. Prints tables in Markdown. The exit code says whether all words
and phrases were found as often as they must be; no limit on time makes it fail.
"""

import concurrent.futures
import dataclasses
import os
import pathlib
import random
import re
import subprocess
import sys
import unicodedata

from comparison import build, exit_code_of, option_parser, print_table
from deep_documents import obtain
from deep_seal import measure_seal
from deep_search import measure_search
from measuring import Series, ToolError, environment, figures, timed
from programs import installed

PEER_PACKAGES = {"pdfgrep": "pdfgrep", "pdftotext": "poppler-utils", "pdfinfo": "poppler-utils"}
# How many words and phrases of each document are looked for, and how many pairs of a document and a
# word of another one in all.
WORDS, PHRASES, FOREIGN = 40, 20, 6000
SECONDS = 60
REASONS = ["none", "needs a password", "damaged", "no text", "too large", "took too long",
           "its reader crashed", "cannot be opened", "no reader"]
MAKERS = [("TeX", r"tex|dvipdf"), ("LibreOffice", r"libreoffice|openoffice"),
          ("Chromium", r"skia"), ("Ghostscript", r"ghostscript"), ("groff", r"groff"),
          ("cairo", r"cairo"), ("WeasyPrint", r"weasy"), ("ReportLab", r"reportlab")]
CLOSE_MAKERS = {"TeX", "LibreOffice", "Chromium"}
WORD = re.compile(r"[^\W\d_]{5,30}")
IDEOGRAPH = "[\u3040-\u30ff\u3400-\u9fff]"
TURN = re.compile("[\u200e\u200f\u202a-\u202e\u2066-\u2069]")
LINE_END_HYPHEN = "\x01"
# Rows of tables and short lines, which stand in anybody's order, are no running text.
LINE_OF_TEXT = 5


@dataclasses.dataclass
class Outcome:
    """What became of one document."""

    path: pathlib.Path
    maker: str
    reason: str
    # How many words and phrases the judge gives, and of how many its two orders agree.
    judged: int = 0
    agreed: int = 0
    words: list = dataclasses.field(default_factory=list)
    phrases: list = dataclasses.field(default_factory=list)
    missed_words: list = dataclasses.field(default_factory=list)
    missed_phrases: list = dataclasses.field(default_factory=list)
    truth: str = ""
    ours: list = dataclasses.field(default_factory=list)


def output_of(command):
    try:
        return subprocess.run([str(part) for part in command], stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, env=environment(), timeout=SECONDS,
                              check=False)
    except subprocess.TimeoutExpired:
        return subprocess.CompletedProcess(command, -1, b"", b"")


def normalised(text):
    """The form in which texts are compared: without characters that only direct the layout, and
    without the line ends between ideographs."""
    text = "".join(sign for sign in text if unicodedata.category(sign) != "Cf")
    text = unicodedata.normalize("NFKC", unicodedata.normalize("NFKC", text).casefold())
    text = re.sub(f"(?<={IDEOGRAPH})\n(?={IDEOGRAPH})", "", text)
    return re.sub(r"\s+", " ", text)


def judged(path, *options):
    """The text by pdftotext, line ends kept; that is slow, so its answers are kept, too."""
    kept = path.with_name(path.stem + "".join(options) + ".txt")
    if not kept.exists() or kept.stat().st_mtime < path.stat().st_mtime:
        kept.write_bytes(
            output_of(["pdftotext", "-q", "-enc", "UTF-8", *options, path, "-"]).stdout)
    return kept.read_bytes().decode("utf-8", "replace")


def joined(truth):
    """With the words that a line end divides as one, hyphen and all, and without the hyphen."""
    return [re.sub(r"([-\u2010]) ", hyphen, normalised(truth)) for hyphen in (r"\1", "")]


def maker_of(path):
    info = output_of(["pdfinfo", path]).stdout.decode("utf-8", "replace")
    fields = dict(line.split(":", 1) for line in info.splitlines() if ":" in line)
    producer = fields.get("Producer", "") or fields.get("Creator", "")
    return next((maker for maker, pattern in MAKERS if re.search(pattern, producer, re.I)), "others")


def read(tools, path):
    """Reason and text by our reader; in two forms, as hyphens at line ends are one or nothing."""
    result = output_of([tools["document_texts"], "--print", path])
    if result.returncode != 0:
        return ("took too long" if result.returncode == -1 else "its reader crashed"), ["", ""]
    head, _, text = result.stdout.partition(b"\n")
    text = text.decode("utf-8").replace("\x0c", " ")
    # Normalisation is the reader's work, so that none is done here: only the case is folded.
    return REASONS[int(head.split()[0])], [
        text.replace(LINE_END_HYPHEN, hyphen).casefold() for hyphen in ("", "-")]


def words_of(truth):
    """All words of five letters and more; those that a line end divides are whole."""
    whole = re.sub(r"(?<=[^\W\d_])[-\xad\u2010]\n(?=[^\W\d_])", "", truth)
    # Where the direction of writing changes a word ends, too.
    return set(WORD.findall(normalised(TURN.sub(" ", whole))))


def phrases_of(truth):
    """Three words of running text, of which the line ends behind the first or the second."""
    word = re.compile(r"[^\W\d_]+[,.;:]?")
    lines = [normalised(line).split() for line in re.split("[\n\x0c]", truth)]
    found = set()
    for left, right in zip(lines, lines[1:]):
        if len(left) >= LINE_OF_TEXT and len(right) >= 2:
            for phrase in ([*left[-2:], right[0]], [left[-1], *right[:2]]):
                # Ideographs and the signs between them stand without blanks.
                if all(map(word.fullmatch, phrase)) and not (
                        re.search(IDEOGRAPH, "".join(phrase)) and re.search("[,.;:]",
                                                                            "".join(phrase))):
                    found.add(normalised("\n".join(phrase)))
    return found


def compare(tools, path):
    truth = judged(path)
    reason, ours = read(tools, path)
    outcome = Outcome(path, maker_of(path), reason, ours=ours)
    # The judge has two orders, as it reads and as the page draws. Where they differ it is not sure.
    as_drawn = judged(path, "-raw")
    as_read = [choose(truth) for choose in (words_of, phrases_of)]
    words, phrases = agreed = [sorted(ones & choose(as_drawn))
                               for ones, choose in zip(as_read, (words_of, phrases_of))]
    outcome.judged, outcome.agreed = (sum(map(len, sets)) for sets in (as_read, agreed))
    # The choice depends on the document's text only, not on its place or the order of documents.
    choice = random.Random(truth)
    outcome.words = choice.sample(words, min(WORDS, len(words)))
    outcome.phrases = choice.sample(phrases, min(PHRASES, len(phrases)))

    def is_missed(text):
        return not any(text in form for form in ours)

    outcome.missed_words = list(filter(is_missed, outcome.words))
    outcome.missed_phrases = list(filter(is_missed, outcome.phrases))
    outcome.truth = " ".join([normalised(truth), *joined(truth)])
    return outcome


def false_hits(outcomes):
    """Documents with words that occur in other documents only, and are found nevertheless."""
    choice = random.Random(1)
    # The judge turns Arabic ligatures round, so that it denies words that are there.
    everybodys = sorted({word for outcome in outcomes for word in outcome.words
                         if unicodedata.bidirectional(word[0]) == "L"})
    asked, found = 0, []
    while asked < FOREIGN:
        outcome, word = choice.choice(outcomes), choice.choice(everybodys)
        if word in outcome.truth:
            continue
        asked += 1
        # What the judge gives in another order is no false hit.
        if any(word in form for form in outcome.ours) and not any(
                word in form for order in ("-raw", "-layout")
                for form in joined(judged(outcome.path, order))):
            found.append((outcome.path, word))
    return found


def percent(missed, asked):
    return 100 * (1 - missed / asked) if asked else 100.0


def row(label, outcomes):
    figures_of = []
    for asked, missed in (("words", "missed_words"), ("phrases", "missed_phrases")):
        asked = sum(len(getattr(outcome, asked)) for outcome in outcomes)
        missed = sum(len(getattr(outcome, missed)) for outcome in outcomes)
        figures_of += [f"{asked:,}", f"{percent(missed, asked):.2f}"]
    return [label, f"{len(outcomes):,}", *figures_of]


def print_recall(outcomes, options):
    makers = sorted({outcome.maker for outcome in outcomes})
    print_table(["maker", "documents", "words", "found %", "phrases", "found %", "lrrrrr"],
                [*(row(maker, [one for one in outcomes if one.maker == maker])
                   for maker in makers), row("all", outcomes)])
    close = [one for one in outcomes if one.maker in CLOSE_MAKERS]
    hits = false_hits(outcomes)
    limits = []

    def limit(what, least, value, holds):
        limits.append([what, least, value, "PASS" if holds else "FAIL"])
        return holds

    def share(what, least, chosen, asked, missed):
        value = percent(sum(len(getattr(one, missed)) for one in chosen),
                        sum(len(getattr(one, asked)) for one in chosen))
        return limit(what, f"at least {least} %", f"{value:.2f} %", value >= least)

    holds = [share("words", 98, outcomes, "words", "missed_words"),
             share("words of TeX, LibreOffice, Chromium", 99, close, "words", "missed_words"),
             share("phrases across a line end", 95, outcomes, "phrases", "missed_phrases"),
             limit(f"found, of {FOREIGN:,} words that are not there", "0", str(len(hits)),
                   not hits)]
    print_table(["what", "limit", "measured", "", "lrrl"], limits)
    if options.misses:
        for path, word in hits:
            print(f"NOT THERE {path}: {word}")
        for one in sorted(outcomes, key=lambda one: -len(one.missed_words)):
            if one.missed_words or one.missed_phrases or one.reason != "none":
                print(f"{one.path} ({one.maker}; {one.reason}): {len(one.missed_words)} of "
                      f"{len(one.words)}: {' '.join(one.missed_words[:10])}; phrases "
                      f"{len(one.missed_phrases)} of {len(one.phrases)}: "
                      f"{' | '.join(one.missed_phrases[:5])}")
    return all(holds)


def measure_recall(tools, documents, options):
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        outcomes = list(pool.map(lambda path: compare(tools, path), documents))
    silent = [one for one in outcomes if not one.words]
    print(f"{len(outcomes):,} documents; of {len(silent)} of them the judge gives no word of five "
          "letters, and they are left out. Of what it gives its two orders agree in "
          f"{100 * sum(one.agreed for one in outcomes) / sum(one.judged for one in outcomes):.1f} %.")
    return print_recall([one for one in outcomes if one.words], options)


def measure_speed(tools, documents, options):
    """Each program looks for a word that is hardly anywhere; the reader is not sealed here."""
    listed = options.cache / "documents.txt"
    chosen = random.Random(2).sample(documents, min(options.timed, len(documents)))
    listed.write_text("".join(f"{path}\n" for path in sorted(chosen)))
    each = f"tr '\\n' '\\0' < '{listed}' | xargs -0"
    reader, keyword = tools["document_texts"], "lighthouses"
    commands = {
        "reader": f"'{reader}' --keyword {keyword} < '{listed}'",
        "reader, one process each": f"{each} -n 1 '{reader}' --keyword {keyword}",
        "pdfgrep": f"{each} -n 50 pdfgrep -li {keyword} 2>/dev/null || true",
        "pdfgrep, one process each": f"{each} -n 1 pdfgrep -li {keyword} 2>/dev/null || true",
        "pdftotext, one process each":
            f"{each} -I '{{}}' pdftotext -q '{{}}' - 2>/dev/null || true",
    }
    series = {label: Series() for label in commands}
    for _ in range(options.rounds):
        for label, command in commands.items():
            series[label].add(figures(timed(tools, ["sh", "-c", command])))
    size = sum(path.stat().st_size for path in chosen)
    print(f"\n{len(chosen)} documents, {size / 1e6:.0f} MB:")
    ours = [series["reader"], series["reader, one process each"]]
    print_table(["program", "least CPU ms", "median CPU ms", "of the reader's",
                 "of the reader's, one process each", "peak MB", "lrrrrr"],
                [[label, f"{one.minimum('cpu_ms'):,.0f}", f"{one.median('cpu_ms'):,.0f}",
                  *(f"{one.minimum('cpu_ms') / our.minimum('cpu_ms'):.2f}" for our in ours),
                  f"{one.maximum('peak_kib') / 1024:,.0f}"] for label, one in series.items()])


def benchmark(options):
    tools = build(options.build_dir.resolve(), "document_texts", "run_timed", "seal_cost", "ssfind")
    documents = obtain(options.cache.resolve(), options.only)
    if not documents:
        raise ToolError("no documents")
    holds = True
    if options.part in ("recall", "all"):
        holds = measure_recall(tools, documents, options)
    if options.part in ("speed", "all"):
        measure_speed(tools, documents, options)
    if options.part in ("seal", "all"):
        measure_seal(tools, documents, options)
    if options.part in ("search", "all"):
        measure_search(tools, documents, options)
    return 0 if holds else 1


def main():
    parser = option_parser(__doc__)
    parser.add_argument("--cache", type=pathlib.Path,
                        default=pathlib.Path.home() / ".cache" / "searchsystem-bench",
                        help="folder for packages and documents (%(default)s)")
    parser.add_argument("--part", default="all",
                        choices=["documents", "recall", "speed", "seal", "search", "all"])
    parser.add_argument("--only", default="", help="only documents whose path holds this")
    parser.add_argument("--misses", action="store_true", help="list what was not found")
    parser.add_argument("--timed", type=int, default=300, help="documents that are timed")
    parser.add_argument("--rounds", type=int, default=2, help="how often they are timed")
    options = parser.parse_args()
    missing = {package for name, package in PEER_PACKAGES.items() if not installed(name)}
    if missing:
        sys.exit("Not installed: " + " ".join(sorted(missing)))
    return exit_code_of(lambda: benchmark(options))


if __name__ == "__main__":
    sys.exit(main())
