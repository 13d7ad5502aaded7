"""Disks that are seldom to be had: without access, without room, with sectors that cannot be read, without case, and
one whose power goes.

VELARIS_CUTS sets how often the power goes, VELARIS_SEED when, and what is lost with it.
"""
import ctypes
import errno
import os
import random
import shutil
import signal
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import folders
import installer
import release
import servers

SEED = int(os.environ.get("VELARIS_SEED", "122"))
CUTS = int(os.environ.get("VELARIS_CUTS", "50"))
HERON, COCKPIT = "Aircraft/Heron/Heron.acf", "Aircraft/Heron/cockpit.txt"
NO_ACCESS = "I am unable to install or update Velaris. An error occurred while creating new folders."
CANNOT_EXTRACT = "The installer cannot extract a file."
ODD_FS = os.path.join(installer.PROGRAMS, "tests", "odd_fs")
NEEDED = {ODD_FS: "a build with libfuse3-dev", "/dev/fuse": "FUSE in the kernel", "/bin/fusermount3": "the package fuse3"}


class DiskTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        old, _, new = release.history()
        for number, text in enumerate(("as ever\n", "of the new release\n")):
            old.add(f"All/Resources/Spelling {number}.txt", "as ever\n")
            old.add(f"All/Instructions/Upper {number}/inside.txt", "as ever\n")
            new.add(f"All/Resources/spelling {number}.TXT", text)
            new.add(f"All/Instructions/UPPER {number}/Inside.txt", text)
        cls.publisher, (cls.old, cls.new) = installer.publish(cls, old, new)

    def setUp(self):
        super().setUp()
        # Python's server also runs where this process is root only in name.
        self.server = installer.faulty(self, self.publisher, self.new)
        self.host = self.server.address

    def update(self, *options, **how):
        return self.install("--pref:_rename_folder=0", *options, **how)

    def test_folder_below_a_file_is_named_and_the_run_fails(self):
        blocked = os.path.join(self.folder, "a file")
        self.put("a file", "in the way", self.folder)
        outcome = self.install(dest=os.path.join(blocked, "Velaris"), status=1)
        self.assertIn(NO_ACCESS, outcome.err)
        self.assertIn(blocked, outcome.err)
        with open(blocked, encoding="utf-8") as text:
            self.assertEqual(text.read(), "in the way")

    def test_copy_that_is_not_ours_to_write_stays_as_it_is(self):
        self.place(self.old.tree.installed())
        for here, _, _ in os.walk(self.dest):
            os.chmod(here, 0o555)
            self.addCleanup(os.chmod, here, 0o755)
        before = folders.snapshot(self.dest)
        outcome = self.install(status=1, preexec=drop_powers)
        self.assertRegex(outcome.err, f"{CANNOT_EXTRACT}|{NO_ACCESS}")
        self.assert_same(before)

    # The rest needs a disk that fails on request; what it holds lies in self.below.

    def lay_out(self, *options):
        """The odd disk with the old release on it."""
        missing = [words for path, words in NEEDED.items() if not os.path.exists(path)]
        if missing:
            self.skipTest(f"needs {' and '.join(missing)}")
        self.below, self.disk = (os.path.join(self.folder, name) for name in ("below", "disk"))
        os.mkdir(self.below)
        os.mkdir(self.disk)
        self.dest = os.path.join(self.disk, "Velaris")
        self.place(self.old.tree.installed(), os.path.join(self.below, "Velaris"))
        self.mount(*options)
        self.before = folders.snapshot(self.dest)

    def mount(self, *options):
        self.odd_fs = subprocess.Popen([ODD_FS, self.below, self.disk, f"--faults={self.folder}/faults", *options],
                                       stdout=subprocess.PIPE, preexec_fn=servers.end_with_parent)
        installer.at_end(self, self.unmount, self.odd_fs)
        self.assertEqual(self.odd_fs.stdout.readline(), b"ready\n")

    def unmount(self, odd_fs):
        if odd_fs.poll() is None:
            subprocess.run(["fusermount3", "-u", "-z", self.disk], check=False)
            odd_fs.wait(30)
        installer.put_down(odd_fs)

    def let_fail(self, operation, code, path="*"):
        with open(os.path.join(self.folder, "faults"), "w", encoding="utf-8") as out:
            out.write(f"{operation} {code} {path}\n")

    def mend(self):
        self.let_fail("nothing", 0)

    def test_too_little_room_is_seen_before_anything_is_touched(self):
        self.lay_out()
        self.let_fail("room", 40_000)
        outcome = self.install(status=1)
        self.assertIn("You don't have enough disk space to install this!", outcome.out)
        self.assert_same(self.before)

    def test_disk_that_cannot_be_written_keeps_the_old_files_and_the_next_run_completes(self):
        self.lay_out()
        for code in (errno.ENOSPC, errno.EIO):
            with self.subTest(code=code):
                gate = self.server.hold_after(0)
                run = self.start("--agree", "--pref:_rename_folder=0")
                self.assertTrue(gate.reached.wait(30))
                self.let_fail("write", code)            # somebody else takes the room
                gate.open()
                outcome = self.finish(run)
                self.assertEqual(outcome.status, 1, outcome)
                self.assertIn(CANNOT_EXTRACT, outcome.err)
                self.assertIn(os.strerror(code), outcome.err)
                left = folders.snapshot(self.dest)
                wrong = {path for path, facts in left.items() if facts[0] == "file" and facts != self.before.get(path)
                         and facts != folders.expected(self.new.tree.installed()).get(path)}
                self.assertEqual(wrong, set(), "left a part of a file behind")
                self.assertEqual(left[HERON], self.before[HERON])
        self.mend()
        self.update()
        self.assert_installed(self.new.tree.installed())

    def test_full_temporary_folder_is_named_and_ends_the_run(self):
        self.lay_out()
        shutil.rmtree(self.desk.tmp)
        os.symlink(self.disk, self.desk.tmp)
        gate = self.server.hold_after(0)
        run = self.start("--agree")
        self.assertTrue(gate.reached.wait(30))
        self.let_fail("write", errno.ENOSPC)
        gate.open()
        outcome = self.finish(run)
        self.assertEqual(outcome.status, 1, outcome)
        self.assertIn("The disk of the temporary folder is full!", outcome.err)
        self.assertIn(self.desk.tmp, outcome.err)
        self.assertEqual(os.listdir(self.disk), ["Velaris"])

    def test_file_that_cannot_be_read_counts_as_the_users_and_is_named(self):
        self.lay_out()
        for operation, code in (("read", errno.EIO), ("open", errno.EIO), ("open", errno.EACCES)):
            with self.subTest(operation=operation, code=code):
                self.mend()
                shutil.rmtree(self.dest)
                self.place(self.old.tree.installed())
                self.put(COCKPIT, "my own")
                mine = folders.snapshot(self.dest)[COCKPIT]
                self.let_fail(operation, code, f"/Velaris/{COCKPIT}")
                for options, status in ((["--changed=cancel"], 3), (["--changed=keep"], 0)):
                    outcome = self.update(*options, status=status)
                    self.assertIn(COCKPIT, outcome.out + outcome.err)
                self.mend()
                self.assert_installed(self.new.tree.installed(), besides={COCKPIT: mine})

    def test_new_spelling_on_a_disk_without_case_is_the_same_file(self):
        self.lay_out("--fold")
        self.update()
        wanted = {path.lower(): facts for path, facts in folders.expected(self.new.tree.installed()).items()}
        found = {path.lower(): facts for path, facts in folders.snapshot(self.dest).items()}
        self.assertEqual(folders.differences(wanted, found), [])
        asked = len(self.server.asked)
        outcome = self.update()
        self.assertIn("Your copy of Velaris is already the latest version.", outcome.out)
        self.assertEqual(len(self.server.asked), asked + 2)

    def test_power_cut_at_any_moment_leaves_nothing_that_passes_for_the_users(self):
        if installer.SANITIZED:
            self.skipTest("a sanitizer wants to be the first of what is preloaded")
        self.lay_out()
        self.unmount(self.odd_fs)
        dice, velaris = random.Random(SEED), os.path.join(self.below, "Velaris")
        pristine = shutil.move(velaris, os.path.join(self.folder, "pristine"))
        preload = {"LD_PRELOAD": os.path.join(os.path.dirname(ODD_FS), "libsync_preload.so")}
        enough, lost = 0, 0
        for number in range(CUTS):
            seed, later = dice.randrange(10 ** 6), dice.uniform(0, 0.03)
            with self.subTest(cut=number, after=enough, later=later, seed=seed):
                shutil.rmtree(velaris, ignore_errors=True)
                shutil.copytree(pristine, velaris, symlinks=True)
                self.mount(f"--seed={seed}")
                asked = len(self.server.asked)
                run = self.start("--agree", "--pref:_rename_folder=0", **preload)
                installer.wait_until(lambda: len(self.server.asked) - asked >= enough or run.poll() is not None)
                time.sleep(later)                       # so that it is hit between two requests as well
                run.send_signal(signal.SIGKILL)
                complete = self.finish(run).status == 0
                self.odd_fs.send_signal(signal.SIGUSR1)
                self.assertEqual(self.odd_fs.wait(30), 0)
                # In turn from the first request to beyond the last.
                enough = 0 if complete else enough + dice.randrange(1, 4)
                wrong = folders.differences(folders.expected(self.new.tree.installed()), folders.snapshot(velaris))
                if complete:
                    self.assertEqual(wrong, [], "complete was said of what was not yet on the disk")
                lost += bool(wrong)
                self.mount()
                self.update("--quiet", **preload)
                self.assert_installed(self.new.tree.installed())
                self.unmount(self.odd_fs)
        self.assertGreater(lost, CUTS // 2, "the cuts came too late")


def drop_powers():
    """In a child, before its program: not even root may then write where the permissions say no."""
    for power in range(64):
        ctypes.CDLL(None).prctl(24, power)          # PR_CAPBSET_DROP


if __name__ == "__main__":
    installer.main()
