"""Installs and updates against nginx: what lies in the folder afterwards, to the byte, link, mode and date."""
import dataclasses
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import folders
import installer
import release
from release import LINUX, MAC, WINDOWS

OLD, MIDDLE, NEW = "Velaris 9.00 Beta-17", "Velaris 9.00 Beta-18", "Velaris 9.00 Beta-19"
HERON = "All/Aircraft/Heron/Heron.acf"


def first():
    tree = release.sample()
    tree.add("All/Instructions/Old charts/north.txt", "N\n").add("All/Instructions/Old charts/deep/south.txt", "S\n")
    tree.add("All/Resources/comes back.txt", "as ever\n").add("All/Resources/moves.txt", "moved\n")
    return tree


def second(tree):
    tree = tree.copy()
    tree.add(HERON, b"second wing" * 5000, when=release.moment(2008, 6, 2))
    tree.remove("All/Resources/comes back.txt")
    tree.add("Linux/Velaris", b"\x7fELF second" + release.noise(50000), mode=0o755)
    return tree


def third(tree):
    tree = tree.copy()
    tree.add(HERON, b"third wing" * 6000, when=release.moment(2008, 7, 30))
    tree.add("All/Aircraft/Kestrel/Kestrel.acf", b"new" * 4000, when=release.moment(2008, 12, 24))
    tree.add("All/Resources/comes back.txt", "as ever\n")
    tree.remove("All/Instructions/Old charts/north.txt", "All/Instructions/Old charts/deep/south.txt")
    tree.remove("All/Custom Scenery/Airstrip/apt.txt")
    tree.remove("All/Resources/moves.txt").add("Linux/Resources/moves.txt", "moved\n")
    tree.link("All/Resources/plugins/QRNK.framework/Versions/Current", "B")
    tree.add("All/Resources/plugins/QRNK.framework/Versions/B/Resources/info.txt", "three\n")
    return tree


class InstallTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        a = first()
        b = second(a)
        c = third(b)
        cls.publisher, (cls.old, cls.middle, cls.new) = installer.publish(
            cls, (a, OLD, 90017), (b, MIDDLE, 90018), (c, NEW, 90019))

    def setUp(self):
        super().setUp()
        self.server = installer.nginx_for(self, self.publisher, self.new)
        self.host = self.server.address

    def fetched(self):
        """What was asked for besides the list and the catalogue."""
        base = f"/beta/{NEW}/"
        asked = self.server.requests()
        self.assertEqual([one for one in asked if one[0] != 200], [])
        self.assertEqual(asked[:2], [(200, "/serverlist.txt"), (200, base + "directory.txt.zip")])
        return sorted(path.removeprefix(base).removesuffix(".zip") for _, path in asked[2:])

    def test_fresh_install_is_the_release_and_bears_its_name(self):
        self.install("--quiet")
        where = os.path.join(os.path.dirname(self.dest), NEW)
        self.assert_installed(self.new.tree.installed(), where)
        self.assertEqual(os.listdir(os.path.dirname(self.dest)), [NEW])
        self.assertEqual(self.fetched(), sorted(path for path, item in self.new.tree.items.items()
                                                if LINUX in item.systems))
        self.assertEqual(os.listdir(self.desk.tmp), [], "the run's temporary folder is still there")
        self.assertEqual(self.desk.preferences()["_dest_dir_path"], where + "/")

    def test_second_run_remembers_the_folder_and_touches_nothing(self):
        self.install()
        where = os.path.join(os.path.dirname(self.dest), NEW)
        before = folders.snapshot(where)
        count = len(self.server.requests())
        outcome = self.install(dest=False)
        self.assertIn("Your copy of Velaris is already the latest version.", outcome.out)
        self.assertEqual(len(self.server.requests()), count + 2)
        self.assert_same(before, where)

    def test_update_takes_stale_files_without_a_question_and_leaves_the_users_own(self):
        self.place(self.old.tree.installed())
        mine = {"Aircraft/Mine/Mine.acf": "my plane", "Custom Scenery/Airstrip/notes.txt": "my notes",
                "Resources/preferences/Velaris.prf": "my settings", "Instructions/my list.txt": "fuel, flaps"}
        for path, text in mine.items():
            self.put(path, text)
        own = {path: facts for path, facts in folders.snapshot(self.dest).items() if path in mine}
        for path in mine:
            folders.add_folders(own, path)
        self.install("--pref:_rename_folder=0")
        self.assert_installed(self.new.tree.installed(), besides=own)
        unchanged = [path for path, item in self.new.tree.items.items() if self.old.tree.items.get(path) == item]
        self.assertEqual(set(self.fetched()) & set(unchanged), set(), "fetched although it was there")

    def test_update_over_two_releases_and_over_one_end_alike(self):
        for number, start in enumerate((self.old, self.middle)):
            where = os.path.join(self.folder, f"copy {number}")
            self.place(start.tree.installed(), where)
            self.install("--pref:_rename_folder=0", dest=where)
            self.assert_installed(self.new.tree.installed(), where)

    def test_new_program_renames_the_folder_and_new_data_alone_does_not(self):
        beside = os.path.join(self.folder, "sims")
        for start, name in ((self.old, NEW), (self.middle, "mine")):
            where = os.path.join(beside, start.name, "mine")
            self.place(start.tree.installed(), where)
            if start is self.middle:     # the one file that is made for this system alone and is new
                self.put("Resources/moves.txt", "moved\n", where)
            self.install(dest=where)
            self.assertEqual(os.listdir(os.path.dirname(where)), [name])

    def test_name_that_is_taken_leaves_the_folder_as_it_was_called(self):
        taken = os.path.join(os.path.dirname(self.dest), NEW)
        self.put("precious.txt", "not ours", taken)
        self.install()
        self.assert_installed(self.new.tree.installed())
        self.assertEqual(os.listdir(taken), ["precious.txt"])
        self.assertEqual(self.desk.preferences()["_dest_dir_path"], self.dest + "/")

    def test_other_systems_get_their_own_files(self):
        program = "Velaris.app/Contents/MacOS/Velaris"
        items = self.new.tree.installed(MAC)
        items[program] = dataclasses.replace(items[program], mode=0o755)
        self.install("--target_os=1", "--pref:_rename_folder=0")
        self.assert_installed(items)
        # The builder marks the Windows program in the reference copy as able to use all memory.
        other = os.path.join(self.folder, "windows")
        made = os.stat(os.path.join(self.publisher.folder, f"reference-{self.new.number}", "Windows/Velaris.exe"))
        items = self.new.tree.installed(WINDOWS)
        data = bytearray(items["Velaris.exe"].data)
        data[64 + 22] |= 0x20
        items["Velaris.exe"] = dataclasses.replace(items["Velaris.exe"], data=bytes(data),
                                                   when=int(made.st_mtime) // 2 * 2)
        self.install("--target_os=2", "--pref:_rename_folder=0", dest=other)
        self.assert_installed(items, other)

    def test_real_folder_where_the_release_has_a_link_is_moved_aside(self):
        self.place(self.new.tree.installed())
        current = "Resources/plugins/QRNK.framework/Versions/Current"
        os.unlink(os.path.join(self.dest, current))
        self.put(current + "/headers.txt", "a copy that was made without links")
        self.install("--pref:_rename_folder=0")
        aside = "Resources/plugins/QRNK.framework/Versions/_Current/"
        have = folders.snapshot(self.dest)
        self.assertEqual(have[current], ("link", "B", 0, 0))
        self.assert_installed(self.new.tree.installed(),
                              besides={path: have[path] for path in (aside, aside + "headers.txt")})


if __name__ == "__main__":
    installer.main()
