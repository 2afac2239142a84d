#!/usr/bin/env python3
"""A host in Python, by ctypes and a selector. Looks for one text in the names of files, is told to look
for another one as soon as something has been found, and prints all that it is given.

    python3 search.py FOLDER TEXT OTHER-TEXT
"""

import ctypes
import os
import selectors
import sys

platform = ctypes.CDLL("libsearchsystem-platform.so.0", ctypes.RTLD_GLOBAL)
plugin = ctypes.CDLL("libSearchSystem.so.0")
Report = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_int32)


class SearchPredicate(ctypes.Structure):
    _fields_ = [(name, kind) for names, kind in (
        ("nameKeyword contentKeyword modDateStart modDateEnd exifDateStart exifDateEnd", ctypes.c_void_p),
        ("searchExifText searchPDFText checkSubFolder isDistinct isAndSearch", ctypes.c_byte),
        ("fileList", ctypes.c_void_p), ("hostValue", ctypes.c_int32),
        ("searchFolder", ctypes.c_void_p), ("resultCallback", Report)) for name in names.split()]


platform.CFStringCreateWithFileSystemRepresentation.restype = ctypes.c_void_p
platform.CFStringGetCStringPtr.argtypes = [ctypes.c_void_p, ctypes.c_uint32]
platform.CFStringGetCStringPtr.restype = ctypes.c_char_p
UTF8 = 0x08000100


def string(text):
    return platform.CFStringCreateWithFileSystemRepresentation(None, os.fsencode(text))


def report(path, state):
    global other, is_over
    if state == 1:
        print(os.fsdecode(platform.CFStringGetCStringPtr(path, UTF8)))
        if other:
            plugin.SS_SearchCancel()  # The end is reported nevertheless, and only then can another start.
    elif other:
        search.nameKeyword, other = string(other), None
        plugin.SS_SearchStart(ctypes.byref(search))
    else:
        is_over = True


folder, text, other = sys.argv[1:]
is_over = False
search = SearchPredicate(nameKeyword=string(text), searchFolder=string(folder), checkSubFolder=1,
                         isAndSearch=1, resultCallback=Report(report))
selector = selectors.DefaultSelector()
selector.register(platform.PFMainLoopGetDescriptor(), selectors.EVENT_READ)
plugin.SS_SearchStart(ctypes.byref(search))
while not is_over:
    selector.select()
    platform.PFMainLoopDispatch()
