#!/usr/bin/env python3
"""Compares what the library reads from photographs with what exiftool does.

Usage: compare_tags.py [--photo-tags PROGRAM] FOLDER...

Looks at every JPEG and TIFF file below the folders and prints each difference. exiftool reads the
whole files, the library their first 65,535 bytes: a tag that the library lacks is counted apart
where exiftool does not find it in a copy of these either (nor anything else, where an Exif block
goes on behind them). NULs and blanks at the end of a text do not count, since exiftool takes them
away. The exit code is 1 when there is another difference.
"""

import argparse
import base64
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
READ_SIZE = 65535
BATCH = 500
EXTENSIONS = {".jpg", ".jpeg", ".tif", ".tiff"}
# In the order in which photo_tags answers.
TAGS = ["taken", "ImageDescription", "Make", "Model", "UserComment"]
ASKED = ["-ExifByteOrder", "-IFD0:ImageDescription", "-IFD0:Make", "-IFD0:Model",
         "-ExifIFD:ExifVersion", "-ExifIFD:DateTimeOriginal", "-ExifIFD:CreateDate",
         "-ExifIFD:UserComment"]


def photos_below(folders):
    for folder in folders:
        for parent, _, names in os.walk(os.fsencode(folder)):
            for name in sorted(names):
                path = os.path.join(parent, name)
                if (os.fsdecode(os.path.splitext(name)[1]).lower() in EXTENSIONS
                        and os.path.isfile(path) and not os.path.islink(path)):
                    yield path


def answers_of_library(program, paths):
    output = subprocess.run([program], input=b"".join(path + b"\0" for path in paths), check=True,
                            stdout=subprocess.PIPE).stdout
    at = 0
    for _ in paths:
        answer = {}
        for tag in TAGS:
            if output[at:at + 1] == b"-":
                answer[tag] = None
                at += 1
                continue
            colon = output.index(b":", at)
            end = colon + 1 + int(output[at:colon])
            answer[tag] = output[colon + 1:end].decode(errors="backslashreplace")
            at = end
        assert output[at:at + 1] == b"\n"
        at += 1
        yield answer


def answers_of_exiftool(paths, scratch, is_cut=False):
    """Of the whole files, or of their beginnings. They get names that exiftool takes."""
    names = []
    for number, path in enumerate(paths):
        name = pathlib.Path(scratch, f"{number}{os.fsdecode(os.path.splitext(path)[1]).lower()}")
        if is_cut:
            with open(path, "rb") as photo:
                name.write_bytes(photo.read(READ_SIZE))
        else:
            os.symlink(os.path.abspath(path), name)
        names.append(str(name))
    result = subprocess.run(["exiftool", "-j", "-b", "-n", "-m", "-q", "-q", *ASKED, "-@", "-"],
                            input="\n".join(names), stdout=subprocess.PIPE, text=True)
    found = {entry["SourceFile"]: entry
             for entry in json.loads(result.stdout or "[]", parse_int=str, parse_float=str)}
    for name in names:
        yield found.get(name, {})
        os.unlink(name)


def text_of(value):
    """A text of exiftool's, which writes bytes that are not UTF-8 in base 64."""
    if value is None:
        return None
    if isinstance(value, str) and value.startswith("base64:"):
        value = base64.b64decode(value[len("base64:"):])
        try:
            return value.decode()
        except UnicodeDecodeError:
            return value.decode("latin-1")
    return str(value)


def date_of(text):
    """The library's form of the text of a date."""
    if not text:
        return None
    fields = [text[begin:end] for begin, end in
              [(0, 4), (5, 7), (8, 10), (11, 13), (14, 16), (17, None)]]
    if not all(re.fullmatch("[0-9]*", field) for field in fields[:3]):
        return "test"
    numbers = []
    for field in fields:
        number = re.match(r"\s*([+-]?[0-9]+)", field)
        numbers.append(int(number.group(1)) if number else 0)
    if not any(numbers[:3]):
        return "test"
    return "%04d/%02d/%02d %02d:%02d:%02d" % tuple(numbers)


def expected_of(found):
    if "ExifVersion" not in found:
        return dict.fromkeys(TAGS)
    expected = {tag: text_of(found.get(tag)) for tag in TAGS[1:]}
    expected["taken"] = date_of(text_of(found.get("DateTimeOriginal", found.get("CreateDate"))))
    return expected


def without_padding(text):
    return (text or "").split("\0")[0].rstrip()


def hint(tag, found):
    if tag == "UserComment" and str(found.get("ExifByteOrder", "")) == "MM":
        return "  (UTF-16 without a byte-order mark is little-endian to the library)"
    return ""


def is_the_same(text, other):
    return without_padding(text) == without_padding(other)


def compare(program, paths, scratch):
    """How many differences there are, and how many tags lie behind what the library reads."""
    differing = [(path, ours, found) for path, ours, found in
                 zip(paths, answers_of_library(program, paths), answers_of_exiftool(paths, scratch))
                 if not all(is_the_same(ours[tag], text) for tag, text in
                            expected_of(found).items())]
    beginnings = answers_of_exiftool([path for path, _, _ in differing], scratch, is_cut=True)
    differences = behind = 0
    for (path, ours, found), beginning in zip(differing, beginnings):
        expected, in_beginning = expected_of(found), expected_of(beginning)
        for tag in TAGS:
            if is_the_same(ours[tag], expected[tag]):
                continue
            if ours[tag] is None and in_beginning[tag] is None:
                behind += 1
                continue
            differences += 1
            print(f"{os.fsdecode(path)}: {tag}: {ours[tag]!r}, exiftool {expected[tag]!r}"
                  f"{hint(tag, found)}")
    return differences, behind


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("folders", nargs="+", metavar="FOLDER")
    parser.add_argument("--photo-tags", default=ROOT / "build/bench/bench/photo_tags",
                        help="the program of that name in bench/, built (default: %(default)s)")
    arguments = parser.parse_args()
    paths = list(photos_below(arguments.folders))
    differences = behind = 0
    with tempfile.TemporaryDirectory() as scratch:
        for begin in range(0, len(paths), BATCH):
            differ, lie_behind = compare(arguments.photo_tags, paths[begin:begin + BATCH], scratch)
            differences += differ
            behind += lie_behind
    print(f"{len(paths)} files, {differences} differences, {behind} tags only in what the library "
          "does not read")
    return 1 if differences or not paths else 0


if __name__ == "__main__":
    sys.exit(main())
