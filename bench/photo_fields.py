#!/usr/bin/env python3
"""Compares the fields and dates that the photograph reader finds with those of exiftool.

Usage: photo_fields.py [--program PROGRAM] [--keep FOLDER] [FOLDER...]

Makes photographs in all containers, with texts of several scripts in every field and with dates in
every place, by exiftool, exiv2, ImageMagick, heif-enc, avifenc, cwebp and cjxl, and with headers of
its own for raw formats; or looks at the files below the folders. Prints each field that only one of
both finds, and a table. The exit code is 1 when less than 99 % are alike.
"""

import argparse
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unicodedata

import photo_writers
from photo_writers import BYTE, UNDEFINED, UTF8, Tiff

ROOT = pathlib.Path(__file__).resolve().parent.parent
LEAST_ALIKE = 0.99

TEXTS = {"ascii": "Beach at dawn", "latin": "Z\u00fcrich \u00e0 l'\u00e9t\u00e9",
         "greek": "\u0391\u03b8\u03ae\u03bd\u03b1", "cyrillic": "\u041c\u043e\u0441\u043a\u0432\u0430",
         "japanese": "\u6d77\u8fba\u306e\u671d", "emoji": "Strand \U0001f3d6 fin"}

# Our name, exiftool's when it writes, and when it reads.
EXIF = [("Exif " + ours, f"-{group}:{theirs}", theirs) for ours, group, theirs in [
    ("ImageDescription", "IFD0", "ImageDescription"), ("Make", "IFD0", "Make"),
    ("Model", "IFD0", "Model"), ("Artist", "IFD0", "Artist"), ("Copyright", "IFD0", "Copyright"),
    ("XPTitle", "IFD0", "XPTitle"), ("XPComment", "IFD0", "XPComment"),
    ("XPAuthor", "IFD0", "XPAuthor"), ("XPKeywords", "IFD0", "XPKeywords"),
    ("XPSubject", "IFD0", "XPSubject"), ("UserComment", "ExifIFD", "UserComment"),
    ("LensMake", "ExifIFD", "LensMake"), ("LensModel", "ExifIFD", "LensModel")]]
IPTC = [("IPTC " + ours, "-IPTC:" + theirs, theirs) for ours, theirs in [
    ("ObjectName", "ObjectName"), ("Caption", "Caption-Abstract"), ("Keywords", "Keywords"),
    ("By-line", "By-line"), ("City", "City"), ("Country", "Country-PrimaryLocationName"),
    ("Headline", "Headline")]]
XMP = [("XMP " + ours, "-XMP-" + theirs, "XMP-" + theirs) for ours, theirs in [
    ("dc:title", "dc:Title"), ("dc:title", "dc:Title-de"), ("dc:description", "dc:Description"),
    ("dc:subject", "dc:Subject"), ("dc:creator", "dc:Creator"), ("dc:rights", "dc:Rights"),
    ("photoshop:Headline", "photoshop:Headline"), ("photoshop:City", "photoshop:City"),
    ("photoshop:Country", "photoshop:Country"), ("Iptc4xmpCore:Location", "iptcCore:Location"),
    ("tiff:ImageDescription", "tiff:ImageDescription"), ("tiff:Make", "tiff:Make"),
    ("tiff:Model", "tiff:Model"), ("tiff:Artist", "tiff:Artist"),
    ("tiff:Copyright", "tiff:Copyright"), ("exif:UserComment", "exif:UserComment"),
    ("exifEX:LensMake", "exifEX:LensMake"), ("exifEX:LensModel", "exifEX:LensModel"),
    ("aux:Lens", "aux:Lens"), ("lr:hierarchicalSubject", "lr:HierarchicalSubject"),
    ("digiKam:TagsList", "digiKam:TagsList"),
    ("MicrosoftPhoto:LastKeywordXMP", "microsoft:LastKeywordXMP"),
    ("MicrosoftPhoto:LastKeywordIPTC", "microsoft:LastKeywordIPTC"),
    ("mediapro:CatalogSets", "mediapro:CatalogSets"), ("mediapro:People", "mediapro:People"),
    ("expressionmedia:CatalogSets", "expressionmedia:CatalogSets"),
    ("acdsee:keywords", "acdsee:Keywords"), ("acdsee:categories", "acdsee:Categories"),
    ("Iptc4xmpExt:PersonInImage", "iptcExt:PersonInImage"),
    ("MPReg:PersonDisplayName", "MP:RegionPersonDisplayName"), ("mwg-rs:Name", "mwg-rs:RegionName"),
    ("mwg-kw:Keyword", "mwg-kw:HierarchicalKeywords1")]]
