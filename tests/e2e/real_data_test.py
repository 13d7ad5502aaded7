"""Releases with everything that real data brings: built, installed, updated over and back again, to the byte."""
import dataclasses
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import folders
import installer
import release
from release import LINUX

LONG = "n" * 251                    # with ".zip" behind it the longest name that a disk holds
FIRST_DAY = release.moment(1979, 12, 31, 23)        # 1980-01-01 in the zone of the tests: what a zip can hold
# In a request some of these end the path, are a code, or break the line.
ODD_NAMES = ["100%", "50%41.txt", "%", "N#1", "what;now=1", "two  blanks, +&'([{~!=@$^,;.txt", "del\x7f",
             "Ä" * 123 + ".txt", "-dash", LONG]
# What stands at a path below All/Resources/ in the one release and in the other: text, ("link", target), a list of the
# files in a folder, or None.
DATA = {
    "flat": ("a file", ["now.txt", "in/deep.txt"]),
    "deep": (["in/er/one.txt", "two.txt"], "a file"),
    "linked": (("link", "real"), ["info.txt", "more.txt"]),
    "solid": (["info.txt", "more.txt"], ("link", "real")),
    "real": (["info.txt", "more.txt"], ["info.txt", "more.txt"]),
    "file to link": ("a file", ("link", "flat")),
    "turned link": (("link", "real"), ("link", "real/info.txt")),
    "to nowhere": (("link", "not/there"), ("link", "gone")),
    "up and back": (("link", ".."), ["inside.txt"]),
    "filled": ("", "no longer empty"),
    "emptied": ("soon empty", ""),
    "cut to nothing": ("9" * 999, "1" * 1000),
    "Case.txt": ("spelling", None),
    "CASE.txt": (None, "spelling"),
    "Folder": (["x.txt"], None),
    "folder": (None, ["x.txt"]),
    "FILE 0 0 1": (["DIR x/GONE"], ["DIR x/GONE", "ENDOFLIST"]),
    LONG[:200]: ([LONG[:150]], [LONG[:150], "and another"]),
    "goes": ("gone later", None),
    "stays": ("as ever", "as ever"),
    **{name: (f"one, {name}", f"two, {name}") for name in ODD_NAMES},
}


def tree_of(side):
    tree = release.landmarks()
    for name, forms in DATA.items():
        path, form = "All/Resources/" + name, forms[side]
        if isinstance(form, tuple):
            tree.link(path, form[1])
        elif isinstance(form, list):
            for inner in form:
                tree.add(f"{path}/{inner}", f"{inner} of the folder\n")
        elif form is not None:
            tree.add(path, form)
    top = ("All", "Linux")[side]                    # moved, as it is and with other content
    tree.add(f"{top}/Resources/moves.txt", "moved\n").add(f"{top}/Resources/moves on.txt", f"moved from {top}\n")
    inner = release.zipped("inner.txt", b"packed twice")
    tree.add("All/Resources/packed", f"beside its zip {side}\n").add("All/Resources/packed.zip", inner)
    tree.add("All/Resources/twice.zip", release.zipped("packed.zip", inner * (side + 1)))
    tree.add("All/Resources/old.txt", f"old {side}", when=release.moment(1971, 3, 4))
    tree.add("All/Resources/locked.txt", f"read only {side}", mode=0o444)
    return tree.add("All/Resources/tool", f"runs {side}", mode=(0o755, 0o700)[side])


class RealDataTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        there, back = tree_of(0), tree_of(1)
        cls.publisher, cls.releases = installer.publish(
            cls, there, back,
            there)
        cls.server = installer.nginx_for(cls, cls.publisher, cls.releases[0])

    def setUp(self):
        super().setUp()
        self.host = self.server.address

    def run_to(self, made, where, *options, **how):
        self.publisher.announce(made, [self.host])
        before = len(self.server.requests())
        outcome = self.install("--pref:_rename_folder=0", *options, dest=where, **how)
        return outcome, self.server.requests()[before:]

    def bring_to(self, made, where):
        _, asked = self.run_to(made, where, "--quiet")
        self.assertEqual([one for one in asked if one[0] != 200], [])
        items = {path: dataclasses.replace(item, when=max(item.when, FIRST_DAY))
                 for path, item in made.tree.installed(LINUX).items()}
        self.assert_installed(items, where)
        outcome, asked = self.run_to(made, where)
        self.assertIn("Your copy of Velaris is already the latest version.", outcome.out)
        self.assertEqual(len(asked), 2, "beside the list and the catalogue there was nothing to fetch")
        self.assert_installed(items, where)

    def test_every_form_turns_into_every_other_and_back(self):
        ways = {"there and back": (0, 1, 2), "back over one": (0, 2), "from the middle": (1, 2)}
        for way, stations in ways.items():
            where = os.path.join(self.folder, way)
            for station in stations:
                with self.subTest(way=way, station=station):
                    self.bring_to(self.releases[station], where)

    def test_paths_longer_than_the_family_bears(self):
        """Its programs take paths of 499 bytes. Files are reached from the destination, which may lie deeper."""
        made = self.releases[1]
        longest = max(len(os.fsencode(path)) for path in made.tree.installed())
        room = 499 - longest - len(self.folder) - 2
        self.bring_to(made, os.path.join(self.folder, "d" * room))
        beyond = os.path.join(self.folder, "d" * (room + 1), "e" * 100)
        for release_there in (self.releases[0], made, self.releases[2]):
            self.bring_to(release_there, beyond)

    def test_folder_that_the_user_moved_and_linked_inside_his_copy_goes_on_there(self):
        made = self.releases[0]
        self.bring_to(made, self.dest)
        own = os.path.join(self.dest, "Resources/real")
        os.rename(own, os.path.join(self.dest, "Resources/mine"))
        os.symlink("mine", own)
        os.unlink(os.path.join(self.dest, "Resources/mine/info.txt"))
        self.run_to(made, self.dest)
        have = folders.snapshot(self.dest)
        self.assertEqual(have["Resources/real"], ("link", "mine", 0, 0))
        self.assertIn("Resources/mine/info.txt", have)


if __name__ == "__main__":
    installer.main()
