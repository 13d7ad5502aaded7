"""The builder as a release engineer runs it: settings, results, and every way in which a run can end."""
import fcntl
import os
import pty
import resource
import shutil
import signal
import subprocess
import sys
import termios
import unittest
import zipfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import installer
import release
from release import NEW as NAME


class BuilderTest(unittest.TestCase):
    def setUp(self):
        self.room = installer.private_folder(self)
        self.src = os.path.join(self.room, "ref")
        self.out = os.path.join(self.room, "out")
        os.mkdir(self.out)
        release.sample().write(self.src)
        self.settings = [f"--src={self.src}", f"--dst={self.out}", "--first_release"]

    def tearDown(self):
        self.assertFalse([name for name in os.listdir(os.path.join(self.room, "builder-home"))
                          if name.startswith("velaris-")], "a temporary folder is left")

    def start(self, *arguments, program="velaris-builder", stdin=subprocess.DEVNULL, **more):
        run = subprocess.Popen([os.path.join(installer.PROGRAMS, program), *arguments], cwd=self.room, stdin=stdin,
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                               env=release.builder_environment(self.room), **more)
        installer.at_end(self, installer.put_down, run)
        return run

    def end(self, run):
        out, err = run.communicate(timeout=120)
        return run.returncode, installer.text_of(out), installer.text_of(err)

    def build(self, *arguments, **more):
        return self.end(self.start(*arguments, **more))

    def released(self):
        return sorted(name for name in os.listdir(self.out) if not name.endswith(".unfinished"))

    def give_it_much_to_do(self):
        first = os.path.join(self.src, "Linux", "big.0")
        with open(first, "wb") as out:
            out.write(release.noise(8_000_000))
        for number in range(1, 60):
            os.link(first, f"{first[:-1]}{number}")

    def test_settings_may_lie_beside_the_copy(self):
        with open(os.path.join(self.room, "builder.conf"), "w", encoding="utf-8", newline="") as conf:
            conf.write("# releases\r\ndst out\t \r\nversion_name Velaris 9.00 Beta-7\r\nversion_number 90007")
        self.assertEqual(self.build("--src=ref", "--first_release")[0], 0)
        step = release.sample().remove("All/Custom Scenery/Airstrip/apt.txt").add("All/Weapons/rocket.wpn", "changed")
        step.add("All/Weapons/new", "new").add("All/Weapons/newer", "newer").add("All/Weapons/newest", "newest")
        shutil.rmtree(self.src)
        step.write(self.src)
        status, out, err = self.build("--src=ref/", "--old=out/Velaris 9.00 Beta-7/directory.txt.zip",
                                      f"--version_name={NAME}", "--version_number=90019")
        self.assertEqual(status, 0, err)
        self.assertEqual(self.released(), [NAME, "Velaris 9.00 Beta-7"])
        self.assertRegex(out, NAME + r": (\d+) files \(3 new, 1 changed, \d+ as before\), \d+ kB; 1 withdrawn\n"
                         + f"hidden items left out: 1\n{self.out}/{NAME}/\n$")
        self.assertRegex(out, r"The history has \d+ files, the newest of release 90007\.\n")
        self.assertNotIn("velaris-", out.replace(self.room, ""), "a path of the run's own folder")
        self.assertIn("version string 'Velaris 9.00 Beta-19' and the version number 90019", err)
        with zipfile.ZipFile(os.path.join(self.out, NAME, "directory.txt.zip")) as archive:
            rows = [line.split(b" ", 7) for line in archive.read("directory.txt").splitlines() if line[:5] == b"FILE "]
        self.assertEqual({row[3] for row in rows}, {b"90007", b"90019"})
        self.assertFalse([name for name in os.listdir(os.path.join(self.out, NAME)) if name.startswith(".")])

    def test_wrong_usage_is_one_line_and_status_2(self):
        src, dst, first = self.settings
        for arguments, words in (
                ([], "--src"), ([src, first], "--dst"), ([src, dst], "--old=FILE"), ([src, dst], "--first_release"),
                ([src + "x", dst, first], "ref"), ([src, "--dst=", first], "--dst"),
                ([src, dst, first, "--old=x"], "--first_release"), ([src, dst, "--old=a:b"], "a:b"),
                ([src, f"--dst={self.src}/Linux", first], "reference copy"),
                ([src, dst, first, "--version_number=2147483648"], "2147483648"),
                ([src, dst, first, "--version_name=a/b"], "a/b"),
                ([src, dst, first, "--version_name=Beta.unfinished"], ".unfinished"),
                ([src, dst, first, "--version_name=aux.1"], "aux.1"),
                ([src, dst, first, "--verison_number=3"], "--verison_number")):
            with self.subTest(arguments):
                status, out, err = self.build(*arguments)
                self.assertEqual((status, out, err.count("\n")), (2, "", 1), err)
                self.assertIn(words, err)
        with open(os.path.join(self.room, "builder.conf"), "w", encoding="utf-8") as conf:
            conf.write("dts out\n")
        self.assertIn("dts", self.build(*self.settings)[2])
        self.assertEqual(self.released(), [])

    def test_a_failed_run_leaves_no_release_and_can_be_repeated(self):
        bad = os.path.join(self.src, "Windows", "bad.exe")
        with open(bad, "wb") as out:
            out.write(bytes(100))
        status, _, err = self.build(*self.settings)
        self.assertEqual((status, self.released()), (1, []), err)
        self.assertIn(bad, err)
        self.assertIn("We could not make a windows exe file large-address-aware!\nerror# 20013.000000\n", err)
        os.remove(bad)
        self.assertEqual(self.build(*self.settings)[0], 0)
        self.assertEqual(os.listdir(self.out), [NAME])
        status, _, err = self.build(*self.settings)
        self.assertEqual((status, self.released()), (1, [NAME]))
        self.assertIn("THIS MAY SIMPLY BE BECAUSE THE FOLDER ALREADY EXISTS THOUGH!", err)

    def test_a_disk_that_fills_up_is_noticed(self):
        def small(limit):
            def prepare():
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
                resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))
            return prepare

        status, _, err = self.build(*self.settings, preexec_fn=small(20_000))
        self.assertEqual((status, self.released()), (1, []), err)
        self.assertIn("I could not zip a file!", err)
        # Every zip fits, only the catalogue does not.
        release_of_small_files = release.landmarks()
        for number in range(400):
            release_of_small_files.add(f"Linux/file {number}", str(number))
        release_of_small_files.write(os.path.join(self.room, "small"))
        status, _, err = self.build(f"--src={self.room}/small", *self.settings[1:], preexec_fn=small(20_000))
        self.assertEqual((status, self.released()), (1, []), err)
        self.assertIn("I could not write the whole directory file!", err)

    def test_a_stop_is_obeyed_and_a_second_run_kept_out(self):
        self.give_it_much_to_do()
        run = self.start(*self.settings)
        self.assertIn(b"reg: 0: ", run.stdout.readline())
        self.assertEqual(self.build(*self.settings)[0], 5)
        run.send_signal(signal.SIGINT)
        status, _, err = self.end(run)
        self.assertEqual((status, self.released()), (130, []), err)
        self.assertTrue(err.startswith("The build was interrupted.\n"), err)

        keyboard, terminal = pty.openpty()
        run = self.start(*self.settings, stdin=terminal, start_new_session=True,
                         preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))
        run.stdout.readline()
        os.write(keyboard, b"xq")
        status, _, err = self.end(run)
        self.assertEqual((status, self.released()), (1, []), err)
        self.assertTrue(err.startswith("You hit Q dumbass!\n"), err)
        os.close(keyboard)
        os.close(terminal)

    def test_a_tile_without_a_name_is_told_with_its_path(self):
        release.Tree().add("All/Custom Scenery/-global terrain-/xy", "").write(self.src)
        status, _, err = self.build(*self.settings[:2], program="velaris-builder-disc2")
        self.assertEqual((status, self.released()), (1, []))
        self.assertIn("/All/Custom Scenery/-global terrain-/xy", err)


if __name__ == "__main__":
    installer.main()
