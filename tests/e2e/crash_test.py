"""What a crash of the real program leaves for its maker."""
import fcntl
import os
import pty
import re
import resource
import shutil
import signal
import subprocess
import sys
import termios
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import installer
import release
import servers

FRAME = re.compile(r"^ +(\d+)\) (\S+) \+ \d+( \(\S+:\d+\))? \((\S+) \+ \d+\)$", re.MULTILINE)


@unittest.skipIf(installer.SANITIZED, "the frames of a sanitizer are none of ours")
class CrashTest(installer.Scene):
    def setUp(self):
        super().setUp()
        self.server = installer.keep_up(self, servers.FaultServer(self.folder))
        self.server.script["/serverlist.txt"] = [servers.say_nothing]
        self.host = self.server.address

    def crash(self):
        """Hits a run that waits for a server; returns its report."""
        asked = len(self.server.asked)
        run = self.start("--agree", preexec=lambda: resource.setrlimit(resource.RLIMIT_CORE, (0, 0)))
        self.assertTrue(installer.wait_until(lambda: len(self.server.asked) > asked))
        run.send_signal(signal.SIGSEGV)
        outcome = self.finish(run)
        self.assertEqual(outcome.status, -signal.SIGABRT, outcome)
        self.assertTrue(self.desk.log().endswith(
            "This application has crashed.  Please send the file crash_log.txt to Tarvex.\n"))
        with open(os.path.join(self.desk.folder, "crash_log.txt"), encoding="utf-8") as text:
            return text.read()

    def frames_of_program(self, report):
        """Function and place of each frame in the installer, innermost first."""
        return [(name, place) for _, name, place, image in FRAME.findall(report) if image == "velaris-installer"]

    def place_of(self, function, frames):
        """Its name is as the linker knows it, with marks before and behind."""
        return next((place for name, place in frames if function in name), f"not in {frames}")

    def test_report_tells_functions_and_lines_and_the_next_one_follows_it(self):
        report = self.crash()
        self.assertRegex(report, r"\Avelaris-installer, Velaris 9\.00 Beta-19, build 90019, [^\n]*\nsegv \(Segmentation fault\)\nSig no: 11, sig err: 0, sig code: 0, status: -?\d+\n"
                                 r"Addy: 0x-?\d{8,}\n  0\) ")
        frames = self.frames_of_program(report)
        self.assertRegex(self.place_of("console_main", frames), r"^ \(console\.cpp:\d+\)$")
        self.assertIn("main", dict(frames), report)
        again = self.crash()
        self.assertTrue(again.startswith(report))
        self.assertEqual(again.count("segv (Segmentation fault)\n"), 2)

    def test_stripped_program_still_tells_functions(self):
        subprocess.run(["strip", self.desk.program], check=True)
        frames = self.frames_of_program(self.crash())
        self.assertEqual(self.place_of("console_main", frames), "")
        self.assertIn(("main", ""), frames)

    def test_a_terminal_gets_its_echo_back_and_is_told_of_the_report(self):
        folder = os.path.join(self.folder, "builder")
        release.sample().write(os.path.join(folder, "ref"))
        first = os.path.join(folder, "ref", "Linux", "big.0")
        with open(first, "wb") as out:
            out.write(release.noise(8_000_000))
        for number in range(1, 60):  # work for many seconds
            os.link(first, f"{first[:-1]}{number}")
        program = shutil.copy(installer.BUILDER, folder)
        keyboard, terminal = pty.openpty()
        run = subprocess.Popen([program, f"--src={folder}/ref", f"--dst={folder}", "--first_release", "--console"],
                               stdin=terminal, stdout=subprocess.PIPE, stderr=terminal, start_new_session=True,
                               preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))
        self.addCleanup(run.kill)
        echoes = lambda: bool(termios.tcgetattr(terminal)[3] & termios.ECHO)
        self.assertTrue(installer.wait_until(lambda: not echoes()))
        run.send_signal(signal.SIGABRT)
        run.communicate()
        self.assertTrue(echoes())
        os.set_blocking(keyboard, False)
        self.assertIn(f"A report was left in {folder}/crash_log.txt", os.read(keyboard, 9999).decode())

    def test_no_alert_no_crash_no_file(self):
        self.assertEqual(self.run_installer("--version").status, 0)
        self.assertEqual([name for name in os.listdir(self.desk.folder) if name in ("crash_log.txt", "MemoryLog.txt")],
                         [])


if __name__ == "__main__":
    installer.main()
