"""Servers whose answers are broken or mean harm: plain words, nothing outside the folder touched, no lie installed."""
import hashlib
import os
import struct
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import folders
import installer
import release
import servers
from release import NEW as NAME

BASE = f"/beta/{NAME}/"
LIST, CATALOGUE = "/serverlist.txt", BASE + "directory.txt.zip"
CANNOT_EXTRACT = "The installer cannot extract a file."
NEWER = "OK I am checking the Tarvex servers and I am finding file formats that are newer than I can understand!"
MANUAL = "Instructions/Manual.pdf"
MANUAL_ZIP = f"{BASE}All/{MANUAL}.zip"
MEMORY_KB, BOMB = 200_000, 300_000_000


def signature(data):
    return b"GONE" if data is None else hashlib.md5(data).hexdigest().encode()


def claiming(number, zipped, field=4):
    """The archive, with another size in its headers: of the file, or of the packed file with `field` 0."""
    out = bytearray(zipped)
    for at in (18, out.index(b"PK\1\2") + 20):
        struct.pack_into("<I", out, at + field, number)
    return bytes(out)


def flood(start, piece=bytes(1 << 16)):
    """Sends `start` and then `piece` until the other side has had enough."""
    def fault(link, _status, _body):
        link.sendall(b"HTTP/1.1 200 Fine\r\n" + start)
        while True:
            link.sendall(piece)
    return fault


class HostileTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        tree = release.landmarks().add("All/" + MANUAL, release.noise(200_000)).add("All/Airfoils/flat.afl", "flat\n")
        cls.publisher, (cls.new,) = installer.publish(cls, tree)
        cls.text = cls.new.catalogue()

    def setUp(self):
        super().setUp()
        self.server = installer.faulty(self, self.publisher, self.new)
        self.host = self.server.address
        self.outside = os.path.join(self.folder, "outside")
        self.put("precious.txt", "mine", self.outside)
        self.out_before = folders.snapshot(self.outside)
        self.place(self.new.tree.installed())

    def tearDown(self):
        self.assert_same(self.out_before, self.outside)
        self.assertEqual(os.listdir(self.desk.tmp), [])
        self.assertFalse([path for path in folders.snapshot(self.dest) if ".velaris" in path])
        self.assertEqual(sorted(os.listdir(self.folder)), ["Flight Sims", "desk", "outside"])

    def offer_text(self, text):
        self.server.replies[CATALOGUE] = release.zipped("directory.txt", self.text + text)

    def offer(self, *rows):
        """The release and `rows` behind it: path, contents (bytes, the target of a link, or None for withdrawn)."""
        text = b""
        for path, *contents in rows:
            folder, name = os.path.split(path)
            text += f"\nDIR {folder}/\n".encode()
            for content in contents:
                is_link = isinstance(content, str)
                data = content.encode() if is_link else content
                text += b"FILE 0 0 90019 1 1 %b %b\n" % (signature(data), name.encode())
                pack = release.zipped_link if is_link else release.zipped
                self.server.replies[f"{BASE}{path}.zip"] = pack(name, data or b"")
        self.offer_text(text)

    def run_over(self, status, *words, options=()):
        """A run that ends with `status`, says each of `words` and needs little memory; what it said."""
        said, used = self.run_measured("--changed=overwrite", "--pref:_rename_folder=0", *options, status=status)
        self.assertLess(used.ru_maxrss, MEMORY_KB)
        for one in words:
            self.assertIn(one, said)
        return said

    def refused(self, status, *words, options=()):
        before = folders.snapshot(self.dest)
        said = self.run_over(status, *words, options=options)
        self.assert_same(before)
        return said

    def test_list_or_catalogue_without_sense_is_told_and_changes_nothing(self):
        def packed(text, name="directory.txt"):
            return release.zipped(name, text)

        page = b"<html><body>Please log in</body></html>"
        lists = {
            "of another version": (release.server_list(NAME, [self.host], version=830).encode(), 1, NEWER),
            "of another kind": (release.server_list(NAME, [self.host], title="PILOTS").encode(), 1, NEWER),
            "empty": (b"", 1, NEWER),
            "a web page": (page, 1, NEWER),
            "without a server": (release.server_list(NAME, []).encode(), 1, "I could not find any servers to get"),
        }
        catalogues = {
            "not there": (None, 4, "give up"),
            "a web page": (page, 4, CANNOT_EXTRACT),
            "cut": (packed(self.text)[:-99], 4, CANNOT_EXTRACT),
            "another archive": (packed(b"x", "serverlist.txt"), 4, CANNOT_EXTRACT),
            "of a newer version": (packed(self.text.replace(b"900 version", b"910 version", 1)), 1, NEWER),
            "of another kind": (packed(self.text.replace(b"INSTALLER", b"SERVERS", 1)), 1, NEWER),
            "empty": (packed(b""), 1, NEWER),
        }
        os.unlink(os.path.join(self.dest, MANUAL))      # there would be something to do
        good = dict(self.server.replies)
        for path, cases in ((LIST, lists), (CATALOGUE, catalogues)):
            for case, (reply, status, words) in cases.items():
                with self.subTest(path=path, case=case):
                    self.server.replies = good if reply is None else {**good, path: reply}
                    self.server.script = {path: [servers.refuse(404)]} if reply is None else {}
                    self.refused(status, words, options=("--give_up=1",))

    def test_release_whose_name_leads_elsewhere_renames_nothing(self):
        odd = "../escaped"
        self.server.replies[LIST] = release.server_list(odd, [(self.host, "/beta/x/")]).encode()
        for path in ("directory.txt", *(path for path in self.new.tree.items)):
            with open(f"{self.new.folder}/{path}.zip", "rb") as data:
                self.server.replies[f"/beta/x/{odd}/{path}.zip"] = data.read()
        fresh = os.path.join(self.folder, "Flight Sims", "fresh")
        self.install(dest=fresh)
        self.assert_installed(self.new.tree.installed(), fresh)

    def test_rows_that_no_folder_can_hold_are_refused_before_anything_is_done(self):
        row = b"\nDIR %b\nFILE 0 0 90019 1 1 " + signature(b"x") + b" %b\n"
        leaves, long = "found a path that leaves the folder", "found a path that is too long for any disk!"
        cases = {
            "climbs": (row % (b"All/", b"../outside/precious.txt"), leaves),
            "climbs from a folder": (row % (b"All/Airfoils/../../../outside/", b"precious.txt"), leaves),
            "withdrawn outside": (b"\nDIR All/../\nFILE 0 0 1 1 1 GONE precious.txt\n", leaves),
            "absolute": (row % (b"All/" + os.fsencode(self.outside) + b"/", b"precious.txt"), leaves),
            "empty component": (row % (b"All/Airfoils//", b"x"), leaves),
            "dot component": (row % (b"All/./", b"x"), leaves),
            "the parent itself": (row % (b"All/Airfoils/", b".."), leaves),
            "a folder's name": (row % (b"All/", b"Airfoils/"), "found a path that has no file!"),
            "backslash": (row % (b"All/", b"..\\x"), "a path with ':' or '\\' in it"),
            "no signature": (b"\nDIR All/\nFILE 0 0 1 1 1 0123 x\n", "without a proper signature"),
            "endless signature": (b"\nDIR All/\nFILE 0 0 1 1 1 %b x\n" % (b"f" * 5000), "without a proper signature"),
            "256 bytes": (row % (b"All/", b"n" * 256), long),
            "600 bytes": (row % (b"All/" + (b"d" * 99 + b"/") * 5, b"n" * 100), long),
        }
        for case, (text, words) in cases.items():
            with self.subTest(case=case):
                self.offer_text(text)
                self.refused(1, words)

    def test_rows_that_are_odd_do_no_harm(self):
        for number, fields in enumerate((b"-9 -9 -9 -9 -2147483648", b"9 0 99999999999999999999 -1 -1", b"x 0 y z z")):
            name = f"odd {number}"
            self.server.replies[f"{BASE}All/Airfoils/{name}.zip"] = release.zipped(name, b"x")
            self.offer_text(b"\nDIR All/Airfoils/\nFILE %b %b %b\n" % (fields, signature(b"x"), name.encode()))
            self.run_over(0)
            self.assertIn("Airfoils/" + name, folders.snapshot(self.dest))
        self.offer(("All/Airfoils/" + "n" * 255, b"x"))
        self.run_over(0)
        self.assertIn("Airfoils/" + "n" * 255, folders.snapshot(self.dest))
        self.offer_text(b"\nDIR All/Airfoils/\nFILE 0 0 1 1 1 %b odd 0\0/../../../outside/x\n" % signature(b"x"))
        self.refused(0)

    def test_users_link_out_of_the_folder_is_named_before_anything_is_touched(self):
        scenery = os.path.join(self.dest, "Custom Scenery")
        os.symlink(self.outside, scenery)
        for row in ("All/Custom Scenery/World/new.txt", b"new"), ("All/Custom Scenery/precious.txt", b"mine", None):
            self.offer(("All/Airfoils/new.afl", b"new"), row)
            self.assertNotIn(CANNOT_EXTRACT, self.refused(1, "is a link that leads out of it!", scenery))
        # Where nothing below it is to be done it may stay as it is.
        self.offer(("All/Airfoils/new.afl", b"new"), ("All/Custom Scenery/precious.txt", b"mine"))
        self.run_over(0)
        self.assertTrue(os.path.islink(scenery))

    def test_link_that_the_release_itself_laid_is_no_way_out(self):
        for number, target in enumerate((self.outside, "../../../outside", "/", "..")):
            with self.subTest(target=target):
                door = f"All/Airfoils/door{number}"
                self.offer((door, target))
                self.run_over(0)
                self.assertEqual(os.readlink(f"{self.dest}/Airfoils/door{number}"), target)
                if not target.endswith("outside"):
                    continue
                for rows in ((door + "/precious.txt", b"mine", b"theirs"), (door + "/precious.txt", b"mine", None),
                             (door + "/deep/er/x.txt", b"theirs")):
                    self.offer(rows)
                    self.refused(1, f"Airfoils/door{number}")
                # Link and file in one release, in either order.
                again = (door + "a", target), (door + "a/escaped.txt", b"theirs")
                for rows in (again, again[::-1]):
                    self.offer(*rows)
                    self.run_over(1)
        # Nor is what it leads to made a program.
        self.offer(("All/Velaris.app/Contents/MacOS/Velaris", os.path.join(self.outside, "precious.txt")))
        self.run_over(0)

    def test_file_of_the_user_where_a_folder_is_needed_ends_the_run(self):
        self.put("Aircraft", "mine")
        self.offer(("All/Aircraft/Heron/new.acf", b"new"))
        self.refused(1, os.path.join(self.dest, "Aircraft"))

    def test_wrong_content_from_one_mirror_is_fetched_from_another(self):
        right = installer.keep_up(self, servers.FaultServer(self.publisher.web))
        self.server.replies[LIST] = release.server_list(NAME, [self.host, right.address]).encode()
        for path in self.new.tree.items:
            self.server.replies[f"{BASE}{path}.zip"] = release.zipped(os.path.basename(path), b"a trap")
        for number, zipped in enumerate((release.zipped("directory.txt", self.text, ("0.zip", b"x")), b"<html>",
                                         release.zipped("../directory.txt", self.text))):
            self.server.replies[CATALOGUE] = zipped
            where = os.path.join(self.dest, f"copy {number}")       # which mirror is asked first is a matter of chance
            self.install("--pref:_rename_folder=0", dest=where)
            self.assert_installed(dict(self.new.tree.installed()), where)

    def test_wrong_content_from_all_ends_the_run_and_keeps_the_old_file(self):
        good = self.new.tree.items["All/" + MANUAL].data
        self.put(MANUAL, "old")
        packed, bomb = release.zipped("Manual.pdf", good), release.zipped("Manual.pdf", bytes(BOMB))
        lies = {
            "other bytes": release.zipped("Manual.pdf", b"x" * len(good)),
            "another name": release.zipped("Surprise.pdf", good),
            "out of the folder": release.zipped("../../../outside/precious.txt", good),
            "absolute": release.zipped(os.path.join(self.outside, "precious.txt"), good),
            "a second file": release.zipped("Manual.pdf", good, ("Surprise.pdf", b"x")),
            "a folder": release.zipped("Manual.pdf/", b""),
            "a link": release.zipped_link("Manual.pdf", "/etc/passwd"),
            "nothing": b"PK\5\6" + bytes(18),
            "half": packed[:len(packed) // 2],
            "bytes turned over": packed[:999] + bytes(99) + packed[1098:],
            "a bomb": bomb,
            "a bomb that claims little": claiming(len(good), bomb),
            "a claim of 4 GB": claiming(0xfffffffe, packed),
            "a claim of more": claiming(0xffffffff, packed),
            "packed beyond the end": claiming(0x7fffffff, packed, field=0),
        }
        for lie, zipped in lies.items():
            with self.subTest(lie=lie):
                self.put(MANUAL, "old")
                self.server.replies[MANUAL_ZIP] = zipped
                asked = self.server.asked.count(MANUAL_ZIP)
                said = self.refused(1, CANNOT_EXTRACT, os.path.join(self.dest, MANUAL))
                self.assertEqual(said.count(CANNOT_EXTRACT), 1)
                self.assertEqual(self.server.asked.count(MANUAL_ZIP) - asked, 3)
                self.assertIn("The installation was not completed because an error occurred.", said)
        del self.server.replies[MANUAL_ZIP]
        self.run_over(0)
        self.assert_installed(self.new.tree.installed())

    def test_transfer_without_end_or_sense_is_broken_off(self):
        self.put(MANUAL, "old")
        length = b"Content-Length: %b\r\n\r\n"
        for path in (LIST, MANUAL_ZIP):
            for case, fault in {"no end": flood(b"\r\n"), "100 MB": flood(length % b"100000000"),
                                "a length below 0": flood(length % b"-5"),
                                "a length beyond all": flood(length % (b"9" * 20)),
                                "headers without end": flood(b"", b"X-More: x\r\n" * 99),
                                "a header without end": flood(b"", b"x" * 9999)}.items():
                with self.subTest(path=path, case=case):
                    self.server.script = {path: [fault]}
                    said = self.refused(4, "I give up", options=("--give_up=0.7",))
                    self.assertRegex(said, "endless headers|a length that is none|"
                                           "more than the [0-9]+ bytes that it may send")

    def test_catalogue_that_is_a_bomb_is_refused_and_told_once(self):
        bombs = [release.zipped("directory.txt", self.text + piece * (BOMB // len(piece)))
                 for piece in (b"\0", b"FILE 0 0 1 1 1 0 x\n")]
        for zipped in (*bombs, claiming(0xfffffffe, bombs[0])):
            self.server.replies[CATALOGUE] = zipped
            said = self.refused(4, options=("--give_up=1.5",))
            self.assertEqual(said.count("DIR-scan: " + CANNOT_EXTRACT), 1)
            self.assertGreater(self.desk.log().count("DIR-scan: " + CANNOT_EXTRACT), 2, "the log keeps each")


if __name__ == "__main__":
    installer.main()
