"""Connections that fall silent: a file is given thirty seconds and then asked for again."""
import os
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import installer
import release
import servers

NAME = "Velaris 9.00 Beta-19"


class PatienceTest(installer.Scene):
    def test_silent_transfers_are_tried_again_after_thirty_seconds(self):
        tree = release.landmarks()
        for number in range(12):                # enough finished files for all four streams to open
            tree.add(f"All/Aircraft/Heron/{number}.dat", release.noise(60000, number))
        faults = {"a stalls.dat": servers.stall, "b ends early.dat": servers.end_early,
                  "c no length.dat": servers.no_length, "d says nothing.dat": servers.say_nothing}
        for name in faults:
            tree.add(f"All/Weapons/{name}", release.noise(20000, name))
        publisher, (new,) = installer.publish(type(self), (tree, NAME, 90019))
        server = installer.faulty(self, publisher, new)
        for name, fault in faults.items():
            server.script[f"/beta/{NAME}/All/Weapons/{name}.zip"] = [fault, servers.serve]
        self.host = server.address
        start = time.monotonic()
        self.install("--pref:_stream_count=4", timeout=120)
        took = time.monotonic() - start
        self.assertGreater(took, 29)
        self.assertLess(took, 60, "the silent files were not waited for side by side")
        self.assert_installed(new.tree.installed())


if __name__ == "__main__":
    installer.main()