PNG = [("PNG " + name, "-PNG:" + name, "PNG:" + name)
       for name in ["Title", "Author", "Description", "Copyright", "Comment", "Source"]]
COMMENT = [("JPEG Comment", "-File:Comment", "File:Comment")]
LISTS = {"-IPTC:Keywords", "-XMP-dc:Subject", "-XMP-lr:HierarchicalSubject"}

# In the order of their rank.
DATES = ["-ExifIFD:DateTimeOriginal=2001:01:02 03:04:05", "-ExifIFD:CreateDate=2002:01:02 03:04:05",
         "-XMP-exif:DateTimeOriginal=2003:01:02 03:04:05+02:00",
         "-XMP-photoshop:DateCreated=2004:01:02 03:04", "-XMP-xmp:CreateDate=2005:01",
         "-IPTC:DateCreated=2006:01:02\n-IPTC:TimeCreated=03:04:05+01:00",
         "-PNG:CreationTime=2007:01:02 03:04:05"]
# How exiftool names them, in that order.
DATE_KEYS = [["ExifIFD:DateTimeOriginal", "ExifOffset:DateTimeOriginal", "IFD0:DateTimeOriginal",
              "CanonRaw:DateTimeOriginal"],
             ["ExifIFD:CreateDate", "IFD0:CreateDate"], ["XMP-exif:DateTimeOriginal"],
             ["XMP-photoshop:DateCreated"], ["XMP-xmp:CreateDate"], ["IPTC:DateCreated"],
             ["PNG:CreationTime"]]

# What a TIFF file is called, and is then read as.
TIFF_NAMES = ["tif", "dng", "cr2", "nef", "nrw", "arw", "sr2", "pef", "srw", "3fr", "fff", "iiq"]


def comparable(text):
    """The form in which the reader gives a text."""
    text = "".join(" " if c.isspace() else c for c in str(text) if c not in "\u00ad\0\ufeff")
    return " ".join(unicodedata.normalize("NFKC", text).split())


