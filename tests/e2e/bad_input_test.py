"""Input that is missing, broken or hostile: plain words, the right exit status, a folder that is no worse for it."""
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import folders
import installer
import release
import servers

NAME = "Velaris 9.00 Beta-19"
BASE = f"/beta/{NAME}/"
CATALOGUE = BASE + "directory.txt.zip"
NEWER = "OK I am checking the Tarvex servers and I am finding file formats that are newer than I can understand!"
NO_VERSION = "I can not find a version of Velaris on the net!"
NO_SERVERS = "I could not find any servers to get Velaris from!"
CANNOT_EXTRACT = "DIR-scan: The installer cannot extract a file."


class BadInputTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        tree = release.sample()
        cls.publisher, (cls.new,) = installer.publish(cls, (tree, NAME, 90019))
        cls.text = cls.new.catalogue().decode()
        with open(cls.new.folder + "/directory.txt.zip", "rb") as data:
            cls.packed = data.read()

    def setUp(self):
        super().setUp()
        self.old = self.new.tree.copy().remove("All/Instructions/Manual.pdf")
        self.place(self.old.installed())
        self.before = folders.snapshot(self.dest)
        self.server = installer.faulty(self, self.publisher, self.new)
        self.host = self.server.address

    def refused(self, status, *words, options=()):
        """The run ends with `status`, says each of `words`, and leaves the folder as it was."""
        outcome = self.install("--give_up=1", "--pref:_rename_folder=0", *options, status=status)
        for one in words:
            self.assertIn(one, outcome.out + outcome.err)
        self.assert_same(self.before)
        self.assertEqual(os.listdir(self.desk.tmp), [])
        return outcome

    def test_server_list(self):
        cases = {
            "of another version": (release.server_list(NAME, [self.host], version=830), NEWER),
            "of another kind": (release.server_list(NAME, [self.host], title="PILOTS"), NEWER),
            "empty": ("", NEWER),
            "a web page": ("<html><body>Please log in</body></html>", NEWER),
            "without a server": (release.server_list(NAME, []), NO_SERVERS),
        }
        for case, (text, words) in cases.items():
            with self.subTest(case=case):
                self.server.replies["/serverlist.txt"] = text.encode()
                self.refused(1, words)

    def test_catalogue(self):
        def packed(text):
            return release.zipped("directory.txt", text.encode())
        cases = {
            "missing": (None, 4, "give up"),
            "no archive": (b"<html>Please log in</html>", 4, CANNOT_EXTRACT),
            "cut": (self.packed[:len(self.packed) // 2], 4, CANNOT_EXTRACT),
            "of a newer version": (packed(self.text.replace("900 version", "910 version", 1)), 1, NEWER),
            "of another kind": (packed(self.text.replace("INSTALLER", "SERVERS", 1)), 1, NEWER),
            "with nothing in it": (packed(""), 1, NEWER),
            "in an archive of nothing else": (release.zipped("serverlist.txt", b"x"), 4, CANNOT_EXTRACT),
        }
        for case, (reply, status, words) in cases.items():
            with self.subTest(case=case):
                self.server.script.pop(CATALOGUE, None)
                if reply is None:
                    self.server.script[CATALOGUE] = [servers.refuse(404)]
                else:
                    self.server.replies[CATALOGUE] = reply
                self.refused(status, words)

    def test_release_name_with_a_slash_renames_nothing(self):
        fresh = os.path.join(self.folder, "fresh")
        odd = "../escaped"
        os.symlink(self.new.folder, os.path.join(self.publisher.web, "beta", "odd"))
        self.addCleanup(os.unlink, os.path.join(self.publisher.web, "beta", "odd"))
        text = release.server_list(odd, [(self.host, "/beta/x/")]).encode()
        self.server.replies["/serverlist.txt"] = text
        for path in self.new.tree.items:
            source = self.new.zip_path(path)
            if os.path.exists(source):
                with open(source, "rb") as data:
                    self.server.replies[f"/beta/x/{odd}/{path}.zip"] = data.read()
        self.server.replies[f"/beta/x/{odd}/directory.txt.zip"] = self.packed
        self.install(dest=fresh)
        self.assert_installed(self.new.tree.installed(), fresh)

    def test_option_values(self):
        for option in ("--changed=ask", "--give_up=soon", "--target_os=4", "--list_host=127.0.0.1:0"):
            with self.subTest(option=option):
                outcome = self.run_installer("--agree", option)
                self.assertEqual((outcome.status, outcome.out, outcome.err.count("\n")), (2, "", 1), outcome)
                self.assertIn(option.split("=")[0], outcome.err)
        self.assertEqual(self.server.asked, [])
        self.assert_same(self.before)


if __name__ == "__main__":
    installer.main()
