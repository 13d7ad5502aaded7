"""Much of everything: thousands of small files, a file of three gigabytes; all of it arrives, and memory stays small."""
import os
import resource
import shutil
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import installer
import release

SIZE = 3_000_000_000        # does not fit 31 bits
BIG = "Custom Scenery/World/big.dat"


def rows(count, place):
    """Rows of a catalogue; `place` gives the folder and the name of each."""
    before = None
    for row in range(count):
        folder, name = place(row)
        if folder != before:
            yield f"DIR {folder}\n"
        before = folder
        yield f"FILE 0 0 90019 1 2 {row:032x} {name}\n"


@unittest.skipIf(installer.SANITIZED, "a sanitizer takes more memory than is given here")
class LoadTest(installer.Scene):
    def serve(self, publisher, new):
        server = installer.nginx_for(self, publisher, new)
        self.host = server.address
        return server

    def test_thousands_of_small_files(self):
        tree = release.landmarks()
        for number in range(5000):
            tree.add(f"All/Custom Scenery/Tiles {number % 97}/deep/er/tile {number}.dat", f"{number}\n" * (number % 300))
        publisher, (new,) = installer.publish(self, tree)
        server = self.serve(publisher, new)
        for options in ([], ["--check"]):       # the second hashes what the first has put there
            said, used = self.run_measured("--quiet", *options)
            self.assertLess(used.ru_maxrss, 100_000, said)
        self.assert_installed(new.tree.installed())
        self.assertEqual(len(server.requests()), len(new.tree.installed()) + 2 + 2)

    def test_catalogue_of_real_size_costs_no_more_for_each_row_than_a_small_one(self):
        """400,000 rows against 100,000 of the same kind: four times as much time is right, sixteen times was a fault."""
        publisher, (new,) = installer.publish(self, release.landmarks())
        server = installer.faulty(self, publisher, new)
        self.host = server.address
        shapes = {"a folder of twenty": lambda row: (f"All/Custom Scenery/{row // 400}/{row // 20}/", f"tile {row}.dat"),
                  "one folder": lambda row: ("All/Airfoils/", f"{row}.afl"),
                  "a folder each": lambda row: (f"All/Aircraft/{row}/", "wing.afl"),
                  "two paths by turns": lambda row: (f"All/Weapons/{row % 2}/", "rocket.wpn")}
        for shape, place in shapes.items():
            with self.subTest(shape=shape):
                used = []
                for count in (100_000, 400_000):
                    server.replies[f"/beta/{release.NEW}/directory.txt.zip"] = release.zipped(
                        "directory.txt", new.catalogue() + b"\n" + "".join(rows(count, place)).encode())
                    said, usage = self.run_measured("--check", "--quiet")
                    self.assertEqual(said.count("\nFETCH "), count + len(new.tree.installed()))
                    used.append(usage)
                few, many = used                # time of the processor, which a busy machine does not lengthen
                self.assertLess(many.ru_utime + many.ru_stime, 9 * (few.ru_utime + few.ru_stime))
                self.assertLess((many.ru_maxrss - few.ru_maxrss) * 1024 / 300_000, 700, "bytes a row")

    def test_three_gigabytes_in_one_file(self):
        room = shutil.disk_usage(self.folder).free
        if room < SIZE * 1.5:
            self.skipTest(f"wants {SIZE * 1.5 / 1e9:.1f} GB of room in {self.folder}, has {room / 1e9:.1f}")
        publisher = release.Publisher(installer.BUILDER, self.folder)
        reference = os.path.join(self.folder, "reference-90019")
        os.makedirs(os.path.join(reference, "All", os.path.dirname(BIG)))
        with open(os.path.join(reference, "All", BIG), "wb") as out:
            out.truncate(SIZE)                  # zeros that take no room
            out.seek(SIZE // 2)
            out.write(b"in the middle")
        new = publisher.publish(release.landmarks(), release.NEW, 90019)
        row = [line.split(" ", 7) for line in new.catalogue().decode().splitlines() if line.endswith(" big.dat")]
        self.assertEqual((len(row), int(row[0][5])), (1, SIZE // 1000))
        self.serve(publisher, new)

        def little_memory():                    # a buffer of the whole file would not fit
            resource.setrlimit(resource.RLIMIT_DATA, (1_000_000_000, 1_000_000_000))
        self.install("--quiet", preexec=little_memory, timeout=300)
        there = os.path.join(self.dest, BIG)
        self.assertEqual(os.path.getsize(there), SIZE)
        with open(there, "rb") as data:
            data.seek(SIZE // 2)
            self.assertEqual(data.read(14), b"in the middle\0")
        outcome = self.install("--check", preexec=little_memory, timeout=300)      # signs every byte of it
        self.assertIn("to download: 0 kB\nto install: 0 kB\n", outcome.out)
        self.assertNotIn("FETCH", outcome.out)


if __name__ == "__main__":
    installer.main()