class Maker:
    """Makes the photographs. Files that only differ in their tags are copied from one."""

    def __init__(self, folder):
        self.folder = folder
        self.commands = []
        self.latin = set()

    def path(self, name):
        return self.folder / name

    def run(self, *command):
        result = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, text=True)
        if result.returncode:
            print(f"{' '.join(map(str, command))}: {result.stdout}", file=sys.stderr)

    def tag(self, path, arguments, options=()):
        self.commands.append([*options, "-q", "-m", "-overwrite_original", *arguments, str(path)])

    def write_tags(self):
        """One process for all files."""
        lines = "\n-execute\n".join("\n".join(command) for command in self.commands)
        subprocess.run(["exiftool", "-@", "-"], input=lines, text=True, stderr=subprocess.DEVNULL)
        self.commands = []

    def bases(self):
        base = self.path("base.jpg")
        self.run("convert", "-size", "8x8", "gradient:red-blue", base)
        for kind in ("png", "psd", "webp"):
            self.run("convert", base, "-strip", self.path("base." + kind))
        for order, name in (("LSB", "base_little.tif"), ("MSB", "base_big.tif")):
            self.run("convert", base, "-endian", order, self.path(name))
        self.run("heif-enc", base, "-o", self.path("base.heic"))
        self.run("avifenc", base, self.path("base.avif"))
        self.run("cjxl", base, self.path("base.jxl"), "--container=1")

    def copy(self, base, name):
        shutil.copy(self.path(base), self.path(name))
        return self.path(name)

    def texts(self, fields, text):
        for number, (_, tag, _) in enumerate(fields):
            yield f"{tag}={text} {number}"
            if tag in LISTS:
                yield f"{tag}={text} {number} more"

    def by_exiftool(self):
        containers = [("base.jpg", "jpg", ["II", "MM"]), ("base.png", "png", ["II", "MM"]),
                      ("base_little.tif", "tif", [None]), ("base_big.tif", "tiff", [None]),
                      ("base.psd", "psd", ["II", "MM"]), ("base.webp", "webp", ["II", "MM"]),
                      ("base.heic", "heic", ["II", "MM"]), ("base.avif", "avif", ["II", "MM"]),
                      ("base.jxl", "jxl", ["II", "MM"])]
        for base, kind, orders in containers:
            for order in orders:
                with_order = [f"-ExifByteOrder={order}"] if order else []
                for script, text in TEXTS.items():
                    path = self.copy(base, f"all_{script}_{order}.{kind}")
                    fields = EXIF + XMP + IPTC + COMMENT + (PNG if kind == "png" else [])
                    self.tag(path, [*with_order, "-IPTC:CodedCharacterSet=UTF8", DATES[0],
                                    *self.texts(fields, text)])
                for left_out in range(1, len(DATES) + 1):
                    path = self.copy(base, f"date_{left_out}_{order}.{kind}")
                    dates = "\n".join(DATES[left_out:] or ["-XMP-dc:Title=x"]).split("\n")
                    self.tag(path, [*with_order, *dates])
        latin = TEXTS["latin"]
        for base in ("base.jpg", "base_little.tif", "base_big.tif"):
            name = f"latin_{pathlib.Path(base).stem}{pathlib.Path(base).suffix}"
            path = self.copy(base, name)
            self.latin.add(path)
            self.tag(path, [*self.texts(EXIF + IPTC, latin)],
                     ["-charset", "exif=latin", "-charset", "iptc=latin"])
        for number, date in enumerate(["0000:00:00 00:00:00", "2001:00:00 00:00:00",
                                       "2001:02:00 00:00:00", "    :  :     :  :  "]):
            self.tag(self.copy("base.jpg", f"odd_date_{number}.jpg"),
                     [f"-ExifIFD:DateTimeOriginal#={date}", "-XMP-exif:DateTimeOriginal=2003"])
        self.write_tags()

    def large_packet(self):
        path = self.copy("base.jpg", "extended.jpg")
        self.tag(path, [f"-XMP-dc:Subject=tag number {n} of this photograph" for n in range(3000)])
        path = self.copy("base_big.tif", "large_packet.tif")
        self.tag(path, [f"-XMP-dc:Subject=tag number {n} of this photograph" for n in range(3000)])
        self.write_tags()

    def by_exiv2(self):
        for number, charset in enumerate(["Ascii", "Jis", "Unicode"]):
            for script in ("ascii", "japanese"):
                if (charset, script) == ("Ascii", "japanese"):
                    continue
                path = self.copy("base.jpg", f"exiv2_{charset}_{script}.jpg")
                text = TEXTS[script]
                commands = [f"set Exif.Photo.UserComment charset={charset} {text}",
                            f"set Exif.Image.ImageDescription {text} {number}",
                            f"add Iptc.Application2.Keywords {text}",
                            f"set Xmp.dc.title lang=de {text}", f"set Xmp.dc.subject {text}",
                            "set Exif.Photo.DateTimeOriginal 2001:02:03 04:05:06"]
                self.run("exiv2", *[f"-M{command}" for command in commands], path)

    def by_converters(self):
        """What other programs make of a photograph with all fields."""
        for script in TEXTS:
            photo = self.path(f"all_{script}_MM.jpg")
            for kind in ("png", "webp", "tif", "psd", "jpg"):
                self.run("convert", photo, self.path(f"convert_{script}.{kind}"))
            self.run("convert", photo, "-set", "Title", TEXTS[script], "-set", "comment",
                     "a comment", self.path(f"convert_text_{script}.png"))
            self.run("heif-enc", photo, "-o", self.path(f"heif_enc_{script}.heic"))
            self.run("avifenc", photo, self.path(f"avifenc_{script}.avif"))
            self.run("cwebp", "-quiet", "-metadata", "all", photo, "-o",
                     self.path(f"cwebp_{script}.webp"))
            self.run("cjxl", photo, self.path(f"cjxl_{script}.jxl"))

    def raw_formats(self):
        for script, text in TEXTS.items():
            for order, stem in (("little", f"all_{script}_None.tif"),
                                ("big", f"all_{script}_None.tiff")):
                for name in TIFF_NAMES[1:]:
                    self.copy(stem, f"raw_{order}_{script}.{name}")
            for order in "<>":
                side = "little" if order == "<" else "big"
                tiff = Tiff(order).text(0, 0x010F, text).text(0, 0x0110, text + " 1")
                tiff.text(1, 0x9003, "2001:02:03 04:05:06").text(1, 0xA434, text + " 2")
                mark = b"IIRO" if order == "<" else b"MMOR"
                self.path(f"own_{side}_{script}.orf").write_bytes(tiff.bytes(mark))
                if order == "<":
                    for kind in ("rw2", "rwl"):
                        self.path(f"own_{side}_{script}.{kind}").write_bytes(
                            tiff.bytes(b"IIU\0"))
                tiff.text(0, 0x010E, text + " 3").field(
                    1, 0x9286, UNDEFINED,
                    b"UNICODE\0" + text.encode("utf-16-le" if order == "<" else "utf-16-be"))
                tiff.field(0, 0x9C9E, BYTE, (text + ";x\0").encode("utf-16-le"))
                self.path(f"own_{side}_{script}.dng").write_bytes(tiff.bytes())
                self.path(f"far_{side}_{script}.tif").write_bytes(tiff.bytes(gap=200_000))
                self.path(f"type_{side}_{script}.tif").write_bytes(Tiff(order).field(
                    0, 0x013B, UTF8, text.encode() + b" 4\0").bytes())
                big = Tiff(order, big=True)
                big.directories = tiff.directories
                self.path(f"big_{side}_{script}.tif").write_bytes(big.bytes())
                image = Tiff(order)
                image.directories = (tiff.directories[0], {})
                exif = Tiff(order)
                exif.directories = (tiff.directories[1], {})
                packet = self.path("packet.xmp").read_bytes()
                self.path(f"own_{side}_{script}.cr3").write_bytes(
                    photo_writers.cr3(image.bytes(), exif.bytes(), packet))
            jpeg = self.path(f"all_{script}_II.jpg").read_bytes()
            self.path(f"own_{script}.raf").write_bytes(photo_writers.raf(jpeg))
            self.path(f"behind_{script}.jpg").write_bytes(
                photo_writers.with_segments_in_front(jpeg, 150_000))
            self.path(f"own_{script}.crw").write_bytes(photo_writers.crw(
                b"Canon", text.encode(), text.encode() + b" 1", 981173106))

    def sidecars(self):
        self.run("exiftool", "-q", "-tagsfromfile", self.path("all_greek_II.jpg"), "-xmp:all",
                 self.path("packet.xmp"))
        for script in TEXTS:
            source = self.path(f"all_{script}_II.jpg")
            for photo, name in (("base.jpg", f"beside_{script}.jpg.xmp"),
                                ("all_greek_None.tif", f"beside_{script}.xmp")):
                self.run("exiftool", "-q", "-tagsfromfile", source, "-xmp:all", self.path(name))
                kind = photo.rpartition(".")[2]
                self.copy(photo, f"beside_{script}.{kind}")

    def all(self):
        self.bases()
        self.by_exiftool()
        self.large_packet()
        self.by_exiv2()
        self.by_converters()
        self.sidecars()
        self.raw_formats()
        return self.latin


