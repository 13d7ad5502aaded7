"""Two thousand files by way of mirrors that fail and lie for two files in five: the copy is whole all the same.

VELARIS_SEED sets what goes wrong; it is told, so that a failure can be had again.
"""
import os
import random
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import installer
import release
import servers

NAME = "Velaris 9.00 Beta-19"
BASE = f"/beta/{NAME}/"
SEED = int(os.environ.get("VELARIS_SEED", str(random.randrange(10 ** 6))))
FILES = 2000

FAILURES = [servers.reset, servers.hang_up, servers.promise_less, servers.promise_more, servers.refuse(404),
            servers.refuse(500), servers.refuse(503), servers.refuse(302, "Found")]
LIES = [servers.corrupt, servers.web_page, servers.nothing, servers.cut_short, servers.other_content]
ODDITIES = [servers.serve, servers.dawdle, servers.interim, servers.drip]      # they bring the file
# Each of these is found out by its silence alone, after half a minute.
SILENT = [servers.stall, servers.say_nothing, servers.end_early, servers.no_length]


def many(dice):
    tree = release.sample()
    for number in range(FILES):
        tree.add(f"All/Custom Scenery/{number % 13}/{number % 7}/tile {number}.dat",
                 dice.randbytes(int(10 ** dice.uniform(0, 4.3))), mode=dice.choice((0o644, 0o755)))
    return tree


def troubles(dice):
    """What happens to one file, in turn. A third lie in a row would rightly end the install, so there are two at most."""
    lies = dice.choices((0, 1, 2), (50, 42, 8))[0]
    failures = dice.choices((0, 1, 2), (10, 80, 10))[0] if lies == 0 else dice.choices((0, 1), (90, 10))[0]
    faults = dice.choices(FAILURES, k=failures) + dice.choices(LIES, k=lies)
    dice.shuffle(faults)
    return faults + [dice.choices(ODDITIES, (90, 4, 4, 2))[0]]


def fetched_in_order(made):
    """The paths on the server of all files that are fetched, as the catalogue has them."""
    folder = ""
    for line in made.catalogue().decode().splitlines():
        word, _, rest = line.partition(" ")
        if word == "DIR":
            folder = rest
        elif word == "FILE" and release.LINUX in made.tree.items[folder + rest.split(" ", 6)[6]].systems:
            yield BASE + folder + rest.split(" ", 6)[6] + ".zip"


class FaultTest(installer.Scene):
    def test_every_file_arrives_whole_from_mirrors_that_fail_and_lie(self):
        dice = random.Random(SEED)
        publisher, (made,) = installer.publish(self, (many(dice), NAME, 90019))
        one = installer.faulty(self, publisher, made)
        mirrors = [one] + [installer.keep_up(self, servers.FaultServer(publisher.web, one)) for _ in range(2)]
        text = release.server_list(NAME, [mirror.address for mirror in mirrors])
        one.replies["/serverlist.txt"] = text.encode()
        one.script["/serverlist.txt"] = [servers.reset, servers.refuse(500), servers.serve]
        one.script[BASE + "directory.txt.zip"] = [servers.hang_up, servers.promise_more, servers.serve]
        paths = list(fetched_in_order(made))
        # An empty file has no bytes to be corrupted: such a fault would rightly pass.
        for path in dice.sample([path for path in paths if "flat plate" not in path], FILES * 2 // 5):
            one.script[path] = troubles(dice)
        # At the very end, where all of them wait at the same time.
        for path, fault in zip(paths[-len(SILENT):], SILENT):
            one.script[path] = [fault, servers.serve]

        self.host = one.address
        start = time.monotonic()
        self.install("--quiet", "--pref:_rename_folder=0", timeout=120)
        self.assert_installed(made.tree.installed())
        asked = sum(len(mirror.asked) for mirror in mirrors)
        print(f"VELARIS_SEED={SEED}: {asked} requests for {len(paths)} files in {time.monotonic() - start:.1f} s",
              flush=True)
        for mirror in mirrors:
            self.assertGreater(len(mirror.asked), 100, "a mirror was left out")
        untried = [path for path, faults in one.script.items() if one.tries.get(path, 0) < len(faults)]
        self.assertEqual(untried, [], "some faults did not happen")


if __name__ == "__main__":
    installer.main()
