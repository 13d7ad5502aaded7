"""Signed releases, by minisign itself: what a mirror, a list or the network may say, and what is installed of it."""
import os
import shutil
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import folders
import installer
import release
import servers

FILE = "Aircraft/Heron/cockpit.txt"
BASE = f"/beta/{release.NEW}/directory.txt.zip"


class TrustTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        cls.publisher, (cls.release,) = installer.publish(cls, release.landmarks())
        cls.keys = installer.private_folder(cls)
        for name in ("maker", "successor", "stranger"):
            cls.minisign("-G", "-f", "-W", "-p", f"{name}.pub", "-s", f"{name}.sec")
        with open(os.path.join(cls.release.folder, "directory.txt.zip"), "rb") as file:
            cls.catalogue = file.read()

    @classmethod
    def minisign(cls, *options):
        subprocess.run(["minisign", *options], cwd=cls.keys, check=True, capture_output=True, timeout=60)

    def signed(self, key="maker", name=release.NEW, number=90019, days=30, of=None, older_form=False):
        """The signature's text; `days` None: without a date."""
        with open(os.path.join(self.keys, "directory.txt.zip"), "wb") as file:
            file.write(self.catalogue if of is None else of)
        told = f"timestamp:1\tfile:directory.txt.zip\thashed\tname:{name}\tnumber:{number}"
        if days is not None:
            told += f"\texpires:{int(time.time()) + days * 86400}"
        self.minisign("-S", *(["-l"] if older_form else []), "-s", f"{key}.sec", "-m", "directory.txt.zip", "-t", told)
        with open(os.path.join(self.keys, "directory.txt.zip.minisig"), "rb") as file:
            return file.read()

    def setUp(self):
        super().setUp()
        self.server = installer.faulty(self, self.publisher, self.release)
        self.host = self.server.address

    def run_with(self, signature, *options, key="maker"):
        self.server.replies[BASE + ".minisig"] = signature
        return self.run_installer("--agree", f"--public_key={self.keys}/{key}.pub", "--pref:_rename_folder=0", *options)

    def test_only_what_the_key_signed_is_installed(self):
        strange = release.zipped("directory.txt", b"I\n900 version\nINSTALLER\n\nDIR All/\nFILE 0 0 1 1 1 GONE " +
                                 FILE.encode() + b"\n")
        refused = {
            "a page of words": (b"<html>404</html>\n", "what it gives for a signature is none"),
            "a stranger's key": (self.signed("stranger"), "is not signed by"),
            "another catalogue": (self.signed(of=strange), "is not the one that was signed"),
            "another release": (self.signed(name=release.OLD), f'is of "{release.OLD}"'),
            "no number": (self.signed(number="none"), "does not tell the release's number"),
            "out of date": (self.signed(days=-2), "was good until"),
        }
        for case, (signature, words) in refused.items():
            with self.subTest(case=case):
                outcome = self.run_with(signature)
                self.assertEqual(outcome.status, 1, outcome)
                self.assertIn(words, outcome.err)
                self.assertIn(self.server.address, outcome.err)
                self.assertFalse(os.path.exists(self.dest))
        self.server.script[BASE + ".minisig"] = [servers.refuse(404)]
        outcome = self.run_with(b"")
        self.assertEqual(outcome.status, 1, outcome)
        self.assertIn("its signature could not be fetched", outcome.err)
        del self.server.script[BASE + ".minisig"]

        self.assertEqual(self.run_with(self.signed(days=-2), "--allow_older").status, 0)
        self.assert_installed(self.release.tree.installed())
        self.assertEqual(self.run_with(self.signed(days=None, older_form=True)).status, 0)
        with open(os.path.join(self.keys, "maker.pub"), encoding="ascii") as file:
            text = file.read().splitlines()[1]
        self.server.replies[BASE + ".minisig"] = self.signed()
        self.assertEqual(self.run_installer("--agree", f"--public_key={text}").status, 0)
        outcome = self.run_installer("--agree", "--public_key=nonsense")
        self.assertEqual((outcome.status, outcome.err.count("\n")), (2, 1), outcome)

    def test_no_way_back_to_an_older_release(self):
        self.assertEqual(self.run_with(self.signed(number=90021)).status, 0)
        outcome = self.run_with(self.signed(number=90020))
        self.assertEqual(outcome.status, 1, outcome)
        self.assertIn("is older (90020) than one that was here before (90021)", outcome.err)
        self.assertEqual(self.run_with(self.signed(number=90020), "--allow_older").status, 0)
        self.assertEqual(self.run_with(self.signed(number=90021)).status, 0)
        self.assertEqual(self.run_with(self.signed("successor", number=5), key="successor").status, 0, "its own count")

    def test_a_mirror_that_lies_is_left_for_one_that_does_not(self):
        shutil.copytree(self.release.folder, os.path.join(self.folder, "web", "beta", release.NEW))
        liar = installer.keep_up(self, servers.FaultServer(os.path.join(self.folder, "web")))
        liar.replies[BASE] = release.zipped("directory.txt", b"I\n900 version\nINSTALLER\n\nDIR All/\n"
                                            b"FILE 0 0 1 1 1 d41d8cd98f00b204e9800998ecf8427e evil\n")
        liar.replies[BASE + ".minisig"] = self.signed("stranger", of=liar.replies[BASE])
        names = [liar.address, liar.address, liar.address, self.server.address]
        self.server.replies["/serverlist.txt"] = release.server_list(self.release.name, names).encode()
        self.assertEqual(self.run_with(self.signed()).status, 0)
        self.assertNotIn("evil", folders.snapshot(self.dest))
        self.assert_installed(self.release.tree.installed())


if __name__ == "__main__":
    installer.main()
