"""What two stores of ours and another program do with one book, the same on every server."""
import base64
import os
import pathlib
import shutil
import tempfile
import unittest
import zlib

from servers import LARGEST
from stores import Store, changes


def card(uid, name, *lines, version="3.0"):
    first, _, last = name.rpartition(" ")
    return "\r\n".join(["BEGIN:VCARD", f"VERSION:{version}", f"UID:{uid}", f"FN:{name}", f"N:{last};{first};;;", *lines, "REV:2024-01-01T00:00:00Z", "END:VCARD", ""])


def group(uid, name, members, version="3.0"):
    if version == "4.0":
        return card(uid, name, "KIND:group", *(f"MEMBER:urn:uuid:{member}" for member in members), version=version)
    return card(uid, name, "X-ADDRESSBOOKSERVER-KIND:group",
                *(f"X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:{member}" for member in members))


def png(side):
    """A picture of random points, which is as large as its points are many: 3 bytes each."""
    def chunk(kind, data):
        return len(data).to_bytes(4, "big") + kind + data + zlib.crc32(kind + data).to_bytes(4, "big")
    rows = b"".join(b"\0" + os.urandom(3 * side) for _ in range(side))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", side.to_bytes(4, "big") * 2 + b"\x08\x02\0\0\0")
            + chunk(b"IDAT", zlib.compress(rows, 0)) + chunk(b"IEND", b""))


class OnServer(unittest.TestCase):
    """A new book of one server that all cases share, and two stores in step with it."""

    make_server = None
    server = None
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        if not cls.make_server.is_installed():
            raise unittest.SkipTest("no server")
        cls.server = cls.make_server()
        cls.addClassCleanup(cls.server.stop)

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="ox-stores-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.book = self.server.make_book("friends")
        self.addCleanup(self.remove_books)
        self.one = self.store("one")
        self.two = self.store("two")

    def remove_books(self):
        for name in ("friends", "club"):
            self.server.request("DELETE", f"{self.server.home}{name}/")

    def store(self, name, *words, user="ann"):
        store = Store(self.folder / f"{name}.db")
        store.add_account(self.server, self.book, *words, user=user)
        return store

    def put(self, *cards):
        for text in cards:
            name = text.split("UID:")[1].split("\r\n")[0]
            self.server.put(f"{self.book}{name}.vcf", text)

    def edit_there(self, change):
        """Another program's edit of every card of which this makes another text."""
        for url, etag in self.server.listing(self.book).items():
            text = self.server.card(url)
            if change(text) != text:
                self.server.put(url, change(text), etag)

    def expect_quiet(self, *stores):
        """Another run finds nothing to do, writes nothing on either side, and asks as little as can be."""
        for store in stores:
            if not self.server.tells_changes:
                self.assertEqual(changes(store.sync(ok=(0, 3))), "")
            there, here = self.server.listing(self.book), store.commands()
            report = store.sync(ok=(0, 3))
            self.assertEqual(changes(report), "")
            self.assertEqual(report["requests"], self.server.idle_requests)
            self.assertEqual(self.server.listing(self.book), there)
            self.assertEqual(store.commands(), here)

    def expect_alike(self, *stores):
        self.expect_quiet(*stores)
        for store in stores[1:]:
            self.assertEqual(store.cards(), stores[0].cards())
        self.assertEqual(len(stores[0].cards()), len(self.server.listing(self.book)))
        for store in stores:
            self.assertEqual(store.problems(), [])

    def filled(self, count=5):
        """Both stores hold so many persons, "Person 0" and so on."""
        self.put(*(card(f"card-{number}", f"Person {number}") for number in range(count)))
        self.one.sync()
        self.two.sync()


