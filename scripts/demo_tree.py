#!/usr/bin/env python3
"""The sample product of the demo: a small flight simulator, published by its maker in two successive releases.

    demo_tree.py publish 1|2 FOLDER BUILDER HOST   makes the release below FOLDER/web and names HOST as its server
    demo_tree.py compare 1|2 INSTALLED             tells in what an installed folder differs from the release
"""
import os
import random
import struct
import sys
import zlib

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "support"))
import folders
import release
from release import LINUX, MAC, WINDOWS

AIRCRAFT = ["Heron", "Kestrel", "Old Crow", "Swift Trainer", "Albatross 40", "Night Heron"]
REGIONS = {"Alps": (46, 8), "Fjords": (61, 6), "Islands": (-9, 160)}
LANGUAGES = ["English", "Deutsch", "Français"]
CHAPTERS = ["Welcome", "First flight", "Weather", "Instruments", "Night and fog", "Carrier landings"]


class Copy(release.Tree):
    """A reference copy. The same release is the same to the byte, whenever it is made."""

    def __init__(self, number):
        super().__init__()
        self.number = number

    def changes(self, path):
        """Whether the second release has this file in a new form: about one in nine."""
        return self.number == 2 and zlib.crc32(path.encode()) % 9 == 0

    def put(self, path, data, **facts):
        day = 23 if self.changes(path) else 22
        self.add(path, data, when=release.moment(2008, 1, day, 9, zlib.crc32(path.encode()) % 60, 30), **facts)

    def text(self, path, *lines, **facts):
        if self.changes(path):
            lines += ("Revised for the second release.",)
        self.put(path, "\n".join(lines) + "\n", **facts)

    def binary(self, path, length, head=b"", **facts):
        dice = random.Random(f"{path} {self.changes(path)}")
        # Half of it packs well, as in real data.
        self.put(path, head + dice.randbytes(length // 2) + bytes(length - length // 2), **facts)


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
    copy.binary("Linux/Velaris", 400_000, b"\x7fELF", mode=0o755)
    copy.link("Linux/start", "Velaris", systems={LINUX})
    copy.binary("Macintosh/Velaris.app/Contents/MacOS/Velaris", 200_000, b"\xca\xfe\xba\xbe")
    copy.binary("Windows/Velaris.exe", 200_000, release.windows_program(""))
    plugins = "All/Resources/plugins/"
    copy.text(plugins + "PluginAdminLin.vlx", "for Linux", systems={LINUX})
    copy.text(plugins + "PluginAdminWin.vlx", "for Windows", systems={WINDOWS})
    copy.text(plugins + "PluginAdminMac.vlx", "for the Macintosh", systems={MAC})
    for library in ("QRNK", "Panelkit"):
        copy.binary(plugins + library + ".so", 20_000, mode=0o755, systems={LINUX})
        copy.binary(plugins + library + ".dll", 20_000, systems={WINDOWS})
        copy.binary(plugins + library + ".shlb", 20_000, systems={MAC})


def product(number):
    copy = Copy(number)
    # The second release brings one aircraft and drops another, and a folder of manuals with it.
    for name in AIRCRAFT[:-1] if number == 1 else AIRCRAFT[1:]:
        write_aircraft(copy, name)
    for name, corner in REGIONS.items():
        write_scenery(copy, name, corner)
    write_resources(copy)
    write_programs(copy)
    if number == 1:
        for bulletin in range(9):
            copy.text(f"All/Instructions/Old bulletins/bulletin {bulletin + 1}.txt", "Superseded.")
    # The program itself is always new: that is what gives the installed folder its new name.
    copy.binary("Linux/Velaris", 400_000 + number, b"\x7fELF", mode=0o755)
    return copy


def publish(number, folder, builder, host):
    copy = product(number)
    size = sum(len(item.data) for item in copy.items.values())
    print(f"{len(copy.items)} files, {size / 1e6:.1f} MB")
    publisher = release.Publisher(builder, folder)
    publisher.last_catalogue = release.catalogue_path(folder, 90016 + number) if number == 2 else None
    made = publisher.publish(copy, release.name_of(90017 + number), 90017 + number)
    print(next(line for line in publisher.said.splitlines() if line.startswith(made.name + ": ")))
    publisher.announce(made, [host])


def compare(number, installed):
    wanted, found = folders.expected(product(number).installed()), folders.snapshot(installed)
    for path in sorted(path for path in wanted.keys() | found.keys() if not path.endswith("/")):
        if path not in wanted:
            print(f"only here:    {path}")
        elif path not in found:
            print(f"missing:      {path}")
        elif wanted[path][:2] != found[path][:2]:
            print(f"different:    {path}")


def main(words):
    if len(words) == 5 and words[0] == "publish" and words[1] in ("1", "2"):
        publish(int(words[1]), *words[2:])
    elif len(words) == 3 and words[0] == "compare" and words[1] in ("1", "2"):
        compare(int(words[1]), words[2])
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    try:
        main(sys.argv[1:])
    except RuntimeError as problem:
        sys.exit(f"demo_tree.py: {problem}")
