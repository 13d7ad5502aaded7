"""Runs that are cut short, at any moment and in any way, and two runs at once: no file is ever half of anything, and the
next run puts it right.

VELARIS_KILLS sets how many runs are killed at random, VELARIS_SEED the moments; both are told, so that a failure can be
had again.
"""
import os
import random
import shutil
import signal
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import folders
import installer
import release
import servers

KILLS = int(os.environ.get("VELARIS_KILLS", "12"))
SEED = int(os.environ.get("VELARIS_SEED", str(random.randrange(10 ** 6))))
SIZES = (0, 7, 900, 4000, 30_000, 250_000)


def tile(number):
    return f"All/Custom Scenery/{number % 9}/{number % 4}/tile {number}.dat"


def first():
    tree = release.sample()
    for number in range(360):
        tree.add(tile(number), release.noise(SIZES[number % 6], number))
    for number in range(20):
        tree.link(f"All/Custom Scenery/links/{number}", f"../{number % 9}/old")
        tree.add(f"All/Aircraft/Going/part {number}.obj", release.noise(5000, number))
    tree.add("All/Resources/turns/into a folder", "I was a file")
    tree.add("All/Resources/turns/into a file/inside.txt", "I was a folder")
    tree.add("All/Resources/turns/into a link", "I was a file")
    tree.link("All/Resources/turns/from a link", "into a folder")
    return tree.add("All/Resources/scenery/big.dat", b"old " * 2_000_000)


def second():
    tree = first()
    for number in range(360):
        if number % 5 == 0:
            tree.remove(tile(number))
        elif number % 5 < 4:
            tree.add(tile(number), release.noise(SIZES[(number + 1) % 6], -number))
    for number in range(20):
        tree.remove(f"All/Aircraft/Going/part {number}.obj")
        if number % 3 != 0:
            tree.link(f"All/Custom Scenery/links/{number}", f"../{number % 9}/new")
        tree.add(f"All/Aircraft/Coming/part {number}.obj", release.noise(5000, number))
    tree.remove("All/Resources/turns/into a folder", "All/Resources/turns/into a file/inside.txt")
    tree.add("All/Resources/turns/into a folder/inside.txt", "I am a folder")
    tree.add("All/Resources/turns/into a file", "I am a file")
    tree.link("All/Resources/turns/into a link", "into a file")
    tree.add("All/Resources/turns/from a link", "I am a file")
    return tree.add("All/Resources/scenery/big.dat", b"new, and longer " * 800_000)


class InterruptTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        cls.publisher, (cls.old, cls.new) = installer.publish(cls, first(), second())
        cls.before = folders.expected(cls.old.tree.installed())
        cls.after = folders.expected(cls.new.tree.installed())
        cls.pristine = os.path.join(installer.private_folder(cls), "old copy")
        release.lay_out(cls.old.tree.installed(), cls.pristine)

    def setUp(self):
        super().setUp()
        self.lay_out_old_copy()
        self.server = installer.faulty(self, self.publisher, self.new)
        self.host = self.server.address

    def lay_out_old_copy(self):
        shutil.rmtree(self.dest, ignore_errors=True)
        shutil.copytree(self.pristine, self.dest, symlinks=True)

    def update(self, *options, **how):
        return self.start("--agree", "--pref:_rename_folder=0", *options, **how)

    def update_held_after(self, count, *options):
        """An update that has fetched `count` files and waits for more; the gate lets it go on."""
        gate = self.server.hold_after(count)
        run = self.update(*options)
        self.assertTrue(gate.reached.wait(30))
        return run, gate

    def assert_every_file_is_old_or_new(self, may_be_left=True):
        """`may_be_left`: what is hidden and not yet in its place."""
        found = folders.snapshot(self.dest)
        for path, facts in found.items():
            if facts[0] != "folder" and not (may_be_left and os.path.basename(path).startswith(".velaris.")):
                self.assertIn(facts, (self.before.get(path), self.after.get(path)), path)
        # What is replaced has a moment at which it is the other, and none at which it is not there.
        both = {path for path in self.before.keys() & self.after.keys() if not path.endswith("/")}
        self.assertEqual(both - found.keys(), set(), "gone before its successor came")

    def assert_next_run_completes(self):
        outcome = self.finish(self.update("--quiet"))
        self.assertEqual(outcome.status, 0, outcome)
        self.assert_installed(self.new.tree.installed())

    def test_killed_between_files_goes_on_where_it_stood(self):
        def done():
            return [path for path, facts in folders.snapshot(self.dest).items()
                    if facts == self.after.get(path) != self.before.get(path) and facts[0] == "file"]

        run, gate = self.update_held_after(80)      # some of which were only asked for ahead
        self.assertTrue(installer.wait_until(lambda: len(done()) > 20, 10))
        run.send_signal(signal.SIGKILL)
        self.finish(run)
        gate.open()
        self.assert_every_file_is_old_or_new()
        placed, asked = done(), len(self.server.asked)
        self.assert_next_run_completes()
        again = {path.removeprefix(f"/beta/{release.NEW}/").split("/", 1)[-1].removesuffix(".zip")
                 for path in self.server.asked[asked:]}
        self.assertEqual(again & set(placed), set(), "fetched twice")

    def test_killed_at_any_moment(self):
        dice = random.Random(SEED)
        self.assert_next_run_completes()
        requests = len(self.server.asked)
        print(f"VELARIS_SEED={SEED} VELARIS_KILLS={KILLS}, a whole run makes {requests} requests", flush=True)
        hit, kills = 0, 0
        while kills < KILLS:
            self.lay_out_old_copy()
            for _ in range(dice.choice((1, 1, 2))):     # the run that clears up may be killed as well
                enough, later = dice.randrange(requests), dice.uniform(0, 0.02)
                with self.subTest(kill=kills, after=enough, later=later, seed=SEED):
                    kills += 1
                    asked = len(self.server.asked)
                    run = self.update("--quiet")
                    # The second of two runs has less to ask for, and may end before.
                    installer.wait_until(lambda: len(self.server.asked) - asked >= enough or run.poll() is not None)
                    time.sleep(later)                   # so that it is hit between two requests as well
                    run.send_signal(signal.SIGKILL)
                    hit += self.finish(run).status == -signal.SIGKILL
                    self.assert_every_file_is_old_or_new()
            with self.subTest(after=kills, seed=SEED):
                self.assert_next_run_completes()
        print(f"{hit} of {kills} runs were still at work when they were killed", flush=True)
        self.assertGreater(hit, KILLS // 2, "the runs were over before they could be killed")

    def test_signal_ends_the_run_in_order(self):
        for sent in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with self.subTest(signal=sent.name):
                self.lay_out_old_copy()
                run, gate = self.update_held_after(25, "--json", "--pref:_stream_count=2")
                run.send_signal(sent)
                outcome = self.finish(run, 10)
                gate.open()
                self.assertEqual(outcome.status, 128 + sent, outcome)
                self.assertEqual(outcome.events()[-1], {"event": "end", "status": 128 + sent})
                self.assertEqual(os.listdir(self.desk.tmp), [])
                self.assertEqual(self.desk.preferences()["_stream_count"], "2")
                self.assert_every_file_is_old_or_new(may_be_left=False)
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
        one, gate = self.update_held_after(10)
        outcome = self.finish(self.update(), 20)
        self.assertEqual(outcome.status, 5, outcome)
        self.assertIn("Another run", outcome.err)
        elsewhere = os.path.join(self.folder, "elsewhere")
        other = self.update(dest=elsewhere)
        gate.open()
        for run, where in ((one, self.dest), (other, elsewhere)):
            self.assertEqual(self.finish(run).status, 0)
            self.assert_installed(self.new.tree.installed(), where)


if __name__ == "__main__":
    installer.main()
