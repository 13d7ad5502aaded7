"""Disks that are seldom to be had: with sectors that cannot be read or written, and without case in their names."""
import errno
import os
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import folders
import installer
import release
import servers

HERON = "Aircraft/Heron/Heron.acf"
ODD_FS = os.path.join(installer.PROGRAMS, "tests", "odd_fs")
NEEDED = {ODD_FS: "a build with libfuse3-dev", "/dev/fuse": "FUSE in the kernel", "/bin/fusermount3": "the package fuse3"}
MISSING = [words for path, words in NEEDED.items() if not os.path.exists(path)]


@unittest.skipIf(MISSING, f"needs {' and '.join(MISSING)}")
class OddDiskTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        old, _, new = release.history()
        for number, text in enumerate(("as ever\n", "of the new release\n")):
            old.add(f"All/Resources/Spelling {number}.txt", "as ever\n").add(f"All/Instructions/Upper {number}/inside.txt", "as ever\n")
            new.add(f"All/Resources/spelling {number}.TXT", text).add(f"All/Instructions/UPPER {number}/Inside.txt", text)
        cls.publisher, (cls.old, cls.new) = installer.publish(cls, old, new)

    def setUp(self):
        super().setUp()
        self.server = installer.faulty(self, self.publisher, self.new)
        self.host = self.server.address
        self.below, self.disk = (os.path.join(self.folder, name) for name in ("below", "disk"))
        os.mkdir(self.below)
        os.mkdir(self.disk)
        self.dest = os.path.join(self.disk, "Velaris")
        self.place(self.old.tree.installed(), os.path.join(self.below, "Velaris"))

    def mount(self, *options):
        disk = subprocess.Popen([ODD_FS, self.below, self.disk, f"--faults={self.folder}/faults", *options],
                                stdout=subprocess.PIPE, preexec_fn=servers.end_with_parent)
        installer.at_end(self, installer.put_down, disk)
        self.addCleanup(subprocess.run, ["fusermount3", "-u", "-z", self.disk], check=False)
        self.assertEqual(disk.stdout.readline(), b"ready\n")
        return disk

    def let_fail(self, operation, code, path="*"):
        with open(os.path.join(self.folder, "faults"), "w", encoding="utf-8") as out:
            out.write(f"{operation} {code} {path}\n")

    def update(self, *options, **how):
        return self.install("--pref:_rename_folder=0", *options, **how)

    def test_disk_that_cannot_be_written_keeps_the_old_file_and_is_named(self):
        self.mount()
        before = folders.snapshot(self.dest)
        for code in (errno.ENOSPC, errno.EIO):
            with self.subTest(code=code):
                self.let_fail("write", code)
                outcome = self.update(status=1)
                self.assertIn(os.strerror(code), outcome.err)
                self.assertEqual(folders.snapshot(self.dest)[HERON], before[HERON])
        self.let_fail("nothing", 0)
        self.update()
        self.assert_installed(self.new.tree.installed())

    def test_new_spelling_on_a_disk_without_case_is_the_same_file(self):
        self.mount("--fold")
        self.update()
        wanted = {path.lower(): facts for path, facts in folders.expected(self.new.tree.installed()).items()}
        found = {path.lower(): facts for path, facts in folders.snapshot(self.dest).items()}
        self.assertEqual(folders.differences(wanted, found), [])
        asked = len(self.server.asked)
        outcome = self.update()
        self.assertIn("Your copy of Velaris is already the latest version.", outcome.out)
        self.assertEqual(len(self.server.asked), asked + 2)


if __name__ == "__main__":
    installer.main()
