"""Releases for the tests: reference copies held in memory, turned into a distribution by the real builder.

A file says itself which systems it is meant for when it is put into the tree. What an installed folder must hold
follows from that alone, so the programs' own rules are never used to judge the programs.
"""
import calendar
import dataclasses
import io
import os
import random
import stat
import struct
import subprocess
import zipfile

MAC, WINDOWS, LINUX = 1, 2, 3
EVERYONE = frozenset({MAC, WINDOWS, LINUX})
NOBODY = frozenset()
TOP_FOLDERS = {"All": EVERYONE, "Macintosh": {MAC}, "Windows": {WINDOWS}, "Linux": {LINUX}}


def name_of(number):
    return f"Velaris 9.00 Beta-{number % 100}"


OLD, MIDDLE, NEW = (name_of(number) for number in (90017, 90018, 90019))
# Made by every install, whatever the release holds.
OWN_FOLDERS = ["Output/FMS plans", "Output/logbooks", "Output/movies", "Output/situations", "Resources/preferences"]


def moment(year, month, day, hour=12, minute=0, second=0):
    """Seconds since the epoch of a date in UTC. Zips keep dates to two seconds, so use even ones."""
    return calendar.timegm((year, month, day, hour, minute, second))


@dataclasses.dataclass
class Item:
    data: bytes = b""
    target: str = None          # of a symbolic link
    mode: int = 0o644
    when: int = moment(2008, 1, 21)
    systems: frozenset = EVERYONE


def noise(length, seed=0):
    """Bytes that do not pack, the same for the same seed."""
    return random.Random(f"{seed} {length}").randbytes(length)


class Tree:
    """A reference copy: path -> Item, the path with its top folder ("All/...")."""

    def __init__(self, items=None):
        self.items = dict(items or {})

    def copy(self):
        return Tree({path: dataclasses.replace(item) for path, item in self.items.items()})

    def add(self, path, data, **facts):
        if isinstance(data, str):
            data = data.encode()
        facts.setdefault("systems", TOP_FOLDERS[path.split("/")[0]])
        self.items[path] = Item(data, **facts)
        return self

    def link(self, path, target, systems=EVERYONE):
        self.items[path] = Item(target=target, systems=systems)
        return self

    def remove(self, *paths):
        for path in paths:
            del self.items[path]
        return self

    def installed(self, system=LINUX):
        """What a folder holds after an install: path below the destination -> Item."""
        return {path.split("/", 1)[1]: item for path, item in self.items.items() if system in item.systems}

    def write(self, folder):
        """A whole reference copy."""
        lay_out(self.items, folder)
        # The builder's landmarks are folders too; the sample need not have files in all of them.
        for name in ("Aircraft", "Airfoils", "Instructions", "Output", "Resources/plugins", "Weapons",
                     "Custom Scenery"):
            os.makedirs(os.path.join(folder, "All", name), exist_ok=True)
        for name in TOP_FOLDERS:
            os.makedirs(os.path.join(folder, name), exist_ok=True)


def lay_out(items, folder):
    for path, item in items.items():
        full = os.path.join(folder, path)
        os.makedirs(os.path.dirname(full), exist_ok=True)
        if item.target is not None:
            os.symlink(item.target, full)
            continue
        with open(full, "wb") as out:
            out.write(item.data)
        os.chmod(full, item.mode)
        os.utime(full, (item.when, item.when))


def windows_program(text):
    """The least that passes for a Windows executable."""
    return b"MZ" + bytes(58) + struct.pack("<I", 64) + b"PE\0\0" + bytes(20) + text.encode()


def landmarks():
    """What the builder wants to see in any reference copy."""
    tree = Tree()
    tree.add("All/Resources/menus/English/Velaris.txt", "File\nAircraft\nLocation\n")
    tree.add("All/Resources/text/English/Velaris.txt", "Good morning, captain.\n")
    return tree


