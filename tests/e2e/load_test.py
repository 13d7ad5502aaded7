"""A release of many small files: all of them arrive, and memory stays small."""
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import installer
import release

NAME = "Velaris 9.00 Beta-19"
FILES = 5000
MEMORY_KB = 100_000 if not installer.SANITIZED else 1_000_000


class LoadTest(installer.Scene):
    def test_thousands_of_small_files_arrive_in_little_memory(self):
        tree = release.landmarks()
        for number in range(FILES):
            text = f"{number}\n" * (number % 300)
            tree.add(f"All/Custom Scenery/Tiles {number % 97}/deep/er/tile {number}.dat", text)
        publisher, (new,) = installer.publish(type(self), (tree, NAME, 90019))
        server = installer.nginx_for(self, publisher, new)
        self.host = server.address
        for options in ([], ["--check"]):       # the second hashes what the first has put there
            log = open(os.path.join(self.folder, "output"), "w+b")
            self.addCleanup(log.close)
            run = self.start("--agree", "--quiet", *options, stdout=log, stderr=log)
            # Of this process alone; what forked it does not count as long as it is smaller.
            _, status, used = os.wait4(run.pid, 0)
            run.returncode = os.waitstatus_to_exitcode(status)
            log.seek(0)
            self.assertEqual(run.returncode, 0, log.read())
            self.assertLess(used.ru_maxrss, MEMORY_KB, "kilobytes at the most")
        self.assert_installed(new.tree.installed())
        self.assertEqual(len(server.requests()), len(new.tree.installed()) + 2 + 2)


if __name__ == "__main__":
    installer.main()
