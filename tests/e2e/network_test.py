"""Servers that fail, mirrors, a proxy, streams and giving up.

VELARIS_SEED sets what goes wrong with two thousand files; it is told, so that a failure can be had again.
"""
import os
import random
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import installer
import release
import servers
from release import NEW as NAME

BASE = f"/beta/{NAME}/"
HERON = BASE + "All/Aircraft/Heron/Heron.acf.zip"
SEED = int(os.environ.get("VELARIS_SEED", str(random.randrange(10 ** 6))))
FILES = 2000

FAILURES = [servers.reset, servers.hang_up, servers.promise_less, servers.promise_more, servers.refuse(404),
            servers.refuse(500), servers.refuse(503), servers.refuse(302, "Found")]
LIES = [servers.corrupt, servers.web_page, servers.nothing, servers.cut_short, servers.other_content]
ODDITIES = [servers.serve, servers.dawdle, servers.interim, servers.drip]      # they bring the file
# Each of these is found out by its silence alone, after half a minute.
SILENT = [servers.stall, servers.say_nothing, servers.end_early, servers.no_length]


def tiles(count, dice, size=lambda dice: int(10 ** dice.uniform(0, 4.3))):
    tree = release.sample()
    for number in range(count):
        tree.add(f"All/Custom Scenery/{number % 13}/{number % 7}/tile {number}.dat", dice.randbytes(size(dice)),
                 mode=dice.choice((0o644, 0o755)))
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


class NetworkTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        # Large enough that the number of streams goes by the network, even on a machine that has other things to do.
        tree = tiles(80, random.Random(0), lambda dice: 50_000)
        cls.publisher, (cls.new,) = installer.publish(cls, tree)
        cls.good = installer.nginx_for(cls, cls.publisher, cls.new)

    def setUp(self):
        super().setUp()
        self.named = os.path.join(os.path.dirname(self.dest), NAME)

    def assert_complete(self):
        self.assert_installed(self.new.tree.installed(), self.named)

    def test_dead_mirror_is_left_for_a_good_one(self):
        dead = f"127.0.0.1:{servers.free_port()}"
        empty = installer.keep_up(self, servers.FaultServer(self.folder))     # knows no file at all
        good = self.good.address
        lists = installer.faulty(self, self.publisher, self.new, [dead, empty.address, good, good])
        self.host = lists.address
        self.install()
        self.assert_complete()
        self.assertEqual(set(lists.asked), {"/serverlist.txt"})

    def test_every_file_arrives_whole_from_mirrors_that_fail_and_lie(self):
        dice = random.Random(SEED)
        publisher, (made,) = installer.publish(self, tiles(FILES, dice))
        one = installer.faulty(self, publisher, made)
        mirrors = [one] + [installer.keep_up(self, servers.FaultServer(publisher.web, one)) for _ in range(2)]
        text = release.server_list(NAME, [mirror.address for mirror in mirrors])
        one.replies["/serverlist.txt"] = text.encode()
        one.script["/serverlist.txt"] = [servers.reset, servers.refuse(500), servers.interim]
        one.script[BASE + "directory.txt.zip"] = [servers.hang_up, servers.refuse(404), servers.promise_more,
                                                  servers.drip]
        paths = list(fetched_in_order(made))
        # An empty file has no bytes to be corrupted: such a fault would rightly pass.
        for path in dice.sample([path for path in paths if "flat plate" not in path], FILES * 2 // 5):
            one.script[path] = troubles(dice)
        # At the very end, where all of them wait at the same time.
        for path, fault in zip(paths[-len(SILENT):], SILENT):
            one.script[path] = [fault, servers.serve]
        self.host = one.address
        print(f"VELARIS_SEED={SEED}", flush=True)
        outcome = self.install("--pref:_rename_folder=0", timeout=120)
        self.assertNotRegex(outcome.out, r"(?m)^\d+% .* -\d", "a size or a time below nothing")
        self.assert_installed(made.tree.installed())
        for mirror in mirrors:
            self.assertGreater(len(mirror.asked), 100, "a mirror was left out")
        untried = [path for path, faults in one.script.items() if one.tries.get(path, 0) < len(faults)]
        self.assertEqual(untried, [], "some faults did not happen")

    def test_proxy_is_the_only_way_out(self):
        self.publisher.announce(self.new, ["mirror.example"])
        self.addCleanup(self.publisher.announce, self.new, [self.good.address])
        proxy = installer.keep_up(self, servers.Tinyproxy(os.path.join(self.folder, "proxy"), self.good.address))
        asked_before = len(self.good.requests())
        # No --list_host: the built-in host, which no name service knows; nor is the mirror's name known to any.
        self.install("--pref:_proxy_host=127.0.0.1", f"--pref:_proxy_port_int={proxy.port}", "--give_up=30")
        self.assert_complete()
        seen = proxy.requests()
        self.assertEqual(seen[0], "http://www.tarvex.example/serverlist.txt")
        self.assertTrue(all(one.startswith("http://mirror.example" + "/beta/") for one in seen[1:]), seen[:5])
        self.assertEqual(len(seen), len(self.good.requests()) - asked_before)

    def test_number_of_streams_is_the_one_wished_for(self):
        for wished, most in ((1, 1), (3, 3), (0, 4)):
            with self.subTest(streams=wished):
                server = installer.faulty(self, self.publisher, self.new)
                self.host = server.address
                gate = server.hold_after(30)            # by then the number has settled
                # As long as nothing comes there is time for one too many.
                self.install("--give_up=1", f"--pref:_stream_count={wished}", "--pref:_rename_folder=0", status=4,
                             dest=os.path.join(self.folder, f"with {wished}"))
                self.assertEqual(gate.held, most)

    def test_gives_up_in_time_wherever_it_is_stuck(self):
        def trickle(link, status, body):
            link.sendall(servers.head(200, 100000))
            while True:
                link.sendall(b"x")
                time.sleep(0.05)

        stuck = {
            "no server": None,
            "no list": {"/serverlist.txt": [servers.refuse(404)]},
            "silent list": {"/serverlist.txt": [servers.say_nothing]},
            "no catalogue": {BASE + "directory.txt.zip": [servers.refuse(404)]},
            "no file": {HERON: [servers.refuse(503)]},
            "silent files": {HERON: [servers.stall]},
            "files that never end": {HERON: [trickle]},
        }
        for case, script in stuck.items():
            with self.subTest(case=case):
                self.host = f"127.0.0.1:{servers.free_port()}"
                if script is not None:
                    server = installer.faulty(self, self.publisher, self.new)
                    server.script = script
                    self.host = server.address
                start = time.monotonic()
                outcome = self.install("--give_up=1", status=4, dest=os.path.join(self.folder, case))
                self.assertLess(time.monotonic() - start, 12, outcome)
                self.assertIn("give up", outcome.err)
                self.assertEqual(os.listdir(self.desk.tmp), [])
        self.host = self.good.address
        self.install("--pref:_rename_folder=0", dest=os.path.join(self.folder, "no file"))
        self.assert_installed(self.new.tree.installed(), os.path.join(self.folder, "no file"))

    def test_server_that_has_no_file_is_not_hammered(self):
        server = installer.faulty(self, self.publisher, self.new)
        server.script = {"*": [servers.refuse(404)], "/serverlist.txt": [servers.serve],
                         BASE + "directory.txt.zip": [servers.serve]}
        self.host = server.address
        self.install("--give_up=3", status=4)
        self.assertLess(len(server.asked), 60)

    def test_large_file_goes_on_in_the_next_run(self):
        tree = release.landmarks().add("All/Resources/scenery/big.dat", release.noise(12_000_000, "big"))
        publisher, (new,) = installer.publish(self, tree)
        web = installer.nginx_for(self, publisher, new)
        self.host = web.address
        parts = os.path.join(self.desk.home, ".cache", "velaris")
        os.makedirs(parts)
        old, strange = (os.path.join(parts, name) for name in ("0" * 32 + ".part", "mine.txt"))
        for path in (old, strange):
            with open(path, "w", encoding="ascii") as text:
                text.write("left here")
            os.utime(path, (0, 0))
        for left in (3_000_000, 7_000_000):
            run = self.start("--agree", "--limit_rate=4M", "--pref:_rename_folder=0")

            def come():
                return max((os.path.getsize(os.path.join(parts, name)) for name in os.listdir(parts)), default=0)
            self.assertTrue(installer.wait_until(lambda: come() > left, 20))
            run.kill()
            self.finish(run)
            self.assertFalse(os.path.exists(old), "a month has passed")
        broken = come()
        outcome = self.install("--json", "--pref:_rename_folder=0")
        self.assert_installed(new.tree.installed())
        self.assertEqual([status for status, path in web.requests() if path.endswith("big.dat.zip")].count(206), 2)
        self.assertGreater(broken, 7_000_000, outcome)
        self.assertEqual(os.listdir(parts), ["mine.txt"], "a complete install leaves no parts")
        # What lies there is believed as little as what comes: another file's bytes are fetched once more from the start.
        self.dest += " again"
        signature = next(line.split(" ")[6] for line in new.catalogue().decode().splitlines() if line.endswith("big.dat"))
        with open(os.path.join(parts, signature + ".part"), "wb") as part:
            part.write(release.noise(5_000_000, "other"))
        self.install("--pref:_rename_folder=0")
        self.assert_installed(new.tree.installed())

    def test_rate_is_kept_without_bursts(self):
        limit = 400_000
        meter = installer.keep_up(self, servers.Meter(self.good.port))
        self.publisher.announce(self.new, [meter.address])
        self.addCleanup(self.publisher.announce, self.new, [self.good.address])
        self.host = meter.address
        self.install("--limit_rate=400k", "--quiet")
        self.assert_complete()
        start, end = meter.seen[0][0], meter.seen[-1][0]
        self.assertGreater(end - start, 8)

        def rate(begin, length):
            return sum(size for when, size in meter.seen if begin <= when - start < begin + length) / length
        # In the first second the buffers on the way are filled, too, and in the last one emptied.
        self.assertLess(abs(rate(1, end - start - 2) - limit), limit * 0.05)
        for tenth in range(int(10 * (end - start - 1))):
            self.assertLess(rate(tenth / 10, 1), 2 * limit, f"a burst after {tenth / 10} seconds")

    def test_does_not_give_up_while_files_come(self):
        slow = installer.keep_up(self, servers.FaultServer(self.publisher.web))
        slow.replies["/serverlist.txt"] = release.server_list(NAME, [slow.address]).encode()

        def late(link, status, body):
            time.sleep(0.05)
            servers.serve(link, status, body)

        def slowly(link, status, body):
            link.sendall(servers.head(status, len(body)))
            for start in range(0, len(body), 8000):
                link.sendall(body[start:start + 8000])
                time.sleep(0.3)
        slow.script["*"] = [late]
        slow.script[BASE + "Linux/Velaris.zip"] = [slowly]
        self.host = slow.address
        start = time.monotonic()
        self.install("--give_up=1", "--pref:_stream_count=1")
        self.assertGreater(time.monotonic() - start, 2, "too fast to prove anything")
        self.assert_complete()


if __name__ == "__main__":
    installer.main()
