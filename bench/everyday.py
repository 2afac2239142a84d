#!/usr/bin/env python3
"""Ten everyday tasks with ssfind and with other programs: what one types, and what comes out.

Makes a small folder of photographs and documents, runs every command in it, and prints
docs/EVERYDAY.md. Where a program that is compared is not installed, its command is shown without
what comes out.

Usage: everyday.py [--ssfind PROGRAM] > docs/EVERYDAY.md
"""

import argparse
import dataclasses
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import zlib

from photo_writers import Tiff, jpeg_segment

DESCRIPTION, TAKEN, EXIF_VERSION, UNDEFINED = 0x010E, 0x9003, 0x9000, 7
ROOT = pathlib.Path(__file__).resolve().parent.parent
# Where Debian gives a program another name.
OTHER_NAMES = {"fd": "fdfind"}


def photograph(description, taken, size=0):
    exif = (Tiff().text(0, DESCRIPTION, description).text(1, TAKEN, taken)
            .field(1, EXIF_VERSION, UNDEFINED, b"0232").bytes())
    jpeg = (b"\xFF\xD8" + jpeg_segment(0xE1, b"Exif\0\0" + exif)
            + jpeg_segment(0xC0, bytes([8, 0, 1, 0, 1, 1, 1, 0x11, 0])) + b"\xFF\xD9")
    return jpeg.ljust(size, b"\0")


def document(*lines):
    """A document of one page, its text compressed as most programs write it."""
    shown = " ".join(f"0 -14 Td ({line}) Tj" for line in lines)
    content = zlib.compress(f"BT /F 12 Tf 10 700 Td {shown} ET".encode())
    objects = [b"<< /Type /Catalog /Pages 2 0 R >>",
               b"<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
               b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 600 800] /Contents 4 0 R\n"
               b"/Resources << /Font << /F 5 0 R >> >> >>",
               b"<< /Filter /FlateDecode /Length %d >>\nstream\n%s\nendstream" % (
                   len(content), content),
               b"<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"]
    text, places = b"%PDF-1.4\n", []
    for number, body in enumerate(objects, 1):
        places.append(len(text))
        text += b"%d 0 obj\n%s\nendobj\n" % (number, body)
    table = b"".join(b"%010d 00000 n \n" % place for place in places)
    return text + b"xref\n0 6\n0000000000 65535 f \n%strailer\n<< /Size 6 /Root 1 0 R >>\n" \
                  b"startxref\n%d\n%%%%EOF\n" % (table, len(text))


def make_files(folder):
    may = time.mktime((2024, 5, 17, 10, 30, 0, 0, 0, -1))
    files = {
        "Crete/IMG_0412.jpg": (photograph("Anna on the beach", "2024:07:03 18:52:11"), may),
        "Crete/IMG_0467.jpg": (photograph("The harbour", "2024:07:09 11:20:03"), may + 9),
        "Crete/beach at dawn.jpg": (photograph("Nobody yet", "2023:06:30 05:40:00", 1500000),
                                    may - 4e7),
        "Trash/beach.jpg": (photograph("Blurred", "2024:07:03 18:52:40", 2000000), may - 5e7),
        "Letters/flat.pdf": (document("The rent for the flat is", "due on the first."), may + 3e6),
        "Letters/lease.pdf": (document("This lease begins in May."), may - 8),
        "Letters/notes.pdf": (document("Call Anna."), time.time() - 86400),
    }
    for name, (content, modified) in files.items():
        path = folder / name
        path.parent.mkdir(exist_ok=True)
        path.write_bytes(content)
        os.utime(path, (modified, modified))


@dataclasses.dataclass(frozen=True)
class Task:
    name: str
    ssfind: str
    other: str
    # Whether the order of the lines is part of the answer.
    is_ordered: bool = False