def sample():
    """A small product with one of everything that an install has to carry over."""
    tree = landmarks()
    tree.add("All/Aircraft/Heron/Heron.acf", bytes(range(256)) * 900)
    tree.add("All/Aircraft/Heron/airfoils/wing.afl", "lift 1.2\n" * 50)
    tree.add("All/Aircraft/Old Crow/Crow 2 (1956).acf", b"\0\r\n\x1a" * 700, when=moment(1999, 7, 4, 3, 2, 58))
    tree.add("All/Airfoils/NACA 2412.afl", "camber 2\n", when=moment(2007, 7, 1, 8))
    tree.add("All/Airfoils/flat plate.afl", "")
    tree.add("All/Instructions/Manual.pdf", noise(5000, 0))
    tree.add("All/Instructions/Landkärten/Flugpläne.txt", "Köln - Zürich\n")
    tree.add("All/Resources/sounds/wind.wav", noise(40000, 1))
    tree.add("All/Resources/bitmaps/sky.png", noise(1500, 2), mode=0o600)
    tree.add("All/Resources/scripts/check.sh", "#!/bin/sh\nexit 0\n", mode=0o755)
    tree.add("All/Weapons/rocket.wpn", "thrust 12\n", mode=0o444)
    tree.add("All/Custom Scenery/Airstrip/apt.txt", "runway 09 27\n")
    tree.add("All/Resources/plugins/QRNK.so", noise(900, "so"), mode=0o755, systems={LINUX})
    tree.add("All/Resources/plugins/QRNK.dll", noise(900, "dll"), systems={WINDOWS})
    tree.add("All/Resources/plugins/QRNK.shlb", noise(900, "shlb"), systems={MAC})
    tree.add("All/Resources/plugins/PluginAdminLin.vlx", "admin\n", systems={LINUX})
    tree.add("All/Resources/plugins/PluginAdminWin.vlx", "admin\n", systems={WINDOWS})
    tree.add("All/Resources/plugins/QRNK.framework/Versions/A/headers.txt", "one\n")
    tree.add("All/Resources/plugins/QRNK.framework/Versions/A/Resources/info.txt", "two\n")
    tree.link("All/Resources/plugins/QRNK.framework/Versions/Current", "A")
    tree.link("All/Resources/plugins/QRNK.framework/Resources", "Versions/Current/Resources")
    tree.add("Linux/Velaris", b"\x7fELF" + noise(60000, 6), mode=0o755)
    tree.link("Linux/start", "Velaris", systems={LINUX})
    tree.add("Macintosh/Velaris.app/Contents/MacOS/Velaris", noise(3000, 7), mode=0o644, systems={MAC})
    tree.add("Windows/Velaris.exe", windows_program("flies\n"))
    tree.add("All/Resources/Thumbs.db", "litter", systems=NOBODY)
    tree.add("All/Aircraft/Heron/Heron.bak", "litter", systems=NOBODY)
    tree.add("All/Resources/.hidden", "litter", systems=NOBODY)
    return tree


HERON = "All/Aircraft/Heron/"
LATIN = os.fsdecode(b"K\xf6ln 'quoted'.txt")           # no valid UTF-8


def history():
    """Three successive releases with every step that a file can take from one to the next."""
    first = sample()
    first.add("All/Instructions/Old charts/north.txt", "N\n").add("All/Instructions/Old charts/deep/south.txt", "S\n")
    first.add("All/Resources/comes back.txt", "as ever\n").add("All/Resources/moves.txt", "moved\n")
    first.add(HERON + "cockpit.txt", "one\n").add(HERON + "engine.txt", "same\n").add(HERON + "old.txt", "gone soon\n")
    first.add(HERON + "sounds/wind.txt", "wind one\n").link("All/Instructions/latest", "one")

    second = first.copy().remove("All/Resources/comes back.txt")
    second.add(HERON + "Heron.acf", b"second wing" * 5000, when=moment(2008, 6, 2))
    second.add("Linux/Velaris", b"\x7fELF second" + noise(50000), mode=0o755)

    third = second.copy().remove("All/Instructions/Old charts/north.txt", "All/Instructions/Old charts/deep/south.txt")
    third.remove("All/Custom Scenery/Airstrip/apt.txt", HERON + "old.txt")
    third.add("All/Resources/comes back.txt", "as ever\n")
    third.remove("All/Resources/moves.txt").add("Linux/Resources/moves.txt", "moved\n")
    third.add(HERON + "Heron.acf", b"third wing" * 6000, when=moment(2008, 7, 30))
    third.add(HERON + "cockpit.txt", "two\n").add(HERON + "sounds/wind.txt", "wind two\n")
    third.add("All/Weapons/rocket.wpn", "thrust 13\n", mode=0o444)
    third.add("All/Aircraft/Kestrel/Kestrel.acf", b"new" * 4000, when=moment(2008, 12, 24))
    third.add(f"All/Resources/{LATIN}", "umlaut\n").add("All/Airfoils/tiny.afl", "x")
    third.link("All/Resources/plugins/QRNK.framework/Versions/Current", "B")
    third.add("All/Resources/plugins/QRNK.framework/Versions/B/Resources/info.txt", "three\n")
    return first, second, third