def answers_of_exiftool(paths, options=()):
    """By path, everything that it finds, with groups."""
    if not paths:
        return {}
    result = subprocess.run(
        ["exiftool", "-j", "-G1", "-a", "-m", "-q", "-q", *options, "-@", "-"],
        input="\n".join(map(str, paths)), stdout=subprocess.PIPE, text=True)
    return {entry["SourceFile"]: entry
            for entry in json.loads(result.stdout or "[]", parse_int=str, parse_float=str)}


def answers_of_reader(program, paths):
    output = subprocess.run([program], input=b"\0".join(os.fsencode(path) for path in paths) + b"\0",
                            check=True, stdout=subprocess.PIPE).stdout
    return {entry["path"]: entry for entry in map(json.loads, output.splitlines())}


def our_name(key):
    """Of a field that exiftool names so; None if it is none that is looked for."""
    group, _, name = key.partition(":")
    # It counts the places of IPTC, and has a name of its own for Exif in BigTIFF.
    group = re.sub("^IPTC[2-9]$", "IPTC", group).replace("ExifOffset", "ExifIFD")
    if group in ("IFD0", "IFD1", "IFD2", "ExifIFD", "SubIFD"):
        return next((ours for ours, _, theirs in EXIF if theirs == name), None)
    if group == "IPTC":
        return next((ours for ours, _, theirs in IPTC if theirs == name), None)
    if group == "CanonRaw":
        return {"Make": "CIFF Make", "Model": "CIFF Model",
                "UserComment": "CIFF Description"}.get(name)
    if group.startswith("XMP-"):
        found = re.match("(.*?)(-[a-z]{2}([-A-Z]{3})?)?$", key).group(1)
        found = re.sub("HierarchicalKeywords[1-6]$", "HierarchicalKeywords1", found)
        return next((ours for ours, _, theirs in XMP if theirs in (key, found)), None)
    return next((ours for ours, _, theirs in PNG + COMMENT if theirs == key), None)


