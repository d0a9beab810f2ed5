"""Random edits of one book by two stores of ours and another program, until all are quiet."""
import random
import re

from acts import OnServer, card

STEPS = 24


class RandomEdits(OnServer):
    """Every edit is a word of its own. In the end each is to be found in a value or in a conflict, but
    for those that somebody who saw them has replaced or deleted."""

    seeds = ()

    def test_ends_alike_and_loses_no_edit(self):
        for seed in self.seeds:
            with self.subTest(f"seed {seed}"):
                self.run_seed(seed)

    def run_seed(self, seed):
        self.server.empty(self.book)
        self.random = random.Random(seed)
        self.count = 0
        self.written = set()
        self.given_up = set()
        self.told = ""  # the reports of all runs
        self.stores = [self.store(f"{name}-{seed}") for name in ("one", "two")]
        self.put(*(card(f"start-{number}", f"Start {number}") for number in range(4)))
        acts = (self.sync, self.sync, self.add, self.edit, self.edit, self.edit_note, self.edit_note,
                self.edit_elsewhere, self.remove)
        for _ in range(STEPS):
            self.random.choice(acts)(self.random.choice(self.stores))
        for _ in range(4):
            for store in self.stores:
                self.sync(store)
        self.expect_alike(*self.stores)
        found = str(self.stores[0].cards()) + self.told
        self.assertEqual({word for word in self.written - self.given_up if word not in found}, set())

    def word(self, start):
        self.count += 1
        word = f"{start}{self.count:03d}x"
        self.written.add(word)
        return word

    def sync(self, store):
        report = store.sync("--yes", "--allow-deletions", ok=(0, 3))
        self.assertEqual(report["refused"], [])
        self.told += str(report["conflicts"]) + str(report["notes"])

    def any_person(self, store):
        persons = store.persons()
        return self.random.choice(persons)["ID"] if persons else None

    # What a store shows of a person, her words are in.
    def shown(self, store, person):
        return set(re.findall(r"[a-z]+\d{3}x", store.run("show", person).stdout))

    def add(self, store):
        store.run("add-person", "Book", f"name={self.word('new')} Person", f"phone={self.word('phone')}")

    def edit(self, store):
        if person := self.any_person(store):
            store.run("set", person, f"{self.random.choice(('phone', 'email', 'urls'))}+={self.word('entry')}")

    def edit_note(self, store):
        if person := self.any_person(store):
            self.given_up |= {word for word in self.shown(store, person) if word.startswith("note")}
            store.run("set", person, f"note={self.word('note')}")

    def edit_elsewhere(self, _):
        cards = self.server.listing(self.book)
        if cards:
            url = self.random.choice(sorted(cards))
            text = self.server.card(url)
            end = text.rindex("END:VCARD")
            self.server.put(url, f"{text[:end]}TEL;TYPE=CELL:{self.word('phone')}\r\n{text[end:]}", cards[url])

    def remove(self, store):
        persons = store.persons()
        if len(persons) > 3 and (person := self.any_person(store)):
            self.given_up |= self.shown(store, person)
            store.run("remove-person", person)