def steps(old, new, system=LINUX):
    """What an update has to do: the paths to fetch, with their top folders, and the installed paths to delete."""
    have = old.installed(system)

    def is_there(path, item):
        before = have.get(path.split("/", 1)[1])
        return before is not None and (before.data, before.target) == (item.data, item.target)
    fetch = [path for path, item in new.items.items() if system in item.systems and not is_there(path, item)]
    return fetch, sorted(have.keys() - new.installed(system).keys())


@dataclasses.dataclass
class Release:
    name: str
    number: int
    tree: Tree
    folder: str                 # its folder on the web server

    def zip_path(self, path):
        return os.path.join(self.folder, path + ".zip")

    def catalogue(self):
        with zipfile.ZipFile(os.path.join(self.folder, "directory.txt.zip")) as archive:
            return archive.read("directory.txt")

    def set_catalogue(self, text):
        with open(os.path.join(self.folder, "directory.txt.zip"), "wb") as out:
            out.write(zipped("directory.txt", text))

    def kilobytes(self, paths):
        """Thousands of bytes to download and to install, each file cut to whole ones as the catalogue does."""
        down = sum(os.path.getsize(self.zip_path(path)) // 1000 for path in paths)
        # A link is measured as the file that it leads to.
        disk = sum(self.length(path) // 1000 for path in paths)
        return down, disk

    def length(self, path):
        item = self.tree.items[path]
        return 0 if item.target is not None else len(item.data)


def zipped(name, data, *more):
    """An archive of one file, or with `more` (name, data) behind it."""
    buffer = io.BytesIO()
    with zipfile.ZipFile(buffer, "w", zipfile.ZIP_DEFLATED) as archive:
        for entry in ((name, data), *more):
            archive.writestr(*entry)
    return buffer.getvalue()


def zipped_link(name, target):
    link = zipfile.ZipInfo(name)
    link.create_system, link.external_attr = 3, (stat.S_IFLNK | 0o755) << 16
    return zipped(link, target)


def server_list(name, servers, version=820, title="SERVERS"):
    """Text of a server list; `servers` are host:port or (host:port, folder)."""
    lines = ["I", f"{version} version", title, "", "FINAL Velaris 8.60", f"BETA {name}", "BETA_VERSION 90019"]
    for number, server in enumerate(servers, 1):
        host, folder = server if isinstance(server, tuple) else (server, "/beta/")
        lines += [f"SERVER {host}", folder, f"|Mirror {number}"]
    return "\n".join(lines + ["ENDOFLIST", "SERVER nowhere.example", "/", "|never"]) + "\n"


def catalogue_path(folder, number):
    """Where a publisher keeps the catalogue of a release: the history that the next one starts from."""
    return os.path.join(folder, f"directory-{number}.txt")


class Publisher:
    """Makes one release after the other below `web`/beta/, each with the history of those before."""

    def __init__(self, builder, folder):
        self.builder, self.folder = builder, folder
        self.web = os.path.join(folder, "web")
        self.last_catalogue = None
        self.said = ""              # by the builder, of the last one
        os.makedirs(os.path.join(self.web, "beta"), exist_ok=True)

    def publish(self, tree, name, number):
        source = os.path.join(self.folder, f"reference-{number}")
        tree.write(source)
        history = f"--old={self.last_catalogue}" if self.last_catalogue else "--first_release"
        base = os.path.join(self.web, "beta") + "/"
        run = subprocess.run(
            [self.builder, f"--src={source}/", f"--dst={base}", history, f"--version_number={number}",
             f"--version_name={name}", "--console"],
            env=builder_environment(self.folder), stdin=subprocess.DEVNULL, capture_output=True, timeout=300)
        if run.returncode != 0:
            raise RuntimeError(f"builder ended with {run.returncode}:\n"
                               f"{run.stdout.decode(errors='replace')}{run.stderr.decode(errors='replace')}")
        self.said = run.stdout.decode(errors="replace")
        release = Release(name, number, tree, os.path.join(base, name))
        self.last_catalogue = catalogue_path(self.folder, number)
        with open(self.last_catalogue, "wb") as out:
            out.write(release.catalogue())
        return release

    def announce(self, release, servers):
        with open(os.path.join(self.web, "serverlist.txt"), "w", encoding="utf-8") as out:
            out.write(server_list(release.name, servers))


def builder_environment(folder):
    """Nothing of the user's is read or written. A zip holds local time: builder and installer share one zone."""
    home = os.path.join(folder, "builder-home")
    os.makedirs(home, exist_ok=True)
    return {"PATH": os.environ["PATH"], "HOME": home, "TMPDIR": home, "XDG_CONFIG_HOME": home + "/config",
            "XDG_STATE_HOME": home + "/state", "TZ": ZONE}


ZONE = "CET-1CEST,M3.5.0,M10.5.0/3"  # a zone with summer time, told without the zone tables
