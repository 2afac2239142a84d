#!/usr/bin/env python3
"""The layers hold: what each folder may include, and where system headers may occur."""

import os
import pathlib
import re
import subprocess
import sys

SEARCH = "FileSharchFunction/SearchSystem"
LAYERS = [SEARCH, "hosts", "pdf_reader", "streams", "platform/foundation", "platform/metadata",
          "platform/imagetag", "platform/content", "readers", "examples", "tests", "testing", "bench",
          "fuzz", "faults"]

# What each layer may include besides itself; tests and the like may include anything.
ALLOWED = {
    "hosts": {SEARCH + "/SearchSystem.h", "platform/content/Content.h",
              "platform/foundation/CoreFoundation.h", "platform/foundation/FilePackage.h",
              "platform/foundation/LocalTime.h", "platform/foundation/MainLoop.h",
              "platform/foundation/Version.h",
              "platform/imagetag/ShootingDate.h", "platform/metadata/MetadataIndex.h"},
    SEARCH: {"pdf_reader", "streams", "platform/foundation", "platform/metadata",
             "platform/imagetag", "platform/content"},
    "pdf_reader": {"streams", "platform/foundation/ASCIIText.h",
                   "platform/foundation/CoreFoundation.h", "platform/foundation/NSString.h",
                   "platform/foundation/Ref.h",
                   "platform/foundation/StringEncoding.h", "platform/foundation/TextPattern.h"},
    "streams": set(),
    "platform/foundation": set(),
    "platform/metadata": {"platform/foundation"},
    "platform/imagetag": {"platform/foundation"},
    "platform/content": {"platform/foundation", "readers/ComparedCharacters.h",
                         "readers/ReadResult.h", "readers/ReaderProtocol.h"},
    "readers": set(),
    "examples": set(),
}

# Layers, and single files of others, that may include system and third-party headers.
SYSTEM_HEADERS_IN = {"hosts", "platform/foundation", "platform/metadata", "platform/imagetag",
                     "platform/content", "readers", "examples"}
SYSTEM_HEADERS_IN_FILES = {"pdf_reader/VectorBytes.h": {"emmintrin.h"},
                           "streams/FileFunctions.cpp": {"fcntl.h", "stdio_ext.h", "sys/stat.h",
                                                         "unistd.h"}}

STANDARD = set("""
algorithm any array atomic barrier bit bitset charconv chrono cmath compare complex concepts
condition_variable coroutine deque exception execution filesystem format forward_list fstream
functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list
locale map memory memory_resource mutex new numbers numeric optional ostream queue random ranges
ratio regex scoped_allocator semaphore set shared_mutex source_location span sstream stack
stdexcept stop_token streambuf string string_view syncstream system_error thread tuple type_traits
typeindex typeinfo unordered_map unordered_set utility valarray variant vector version
cassert cctype cerrno cfenv cfloat cinttypes climits clocale csetjmp csignal cstdarg cstddef
cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype
assert.h ctype.h errno.h float.h inttypes.h limits.h locale.h math.h setjmp.h signal.h stdarg.h
stdbool.h stddef.h stdint.h stdio.h stdlib.h string.h time.h uchar.h wchar.h wctype.h
""".split())

INCLUDE = re.compile(r'^\s*#\s*include\s*(<[^>]*>|"[^"]*")', re.MULTILINE)


def layer_of(path):
    return next((layer for layer in LAYERS if path.startswith(layer + "/")), None)


def is_allowed(layer, included):
    if layer_of(included) == layer:
        return True
    return any(included == name or included.startswith(name + "/") for name in ALLOWED[layer])


def faults_of(path):
    layer = layer_of(path)
    if layer is None:
        yield f"{path}: stands in no known layer"
        return
    if layer not in ALLOWED:
        return
    text = pathlib.Path(path).read_text()
    for match in INCLUDE.finditer(text):
        name = match.group(1)[1:-1]
        if match.group(1)[0] == '"':
            # Public headers include each other by where they stand to one another.
            beside = os.path.normpath(os.path.join(os.path.dirname(path), name))
            if "extern \"C\" {" in text and os.path.isfile(beside):
                name = beside
            if not pathlib.Path(name).is_file():
                yield f"{path}: {name} is not a path from the project's root"
            elif not is_allowed(layer, name):
                yield f"{path}: {layer} must not include {name}"
        elif name not in STANDARD and layer not in SYSTEM_HEADERS_IN:
            if name not in SYSTEM_HEADERS_IN_FILES.get(path, set()):
                yield f"{path}: <{name}> is not of the standard library"


def main():
    listed = subprocess.run(["git", "ls-files", "--", "*.h", "*.c", "*.cpp"], check=True,
                            capture_output=True, text=True).stdout.split("\n")
    sources = [path for path in listed if path]
    faults = [fault for path in sources for fault in faults_of(path)]
    print("\n".join(faults) if faults else f"{len(sources)} files keep to their layers")
    return 1 if faults or not sources else 0


if __name__ == "__main__":
    sys.exit(main())
