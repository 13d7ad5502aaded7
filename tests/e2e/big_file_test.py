"""A file of three gigabytes, from builder to disk: sizes that do not fit 31 bits, memory that does not grow."""
import os
import resource
import shutil
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import installer
import release

NAME = "Velaris 9.00 Beta-19"
SIZE = 3_000_000_000
BIG = "Custom Scenery/World/big.dat"
LIMIT = 1_000_000_000       # bytes of memory of its own; a buffer of the whole file would not fit


@unittest.skipIf(installer.SANITIZED, "a sanitizer takes more memory than is given here")
class BigFileTest(installer.Scene):
    def test_three_gigabytes_travel_whole_and_in_little_memory(self):
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
            out.seek(SIZE - 3)
            out.write(b"end")
        new = publisher.publish(release.landmarks(), NAME, 90019)
        row = [line.split(" ", 7) for line in new.catalogue().decode().splitlines() if line.endswith(" big.dat")]
        self.assertEqual((len(row), int(row[0][5])), (1, SIZE // 1000))
        server = installer.nginx_for(self, publisher, new)
        self.host = server.address

        def little_memory():
            resource.setrlimit(resource.RLIMIT_DATA, (LIMIT, LIMIT))
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
