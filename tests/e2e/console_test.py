"""What the console says: to a person on a terminal, to a log, and to a script."""
import os
import re
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import folders
import installer
import release
import servers
from release import NEW

COCKPIT, GONE = "Aircraft/Heron/cockpit.txt", "Aircraft/Heron/old.txt"      # the user's: new in the release, withdrawn


class ConsoleTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        cls.publisher, (cls.old, _, cls.new) = installer.publish(cls, *release.history())
        cls.server = installer.nginx_for(cls, cls.publisher, cls.new)
        wanted, withdrawn = release.steps(cls.old.tree, cls.new.tree)
        cls.kilobytes = cls.new.kilobytes(wanted)
        # Without the user's two, which are asked about; and what is not UTF-8 is told in other words.
        cls.fetched = [path.split("/", 1)[1] for path in wanted if not path.endswith((COCKPIT, release.LATIN))]
        cls.deleted = [path for path in withdrawn if path != GONE]

    def setUp(self):
        super().setUp()
        self.host = self.server.address
        self.place(self.old.tree.installed())
        self.put(COCKPIT, "mine")
        self.put(GONE, "mine")

    def test_check_tells_each_decision_and_changes_nothing(self):
        before = folders.snapshot(self.dest)
        outcome = self.run_installer("--check")
        self.assertEqual(outcome.status, 0, outcome)
        down, disk = self.kilobytes
        told = re.findall("(?m)^(?:FETCH |DELETE |ASK |to download:|to install:).*", outcome.out)
        umlaut = "Resources/K\N{REPLACEMENT CHARACTER}ln 'quoted'.txt"
        self.assertEqual(told[:2], [f"to download: {down} kB", f"to install: {disk} kB"])
        self.assertEqual(sorted(told[2:]), sorted(
            [f"ASK {path}" for path in (COCKPIT, GONE)] + [f"DELETE {path}" for path in self.deleted] +
            [f"FETCH {path}" for path in (*self.fetched, umlaut)]))
        self.assertEqual(outcome.err, "")
        self.assert_same(before)
        nowhere = os.path.join(self.folder, "not there")
        with open("/dev/full", "wb") as full:
            outcome = self.run_installer("--check", "--quiet", dest=nowhere, stdout=full)
        self.assertEqual((outcome.status, outcome.err.count("\n")), (1, 1), outcome)
        self.assertIn("standard output", outcome.err)
        self.assertFalse(os.path.exists(nowhere))
        self.assertEqual(os.listdir(os.path.join(self.desk.config, "velaris")), [], "no preferences either")

    def test_a_long_look_at_the_disk_is_no_reason_to_give_up(self):
        os.truncate(os.path.join(self.dest, "Velaris"), 1 << 30)
        outcome = self.run_installer("--check", "--give_up=0.5", timeout=300)
        self.assertEqual((outcome.status, outcome.err), (0, ""), outcome)

    def test_nothing_to_do_asks_for_no_agreement(self):
        self.install("--changed=keep", "--pref:_rename_folder=0", "--give_up=3000000")
        before = folders.snapshot(self.dest)
        outcome = self.run_installer("--changed=keep")
        self.assertEqual((outcome.status, outcome.err), (0, ""), outcome)
        self.assertIn("Nothing is to be done", outcome.out)
        self.assertNotIn("installing", outcome.out)
        self.assert_same(before)

    def test_json_is_whole_for_every_way_a_run_can_end(self):
        forms = {"status": {"text": str}, "offer": {"name": str, "download_kb": int, "install_kb": int},
                 "progress": dict.fromkeys(("download_kb", "install_kb", "files_done", "files_total", "rate_kb_s",
                                            "seconds_left"), int),
                 "file": {"action": str, "path": str, "result": int},
                 "alert": {"level": int, "lines": list, "place": str}, "end": {"status": int}}
        nowhere = os.path.join(self.folder, "other")
        self.put("a file", "in the way", self.folder)
        runs = [(["--check"], 0, None), (["--changed=keep"], 0, None), (["--changed=cancel"], 3, nowhere),
                ([f"--list_host=127.0.0.1:{servers.free_port()}", "--give_up=0.5"], 4, None),
                ([], 1, os.path.join(self.folder, "a file", "x")), (["--give_up=x"], 2, None)]
        self.place(self.old.tree.installed(), nowhere)
        self.put(COCKPIT, "mine", nowhere)
        for options, status, where in runs:
            with self.subTest(options=options):
                outcome = self.install("--json", *options, status=status, dest=where)
                events = outcome.events()
                self.assertEqual(events[-1], {"event": "end", "status": status})
                for one in events:
                    form = forms[one["event"]]
                    self.assertEqual({key: type(value) for key, value in one.items() if key != "event"}, form, one)
                self.assertEqual(status == 1, any(one["event"] == "alert" for one in events))

    def test_json_tells_the_offer_and_every_file(self):
        events = self.install("--json", "--changed=keep", "--pref:_rename_folder=0").events()
        down, disk = self.kilobytes
        self.assertIn({"event": "offer", "name": NEW, "download_kb": down, "install_kb": disk}, events)
        files = [one for one in events if one["event"] == "file"]
        done = sorted((one["action"], one["path"]) for one in files if one["action"] != "keep")
        umlaut = "Resources/K\u00f6ln 'quoted'.txt"           # each byte that is no UTF-8 as a character
        self.assertEqual(done, sorted([("delete", path) for path in self.deleted] +
                                      [("fetch", path) for path in (*self.fetched, umlaut)]))
        self.assertEqual({one["result"] for one in files}, {0})
        last = [one for one in events if one["event"] == "progress"][-1]
        self.assertEqual((last["files_done"], last["files_total"]), (len(done), len(done)))

    def test_plain_lines_where_there_is_no_terminal(self):
        outcome = self.install("--changed=overwrite")
        self.assertNotRegex(outcome.out + outcome.err, "[\x1b\r\b]")
        for words in ("You have selected an earlier version of Velaris",
                      "You are about to install", f"of files to get {NEW}.", "OK I am installing this now...",
                      "INSTALLATION COMPLETE!"):
            self.assertEqual(outcome.out.count(words), 1, outcome)
        count = str(len(self.fetched) + len(self.deleted) + 3)
        shares = re.findall(r"(?m)^(\d+)% (\d+) of (\d+) files, ", outcome.out)
        self.assertEqual(shares[-1], ("100", count, count), outcome.out)
        self.assertEqual(outcome.err, "")

    def test_terminal_gets_one_line_redrawn_and_colour_unless_it_is_unwanted(self):
        for colour, environment in ((True, {}), (False, {"NO_COLOR": "1"})):
            with self.subTest(environment=environment):
                terminal = self.terminal("--agree", "--changed=keep", "--pref:_rename_folder=0", columns=70,
                                         **environment)
                self.assertEqual(terminal.end(), 0)
                text = installer.text_of(terminal.seen)
                self.assertEqual("\x1b[32m" in text, colour, text)
                bars = re.findall(r"\r(\[[#.]+\] +\d+% [^\r\n]*?)\x1b\[K", text)
                self.assertTrue(bars, text)
                for one in bars:
                    self.assertLess(len(one), 70, "would wrap")
                self.assertNotIn("\n[", text)

    def test_wrong_value_is_wrong_usage_before_anything_is_done(self):
        before, asked = folders.snapshot(self.dest), len(self.server.requests())
        for option in ("--changed=ask", "--give_up=soon", "--target_os=4", "--list_host=127.0.0.1:0", "--chekc"):
            with self.subTest(option=option):
                outcome = self.run_installer("--agree", option)
                self.assertEqual((outcome.status, outcome.out, outcome.err.count("\n")), (2, "", 1), outcome)
                self.assertIn(option.split("=")[0], outcome.err)
        self.assertEqual(len(self.server.requests()), asked)
        self.assert_same(before)

    def test_help_and_version_need_nothing(self):
        for option in ("--help", "-h", "--version"):
            outcome = self.run_installer(option, dest=False)
            self.assertEqual((outcome.status, outcome.err), (0, ""), outcome)
            words = "Velaris 9.00 Beta-19" if option == "--version" else "Usage: Velaris [options...]"
            self.assertIn(words, outcome.out)


if __name__ == "__main__":
    installer.main()
