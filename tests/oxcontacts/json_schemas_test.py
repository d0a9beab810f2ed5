"""Runs every command that prints JSON over a store with rich content, and holds what it prints to
the schema of docs/json that stands for it.

    json_schemas_test.py PROGRAM SCHEMAS

Commands are taken from what the program offers a shell, so that one without a schema is noticed; so
are schemas that nothing is held to, keys that no output has shown, and keys nobody described.
"""
import json
import os
import pathlib
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import unittest

import jsonschema

PROGRAM = os.path.abspath(sys.argv[1])
SCHEMAS = pathlib.Path(sys.argv[2])

# These print no JSON of their own (but for an export that keeps going): they write a file, a
# picture, or words for people.
WITHOUT_JSON = {"export", "page", "photo", "qr", "help", "completion"}

PICTURE = ("iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5Er"
           "kJggg==")


def card(*lines):
    return "\r\n".join(("BEGIN:VCARD", "VERSION:3.0") + lines + ("END:VCARD", ""))


CARDS = card(
    "UID:ann", "N:Lee;Ann;Marie;Dr.;Jr.", "FN:Ann Marie Lee", "NICKNAME:Annie",
    "X-MAIDENNAME:Berg", "X-PHONETIC-FIRST-NAME:En", "X-PHONETIC-LAST-NAME:Li",
    "ORG:Acme;Sales", "TITLE:Director", "TEL;TYPE=HOME,pref:+47 22 12 34 56",
    "item1.TEL:+47 1", "item1.X-ABLabel:Boat", "EMAIL;TYPE=WORK:ann@example.org",
    "ADR;TYPE=HOME:;;Storgata 1;Oslo;Oslo;0155;Norway", "URL:https://example.org",
    "BDAY:1990-05-17", "item2.X-ABDATE:2015-06-20", "item2.X-ABLabel:_$!<Anniversary>!$_",
    "X-SOCIALPROFILE;TYPE=chat;x-user=ann:https://example.com/ann",
    "IMPP;X-SERVICE-TYPE=Skype:skype:ann", "item3.X-ABRELATEDNAMES:Bob Lee",
    "item3.X-ABLabel:_$!<Spouse>!$_", "NOTE:Knows everybody", "CATEGORIES:Friends,Golf",
    "X-OTHER:what is not modelled", "PHOTO;ENCODING=b;TYPE=PNG:" + PICTURE) + card(
        "UID:ming", "N:王;小明;;;", "FN:王小明", "TEL:+86 10 1234", "NOTE:one") + card(
            "UID:ann2", "N:Lee;Ann;;;", "FN:Ann Lee", "EMAIL:ann@example.org", "BDAY:--02-29",
            "TEL;TYPE=CELL:+47 900") + card(
                "UID:acme", "ORG:Acme", "X-ABShowAs:COMPANY") + card(
                    "UID:team", "N:Team;;;;", "FN:Team", "X-ADDRESSBOOKSERVER-KIND:group",
                    "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:ming")
# One that is there with other content, one that is there, one that must be refused, a stray line,
# and one in a charset of its own.
MORE = (card("UID:ming", "N:王;小明;;;", "FN:王小明", "NOTE:another") +
        card("UID:acme", "ORG:Acme", "X-ABShowAs:COMPANY") + card("NOTE") + "stray\r\n").encode()
MORE += card("N:Мельник;Анна;;;", "FN:Анна Мельник", "NOTE:соседка из третьего подъезда").encode(
    "windows-1251")
TABLE = "First Name,Last Name,Shoe size,E-mail Address\r\nOla,Nordmann,44,ola@example.org\r\n"


def documents():
    return {path.name: json.loads(path.read_text("utf-8")) for path in SCHEMAS.glob("*.json")}


def subschemas(schema):
    """Every object that may be a schema, at any depth."""
    if isinstance(schema, dict):
        yield schema
        schema = list(schema.values())
    if isinstance(schema, list):
        for each in schema:
            yield from subschemas(each)


def keys_of(output):
    """Every key of what was printed; contents of dictionaries among them, which are told apart by
    nobody."""
    if isinstance(output, dict):
        yield from output
        output = list(output.values())
    if isinstance(output, list):
        for each in output:
            yield from keys_of(each)


