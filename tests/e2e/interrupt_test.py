"""Runs that are cut short, at any moment and in any way, and two runs at once."""
import os
import signal
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import folders
import installer
import release
import servers

OLD, NEW = "Velaris 9.00 Beta-18", "Velaris 9.00 Beta-19"


def tree(version):
    made = release.sample()
    for number in range(120):
        made.add(f"All/Custom Scenery/Tiles/{number % 7}/tile {number}.dat", release.noise(2000, number + version))
    return made


class InterruptTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        cls.publisher, (cls.old, cls.new) = installer.publish(cls, (tree(0), OLD, 90018), (tree(500), NEW, 90019))
        cls.before = folders.expected(cls.old.tree.installed())
        cls.after = folders.expected(cls.new.tree.installed())

    def setUp(self):
        super().setUp()
        self.place(self.old.tree.installed())
        self.server = installer.faulty(self, self.publisher, self.new)
        self.host = self.server.address

    def update(self, *options):
        return self.start("--agree", "--pref:_rename_folder=0", *options)

    def assert_every_file_is_whole(self):
        """Each file is the old one or the new one."""
        for path, facts in folders.snapshot(self.dest).items():
            if facts[0] != "folder" and (path in self.before or path in self.after):
                self.assertIn(facts, (self.before.get(path), self.after.get(path)), path)

    def assert_next_run_completes(self):
        outcome = self.finish(self.update())
        self.assertEqual(outcome.status, 0, outcome)
        self.assert_installed(self.new.tree.installed())

    def test_killed_between_files_goes_on_where_it_stood(self):
        gate = self.server.hold_after(40)
        run = self.update()
        self.assertTrue(gate.reached.wait(30))
        run.send_signal(signal.SIGKILL)
        self.finish(run)
        gate.open()
        self.assert_every_file_is_whole()
        done = [path for path, facts in folders.snapshot(self.dest).items()
                if facts == self.after.get(path) != self.before.get(path) and facts[0] == "file"]
        self.assertGreater(len(done), 20)
        asked = len(self.server.asked)
        self.assert_next_run_completes()
        again = {path.removeprefix(f"/beta/{NEW}/").split("/", 1)[-1].removesuffix(".zip")
                 for path in self.server.asked[asked:]}
        self.assertEqual(again & set(done), set(), "fetched twice")

    def test_signal_ends_the_run_in_order(self):
        for number, sent in enumerate((signal.SIGINT, signal.SIGTERM, signal.SIGHUP)):
            with self.subTest(signal=sent.name):
                self.dest = os.path.join(self.folder, f"copy {number}")
                self.place(self.old.tree.installed())
                gate = self.server.hold_after(25)
                run = self.update("--json", "--pref:_stream_count=2")
                self.assertTrue(gate.reached.wait(30))
                run.send_signal(sent)
                outcome = self.finish(run, 10)
                gate.open()
                self.assertEqual(outcome.status, 130, outcome)
                self.assertEqual(outcome.events()[-1], {"event": "end", "status": 130})
                self.assertEqual(os.listdir(self.desk.tmp), [])
                self.assertEqual(self.desk.preferences()["_stream_count"], "2")
                self.assert_every_file_is_whole()
                self.assertEqual(set(folders.snapshot(self.dest)) - set(self.before) - set(self.after), set())
        self.assert_next_run_completes()

    def test_signal_ends_a_run_that_waits_for_a_server_or_an_answer(self):
        before = folders.snapshot(self.dest)
        self.server.script["/serverlist.txt"] = [servers.say_nothing]
        run = self.update()
        self.assertTrue(installer.wait_until(lambda: self.server.asked))
        run.send_signal(signal.SIGINT)
        self.assertEqual(self.finish(run, 10).status, 130)
        self.assert_same(before)
        self.server.script.clear()
        terminal = self.terminal("--quiet")
        terminal.expect("Do you agree?")
        terminal.type("\x03")                       # Ctrl-C, by way of the terminal
        self.assertEqual(terminal.end(10), 130)
        self.assertEqual(os.listdir(self.desk.tmp), [])

    def test_second_run_on_the_same_folder_keeps_out(self):
        gate = self.server.hold_after(10)
        one = self.update()
        self.assertTrue(gate.reached.wait(30))
        outcome = self.finish(self.update(), 20)
        self.assertEqual(outcome.status, 5, outcome)
        self.assertIn("Another run", outcome.err)
        elsewhere = os.path.join(self.folder, "elsewhere")
        other = self.start("--agree", "--pref:_rename_folder=0", dest=elsewhere)
        gate.open()
        self.assertEqual(self.finish(one).status, 0)
        self.assertEqual(self.finish(other).status, 0)
        self.assert_installed(self.new.tree.installed())
        self.assert_installed(self.new.tree.installed(), elsewhere)


if __name__ == "__main__":
    installer.main()