class Acts(OnServer):
    def test_finds_the_book_by_its_host_its_home_and_its_own_url(self):
        self.server.make_book("club")
        starts = [self.server.origin + self.server.start_path, self.server.home]
        if self.server.found_by_host:
            starts.append(self.server.origin)
        for number, start in enumerate(starts):
            store = Store(self.folder / f"found-{number}.db")
            store.add_account(self.server, start, "--book", "friends")
            account = store.json("accounts")[1]
            self.assertEqual((account["name"], account["sync"]["url"], account["sync"]["readOnly"]),
                             ("Book", self.book, False), start)
        both = Store(self.folder / "both.db")
        both.add_account(self.server, starts[0])
        self.assertEqual(sorted(account["name"] for account in both.json("accounts")[1:]), ["club", "friends"])

    def test_brings_every_card_once(self):
        self.put(*(card(f"card-{number}", f"Person {number}", f"TEL;TYPE=CELL:+1 555 {number}") for number in range(130)))
        self.assertEqual(changes(self.one.sync()), "130 added here")
        self.assertEqual(self.one.names(), sorted(f"Person {number}" for number in range(130)))
        self.expect_quiet(self.one)
        self.two.sync()
        self.expect_alike(self.one, self.two)

    def test_carries_edits_of_three_sides(self):
        self.filled()
        self.one.run("set", "Person 0", "jobtitle=Cook")
        self.two.run("set", "Person 0", "phone+=+1 555 0", "address.city=Oslo")
        self.one.run("add-person", "Book", "name=Eve Moe", "email=eve@example.org")
        self.two.run("add-person", "Book", "name=Åse Ødegård; jr., \\n", "note=one\ntwo")
        self.edit_there(lambda text: text.replace("REV:", "NICKNAME:Zero\r\nX-THEIRS:a\\,b\r\nREV:")
                        if "FN:Person 0" in text else text)
        self.assertEqual(changes(self.one.sync()), "1 changed here, 1 added there, 1 changed there")
        self.assertEqual(changes(self.two.sync()), "1 added here, 1 changed here, 1 added there, 1 changed there")
        self.assertEqual(changes(self.one.sync()), "1 added here, 1 changed here")
        self.expect_alike(self.one, self.two)
        lines, = (lines for lines in self.one.cards().values() if "FN:Person 0" in lines)
        for line in ("TITLE:Cook", "NICKNAME:Zero", "X-THEIRS:a\\,b"):
            self.assertIn(line, lines)
        self.assertTrue(any("+1 555 0" in line for line in lines) and any("Oslo" in line for line in lines), lines)

    def test_keeps_both_sides_of_a_conflict(self):
        self.filled()
        for resolved, value in (("mine", "Ours"), ("theirs", "Theirs")):
            self.one.run("set", "Person 0", "company=Theirs")
            self.one.sync()
            self.two.run("set", "Person 0", "company=Ours")
            report = self.two.sync(ok=(3,))
            conflict, = report["conflicts"]
            self.assertEqual((conflict["theirs"], conflict["ours"]), ("Theirs", "Ours"))
            self.two.run("sync", "--resolve", "Person 0", resolved)
            self.two.sync()
            self.one.sync()
            self.expect_alike(self.one, self.two)
            self.assertTrue(any(f"ORG:{value}" in lines for lines in self.one.cards().values()), resolved)
            self.one.run("set", "Person 0", "company=Before")
            self.one.sync()
            self.two.sync()

    def test_deletes_on_both_sides_and_lets_an_edit_win(self):
        self.filled(7)
        self.one.run("remove-person", "Person 0")
        self.server.remove(self.book + "card-1.vcf")
        self.one.run("remove-person", "Person 2")
        self.two.run("set", "Person 2", "note=still here")  # edited there, deleted here
        self.two.sync()
        self.one.sync()
        self.one.run("remove-person", "Person 3")
        self.two.run("set", "Person 3", "note=still here")  # edited here, deleted there
        self.one.sync()
        self.two.sync()
        self.one.sync()
        self.expect_alike(self.one, self.two)
        self.assertEqual(self.one.names(), [f"Person {number}" for number in (2, 3, 4, 5, 6)])

    def test_carries_groups_in_both_spellings(self):
        members = [f"0000000{number}-0000-4000-8000-000000000000" for number in range(3)]
        for version in ("3.0", "4.0"):
            with self.subTest(version):
                self.server.empty(self.book)
                self.put(*(card(member, f"Person {number}", version=version) for number, member in enumerate(members)),
                         group("99999999-0000-4000-8000-000000000000", "Team", [*members[:2], "unknown", members[0]], version))
                one, two = (self.store(f"{name}-{version}") for name in ("one", "two"))
                one.sync()
                two.sync()
                self.assertEqual([(team["displayName"], team["persons"]) for team in one.json("groups", "--book", "Book")],
                                 [("Team", 2)])
                one.run("group-add", "Team", "Person 2")
                two.run("group-remove", "Team", "Person 0")
                two.run("add-group", "Book", "Choir")
                two.run("group-add", "Choir", "Person 1")
                one.sync()
                two.sync()
                one.sync()
                self.expect_alike(one, two)
                self.assertEqual([(team["displayName"], team["persons"]) for team in two.json("groups", "--book", "Book")],
                                 [("Team", 2), ("Choir", 1)])
                text, = (text for text in self.server.cards(self.book) if "FN:Team" in text)
                self.assertIn("unknown", text)
                self.assertIn(members[2], text.replace("\r\n ", ""))
                self.assertNotIn(members[0], text.replace("\r\n ", ""))
                self.assertEqual("X-ADDRESSBOOKSERVER-MEMBER" in text, version == "3.0")
                one.run("remove-group", "Choir")
                one.sync()
                two.sync()
                self.expect_alike(one, two)

    def test_carries_a_large_picture_both_ways(self):
        self.filled(1)
        picture = self.folder / "picture.png"
        picture.write_bytes(png(1000))  # 3 MB
        theirs = base64.b64encode(png(1000)).decode()
        self.put(card("pictured", "Their Picture", "PHOTO;ENCODING=b;TYPE=PNG:"
                      + "\r\n ".join(theirs[at:at + 74] for at in range(0, len(theirs), 74))))
        self.one.run("import", "-", "--into", "Book",
                     text=card("ours", "Our Picture", "PHOTO;ENCODING=b;TYPE=PNG:" + base64.b64encode(picture.read_bytes()).decode()))
        self.one.run("photo", "Person 0", "--set", picture)
        self.one.sync()
        self.two.sync()
        self.expect_alike(self.one, self.two)
        for name, expected in (("Their Picture", base64.b64decode(theirs)), ("Our Picture", picture.read_bytes()), ("Person 0", None)):
            pictures = []
            for store in (self.one, self.two):
                store.run("photo", name, "--get", self.folder / "got")
                pictures.append((self.folder / "got").read_bytes())
            self.assertTrue(pictures[0] == pictures[1] and expected in (None, pictures[0]), name)

    def test_keeps_what_must_not_be_sent(self):
        self.put(card("card-0", "Person 0"))
        readers = [self.store("reader", "--read-only")]
        if self.server.reader:
            readers.append(self.store("other", user=self.server.reader))
        for reader in readers:
            reader.sync()
            reader.run("set", "Person 0", "note=Mine", ok=(0, 1, 3))
            reader.run("add-person", "Book", "name=Eve Moe", ok=(0, 1, 3))
            there = self.server.listing(self.book)
            reader.sync(ok=(0, 3))
            self.assertEqual(self.server.listing(self.book), there)
            self.edit_there(lambda text: text.replace("REV:", "NICKNAME:Zero\r\nREV:"))
            reader.sync(ok=(0, 3))
            self.assertTrue(any("NICKNAME:Zero" in ",".join(lines) for lines in reader.cards().values()))

    def test_names_a_card_that_is_refused_and_sends_the_others(self):
        if not self.server.limits_size:
            self.skipTest("this server takes every card that we write")
        self.filled(1)
        picture = self.folder / "picture.png"
        picture.write_bytes(png(1500))  # 6.7 MB, and a third more as text
        self.one.run("import", "-", "--into", "Book",
                     text=card("big", "Big Picture", "PHOTO;ENCODING=b;TYPE=PNG:" + base64.b64encode(picture.read_bytes()).decode()))
        self.one.run("add-person", "Book", "name=Eve Moe")
        report = self.one.sync(ok=(3,))
        self.assertEqual([refused["name"] for refused in report["refused"]], ["Big Picture"])
        self.assertEqual(changes(report), "1 added there")
        self.expect_quiet(self.one)
        self.assertIn("Big Picture", self.one.names())
        self.one.run("photo", "Big Picture", "--clear")
        self.assertEqual(changes(self.one.sync()), "1 added there")
        self.two.sync()
        self.expect_alike(self.one, self.two)

    def test_stops_where_the_server_was_emptied(self):
        self.filled()
        self.server.empty(self.book)
        report = self.one.sync(ok=(1,))
        self.assertEqual((report["state"], len(report["plan"])), ("guarded", 5))
        self.assertEqual(len(self.one.names()), 5)
        self.one.sync("--allow-deletions")
        self.assertEqual(self.one.names(), [])

    def test_stops_where_the_store_was_emptied(self):
        self.filled()
        self.one.run("remove-person", *(person["ID"] for person in self.one.persons()))
        report = self.one.sync(ok=(1,))
        self.assertEqual((report["state"], len(report["plan"])), ("guarded", 5))
        self.assertEqual(len(self.server.listing(self.book)), 5)
        self.one.sync("--allow-deletions")
        self.assertEqual(self.server.listing(self.book), {})

    def test_minds_no_other_name_and_changes_nothing_when_the_book_is_gone(self):
        self.filled()
        self.server.rename_book(self.book, "Enemies")
        self.expect_alike(self.one, self.two)
        self.server.remove_book(self.book)
        there = self.server.make_book("club")
        self.assertEqual(self.one.sync(ok=(1,))["state"], "failed")
        self.assertTrue(self.one.json("sync", "--status")[0]["away"])
        self.assertEqual(len(self.one.names()), 5)
        self.assertEqual(self.server.listing(there), {})
        # It comes back under its old URL, as from a backup, with one card less.
        self.server.make_book("friends")
        self.put(*(card(f"card-{number}", f"Person {number}") for number in range(4)))
        self.one.sync()
        self.two.sync()
        self.expect_alike(self.one, self.two)
        self.assertEqual(len(self.one.names()), 4)

    def test_takes_up_from_an_old_copy_of_the_store(self):
        self.filled()
        self.one.run("backup", "--all", self.folder / "copy.db")
        self.one.run("set", "Person 0", "jobtitle=Cook")
        self.one.run("add-person", "Book", "name=Eve Moe", "phone=+1 555 1")
        self.one.run("remove-person", "Person 1")
        self.one.sync()
        self.two.sync()
        self.two.run("set", "Person 2", "note=from two")
        self.two.sync()
        expected = self.two.cards()
        for ending in ("", "-wal", "-shm"):
            pathlib.Path(f"{self.one.path}{ending}").unlink(missing_ok=True)
        shutil.copy(self.folder / "copy.db", self.one.path)
        self.one.run("set", "Person 3", "note=after the copy")
        self.one.sync("--yes")
        self.two.sync()
        self.expect_alike(self.one, self.two)
        cards = self.one.cards()
        self.assertEqual(cards.keys(), expected.keys())
        self.assertEqual(sorted(line for lines in cards.values() for line in lines if line.startswith(("NOTE", "TITLE"))),
                         ["NOTE:after the copy", "NOTE:from two", "TITLE:Cook"])
