"""Installs and updates against nginx: what lies in the folder afterwards, to the byte, link, mode and date."""
import dataclasses
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import folders
import installer
import release
from release import LINUX, MAC, NEW, WINDOWS


class InstallTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        cls.publisher, (cls.old, cls.middle, cls.new) = installer.publish(cls, *release.history())

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

    def test_fresh_install_is_the_release_and_bears_its_name_and_the_next_run_touches_nothing(self):
        outcome = self.install("--quiet")
        self.assertNotRegex(outcome.out, r"\d+% ")
        self.assertIn("INSTALLATION COMPLETE!", outcome.out)
        where = os.path.join(os.path.dirname(self.dest), NEW)
        self.assert_installed(self.new.tree.installed(), where)
        self.assertEqual(os.listdir(os.path.dirname(self.dest)), [NEW])
        self.assertEqual(self.fetched(), sorted(path for path, item in self.new.tree.items.items()
                                                if LINUX in item.systems))
        self.assertEqual(os.listdir(self.desk.tmp), [], "the run's temporary folder is still there")
        self.assertEqual(self.desk.preferences()["_dest_dir_path"], where + "/")
        before = folders.snapshot(where)
        count = len(self.server.requests())
        outcome = self.install(dest=False)          # it remembers the folder
        self.assertIn("Your copy of Velaris is already the latest version.", outcome.out)
        self.assertEqual(len(self.server.requests()), count + 2)
        self.assert_same(before, where)

    def test_update_takes_stale_files_without_a_question_and_leaves_the_users_own(self):
        self.place(self.old.tree.installed())
        mine = ["Aircraft/Mine/Mine.acf", "Custom Scenery/Airstrip/notes.txt", "Resources/preferences/Velaris.prf"]
        for path in mine:
            self.put(path, "my own")
        own = {path: facts for path, facts in folders.snapshot(self.dest).items() if path in mine}
        for path in mine:
            folders.add_folders(own, path)
        self.install("--pref:_rename_folder=0")
        self.assert_installed(self.new.tree.installed(), besides=own)
        self.assertEqual(self.fetched(), sorted(release.steps(self.old.tree, self.new.tree)[0]))

    def test_new_program_renames_the_folder_and_new_data_alone_does_not(self):
        for start, name in ((self.old, NEW), (self.middle, "mine")):
            beside = os.path.join(self.folder, "sims", start.name)
            self.place(start.tree.installed(), os.path.join(beside, "mine"))
            self.install(dest=os.path.join(beside, "mine"))
            self.assertEqual(os.listdir(beside), [name])
            self.assert_installed(self.new.tree.installed(), os.path.join(beside, name))

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
