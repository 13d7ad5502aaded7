#!/usr/bin/env python3
"""Makes what the fuzz targets start from: make_corpus.py FOLDER puts a folder for each target into FOLDER.

The plain texts lie in seeds/, the pictures among the drawing tests' fixtures; all that is binary, or has line ends that an
editor would mend, is made here.
"""
import glob
import io
import os
import shutil
import struct
import sys
import unittest.mock
import zipfile
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
PICTURES = os.path.join(HERE, "..", "gfx", "fixtures")


def archive(*entries):
    """Entries are (name, bytes, attributes, method)."""
    buffer = io.BytesIO()
    with zipfile.ZipFile(buffer, "w") as made:
        for name, data, attributes, method in entries:
            info = zipfile.ZipInfo(name, (2008, 1, 21, 21, 49, 8))
            info.external_attr, info.create_system, info.compress_type = attributes, 3, method
            made.writestr(info, data)
    return buffer.getvalue()


def plain(name, data=b"some text, some more text, some text", method=zipfile.ZIP_DEFLATED):
    return name, data, 0o100644 << 16, method


def link(name, target):
    return name, target.encode(), 0xA1ED0000, zipfile.ZIP_STORED


def large(*entries):
    """The sizes in both headers are marks, and stand in an extra field: the form of an entry of 4 GB and more."""
    with unittest.mock.patch("zipfile.ZIP64_LIMIT", 1):
        return archive(*entries)


def zips():
    file = archive(plain("Heron.acf"))
    fork = b"\0\5\x16\7\0\2\0\0" + bytes(16) + b"rest of a fork"
    return {
        "file": file,
        "stored": archive(plain("a file.txt", method=zipfile.ZIP_STORED)),
        "empty": archive(plain("nothing", b"")),
        "none": archive(),
        "folders": archive(("folder/", b"", 0o40755 << 16, 0), plain("folder/one"), plain("folder/two")),
        "link": archive(link("Current", "../A")),
        "link-then-file": archive(link("way", ".."), plain("way/out")),
        "absolute": archive(plain("/tmp/velaris-fuzz-out")),
        "upwards": archive(plain("../out"), plain("a/../../out")),
        "own-name": archive(plain(".velaris.part")),
        "fork": archive(plain("Heron.acf"), plain("__MACOSX/._Heron.acf", fork)),
        "no-fork": archive(plain("__MACOSX/._Heron.acf")),
        "packs-well": archive(plain("zeros", bytes(300_000))),
        "large": large(plain("Heron.acf")),
        "large-stored": large(plain("a file.txt", method=zipfile.ZIP_STORED)),
        "cut-short": file[:-30],
        "wrong-sum": file.replace(struct.pack("<I", zlib.crc32(b"some text, some more text, some text")), b"\1\2\3\4"),
    }


def picture(width, height, *chunks):
    """A PNG of any claim: the pixels are as many zeros as it wants rows of four bytes, and 1 for each row's filter."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = zlib.compress((b"\1" + bytes(min(width, 99) * 4)) * min(height, 99))
    parts = [(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)), *chunks]
    return b"\x89PNG\r\n\x1a\n" + b"".join(chunk(*part) for part in [*parts, (b"IDAT", rows), (b"IEND", b"")])


def pngs():
    return {
        "huge-claim": picture(30000, 30000),
        "words": picture(4, 4, (b"tEXt", b"Comment\0words"), (b"pHYs", bytes(9)), (b"tIME", b"\x07\xd8\1\x15\0\0\0")),
    }


def bmp(width, height, depth=24, compression=0, pixels=b"abc" * 40):
    head = struct.pack("<IiiHHIIiiII", 40, width, height, 1, depth, compression, len(pixels), 0, 0, 0, 0)
    return b"BM" + struct.pack("<IHHI", 54 + len(pixels), 0, 0, 54) + head + pixels


def bmps():
    return {"downwards": bmp(5, -4), "lowest": bmp(1, -2 ** 31), "wide": bmp(2 ** 20, 1),
            "swapped": b"BM" + struct.pack(">IHHI", 99, 0, 0, 54) + struct.pack(">IiiHHI", 40, 3, 3, 1, 24, 0) + bytes(80)}


def dds(width, height, name=b"DXT1", levels=0, blocks=bytes(range(240))):
    words = [124, 0xA1007, height, width, 0, 0, levels, *[0] * 11, 32, 4]
    return b"DDS " + struct.pack("<20I", *words) + name + bytes(40) + blocks


def ddss():
    return {"dxt3": dds(5, 3, b"DXT3"), "dxt5": dds(1, 7, b"DXT5", 3),
            "none": dds(0, 0), "long": dds(2 ** 20, 1)}


def answers():
    ok = b"HTTP/1.1 200 OK\r\nServer: x\r\nContent-Length: 5\r\nConnection: close\r\n\r\n"
    return {
        "plain": ok + b"hello",
        "too-much": ok + b"hello and more",
        "too-little": ok + b"he",
        "interim": b"HTTP/1.1 100 Continue\r\n\r\n" + ok + b"hello",
        "page": b"HTTP/1.1 404 Not Found\r\nContent-Length: 2\r\n\r\nno",
        "no-length": b"HTTP/1.0 200 OK\r\n\r\nhello",
        "odd-lengths": b"HTTP/1.1 200 OK\r\nContent-Length:  -7 \r\ncontent-length: 9223372036854775808\r\n\r\nx",
        "two-lengths": b"HTTP/1.1 200 OK\r\nContent-Length: 1\r\nContent-Length: 3\r\n\r\nabc",
        "line-feeds": b"HTTP/1.1 200 OK\nContent-Length: 1\n\nx",
        "no-reason": b"HTTP/1.1 200\r\nContent-Length: 1\r\n\r\nx",
        "bare": b"\r\n\r\nHTTP/1.1 200 OK\r\r\n\r\n",
    }


MADE = {
    "server_list": lambda: {"many": b"I\n820 version\nSERVERS\nBETA x\n" +
                            b"".join(b"SERVER h%d:1\n/\n|m\n" % n for n in range(1, 13))},
    "zip": zips, "png": pngs, "bmp": bmps, "dds": ddss, "http": answers,
    "scanner": lambda: {"other-line-ends": b"hlxst\nA\r820 version\rSERVERS\r\rSERVER host\r",
                        "numbers": b"bpqrs\ni" + struct.pack("<I", 900) + b"rest of the data",
                        "swapped": b"bpqrs\na" + struct.pack(">I", 900) + b"rest of the data"},
    "text": lambda: {"wrapped": b"d\0\0Good morning, captain.\nThe well-known road/way\r\n\tand back",
                     "digits": b"\xff\1\2 1234.5\xc2\xa1\xc3\xa9", "narrow": b"\1\0\1a b-c/d"},
}


def main(folder):
    for source in glob.glob(os.path.join(HERE, "seeds", "*")):
        shutil.copytree(source, os.path.join(folder, os.path.basename(source)), dirs_exist_ok=True)
    for target, make in MADE.items():
        os.makedirs(os.path.join(folder, target), exist_ok=True)
        for name, data in make().items():
            with open(os.path.join(folder, target, name), "wb") as out:
                out.write(data)
    for kind in ("png", "bmp", "dds"):
        for source in glob.glob(os.path.join(PICTURES, "*." + kind)):
            shutil.copy(source, os.path.join(folder, kind))


if __name__ == "__main__":
    main(sys.argv[1])
