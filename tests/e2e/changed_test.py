"""Files that the user changed: every way of answering, in the options and on a terminal."""
import os
import shutil
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import folders
import installer
import release

HERON = "Aircraft/Heron/"
COCKPIT, ENGINE, GONE, WIND, ROCKET = EDITED = [
    HERON + "cockpit.txt",          # new in this release
    HERON + "engine.txt",           # as in the last one
    HERON + "old.txt",              # withdrawn
    HERON + "sounds/wind.txt",
    "Weapons/rocket.wpn",
]
OVERWRITE, KEEP, CANCEL, OVERWRITE_FOLDER, KEEP_FOLDER, BACKUP = "123456"


class ChangedTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        cls.publisher, (cls.old, _, cls.new) = installer.publish(cls, *release.history())
        cls.server = installer.nginx_for(cls, cls.publisher, cls.new)

    def setUp(self):
        super().setUp()
        self.host = self.server.address
        self.begin()

    def begin(self):
        """The copy that the user changed."""
        shutil.rmtree(self.dest, ignore_errors=True)
        self.place(self.old.tree.installed())
        for path in EDITED:
            self.put(path, f"my own {path}")
        self.before = folders.snapshot(self.dest)

    def assert_kept(self, *kept):
        """The release, but with the user's own text in `kept` and nowhere else."""
        self.assert_installed(self.new.tree.installed(), besides={path: self.before[path] for path in kept})

    def copies_of(self, *changed):
        """The names under which the user's versions stay beside the release's: "rocket (mine 2026-11-23).wpn"."""
        today = time.strftime("%Y-%m-%d")
        return {f"{stem} (mine {today}){ending}": self.before[stem + ending]
                for stem, ending in map(os.path.splitext, changed)}

    def assert_no_file_touched(self):
        files = {path: facts for path, facts in folders.snapshot(self.dest).items() if facts[0] != "folder"}
        self.assertEqual(files, {path: facts for path, facts in self.before.items() if facts[0] != "folder"})

    def test_option_answers_for_every_file(self):
        link = os.path.join(self.dest, "Instructions/latest")       # turned elsewhere, it counts as changed
        os.unlink(link)
        os.symlink("mine", link)
        self.before = folders.snapshot(self.dest)
        for options in (["--changed=cancel"], []):                  # without a terminal, silence cancels
            with self.subTest(options=options):
                outcome = self.install(*options, status=3)
                self.assertIn(os.path.join(self.dest, COCKPIT), outcome.err)
                self.assertIn("--changed=", outcome.err)
                self.assert_no_file_touched()
        self.install("--changed=keep", "--pref:_rename_folder=0")
        self.assert_kept(*EDITED, "Instructions/latest")
        self.install("--changed=backup", "--pref:_rename_folder=0")
        self.assert_installed(self.new.tree.installed(), besides=self.copies_of(*EDITED, "Instructions/latest"))
        self.begin()
        self.install("--changed=overwrite", "--pref:_rename_folder=0")
        self.assert_kept()

    def answer(self, answers):
        """Answers each question by `answers` (path -> keys); returns the paths that were asked for, and the status."""
        terminal = self.terminal("--agree", "--quiet", "--pref:_rename_folder=0")
        asked = []
        while self.question_comes(terminal):
            lines = installer.plain(installer.text_of(terminal.seen)).replace("\r", "").split("\n")
            place = max(number for number, line in enumerate(lines) if line.startswith("I am about to "))
            path = lines[place + 1].removeprefix(self.dest + "/")
            removing = lines[place] == "I am about to DELETE:"
            self.assertEqual(removing, path == GONE, lines)
            self.assertIn("1 DELETE" if removing else "1 OVERWRITE", lines[place + 3])
            asked.append(path)
            terminal.type(answers[path] + "\n")
        return asked, terminal.end()

    @staticmethod
    def question_comes(terminal):
        while b"Your choice [1-6]: " not in terminal.seen:
            if not terminal.read(30):
                return False
        return True

    def test_answers_reach_as_far_as_they_say(self):
        # What is answered, for a file or for its folder and not for the one below -> what is asked for, what is kept, and beside what a copy.
        cases = {
            "one by one": ({COCKPIT: OVERWRITE, ENGINE: KEEP, GONE: OVERWRITE, WIND: KEEP, ROCKET: BACKUP},
                           [ENGINE, WIND], [ROCKET]),
            "overwrite a folder": ({COCKPIT: OVERWRITE_FOLDER, WIND: KEEP, ROCKET: KEEP}, [WIND, ROCKET], []),
            "keep a folder": ({COCKPIT: KEEP_FOLDER, WIND: OVERWRITE, ROCKET: OVERWRITE}, [COCKPIT, ENGINE, GONE], []),
        }
        for case, (answers, kept, copied) in cases.items():
            with self.subTest(case=case):
                self.begin()
                asked, status = self.answer(answers)
                self.assertEqual((sorted(asked), status), (sorted(answers), 0))
                self.assert_installed(self.new.tree.installed(),
                                      besides={path: self.before[path] for path in kept} | self.copies_of(*copied))
        self.begin()
        self.assertEqual(self.answer({COCKPIT: OVERWRITE, ENGINE: CANCEL}), ([COCKPIT, ENGINE], 3))
        self.assert_no_file_touched()

    def test_answer_that_is_none_is_asked_again_and_the_end_of_input_cancels(self):
        terminal = self.terminal("--agree", "--quiet")
        for keys in ("7\n", "yes\n", "\n", "11\n", "\x04"):
            terminal.expect("Your choice [1-6]: ")
            terminal.type(keys)
        self.assertEqual(terminal.end(), 3)
        self.assert_no_file_touched()

    def test_licence_is_asked_on_a_terminal_and_needed_without_one(self):
        for keys in ("n\n", "\n", "\x04"):
            terminal = self.terminal("--changed=keep", "--quiet")
            terminal.expect("You agree to not make copies of Velaris.")
            terminal.expect("Do you agree?")
            terminal.type(keys)
            self.assertEqual(terminal.end(), 3)
        outcome = self.run_installer("--changed=keep")
        self.assertEqual(outcome.status, 3, outcome)
        self.assertIn("--agree", outcome.err)
        self.assert_no_file_touched()
        terminal = self.terminal("--changed=overwrite", "--quiet", "--pref:_rename_folder=0")
        terminal.expect("Do you agree?")
        terminal.type("y\n")
        self.assertEqual(terminal.end(), 0)
        self.assert_kept()


if __name__ == "__main__":
    installer.main()
