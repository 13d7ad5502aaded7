"""Disks that cannot be written: no access, and no room."""
import ctypes
import os
import shutil
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import folders
import installer
import release

BIG = "All/Aircraft/Heron/Heron.acf"
ROOM = 3_000_000
NO_ACCESS = "I am unable to install or update Velaris. An error occurred while creating new folders."


def tree_with(big):
    tree = release.landmarks()
    tree.add(BIG, big).add("All/Airfoils/small.afl", "small\n").add("All/Weapons/after.wpn", "after\n")
    return tree


class DiskTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        cls.publisher, (cls.old, cls.new) = installer.publish(
            cls, tree_with(release.noise(900_000)), tree_with(release.noise(1_600_000)))

    def setUp(self):
        super().setUp()
        # Python's server also runs where this process is root only in name.
        self.server = installer.faulty(self, self.publisher, self.new)
        self.host = self.server.address

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
        self.assertIn("The installer cannot extract a file.", outcome.err)
        self.assert_same(before)

    # The rest needs a small disk: a file system in memory that only this process sees.

    def small_disk(self, name, room=ROOM):
        if os.environ.get("VELARIS_OWN_MOUNTS") != "1":
            self.skipTest("needs leave to mount a small disk (root, or user namespaces)")
        place = os.path.join(self.folder, name)
        os.makedirs(place)
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={room}", "tmpfs", place], check=True)
        self.addCleanup(subprocess.run, ["umount", "-l", place], check=True)
        return place

    def fill(self, disk, leave):
        facts = os.statvfs(disk)
        with open(os.path.join(disk, "ballast"), "wb") as out:
            out.write(bytes(facts.f_bavail * facts.f_frsize - leave))

    def test_too_little_room_is_seen_before_anything_is_touched(self):
        disk = self.small_disk("disk")
        self.dest = os.path.join(disk, "Velaris")
        self.place(self.old.tree.installed())
        self.fill(disk, 1_000_000)
        before = folders.snapshot(self.dest)
        outcome = self.install(status=1)
        self.assertIn("You don't have enough disk space to install this!", outcome.out)
        self.assert_same(before)

    def test_disk_that_fills_up_keeps_the_old_file_and_the_next_run_completes(self):
        disk = self.small_disk("disk")
        # A new copy: its folder is not there yet, so the room cannot be known beforehand.
        self.dest = os.path.join(disk, "Velaris")
        self.fill(disk, 1_000_000)
        outcome = self.install("--pref:_rename_folder=0", status=1)
        self.assertIn("The installer cannot extract a file.", outcome.err)
        self.assertNotIn("small", outcome.err)
        have = {path for path, facts in folders.snapshot(self.dest).items() if facts[0] != "folder"}
        self.assertEqual(have - set(self.new.tree.installed()), set(), "left a part of a file behind")
        self.assertNotIn("Aircraft/Heron/Heron.acf", have)
        os.unlink(os.path.join(disk, "ballast"))
        self.install("--pref:_rename_folder=0")
        self.assert_installed(self.new.tree.installed())

    def test_update_that_finds_no_room_on_the_way_keeps_the_old_file(self):
        disk = self.small_disk("disk")
        self.dest = os.path.join(disk, "Velaris")
        self.place(self.old.tree.installed())
        gate = self.server.hold_after(0)
        run = self.start("--agree", "--pref:_rename_folder=0")
        self.assertTrue(gate.reached.wait(30))
        self.fill(disk, 500_000)                    # somebody else takes the room
        gate.open()
        outcome = self.finish(run)
        self.assertEqual(outcome.status, 1, outcome)
        heron = folders.snapshot(self.dest)["Aircraft/Heron/Heron.acf"]
        self.assertEqual(heron, folders.expected(self.old.tree.installed())["Aircraft/Heron/Heron.acf"])
        os.unlink(os.path.join(disk, "ballast"))
        self.install("--pref:_rename_folder=0")
        self.assert_installed(self.new.tree.installed())

    def test_full_temporary_folder_is_said_and_given_up(self):
        disk = self.small_disk("tmp disk", 600_000)
        shutil.rmtree(self.desk.tmp)
        os.symlink(disk, self.desk.tmp)
        outcome = self.install("--give_up=2", status=4)
        self.assertIn("No space left on device", outcome.out + outcome.err)
        self.assertEqual(os.listdir(disk), [])


def drop_powers():
    """In a child, before its program: not even root may then write where the permissions say no."""
    for power in range(64):
        ctypes.CDLL(None).prctl(24, power)          # PR_CAPBSET_DROP


def enter_own_mounts():
    """Starts this file again where mounts are its own and vanish with it, if the system lets us."""
    if "VELARIS_OWN_MOUNTS" in os.environ:
        return
    flags = ["-m"] if os.geteuid() == 0 else ["-rm"]
    command = ["unshare", *flags, "--propagation", "private"]
    allowed = shutil.which("unshare") and subprocess.run(
        [*command, "sh", "-c", "d=$(mktemp -d) && mount -t tmpfs tmpfs $d; r=$?; umount $d; rmdir $d; exit $r"],
        capture_output=True).returncode == 0
    os.environ["VELARIS_OWN_MOUNTS"] = "1" if allowed else "0"
    if allowed:
        os.execvp("unshare", [*command, sys.executable, "-B", *sys.argv])


if __name__ == "__main__":
    enter_own_mounts()
    installer.main()