def fields_of(entry):
    found = set()
    for key, value in entry.items():
        name = our_name(key)
        for text in value if isinstance(value, list) else [value]:
            if name and comparable(text):
                found.add((name, comparable(text)))
    return found


def date_of(text):
    """A date, of which missing parts are their least; None if it is none."""
    match = re.match(r"(\d{4})(?:[:-](\d\d))?(?:[:-](\d\d))?(?:[ T](\d\d):(\d\d)(?::(\d\d))?)?",
                     str(text))
    if not match or match.group(1) == "0000":
        return None
    year, month, day, *time = match.groups()
    return (f"{year}:{month if int(month or 0) else '01'}:{day if int(day or 0) else '01'} " +
            ":".join(part or "00" for part in time))


def shooting_date(entry, beside):
    for keys in DATE_KEYS:
        for source in (entry, beside):
            for key in keys:
                value = source.get(key)
                if key == "IPTC:DateCreated" and value:
                    value = f"{value} {source.get('IPTC:TimeCreated', '')}"
                if date_of(value or ""):
                    return date_of(value)
    return None


class Tally:
    """How many fields and dates are alike, by kind of file."""

    def __init__(self):
        self.counts = {}

    def add(self, path, ours, theirs):
        count = self.counts.setdefault(path.suffix, [0, 0])
        count[0] += len(ours & theirs)
        count[1] += len(ours | theirs)
        for name, text in sorted(ours - theirs):
            print(f"{path.name}: {name}: {text[:60]!r}: only the reader")
        for name, text in sorted(theirs - ours):
            print(f"{path.name}: {name}: {text[:60]!r}: only exiftool")

    def finish(self, file_count):
        print("\n| files | alike | of |\n| --- | ---: | ---: |")
        for kind, (alike, total) in sorted(self.counts.items()):
            print(f"| {kind} | {alike} | {total} |")
        alike = sum(count[0] for count in self.counts.values())
        total = sum(count[1] for count in self.counts.values())
        share = alike / max(total, 1)
        print(f"\n{file_count} files, {alike} of {total} fields and dates alike: {share:.2%}")
        return 0 if total and share >= LEAST_ALIKE else 1


def sidecar_of(path):
    for beside in (pathlib.Path(f"{path}.xmp"), path.with_suffix(".xmp")):
        if beside.exists():
            return beside
    return None


def compare(program, paths, latin):
    besides = {path: sidecar_of(path) for path in paths}
    # exiftool needs a module for what is compressed in them, which Debian lacks.
    sources = {path: path.with_name(path.stem.replace("cjxl", "all") + "_MM.jpg")
               for path in paths if path.name.startswith("cjxl_")}
    theirs = answers_of_exiftool([path for path in paths if path not in latin])
    theirs |= answers_of_exiftool([path for path in paths if path in latin],
                                  ["-charset", "exif=latin", "-charset", "iptc=latin"])
    theirs |= answers_of_exiftool(sorted({path for path in besides.values() if path}))
    ours = answers_of_reader(program, paths)
    tally = Tally()
    for path in paths:
        entry = theirs.get(str(sources.get(path, path)), {})
        if path in sources:
            entry = {key: value for key, value in entry.items()
                     if not key.startswith(("IPTC:", "File:"))}
        beside = theirs.get(str(besides[path]), {})
        expected = fields_of(entry)
        expected |= {(name.replace("XMP ", "Sidecar ", 1), text) for name, text in fields_of(beside)}
        found = ours[str(path)]
        have = {(name, comparable(text)) for name, text in found["fields"]}
        date = shooting_date(entry, beside)
        expected |= {("date", date)} if date else set()
        have |= {("date", found["date"])} if "date" in found else set()
        tally.add(path, have, expected)
    return tally.finish(len(paths))


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("folders", nargs="*", metavar="FOLDER", type=pathlib.Path)
    parser.add_argument("--program", default=ROOT / "build/bench/bench/photograph_fields",
                        help="the program of that name in bench/, built (default: %(default)s)")
    parser.add_argument("--keep", metavar="FOLDER", type=pathlib.Path,
                        help="make the photographs there, and leave them")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as scratch:
        folder = options.keep or pathlib.Path(scratch)
        folder.mkdir(parents=True, exist_ok=True)
        latin = Maker(folder).all() if not options.folders else set()
        paths = sorted(path for below in options.folders or [folder] for path in below.rglob("*")
                       if path.is_file() and path.suffix != ".xmp")
        return compare(options.program, paths, latin)


if __name__ == "__main__":
    sys.exit(main())
