"""Servers that fail, mirrors, a proxy, streams and giving up."""
import os
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import installer
import release
import servers

NAME = "Velaris 9.00 Beta-19"
BASE = f"/beta/{NAME}/"
HERON = BASE + "All/Aircraft/Heron/Heron.acf.zip"


def many():
    tree = release.sample()
    for number in range(40):
        tree.add(f"All/Custom Scenery/Tiles/tile {number}.dat", release.noise(3000, number))
    return tree


class NetworkTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        cls.publisher, (cls.new,) = installer.publish(cls, (many(), NAME, 90019))
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

    def test_every_file_failing_once_is_tried_again(self):
        server = installer.faulty(self, self.publisher, self.new)
        server.script["*"] = [servers.reset, servers.serve]
        self.host = server.address
        self.install()
        self.assert_complete()
        self.assertEqual({path for path in server.tries if server.tries[path] < 2}, set())

    def test_answers_of_every_odd_kind_end_in_a_whole_copy(self):
        server = installer.faulty(self, self.publisher, self.new)
        kinds = [[servers.refuse(404), servers.serve], [servers.refuse(500), servers.refuse(503), servers.serve],
                 [servers.refuse(301, "Moved Permanently"), servers.serve], [servers.promise_less, servers.serve],
                 [servers.drip], [servers.interim]]
        files = sorted(BASE + path + ".zip" for path, item in self.new.tree.items.items()
                       if release.LINUX in item.systems)
        for number, path in enumerate(files):
            server.script[path] = kinds[number % len(kinds)]
        server.script["/serverlist.txt"] = [servers.refuse(500), servers.interim]
        server.script[BASE + "directory.txt.zip"] = [servers.refuse(404), servers.drip]
        self.host = server.address
        outcome = self.install()
        self.assert_complete()
        self.assertNotRegex(outcome.out, r"(?m)^\d+% .* -\d", "a size or a time below nothing")

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
                run = self.start("--agree", f"--pref:_stream_count={wished}", "--pref:_rename_folder=0",
                                 dest=os.path.join(self.folder, f"with {wished}"))
                self.assertTrue(gate.reached.wait(30))
                self.assertTrue(installer.wait_until(lambda: server.busy >= most, 5), f"{server.busy} at once")
                time.sleep(0.3)                         # one more would have come by now
                self.assertEqual(server.busy, most)
                gate.open()
                self.assertEqual(self.finish(run).status, 0)

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
            "no file": {HERON: [servers.refuse(404)]},
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

    def test_does_not_give_up_while_files_get_finished(self):
        slow = installer.keep_up(self, servers.FaultServer(self.publisher.web))
        slow.replies["/serverlist.txt"] = release.server_list(NAME, [slow.address]).encode()

        def late(link, status, body):
            time.sleep(0.05)
            servers.serve(link, status, body)
        slow.script["*"] = [late]
        self.host = slow.address
        start = time.monotonic()
        self.install("--give_up=1", "--pref:_stream_count=1")
        self.assertGreater(time.monotonic() - start, 2, "too fast to prove anything")
        self.assert_complete()


if __name__ == "__main__":
    installer.main()
