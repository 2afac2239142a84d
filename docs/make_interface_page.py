#!/usr/bin/env python3
"""Makes the manual page of the interface for C from the headers' own words.

Usage: make_interface_page.py VERSION PAGE HEADER...
"""

import pathlib
import re
import sys

COMMENT_OR_CODE = re.compile(r"/\*(.*?)\*/|((?:(?!/\*).)+)", re.DOTALL)
NOISE = re.compile(r"#\s*ifdef __cplusplus.*?(?:#\s*else(.*?))?#\s*endif[^\n]*|extern \"C\" \{"
                   r"| ?\bSEARCHSYSTEM_EXPORT\b|\s*SEARCHSYSTEM_SYMBOL\(\w+\)", re.DOTALL)


def escaped(text):
    return re.sub(r"(?m)^([.'])", r"\\&\1", text.replace("\\", r"\e").replace("-", r"\-"))


def paragraphs(comment):
    """The words of a comment; what is indented in it stays as it is."""
    lines = [re.sub(r"^ ?\* ?", "", line.strip()) if at else line.strip()
             for at, line in enumerate(comment.strip().split("\n"))]
    for block in re.split(r"\n\s*\n", "\n".join(lines)):
        if block.startswith("    "):
            yield "\n".join([".PP", ".nf", escaped(block), ".fi"])
        else:
            yield ".PP\n" + escaped(block)


def interface_of(header):
    """The code of a header without what serves the compiler, and its first comment."""
    text = pathlib.Path(header).read_text()
    text = re.sub(r"#if UINTPTR_MAX.*?#endif\n|#undef[^\n]*\n", "", text, flags=re.DOTALL)
    text = re.sub(r"#define SEARCHSYSTEM_LAYOUT_CHECK.*\n", "", text)
    text = re.sub(r"#if defined\(__GNUC__\).*?#endif\n", "", text, flags=re.DOTALL)
    text = re.sub(r"^#ifndef \w+\n#define \w+\n|#endif\s*$", "", text)
    text = NOISE.sub(lambda match: match[1] or "", text)
    text = re.sub(r'#include "[^"]*"\n', "", text)
    about, _, rest = text.partition("*/")
    rest = re.sub(r"#include <[^>]*>\n|^\}$", "", rest, flags=re.MULTILINE)
    return about.strip().removeprefix("/*"), re.sub(r"\n{3,}", "\n\n", rest).strip()


def section(header):
    name = pathlib.Path(header).name
    about, code = interface_of(header)
    yield f'.SH "<SEARCHSYSTEM/{name.upper()}>"'
    yield f".B #include <searchsystem/{name}>"
    yield from paragraphs(about)
    yield "\n".join([".PP", ".nf", escaped(code), ".fi"]) if code else ""


def main():
    version, page, *headers = sys.argv[1:]
    lines = [f'.TH SEARCHSYSTEM 3 "" "SearchSystem {version}" "Library Functions"', ".SH NAME",
             r"searchsystem \- search for images and documents", ".SH SYNOPSIS", ".nf",
             r"\fBcc program.c $(pkg\-config \-\-cflags \-\-libs searchsystem)\fR", ".fi"]
    for header in headers:
        if not header.endswith("/Symbol.h"):
            lines += section(header)
    lines += [".SH SEE ALSO", ".BR ssfind (1)", ""]
    pathlib.Path(page).write_text("\n".join(lines))


if __name__ == "__main__":
    main()
