"""A contact store of ours, as its users have it: a file, and the program."""
import json
import os
import pathlib
import re
import subprocess


class Store:
    """A store with one account, "Book", that is in step with a book of a server."""

    program = None  # its path

    def __init__(self, path):
        self.path = pathlib.Path(path)

    def run(self, *words, ok=(0,), text=None):
        environment = {name: value for name, value in os.environ.items() if not name.startswith("OX_")}
        environment["HOME"] = str(self.path.parent)
        result = subprocess.run([self.program, "--store", str(self.path), *map(str, words)], input=text or "",
                                capture_output=True, text=True, env=environment)
        if result.returncode not in ok:
            raise AssertionError(f"{words}: {result.returncode}\n{result.stdout[-2000:]}{result.stderr[-2000:]}")
        return result

    def json(self, *words, ok=(0,)):
        return json.loads(self.run("--json", *words, ok=ok).stdout)

    def add_account(self, server, url, *words, user="ann"):
        if server.has_password:
            words = ("--user", user, "--password-file", server.password_file, *words)
        return self.run("accounts", "add", "Book", "--url", url, "--allow-http", *words)

    def sync(self, *words, ok=(0,)):
        """The report of the run, with its exit code."""
        result = self.run("--json", "sync", *words, ok=ok)
        report, = json.loads(result.stdout)
        report["exit"] = result.returncode
        return report

    def cards(self):
        """What every person and group says: the lines of its exported card in order, by its UID. REV
        and PRODID tell when and by what a card was written, and are others wherever it was."""
        text = self.run("export", "--book", "Book", ok=(0, 4)).stdout.replace("\r\n", "\n").replace("\n ", "")
        cards = {}
        for card in re.findall(r"^BEGIN:VCARD\n(.*?)^END:VCARD\n", text, re.M | re.S):
            lines = sorted(line for line in card.split("\n") if line and not line.startswith(("REV", "PRODID")))
            uid, = (line for line in lines if re.match(r"UID[:;]", line))
            if uid in cards:
                raise AssertionError(f"{self.path} holds {uid} twice")
            cards[uid] = lines
        return cards

    def names(self):
        return sorted(person["displayName"] or "" for person in self.persons())

    def persons(self):
        return self.json("persons", "--book", "Book", ok=(0, 4))

    def commands(self):
        """What was done in this store, the last first."""
        return self.json("log", ok=(0, 4))

    def problems(self):
        return self.json("check", ok=(0, 1))["problems"]


def changes(report):
    """"2 new, 1 deleted here; 1 sent"; empty for a run that changed nothing."""
    parts = [f"{count} {what} {where}" for where, counts in (("here", report["down"]), ("there", report["up"]))
             for what, count in counts.items() if count]
    return ", ".join(parts)
