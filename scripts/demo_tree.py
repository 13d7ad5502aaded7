#!/usr/bin/env python3
"""The sample product of the demo: a small flight simulator's folder, as its maker keeps it.

    demo_tree.py make 1|2 FOLDER         writes the reference copy of the first or the second release
    demo_tree.py compare FOLDER REFERENCE    tells in what an installed folder differs from a reference copy
"""
import datetime
import filecmp
import os
import random
import struct
import sys
import zlib

AIRCRAFT = ["Heron", "Kestrel", "Old Crow", "Swift Trainer", "Albatross 40", "Night Heron"]
REGIONS = {"Alps": (46, 8), "Fjords": (61, 6), "Islands": (-9, 160)}
LANGUAGES = ["English", "Deutsch", "Français"]
CHAPTERS = ["Welcome", "First flight", "Weather", "Instruments", "Night and fog", "Carrier landings"]


class Copy:
    """A reference copy being written. The same release is the same to the byte, whenever it is made."""

    def __init__(self, folder, release):
        self.folder, self.release = folder, release
        self.dice = None

    def changes(self, path):
        """Whether the second release has this file in a new form: about one in nine."""
        return self.release == 2 and zlib.crc32(path.encode()) % 9 == 0

    def put(self, path, data, executable=False):
        full = os.path.join(self.folder, path)
        os.makedirs(os.path.dirname(full), exist_ok=True)
        with open(full, "wb") as out:
            out.write(data if isinstance(data, bytes) else data.encode())
        os.chmod(full, 0o755 if executable else 0o644)
        edition = 2 if self.changes(path) else 1
        moment = datetime.datetime(2008, 1, 21 + edition, 9, zlib.crc32(path.encode()) % 60, 30).timestamp()
        os.utime(full, (moment, moment))

    def text(self, path, *lines):
        if self.changes(path):
            lines += ("Revised for the second release.",)
        self.put(path, "\n".join(lines) + "\n")

    def binary(self, path, length, head=b"", **facts):
        dice = random.Random(f"{path} {self.changes(path)}")
        # Half of it packs well, as in real data.
        self.put(path, head + dice.randbytes(length // 2) + bytes(length - length // 2), **facts)

    def link(self, path, target):
        full = os.path.join(self.folder, path)
        os.makedirs(os.path.dirname(full), exist_ok=True)
        os.symlink(target, full)


def picture(width, height, colour):
    """A PNG of one colour with a soft shade downwards."""
    rows = b"".join(b"\0" + bytes(min(255, part + row) for part in colour) * width for row in range(height))

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b"")


def write_aircraft(copy, name):
    base = f"All/Aircraft/{name}/"
    copy.binary(base + f"{name}.acf", 90_000, b"I900")
    copy.text(base + "About.txt", f"The {name}.", "Stall 42 kt, cruise 110 kt, ceiling 14,000 ft.")
    copy.text(base + "Checklist.txt", "Fuel on", "Flaps 10", "Trim set", "Lights on")
    for view in ("front", "side", "panel"):
        colour = [40 + zlib.crc32((name + view + part).encode()) % 150 for part in "rgb"]
        copy.put(base + f"cockpit/{view}.png", picture(96, 64, colour))
    for number in range(8):
        copy.binary(base + f"objects/part {number + 1}.obj", 6_000)
    for sound in ("engine", "gear", "flaps"):
        copy.binary(base + f"sounds/{sound}.wav", 30_000, b"RIFF")


def write_scenery(copy, name, corner):
    base = f"All/Custom Scenery/{name}/"
    copy.text(base + "library.txt", "A", "800", "LIBRARY")
    for north in range(4):
        for east in range(4):
            latitude, longitude = corner[0] + north, corner[1] + east
            copy.binary(base + f"Earth nav data/{latitude // 10 * 10:+03d}/{latitude:+03d}{longitude:+04d}.dsf", 24_000)
    for number in range(10):
        copy.binary(base + f"objects/house {number + 1}.obj", 3_000)
        copy.put(base + f"textures/ground {number + 1}.png", picture(64, 64, [90, 100 + number * 8, 60]))


def write_resources(copy):
    for language in LANGUAGES:
        copy.text(f"All/Resources/menus/{language}/Velaris.txt", "File", "Aircraft", "Location", "View")
        copy.text(f"All/Resources/text/{language}/Velaris.txt", "Good morning, captain.")
        for number, chapter in enumerate(CHAPTERS):
            copy.text(f"All/Instructions/{language}/{number + 1} {chapter}.txt", chapter, "=" * len(chapter),
                      "Read this before you fly.")
    for number in range(30):
        copy.text(f"All/Airfoils/NACA {2400 + number}.afl", "I", "700 Version", f"camber {number}", "lift 1.2")
    for name in ("day", "dusk", "night", "storm"):
        copy.put(f"All/Resources/bitmaps/sky/{name}.png", picture(128, 64, [20, 60, 120]))
    for number in range(12):
        copy.text(f"All/Weapons/rocket {number + 1}.wpn", f"thrust {number * 3 + 9}")


def write_programs(copy):
    copy.binary("Linux/Velaris", 400_000, b"\x7fELF", executable=True)
    copy.link("Linux/start", "Velaris")
    copy.binary("Macintosh/Velaris.app/Contents/MacOS/Velaris", 200_000, b"\xca\xfe\xba\xbe")
    header = b"MZ" + bytes(58) + struct.pack("<I", 64) + b"PE\0\0" + bytes(20)
    copy.binary("Windows/Velaris.exe", 200_000, header)
    plugins = "All/Resources/plugins/"
    copy.text(plugins + "PluginAdminLin.vlx", "for Linux")
    copy.text(plugins + "PluginAdminWin.vlx", "for Windows")
    copy.text(plugins + "PluginAdminMac.vlx", "for the Macintosh")
    for library in ("QRNK", "Panelkit"):
        for ending in ("so", "dll", "shlb"):
            copy.binary(plugins + f"{library}.{ending}", 20_000, executable=ending == "so")


def make(folder, release):
    copy = Copy(folder, release)
    # The second release brings one aircraft and drops another, and a folder of manuals with it.
    for name in AIRCRAFT[:-1] if release == 1 else AIRCRAFT[1:]:
        write_aircraft(copy, name)
    for name, corner in REGIONS.items():
        write_scenery(copy, name, corner)
    write_resources(copy)
    write_programs(copy)
    if release == 1:
        for number in range(9):
            copy.text(f"All/Instructions/Old bulletins/bulletin {number + 1}.txt", "Superseded.")
    # The program itself is always new: that is what gives the installed folder its new name.
    copy.binary("Linux/Velaris", 400_000 + release, b"\x7fELF", executable=True)
    os.makedirs(os.path.join(folder, "All", "Output"), exist_ok=True)
    files = [os.path.join(here, name) for here, _, names in os.walk(folder) for name in names]
    size = sum(os.path.getsize(path) for path in files if not os.path.islink(path))
    print(f"{len(files)} files, {size / 1e6:.1f} MB")


def files_below(folder):
    return {os.path.relpath(os.path.join(here, name), folder) for here, _, names in os.walk(folder) for name in names}


def is_for_others(path):
    """Plug-ins of other systems lie among the common files."""
    return path.startswith("Resources/plugins/") and path.endswith((".dll", ".shlb", "Win.vlx", "Mac.vlx"))


def compare(folder, reference):
    wanted = {}
    for top in ("All", "Linux"):
        for path in files_below(os.path.join(reference, top)):
            if not is_for_others(path):
                wanted[path] = os.path.join(reference, top, path)
    found = files_below(folder)
    for path in sorted(wanted.keys() | found):
        if path not in wanted:
            print(f"only here:    {path}")
        elif path not in found:
            print(f"missing:      {path}")
        elif not filecmp.cmp(wanted[path], os.path.join(folder, path), shallow=False):
            print(f"different:    {path}")


def main(words):
    if len(words) == 3 and words[0] == "make" and words[1] in ("1", "2"):
        make(words[2], int(words[1]))
    elif len(words) == 3 and words[0] == "compare":
        compare(words[1], words[2])
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main(sys.argv[1:])
