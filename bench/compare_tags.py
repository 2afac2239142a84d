#!/usr/bin/env python3
"""Compares what the library reads from photographs with what exiftool does.

Usage: compare_tags.py [--photo-tags PROGRAM] FOLDER...

Looks at every JPEG and TIFF file below the folders and prints each difference. exiftool is given
copies of the first 65,535 bytes, which is what the library reads. NULs and blanks at the end of a
text do not count, since exiftool takes them away. The exit code is 1 when there is a difference.
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


def answers_of_exiftool(paths, scratch):
    copies = []
    for number, path in enumerate(paths):
        copy = pathlib.Path(scratch, f"{number}{os.fsdecode(os.path.splitext(path)[1]).lower()}")
        with open(path, "rb") as photo:
            copy.write_bytes(photo.read(READ_SIZE))
        copies.append(str(copy))
    result = subprocess.run(["exiftool", "-j", "-b", "-n", "-m", "-q", "-q", *ASKED, "-@", "-"],
                            input="\n".join(copies), stdout=subprocess.PIPE, text=True)
    found = {entry["SourceFile"]: entry
             for entry in json.loads(result.stdout or "[]", parse_int=str, parse_float=str)}
    for copy in copies:
        yield found.get(copy, {})
        os.unlink(copy)


def text_of(value):
    """A text of exiftool's, which gives what is not UTF-8 in base 64."""
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
    """What the library makes of the text of a date."""
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


def compare(program, paths, scratch):
    differences = 0
    for path, ours, found in zip(paths, answers_of_library(program, paths),
                                 answers_of_exiftool(paths, scratch)):
        expected = expected_of(found)
        for tag in TAGS:
            if without_padding(ours[tag]) != without_padding(expected[tag]):
                differences += 1
                print(f"{os.fsdecode(path)}: {tag}: {ours[tag]!r}, exiftool {expected[tag]!r}"
                      f"{hint(tag, found)}")
    return differences


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("folders", nargs="+", metavar="FOLDER")
    parser.add_argument("--photo-tags", default=ROOT / "build/bench/bench/photo_tags",
                        help="the program of that name in bench/, built (default: %(default)s)")
    arguments = parser.parse_args()
    paths = list(photos_below(arguments.folders))
    differences = 0
    with tempfile.TemporaryDirectory() as scratch:
        for begin in range(0, len(paths), BATCH):
            differences += compare(arguments.photo_tags, paths[begin:begin + BATCH], scratch)
    print(f"{len(paths)} files, {differences} differences")
    return 1 if differences or not paths else 0


if __name__ == "__main__":
    sys.exit(main())
