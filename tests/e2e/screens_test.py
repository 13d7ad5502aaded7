"""The whole program by mouse and keyboard, in a real window against real servers; judged by the disk, the log and pixels.

Nothing here waits for time to pass: each wait is for what must come to be seen.
"""
import fcntl
import os
import signal
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import desktop
import folders
import installer
import release
import servers

PATH_FIELD = (300, 89)
SCREENS = {name: size for size, name in desktop.WINDOWS.items()}
CHANGED = "Aircraft/Heron/notes.txt"
DROPPED = "Aircraft/Heron/old.txt"
HEAVY = "Resources/scenery.bin"
# What else the user changed: two files each of two folders.
KESTREL = ["Aircraft/Kestrel/one.txt", "Aircraft/Kestrel/two.txt"]
ROCKETS = ["Weapons/one.wpn", "Weapons/two.wpn"]


def first():
    tree = release.landmarks()
    tree.add("All/" + CHANGED, "notes one\n").add("All/Aircraft/Heron/plan.txt", "plan one\n")
    tree.add("All/" + DROPPED, "gone soon\n").add("All/Weapons/rocket.wpn", "rocket\n")
    for path in KESTREL + ROCKETS:
        tree.add("All/" + path, "first\n")
    return tree.add("All/" + HEAVY, release.noise(300_000, "one"))


def second():
    tree = first().remove("All/" + DROPPED).add("All/Instructions/news.txt", "read this\n")
    tree.add("All/" + CHANGED, "notes two\n").add("All/Aircraft/Heron/plan.txt", "plan two\n")
    for path in KESTREL + ROCKETS:
        tree.add("All/" + path, "second\n")
    return tree.add("All/" + HEAVY, release.noise(300_000, "two"))


def at(screen, x, y):
    """A place of a window of the program's own, on the canvas."""
    width, height = SCREENS[screen]
    return (desktop.WIDTH - width) // 2 + x, (desktop.HEIGHT - height) // 2 + y


OVERWRITE, KEEP, OVERWRITE_FOLDER, KEEP_FOLDER, CANCEL = (96, 53), (96, 28), (308, 53), (308, 28), (584, 28)


class ScreensTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        cls.publisher, (cls.old, cls.new) = installer.publish(cls, first(), second())
        cls.server = installer.nginx_for(cls, cls.publisher, cls.new)
        cls.display = installer.keep_up(cls, desktop.Display())

    def setUp(self):
        super().setUp()
        self.host = self.server.address

    def start(self, *options, **environment):
        """The installer, without a word on where to work."""
        program = subprocess.Popen([self.desk.program, *options], cwd=self.folder,
                                   env=self.desk.environment(**environment), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, preexec_fn=servers.end_with_parent)
        installer.at_end(self, installer.put_down, program)
        return program

    def open(self, *options, dest=None, **environment):
        """Starts the installer in its window, up to the main screen."""
        where = [] if dest is False else ["-path", dest or self.dest]
        program = self.start(*where, f"--list_host={self.host}", "--pref:_log_actions=1", *options,
                             **{"DISPLAY": self.display.name, **environment})
        window = desktop.Window(self.display, program)
        self.assertTrue(window.wait_for("main"), "no main screen")
        return window

    def offer(self, *options, **how):
        """... up to the offer: INSTALL is live."""
        window = self.open(*options, **how)
        self.assertTrue(desktop.until(window.install_is_live), "INSTALL never became live")
        return window

    def window_of(self, window):
        return desktop.Window(self.display, window.process)     # as it stands now

    def assert_shows(self, window, screen):
        self.assertTrue(window.wait_for(screen), f"{screen} wanted, {window.screen()} seen")

    def assert_completes(self, window):
        self.assertTrue(desktop.until(window.is_complete), "no end of the install")

    def quit(self, window):
        window.click(*desktop.QUIT)
        self.assertEqual(window.process.wait(10), 0)
        self.assertEqual(os.listdir(self.desk.tmp), [])

    def test_every_display_has_room_for_the_window_and_every_button_is_where_it_is_seen(self):
        for size, scale in (("800x600", 0.75), ("1280x800", 1), ("3840x2160", 1.5)):
            with self.subTest(size):
                self.display = installer.keep_up(self, desktop.Display(size=size + "x24"))
                window = self.offer()
                self.assertEqual(window.scale, scale)
                for place, inner, outer in zip((window.left, window.top), window.size, map(int, size.split("x"))):
                    self.assertTrue(0 <= place <= outer - inner, f"at {place}")
                window.click(*desktop.INSTALL)
                self.assert_shows(window, "agreement")
                window.click(*desktop.REFUSE)
                self.assert_shows(window, "main")
                window.click(*desktop.PREFERENCES)
                self.assert_shows(window, "preferences")
                window.keys("Tab", "Tab", "Down")       # of sizes, the one behind "automatic": half
                self.assertTrue(desktop.until(lambda: self.window_of(window).size == (512, 384)), "no smaller window")
                self.window_of(window).keys("Up", "Escape")
                self.assertTrue(desktop.until(lambda: self.window_of(window).size == window.size), "no larger window")
                self.assert_shows(window, "main")
                self.quit(window)

    def test_a_new_copy_by_clicks_refused_first(self):
        window = self.offer()
        for refuse in (lambda: window.click(*desktop.REFUSE), lambda: window.keys("Return", "Escape")):
            window.click(*desktop.INSTALL)
            self.assert_shows(window, "agreement")
            refuse()
            self.assert_shows(window, "main")
        self.assertTrue(window.install_is_live())
        self.assertFalse(any(facts[0] == "file" for facts in folders.snapshot(self.dest).values()))
        self.assertTrue(window.install_and_agree(), "no agreement")
        self.assert_completes(window)
        self.assert_installed(self.new.tree.installed())
        self.quit(window)
        self.assertIn("EXPANDING file ", self.desk.log())

    def answer(self, window, *answers):
        self.assert_shows(window, "changed file")
        for x, y in answers:
            window.click(*at("changed file", x, y))

    def test_each_answer_about_changed_files(self):
        self.place(self.old.tree.installed())
        for path in [CHANGED, DROPPED, *KESTREL, *ROCKETS]:
            self.put(path, "mine\n")
        before = folders.snapshot(self.dest)
        window = self.offer("--pref:_rename_folder=0")
        self.assertTrue(window.install_and_agree(), "no agreement")
        self.answer(window, OVERWRITE, CANCEL)
        self.assertTrue(desktop.until(window.install_is_live), "the install was not cancelled")
        after = folders.snapshot(self.dest)         # new folders may be there already
        self.assertEqual({path: after[path] for path in before}, before)
        window.click(*desktop.INSTALL)              # it has the agreement
        self.answer(window, OVERWRITE, OVERWRITE_FOLDER, KEEP_FOLDER, KEEP)     # what is to be deleted comes last
        self.assert_completes(window)
        self.assert_installed(self.new.tree.installed(), besides={path: before[path] for path in [DROPPED, *ROCKETS]})
        self.quit(window)

    def test_an_update_by_keyboard_alone(self):
        self.place(self.old.tree.installed())
        self.put(CHANGED, "mine\n")
        before = folders.snapshot(self.dest)
        window = self.offer("--pref:_rename_folder=0")
        window.keys("Tab", "space")                     # the first control is the button of the preferences
        self.assert_shows(window, "preferences")
        window.keys("Tab", "Tab", "Tab", "space", "Escape")     # behind the lists of systems and sizes: full speed
        self.assert_shows(window, "main")
        window.keys("Return")                           # INSTALL
        self.assert_shows(window, "agreement")
        window.keys("Return")                           # nothing has the focus, so it answers nothing
        window.keys("Tab", "Tab", "space")              # I AGREE
        self.assert_shows(window, "changed file")
        window.keys("Escape", "Return")                 # Escape answers no question, Return means KEEP
        self.assert_completes(window)
        self.assert_installed(self.new.tree.installed(), besides={CHANGED: before[CHANGED]})
        window.keys("Return")                           # QUIT
        self.assertEqual(window.process.wait(10), 0)
        self.assertEqual(self.desk.preferences()["_use_max_cpu"], "1")

    def test_the_close_box_ends_a_scan(self):
        """Some gigabytes that are in the way take far longer to sign than anybody waits."""
        self.put(HEAVY, "")
        os.truncate(os.path.join(self.dest, HEAVY), 8 << 30)
        window = self.open()
        self.assert_shows(window, "scan")
        window.keys("Tab", "space")                     # and the screen is alive meanwhile
        self.assert_shows(window, "preferences")
        pressed = time.monotonic()
        window.close_box()
        self.assertEqual(window.process.wait(10), 0)
        self.assertLess(time.monotonic() - pressed, 1)

    def test_another_folder_by_the_button_and_by_the_path(self):
        helper = os.path.join(self.desk.bin, "zenity")
        chosen = os.path.join(self.folder, "elsewhere")
        os.mkdir(chosen)
        with open(helper, "w", encoding="utf-8") as script:
            script.write(f'#!/bin/sh\necho "{chosen}"\n')
        os.chmod(helper, 0o755)
        # The parent of a copy, even where only one folder lacks to a copy, and a copy.
        lacks = ["Airfoils", "Instructions", "Output"], ["Resources"]
        for place, made, taken in zip((desktop.DESTINATION, PATH_FIELD), lacks, ("/Velaris/", "/")):
            for name in made:
                self.put(os.path.join(name, "x"), "", chosen)
            window = self.offer()
            window.click(*place)
            self.assertTrue(desktop.until(window.install_is_live))
            self.quit(window)
            self.assertEqual(self.desk.preferences()["_dest_dir_path"], chosen + taken)

    def test_the_own_chooser_where_the_desktop_has_none(self):
        """By typing, by the list's keys and by the mouse; folders that are there, hidden, or yet to be made."""
        inner = os.path.join(self.folder, "elsewhere", "inner")
        for path in (inner, os.path.join(self.folder, "elsewhere", "Apple"), os.path.join(inner, ".hidden", "deep")):
            os.makedirs(path)
        window = self.offer(PATH=self.desk.bin)     # no dialog of the desktop's

        def choose(*steps):
            window.click(*desktop.DESTINATION)
            self.assert_shows(window, "folder")
            window.click(*at("folder", 300, 82))
            window.keys("ctrl+a")
            for step in steps:
                if callable(step):
                    step()
                elif step.startswith("/"):
                    window.type(step)
                else:
                    window.keys(*step.split())
            self.assert_shows(window, "main")
            return self.shown_destination(window)

        def click(x, y):
            return lambda: window.click(*at("folder", x, y))
        above, take = os.path.dirname(inner), click(402, 28)
        seen = [
            # The second row is "Apple", the third "inner": the first leads one folder up.
            choose(above, "Return", click(100, 345), take),
            choose(above, "Return", click(540, 28)),                        # CANCEL
            choose(click(30, 28), "shift+Tab period h Return d Return", take),      # in inner, where it starts
            choose(inner + "/yet to come", "Return"),
            choose(inner + "/made here", click(262, 28), "Return"),         # NEW FOLDER
        ]
        self.quit(window)
        self.assertEqual(seen[0], seen[1])
        self.assertEqual(len(set(seen)), 4)
        self.assertEqual(self.desk.preferences()["_dest_dir_path"], inner + "/made here/Velaris/")
        self.assertTrue(os.path.isdir(inner + "/made here"))
        self.assertFalse(os.path.exists(inner + "/yet to come"))

    @staticmethod
    def shown_destination(window):
        return window.steady().crop((140, 670, 430, 688)).tobytes()

    def test_the_chosen_server_serves(self):
        other = installer.keep_up(self, servers.Nginx(self.publisher.web, os.path.join(self.folder, "nginx2")))
        self.publisher.announce(self.new, [self.server.address, other.address])
        self.addCleanup(self.publisher.announce, self.new, [self.server.address])
        before = len(other.requests())
        window = self.offer()
        for server, y in ((self.server, 578), (other, 558)):
            window.click(142, y + 3)
        self.assertTrue(window.install_and_agree(), "no agreement")
        self.assert_completes(window)
        files = [path for _, path in other.requests()[before:] if path.endswith(".zip") and "directory" not in path]
        self.assertGreaterEqual(len(files), len(self.new.tree.installed()))
        self.quit(window)

    def test_preferences_by_mouse_and_keyboard_are_kept(self):
        window = self.offer()
        window.click(*desktop.PREFERENCES)
        self.assert_shows(window, "preferences")
        for y in (265, 230, 190, 150):          # processor, name of the folder, always ask, streams by hand
            window.click(*at("preferences", 30, y + 4))
        window.click(*at("preferences", 406, 150 + 14))     # up: 2 streams
        window.keys("Down", "3")                            # nothing has the keyboard, so nothing changes
        window.click(*at("preferences", 406, 150))          # the digit's lower half: 1, and the keyboard goes to it
        window.keys("Up", "Up")                             # 3
        window.click(*at("preferences", 300, 44))
        window.type("proxy.example")
        window.keys("Tab")
        window.type("8088")
        window.keys("shift+Tab", "Home", "End", "ctrl+a", "ctrl+x", "ctrl+v", "ctrl+a")
        window.type("firewall.example")
        window.click(*at("preferences", 200, 313))          # the list of systems opens
        window.click(*at("preferences", 200, 313 + 12))     # the row above: Windows
        window.click(*at("preferences", 588, 370))
        self.assert_shows(window, "main")
        self.quit(window)
        wanted = {"_use_max_cpu": "1", "_rename_folder": "0", "_always_ask_dir": "1", "_stream_count": "3",
                  "_proxy_host": "firewall.example", "_proxy_port": "8088", "_proxy_port_int": "8088"}
        have = self.desk.preferences()
        self.assertEqual({key: have[key] for key in wanted}, wanted)

        # The next start reads them back: always ask, once cancelled, and the box for the processor is ticked.
        os.symlink("/bin/false", os.path.join(self.desk.bin, "zenity"))
        window = self.open(dest=False)
        window.click(*desktop.PREFERENCES)
        self.assert_shows(window, "preferences")
        ticked, clear = (window.grab().crop(box_of(*at("preferences", 30, y + 3))).tobytes() for y in (265, 230))
        self.assertNotEqual(ticked, clear)
        window.keys("Return")
        self.assert_shows(window, "main")
        self.quit(window)
        self.assertEqual({key: self.desk.preferences()[key] for key in wanted}, wanted)

    def test_a_proxy_typed_in_is_used(self):
        proxy = installer.keep_up(self, servers.Tinyproxy(os.path.join(self.folder, "proxy")))
        window = self.offer()
        window.click(*desktop.PREFERENCES)
        self.assert_shows(window, "preferences")
        window.keys("shift+Tab", "shift+Tab")       # the last control is the port, the one before it the host
        window.type("127.0.0.1")
        window.keys("Tab")
        window.type(str(proxy.port))
        window.keys("Return")
        self.assert_shows(window, "main")
        self.assertTrue(window.install_and_agree(), "no agreement")
        self.assert_completes(window)
        self.assertGreaterEqual(len(proxy.requests()), len(self.new.tree.installed()))
        self.assert_installed(self.new.tree.installed())
        self.quit(window)

    def test_quit_in_the_middle_and_a_second_run(self):
        held = installer.faulty(self, self.publisher, self.new)
        self.host = held.address
        gate = held.hold_after(3)
        window = self.offer()
        self.assertTrue(window.install_and_agree(), "no agreement")
        self.assertTrue(gate.reached.wait(30), "nothing was asked for")
        self.assert_shows(window, "main")
        self.quit(window)
        gate.open()
        self.host = self.server.address
        window = self.offer()
        self.assertTrue(window.install_and_agree(), "no agreement")
        self.assert_completes(window)
        self.assert_installed(self.new.tree.installed())
        self.quit(window)

    def test_an_alert_waits_for_return(self):
        os.makedirs(self.dest)
        window = self.offer()
        other_run = os.open(self.dest, os.O_RDONLY)
        self.addCleanup(os.close, other_run)
        fcntl.flock(other_run, fcntl.LOCK_EX)
        for acknowledge in (lambda: window.keys("Return"), lambda: window.click(*at("alert", 210, 18))):
            window.click(*desktop.INSTALL)
            self.assert_shows(window, "alert")
            window.click(*at("alert", 408, 242))    # no corner closes it
            self.assertEqual(window.screen(), "alert")
            acknowledge()
            self.assert_shows(window, "main")
        self.assertEqual(os.listdir(self.dest), [])
        fcntl.flock(other_run, fcntl.LOCK_UN)
        self.quit(window)
        self.assertEqual(self.desk.log().count("Another copy of this program is at work on this folder:"), 2)

    def test_the_desktops_ways_to_end_it_are_quit(self):
        """The window manager's close box and signals, whatever is open."""
        for screen, opener, end in (("main", None, desktop.Window.close_box),
                                    ("agreement", desktop.INSTALL, desktop.Window.close_box),
                                    ("preferences", desktop.PREFERENCES, lambda w: w.process.terminate()),
                                    ("main", None, lambda w: w.process.send_signal(signal.SIGINT))):
            with self.subTest(screen):
                window = self.offer("--pref:_stream_count=4")
                if opener:
                    window.click(*opener)
                self.assert_shows(window, screen)
                end(window)
                self.assertEqual(window.process.wait(10), 0)
                self.assertEqual(self.desk.preferences()["_stream_count"], "4")
                self.assertEqual(os.listdir(self.desk.tmp), [])

    def test_what_it_says_where_it_cannot_start(self):
        outcome = self.finish(self.start("--list_host=127.0.0.1:1"))
        self.assertEqual(outcome.status, 1)
        for words in ("I could not set up the graphics for Velaris!", "The system says: ", "--console"):
            self.assertIn(words, outcome.err)
        outcome = self.finish(self.start("--list_host=a b", DISPLAY=self.display.name))
        self.assertEqual((outcome.status, outcome.err.count("\n")), (2, 1), outcome)


def box_of(x, y, half=8):
    return x - half, desktop.HEIGHT - y - half, x + half, desktop.HEIGHT - y + half


if __name__ == "__main__":
    installer.main()
