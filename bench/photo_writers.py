"""Writers of small photographs: TIFF structures, and the containers that no program at hand writes."""

import struct

ASCII, BYTE, SHORT, LONG, UNDEFINED, IFD8, UTF8 = 2, 1, 3, 4, 7, 18, 129
EXIF_DIRECTORY = 0x8769


class Tiff:
    """A TIFF or BigTIFF structure of two directories: that of the image, 0, and that of Exif, 1."""

    def __init__(self, order="<", big=False):
        self.order, self.big = order, big
        self.directories = ({}, {})

    def field(self, directory, tag, kind, value):
        self.directories[directory][tag] = (kind, value)
        return self

    def text(self, directory, tag, text):
        return self.field(directory, tag, ASCII, text.encode() + b"\0")

    def _pack(self, layout, *numbers):
        return struct.pack(self.order + layout, *numbers)

    def _directory(self, fields, begin):
        """Its bytes, with the values behind the entries."""
        count, entry, offset = ("Q", "HHQ", "Q") if self.big else ("H", "HHL", "L")
        room = struct.calcsize("=" + offset)
        size = struct.calcsize("=" + count) + len(fields) * (
            struct.calcsize("=" + entry) + room) + room
        entries, values = self._pack(count, len(fields)), b""
        for tag, (kind, value) in sorted(fields.items()):
            width = {SHORT: 2, LONG: 4, IFD8: 8}.get(kind, 1)
            place = value.ljust(room, b"\0")
            if len(value) > room:
                place = self._pack(offset, begin + size + len(values))
                values += value + b"\0" * (len(value) % 2)
            entries += self._pack(entry, tag, kind, len(value) // width) + place
        return entries + self._pack(offset, 0) + values

    def bytes(self, mark=None, gap=0):
        """The structure, with another mark, or with this many bytes before its directories."""
        head = b"II" if self.order == "<" else b"MM"
        begin = (16 if self.big else 8) + gap
        head += self._pack("HHHQ", 43, 8, 0, begin) if self.big else self._pack("HL", 42, begin)
        if mark:
            head = mark + head[len(mark):]
        head += b"\0" * gap
        main, exif = dict(self.directories[0]), self.directories[1]
        if not exif:
            return head + self._directory(main, begin)
        pointer = (IFD8, "Q") if self.big else (LONG, "L")
        main[EXIF_DIRECTORY] = (pointer[0], self._pack(pointer[1], 0))
        exif_begin = begin + len(self._directory(main, begin))
        main[EXIF_DIRECTORY] = (pointer[0], self._pack(pointer[1], exif_begin))
        return head + self._directory(main, begin) + self._directory(exif, exif_begin)


def jpeg_segment(marker, content):
    return struct.pack(">BBH", 0xFF, marker, len(content) + 2) + content


def with_segments_in_front(jpeg, size):
    """A JPEG file whose own segments come behind this many bytes of others."""
    filler = b"".join(jpeg_segment(0xE2, b"x" * 60000) for _ in range(size // 60000 + 1))
    return jpeg[:2] + filler + jpeg[2:]


def raf(jpeg):
    header = b"FUJIFILMCCD-RAW 0201FF383501X-T0".ljust(84, b"\0")
    header += struct.pack(">LL", 160, len(jpeg))
    return header.ljust(160, b"\0") + jpeg


def box(kind, content):
    return struct.pack(">L4s", len(content) + 8, kind) + content


def cr3(image, exif, packet):
    canon = bytes.fromhex("85c0b687820f11e08111f4ce462b6a48")
    xmp = bytes.fromhex("be7acfcb97a942e89c71999491e3afac")
    return (box(b"ftyp", b"crx \0\0\0\1crx isom") +
            box(b"moov", box(b"uuid", canon + box(b"CNCV", b"CanonCR3_001/00.09.00/00.00.00") +
                             box(b"CMT1", image) + box(b"CMT2", exif))) +
            box(b"uuid", xmp + packet) + box(b"mdat", b"image"))


def _heap(records):
    data, directory = b"", struct.pack("<H", len(records))
    for tag, value in records:
        directory += struct.pack("<HLL", tag, len(value), len(data))
        data += value + b"\0" * (len(value) % 2)
    return data + directory + struct.pack("<L", len(data))


def crw(maker, model, comment, seconds):
    camera = _heap([(0x080A, maker + b"\0" + model + b"\0")])
    properties = _heap([(0x2807, camera), (0x0805, comment.ljust(256, b"\0")),
                        (0x180E, struct.pack("<LLL", seconds, 0, 0))])
    heap = _heap([(0x300A, properties)])
    return struct.pack("<2sL8sLLL", b"II", 26, b"HEAPCCDR", 0x10002, 0, 0) + heap


def iptc(record, number, value):
    return struct.pack(">BBBH", 0x1C, record, number, len(value)) + value