TASKS = [
    Task("By a word in the name", "ssfind -n beach", "fd -i beach"),
    Task("By a pattern of the name", "ssfind -g -n 'img_04*.jpg'", "fd -i -g 'img_04*.jpg'"),
    Task("Changed in the last three days", "ssfind -m 3d", "fd -t f --changed-within 3d"),
    Task("Changed in May 2024", "ssfind -m 2024-05",
         "find . -type f -newermt 2024-05-01 ! -newermt 2024-06-01"),
    Task("Large ones, but none in the trash", "ssfind -S 1M.. -E Trash",
         "fd -t f -S +1M -E Trash"),
    Task("Documents with a phrase, which may go over the end of a line",
         "ssfind -k 'flat is due'", "pdfgrep -ril 'flat is due' ."),
    Task("Photographs taken in July 2024, without the trash", "ssfind -t 2024-07 -E Trash",
         "exiftool -q -q -r -i Trash -if '$DateTimeOriginal =~ /^2024:07/' "
         "-p '$Directory/$FileName' ."),
    Task("Photographs whose description has two words", "ssfind -k beach -k anna --in exif",
         "exiftool -q -q -r -if '$ImageDescription =~ /beach/i and $ImageDescription =~ /anna/i' "
         "-p '$Directory/$FileName' ."),
    Task("The newest shots with their dates",
         "ssfind Crete --sort taken --limit 2 --format '{taken} {name}'",
         "exiftool -q -q -d '%Y-%m-%d %H:%M:%S' -p '$DateTimeOriginal $FileName' "
         "-fileOrder -DateTimeOriginal Crete | head -2", True),
    Task("A command for each", "ssfind -n img -x echo copy {} to {/.}.bak",
         "fd img -x echo copy {} to {/.}.bak"),
]


def answer(command, folder, ssfind):
    program = command.split()[0]
    installed = ssfind if program == "ssfind" else (
        shutil.which(program) or shutil.which(OTHER_NAMES.get(program, program)))
    if installed is None:
        return None
    with tempfile.TemporaryDirectory() as tools:
        os.symlink(installed, pathlib.Path(tools) / program)
        environment = {**os.environ, "PATH": tools + os.pathsep + os.environ["PATH"],
                       "XDG_CACHE_HOME": tools, "LC_ALL": "C.UTF-8"}
        result = subprocess.run(["sh", "-c", command], cwd=folder, env=environment, text=True,
                                capture_output=True, stdin=subprocess.DEVNULL, check=False)
    if result.returncode > 1:
        sys.exit(f"{command}: {result.stderr}")
    return result.stdout.splitlines()


def as_set(lines):
    return sorted(line.replace("./", "") for line in lines)


def block(command, lines):
    return "\n".join(["    $ " + command, *("    " + line for line in lines)])


def section(task, folder, ssfind):
    found = answer(task.ssfind, folder, ssfind)
    other = answer(task.other, folder, ssfind)
    ordered = (lambda lines: lines) if task.is_ordered else sorted
    parts = [f"## {task.name}", block(task.ssfind, ordered(found)),
             block(task.other, ordered(other or []))]
    if other is None:
        parts.append("(not installed where this page was made)")
    elif as_set(found) != as_set(other):
        missing = sorted(set(as_set(found)) - set(as_set(other)))
        parts.append("The second does not find " + ", ".join(missing) + "." if missing
                     else "The second finds more.")
    return "\n\n".join(parts)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--ssfind", default=str(ROOT / "ssfind"))
    ssfind = str(pathlib.Path(parser.parse_args().ssfind).resolve())
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)
        make_files(folder)
        files = sorted(str(path.relative_to(folder)) for path in folder.rglob("*.*"))
        rows = "\n".join(f"| {task.name} | `{task.ssfind}` | `{task.other}` |".replace(
            " | head", r" \| head") for task in TASKS)
        print("# Ten everyday tasks\n\n"
              "What one types, and what comes out, with `ssfind` and with the program that many use "
              "for it.\nWritten by `bench/everyday.py`, which makes the files and runs the commands. "
              "Matches come in any\norder unless `--sort` asks for one; they are sorted here.\n\n"
              "| task | ssfind | others |\n| --- | --- | --- |\n" + rows
              + "\n\nThe folder:\n\n" + "\n".join("    " + name for name in files) + "\n")
        print("\n\n".join(section(task, folder, ssfind) for task in TASKS))


if __name__ == "__main__":
    main()