class Schemas(unittest.TestCase):
    """What holds of every schema by itself."""

    def test_are_valid_and_describe_every_key(self):
        for name, schema in documents().items():
            with self.subTest(name):
                jsonschema.Draft202012Validator.check_schema(schema)
                self.assertEqual(schema["$schema"], "https://json-schema.org/draft/2020-12/schema")
                self.assertTrue(schema["$id"].endswith("/" + name))
                for each in subschemas(schema):
                    if not isinstance(each.get("properties"), dict) or "required" not in each:
                        continue
                    self.assertIs(each["additionalProperties"], False)
                    for key, value in each["properties"].items():
                        self.assertTrue("description" in value or "$ref" in value, key)
                        if key not in each["required"]:
                            self.assertIn("Absent", value["description"], key)


class Outputs(unittest.TestCase):
    """What the commands print."""

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="ox-schemas-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        cls.store = cls.folder / "contacts.db"
        editor = cls.folder / "editor"
        editor.write_text("#!/bin/sh\nsed -i 's/^Note:.*/Note: edited/; s/Boat/Ship/' \"$1\"\n")
        editor.chmod(0o755)
        cls.environment = {
            "PATH": os.environ["PATH"], "HOME": str(cls.folder), "LC_ALL": "C.UTF-8",
            "XDG_CONFIG_HOME": str(cls.folder / "none"), "OX_CONTACT_STORE": str(cls.store),
            "EDITOR": str(editor),
        }
        for name in os.environ:  # what sanitizers are told
            if name.endswith("SAN_OPTIONS"):
                cls.environment[name] = os.environ[name]
        (cls.folder / "cards.vcf").write_text(CARDS, "utf-8", newline="")
        (cls.folder / "more.vcf").write_bytes(MORE)
        (cls.folder / "table.csv").write_text(TABLE, "utf-8", newline="")
        cls.documents = documents()
        cls.validators = {
            name: jsonschema.Draft202012Validator(
                schema,
                resolver=jsonschema.RefResolver.from_schema(
                    schema, store={each["$id"]: each for each in cls.documents.values()}))
            for name, schema in cls.documents.items()
        }
        cls.held = {}  # what was printed, by schema

    def run_program(self, *words):
        return subprocess.run([PROGRAM, "--json", *words], cwd=self.folder, env=self.environment,
                              capture_output=True, check=False, stdin=subprocess.DEVNULL)

    def hold(self, schema, *words, code=0, something=True):
        """Runs a command; what it prints must be as the schema has it, and not be empty."""
        result = self.run_program(*words)
        self.assertEqual(result.returncode, code, (words, result.stdout, result.stderr))
        output = json.loads(result.stdout)
        name = schema + ".schema.json"
        errors = [error.message for error in self.validators[name].iter_errors(output)]
        self.assertEqual(errors, [], (words, output))
        if something:
            self.assertTrue(output, words)
        self.held.setdefault(name, []).append((words, output))
        return output

    def offered(self, *words):
        result = subprocess.run([PROGRAM, "complete", "--", *words, ""], env=self.environment,
                                capture_output=True, check=True, text=True)
        return result.stdout.split()

    def damage(self, sql, *values):
        with sqlite3.connect(self.store) as store:
            # The checksum that the store keeps of each row is wrong from now on.
            store.create_function("row_sum", -1, lambda *_: 0, deterministic=True)
            store.execute(sql, values)
        store.close()

    def test_of_every_command_are_as_their_schemas_have_them(self):
        self.hold_empty_lists()
        self.hold_import()
        self.hold_edits()
        self.hold_lists()
        self.hold_persons_that_change()
        self.hold_the_past()
        self.hold_copies()
        self.hold_sync()
        self.nothing_is_printed_where_a_command_fails()
        self.hold_damages()
        self.no_command_no_schema_and_no_key_is_left_out()

    def hold_empty_lists(self):
        self.hold("accounts-add", "accounts", "add", "Empty", "--type", "exchange")
        for name in ("persons", "groups", "birthdays", "phones", "addresses", "duplicates", "trash",
                     "copies"):
            self.assertEqual(self.hold(name, name, something=False), [])
        self.hold("accounts-remove", "accounts", "remove", "Empty")

    def hold_import(self):
        self.hold("import-dry-run", "import", "--dry-run", "cards.vcf")
        charsets = self.hold("import-dry-run", "import", "--dry-run", "more.vcf", code=3)["names"]
        self.assertIn("windows-1251", [each["charset"] for each in charsets])
        self.assertEqual(self.hold("import", "import", "cards.vcf")["added"], 4)
        more = self.hold("import", "import", "more.vcf", "--strict", "--report", "report", code=3)
        self.assertTrue(more["problems"] and more["skippedCards"] and more["refused"], more)
        self.assertEqual(json.loads((self.folder / "report").read_text("utf-8")), more)
        self.hold("import", "import", "more.vcf", "--update", "--categories", "groups", code=3)
        self.hold("import-columns", "import", "--columns", "table.csv")
        self.hold("import", "import", "table.csv")

    def hold_edits(self):
        self.hold("accounts-add", "accounts", "add", "Work", "--identifier", "W:ABAccount")
        self.hold("add-person", "add-person", "Work", "name=Bob Berg", "birthday=--05-17",
                  "phone=1")
        self.hold("add-person", "add-person", "_local", "note=nobody's name is known")
        self.hold("set", "set", "Ann Marie Lee", "note=old", "other:Foo=bar", "date:Met=2001-02-03",
                  "address.city:work=Bergen", "email+=lee@example.org")
        self.hold("add-group", "add-group", "_local", "Family")
        self.hold("add-group", "add-group", "_local", "Kids", "--under", "Family")
        self.hold("add-group", "add-group", "_local", "Odd")
        self.hold("group-add", "group-add", "Kids", "Ann Marie Lee", "Ann Lee")
        self.hold("rename-group", "rename-group", "Kids", "Children")
        self.hold("group-remove", "group-remove", "Family", "Ann Lee", "--recursive")
        self.hold("tag", "tag", "Ann Marie Lee", "--add", "golf club")
        self.hold("edit", "edit", "Ann Marie Lee")

    def hold_lists(self):
        self.hold("config", "config")
        (self.folder / "config.yaml").write_text("sort: family\n", "utf-8")
        self.hold("config", "--config", "config.yaml", "--color", "never", "config")
        self.hold("accounts", "accounts")
        self.hold("books", "books")
        self.hold("persons", "persons")
        self.hold("find", "find", "ann")
        self.hold("groups", "groups")
        self.hold("birthdays", "birthdays")
        for name in ("phones", "addresses", "duplicates"):
            self.hold(name, name)
        self.hold("mail", "mail", "ann")
        for person in self.hold("persons", "persons"):
            self.hold("show", "show", person["ID"])

    def hold_persons_that_change(self):
        self.hold("copy", "copy", "Ann Marie Lee", "--to", "Work")
        self.hold("remove-person", "remove-person", "Work/Ann Marie Lee")
        self.hold("move", "move", "Bob Berg", "--to", "_local")
        ids = {each["displayName"]: each["ID"] for each in self.hold("persons", "persons")}
        self.hold("merge", "merge", ids["Ann Marie Lee"], ids["Ann Lee"], "--dry-run")
        self.hold("merge", "merge", ids["Ann Marie Lee"], ids["Ann Lee"])
        self.hold("remove-person", "rm", "Ola Nordmann")
        self.hold("remove-group-alone", "remove-group", "Family", "--alone")
        self.hold("remove-group", "remove-group", "Odd")

    def hold_the_past(self):
        log = self.hold("log", "log", "--limit", "1000")
        self.hold("trash", "trash")
        ids = {each["displayName"]: each["ID"] for each in self.hold("persons", "persons")}
        self.run_program("photo", ids["Ann Marie Lee"], "--clear")
        self.hold("undo", "undo")
        self.hold("redo", "redo")
        numbers = [each["number"] for each in log if " set " in each["command"]]
        stays = self.hold("undo", "undo", str(numbers[-1]), code=3)["stays"]
        self.assertTrue(stays)
        self.hold("log", "log")
        for record in self.hold("trash", "trash"):
            if record["kind"] == "person":
                self.hold("log-person", "log", record["ID"], "--limit", "1000")
        for person in ids.values():
            self.hold("log-person", "log", person, "--limit", "1000")
            self.hold("show-at", "show", person, "--at", "2999-01-01")
        self.hold("log-keep", "log", "--keep-days", "80")
        self.hold("forget", "forget", "Bob Berg")

    def hold_copies(self):
        self.hold("backup", "backup", "_local", "one.book")
        self.hold("backup", "backup", "--all", "all.db")
        self.hold("restore", "restore", "_local", "one.book")
        copies = self.hold("copies", "copies")
        self.hold("copies-restore", "copies", "restore", copies[-1]["name"])

    def write_card(self, name, *lines):
        path = self.folder / "cards" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(card(*lines), "utf-8", newline="")

    def hold_sync(self):
        self.hold("sync", "sync", something=False)
        self.write_card("home/tove.vcf", "UID:tove", "N:Lie;Tove;;;", "FN:Tove Lie", "TITLE:Cook")
        self.write_card("work/odd.vcf", "UID:odd", "N:By;Odd;;;", "FN:Odd By")
        self.hold("accounts-add-login", "accounts", "add", "Home", "--folder", "cards", "--book",
                  "home")
        self.hold("accounts", "accounts")
        self.assertEqual(self.hold("sync", "sync", "--dry-run")[0]["state"], "planned")
        self.hold("sync", "sync")
        self.hold("set", "set", "Tove Lie", "jobtitle=Chef")
        self.write_card("home/tove.vcf", "UID:tove", "N:Lie;Tove;;;", "FN:Tove Lie", "TITLE:Boss")
        (self.folder / "cards/home/none.vcf").symlink_to("tove.vcf")
        report = self.hold("sync", "sync", "--report", "report", code=3)[0]
        self.assertTrue(report["conflicts"] and report["refused"], report)
        self.hold("sync-status", "sync", "--status")
        number = self.hold("sync-conflicts", "sync", "--conflicts")[0]["number"]
        self.hold("sync-resolve", "sync", "--resolve", str(number), "mine")
        (self.folder / "cards/home").rename(self.folder / "cards/away")
        self.assertTrue(self.hold("sync", "sync", code=1)[0]["failure"])
        self.hold("sync-status", "sync", "--status")
        self.hold("accounts-remove", "accounts", "remove", "Home", "--force")

    def hold_damages(self):
        self.hold("check", "check")
        self.hold("check-repair", "check", "--repair")
        self.damage("DROP INDEX link_parent")
        self.hold("check-repair", "check", "--repair")
        self.damage("UPDATE content SET properties = x'00' WHERE record = (SELECT max(record) "
                    "FROM content WHERE instr(properties, ?))", b"another")
        self.assertTrue(self.hold("check", "check", code=1)["problems"])
        self.hold("check-repair", "check", "--repair", code=1)
        self.hold("export-keep-going", "export", "-o", "out.vcf", "--keep-going", code=1)
        self.hold("recover", "recover", str(self.store), "-o", "recovered.db", code=3)

    def nothing_is_printed_where_a_command_fails(self):
        for words, code in ((("show", "nobody at all"), 4), (("show",), 2), (("find", "xyzzy"), 4),
                            (("--store", "none.db", "persons"), 1), (("undo", "99999"), 4),
                            (("restore", "_local", "cards.vcf"), 1)):
            result = self.run_program(*words)
            self.assertEqual((result.returncode, result.stdout), (code, b""), words)
            self.assertTrue(result.stderr.startswith(b"oxcontacts: "), result.stderr)

    def no_command_no_schema_and_no_key_is_left_out(self):
        commands = self.offered()
        self.assertIn("persons", commands)
        for command in commands:
            below = [command + "-" + name for name in self.offered(command)] \
                if command in ("accounts", "copies") else []
            for name in [command, *below]:
                if name not in WITHOUT_JSON:
                    self.assertIn(name + ".schema.json", self.held, "no schema, or never held")
        shapes = {"common.schema.json", "person.schema.json", "group.schema.json"}
        self.assertEqual(set(self.documents) - shapes, set(self.held))
        shown = {key for runs in self.held.values() for _, output in runs for key in
                 keys_of(output)}
        described = {key for schema in self.documents.values() for each in subschemas(schema)
                     if "required" in each for key in each.get("properties", ())}
        self.assertEqual(described - shown, set(), "keys that no output has shown")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
