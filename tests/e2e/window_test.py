"""The installer's window as the desktop sees it: opens, draws, quits by the mouse and by the desktop, says so where there
is no display."""
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from PIL import ImageGrab

INSTALLER = os.path.join(os.environ["VELARIS_BIN"], "velaris-installer")
DEADLINE = 30


class WindowTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="velaris-e2e-")
        self.addCleanup(folder.cleanup)
        self.home = folder.name
        self.environment = {**os.environ, "HOME": self.home, "XDG_CONFIG_HOME": self.home + "/config",
                            "XDG_STATE_HOME": self.home + "/state", "TMPDIR": self.home}
        for name in ("DISPLAY", "WAYLAND_DISPLAY"):
            self.environment.pop(name, None)

    def open_display(self):
        reader, writer = os.pipe()
        server = subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", "1280x900x24", "-nolisten", "tcp",
                                   "-noreset"],
                                  pass_fds=[writer], stderr=subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)
        os.close(writer)
        with os.fdopen(reader) as number:
            self.environment["DISPLAY"] = ":" + number.readline().strip()

    def start(self, *words):
        program = subprocess.Popen([INSTALLER, *words], env=self.environment, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True)
        self.addCleanup(program.communicate)
        self.addCleanup(program.kill)
        return program

    def xdotool(self, *words):
        return subprocess.run(["xdotool", *words], env=self.environment, capture_output=True, text=True,
                              check=False).stdout

    def until(self, what, there):
        end = time.monotonic() + DEADLINE
        while time.monotonic() < end:
            found = there()
            if found:
                return found
            time.sleep(0.02)
        return self.fail(what)

    def window(self):
        """Left and top of the window, once its main screen is drawn: the light middle of its background."""
        window = self.until("no window", lambda: self.xdotool("search", "--onlyvisible", "--name", "Velaris Installer"))
        place = dict(line.split("=") for line in self.xdotool("getwindowgeometry", "--shell", window.strip()).split())
        x, y = int(place["X"]), int(place["Y"])
        self.assertEqual((place["WIDTH"], place["HEIGHT"]), ("1024", "768"))
        self.until("no main screen", lambda: min(self.pixel(x + 600, y + 250)) > 230)
        return x, y

    def pixel(self, x, y):
        return ImageGrab.grab(bbox=(x, y, x + 1, y + 1), xdisplay=self.environment["DISPLAY"]).convert("RGB").getpixel(
            (0, 0))

    def test_quit_by_the_mouse_keeps_the_settings(self):
        self.open_display()
        program = self.start("-path", self.home + "/sim", "--list_host=127.0.0.1:1", "--pref:_stream_count=3")
        x, y = self.window()
        red, green, _ = self.pixel(x + 970, y + 768 - 90)
        self.assertGreater(green, red + 10, "QUIT is live and green")
        self.xdotool("mousemove", str(x + 985), str(y + 768 - 89), "click", "1")
        self.assertEqual(program.wait(DEADLINE), 0)
        with open(self.home + "/config/velaris/Velaris Installer.prf", encoding="utf-8") as settings:
            text = settings.read()
        self.assertIn("_stream_count 3\n", text)
        self.assertIn(f"_dest_dir_path {self.home}/sim/\n", text)
        self.assertEqual([name for name in os.listdir(self.home) if name.startswith("velaris-")], [])

    def test_a_signal_ends_it_in_order(self):
        self.open_display()
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(number):
                program = self.start("--list_host=127.0.0.1:1")
                self.window()
                program.send_signal(number)
                self.assertEqual(program.wait(DEADLINE), 0)

    def test_without_a_display_it_says_what_it_needs(self):
        program = self.start("--list_host=127.0.0.1:1")
        _, words = program.communicate(timeout=DEADLINE)
        self.assertEqual(program.returncode, 1)
        self.assertIn("I could not set up the graphics for Velaris!", words)

    def test_wrong_usage_is_one_line(self):
        self.open_display()
        program = self.start("--list_host=a b")
        _, words = program.communicate(timeout=DEADLINE)
        self.assertEqual((program.returncode, words.count("\n")), (2, 1), words)


if __name__ == "__main__":
    sys.exit(unittest.main(verbosity=2))
