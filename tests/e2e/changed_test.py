"""Files that the user changed: every way of answering, in the options and on a terminal."""
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import folders
import installer
import release

HERON = "Aircraft/Heron/"
EDITED = {                                  # what the user wrote -> what the release has there
    HERON + "cockpit.txt": "two\n",         # new in this release
    HERON + "engine.txt": "same\n",         # as in the last one
    HERON + "old.txt": None,                # withdrawn
    HERON + "sounds/wind.txt": "wind two\n",
    "Weapons/rocket.wpn": "rocket two\n",
}


def first():
    tree = release.landmarks()
    tree.add("All/Aircraft/Heron/cockpit.txt", "one\n").add("All/Aircraft/Heron/engine.txt", "same\n")
    tree.add("All/Aircraft/Heron/old.txt", "gone soon\n").add("All/Aircraft/Heron/sounds/wind.txt", "wind one\n")
    tree.add("All/Aircraft/Heron/plain.txt", "plain one\n").add("All/Weapons/rocket.wpn", "rocket one\n")
    tree.link("All/Instructions/latest", "one")
    return tree


def second():
    tree = first().remove("All/Aircraft/Heron/old.txt")
    tree.add("All/Aircraft/Heron/cockpit.txt", "two\n").add("All/Aircraft/Heron/sounds/wind.txt", "wind two\n")
    tree.add("All/Aircraft/Heron/plain.txt", "plain two\n").add("All/Weapons/rocket.wpn", "rocket two\n")
    tree.add("All/Instructions/news.txt", "read this\n")
    return tree


class ChangedTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        cls.publisher, (cls.old, cls.new) = installer.publish(
            cls, (first(), "Velaris 9.00 Beta-18", 90018), (second(), "Velaris 9.00 Beta-19", 90019))
        cls.server = installer.nginx_for(cls, cls.publisher, cls.new)

    def setUp(self):
        super().setUp()
        self.host = self.server.address
        self.place(self.old.tree.installed())
        for path in EDITED:
            self.put(path, f"my own {path}")
        self.before = folders.snapshot(self.dest)

    def assert_kept(self, *kept):
        """The release, but with the user's own text in `kept` and nowhere else."""
        besides = {path: self.before[path] for path in kept}
        self.assert_installed(self.new.tree.installed(), besides=besides)

    def assert_no_file_touched(self):
        files = {path: facts for path, facts in folders.snapshot(self.dest).items() if facts[0] != "folder"}
        self.assertEqual(files, {path: facts for path, facts in self.before.items() if facts[0] != "folder"})

    def test_option_answers_for_every_file(self):
        self.install("--changed=keep")
        self.assert_kept(*EDITED)
        self.install("--changed=overwrite")
        self.assert_kept()

    def test_cancel_and_silence_without_a_terminal_leave_all_files_alone(self):
        for options in (["--changed=cancel"], []):
            with self.subTest(options=options):
                outcome = self.install(*options, status=3)
                self.assertIn(os.path.join(self.dest, HERON + "cockpit.txt"), outcome.err)
                self.assertIn("--changed=", outcome.err)
                self.assert_no_file_touched()

    def answer(self, answers, *options, status=0):
        """Answers each question by `answers` (path -> keys); returns the paths that were asked for."""
        terminal = self.terminal("--agree", "--quiet", *options)
        asked = []
        while True:
            if not self.question_comes(terminal):
                break
            lines = installer.plain(installer.text_of(terminal.seen)).replace("\r", "").split("\n")
            place = max(number for number, line in enumerate(lines) if line.startswith("I am about to "))
            path = lines[place + 1].removeprefix(self.dest + "/")
            removing = lines[place] == "I am about to DELETE:"
            self.assertEqual(removing, EDITED.get(path, "") is None, lines)
            self.assertIn("1 DELETE" if removing else "1 OVERWRITE", lines[place + 3])
            asked.append(path)
            terminal.type(answers[path] + "\n")
        self.assertEqual(terminal.end(), status, installer.text_of(terminal.seen))
        return asked

    @staticmethod
    def question_comes(terminal):
        while b"Your choice [1-5]: " not in terminal.seen:
            if not terminal.read(30):
                return False
        return True

    def test_answers_for_one_file_reach_no_other(self):
        asked = self.answer({HERON + "cockpit.txt": "1", HERON + "engine.txt": "2", HERON + "old.txt": "1",
                             HERON + "sounds/wind.txt": "2", "Weapons/rocket.wpn": "1"})
        self.assertEqual(sorted(asked), sorted(EDITED))
        self.assert_kept(HERON + "engine.txt", HERON + "sounds/wind.txt")

    def test_answers_for_a_folder_hold_for_it_and_not_for_the_one_below(self):
        everything = dict.fromkeys(EDITED, "2")
        asked = self.answer({**everything, HERON + "cockpit.txt": "4"})
        self.assertEqual(set(asked), {HERON + "cockpit.txt", HERON + "sounds/wind.txt", "Weapons/rocket.wpn"})
        self.assert_kept(HERON + "sounds/wind.txt", "Weapons/rocket.wpn")

    def test_keeping_a_folder_also_keeps_what_was_withdrawn_there(self):
        asked = self.answer({HERON + "cockpit.txt": "5", HERON + "sounds/wind.txt": "1", "Weapons/rocket.wpn": "1"})
        self.assertEqual(len(asked), 3)
        self.assert_kept(*(path for path in EDITED if path.startswith(HERON) and "sounds" not in path))

    def test_cancel_after_some_answers_has_touched_nothing(self):
        asked = self.answer({HERON + "cockpit.txt": "1", HERON + "engine.txt": "3"}, status=3)
        self.assertEqual(len(asked), 2)
        self.assert_no_file_touched()

    def test_answer_that_is_none_is_asked_again_and_the_end_of_input_cancels(self):
        terminal = self.terminal("--agree", "--quiet")
        for keys in ("6\n", "yes\n", "\n", "11\n"):
            terminal.expect("Your choice [1-5]: ")
            terminal.type(keys)
        terminal.expect("Your choice [1-5]: ")
        terminal.type("\x04")
        self.assertEqual(terminal.end(), 3)
        self.assert_no_file_touched()

    def test_link_that_the_user_turned_elsewhere_counts_as_changed(self):
        link = os.path.join(self.dest, "Instructions/latest")
        os.unlink(link)
        os.symlink("mine", link)
        self.install("--changed=keep")
        self.assertEqual(os.readlink(link), "mine")
        self.install("--changed=overwrite")
        self.assert_kept()

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
        terminal = self.terminal("--changed=overwrite", "--quiet")
        terminal.expect("Do you agree?")
        terminal.type("y\n")
        self.assertEqual(terminal.end(), 0)
        self.assert_kept()


if __name__ == "__main__":
    installer.main()
