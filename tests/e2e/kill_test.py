"""Updates that are killed outright, at random moments: no file is ever half of anything, and the next run puts it right.

VELARIS_KILLS sets how many runs are killed, VELARIS_SEED the moments; both are told, so that a failure can be had again.
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

OLD, NEW = "Velaris 9.00 Beta-18", "Velaris 9.00 Beta-19"
KILLS = int(os.environ.get("VELARIS_KILLS", "12"))
SEED = int(os.environ.get("VELARIS_SEED", str(random.randrange(10 ** 6))))
SIZES = (0, 7, 900, 4000, 30_000, 250_000)


def first():
    tree = release.sample()
    for number in range(360):
        tree.add(f"All/Custom Scenery/{number % 9}/{number % 4}/tile {number}.dat", release.noise(SIZES[number % 6], number))
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
        path = f"All/Custom Scenery/{number % 9}/{number % 4}/tile {number}.dat"
        if number % 5 == 0:
            tree.remove(path)
        elif number % 5 < 4:
            tree.add(path, release.noise(SIZES[(number + 1) % 6], -number))
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


class KillTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        publisher, (cls.old, cls.new) = installer.publish(cls, (first(), OLD, 90018), (second(), NEW, 90019))
        cls.before = folders.expected(cls.old.tree.installed())
        cls.after = folders.expected(cls.new.tree.installed())
        cls.server = installer.nginx_for(cls, publisher, cls.new)

    def setUp(self):
        super().setUp()
        self.host = self.server.address
        self.pristine = os.path.join(self.folder, "old copy")
        self.place(self.old.tree.installed(), self.pristine)

    def lay_out_old_copy(self):
        shutil.rmtree(self.dest, ignore_errors=True)
        shutil.copytree(self.pristine, self.dest, symlinks=True)

    def update(self):
        return self.start("--agree", "--quiet", "--pref:_rename_folder=0")

    def assert_every_file_is_old_or_new(self):
        found = folders.snapshot(self.dest)
        for path, facts in found.items():
            if facts[0] == "folder" or os.path.basename(path).startswith(".velaris."):
                continue
            self.assertIn(facts, (self.before.get(path), self.after.get(path)), path)
        # What is replaced has a moment at which it is the other, and none at which it is not there.
        both = {path for path in self.before.keys() & self.after.keys() if not path.endswith("/")}
        self.assertEqual(both - found.keys(), set(), "gone before its successor came")

    def kill(self, moment):
        run = self.update()
        time.sleep(moment)
        run.send_signal(signal.SIGKILL)
        return self.finish(run).status == -signal.SIGKILL

    def test_killed_at_any_moment(self):
        dice = random.Random(SEED)
        self.lay_out_old_copy()
        start = time.monotonic()
        self.assertEqual(self.finish(self.update()).status, 0)
        whole = time.monotonic() - start
        self.assert_installed(self.new.tree.installed())
        print(f"VELARIS_SEED={SEED} VELARIS_KILLS={KILLS}, a whole run takes {whole:.2f} s", flush=True)

        hit, kills = 0, 0
        while kills < KILLS:
            self.lay_out_old_copy()
            for _ in range(dice.choice((1, 1, 2))):     # the run that clears up may be killed as well
                moment = dice.uniform(0, whole)
                with self.subTest(kill=kills, moment=moment, seed=SEED):
                    kills += 1
                    hit += self.kill(moment)
                    self.assert_every_file_is_old_or_new()
            with self.subTest(after=kills, seed=SEED):
                outcome = self.finish(self.update())
                self.assertEqual(outcome.status, 0, outcome)
                self.assert_installed(self.new.tree.installed())
        print(f"{hit} of {kills} runs were still at work when they were killed", flush=True)
        self.assertGreater(hit, KILLS // 2, "the runs were over before they could be killed")


if __name__ == "__main__":
    installer.main()
