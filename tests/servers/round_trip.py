"""Cards of many programs, up from one store and down into another."""
from acts import OnServer
from stores import changes


def is_called(name, lines):
    """The name that people are told may have more words than FN, and fewer."""
    said = " ".join(line for line in lines if line.startswith(("FN", "N:", "N;", "ORG")))
    return all(word in said for word in name.split())


class RoundTrip(OnServer):
    """Both stores hold the same in the end, but for what the server is known to change or refuses. What
    it changes stays as it was in the store that sent it, and the run tells of it."""

    folders = ()

    def test_carries_every_card(self):
        files = sorted(path for folder in self.folders for path in folder.rglob("*") if path.suffix.lower() == ".vcf")
        self.assertNotEqual(files, [])
        self.one.run("import", *files, "--into", "Book", ok=(0, 3))
        before = self.one.cards()
        report = self.one.sync(ok=(0, 3))
        self.two.sync(ok=(0, 3))
        self.assertEqual(self.one.cards(), before)
        there = self.two.cards()
        refused = {refusal["name"] for refusal in report["refused"]}
        noted = {note.partition(": ")[0] for note in report["notes"]}
        counts = {"missing": 0, "respelt": 0, "less": 0}
        changed = []
        problems = []
        for uid, lines in before.items():
            become, difference = self.difference(lines, there.get(uid))
            names = noted if become == "less" else refused
            if become == "lost" or difference and not any(is_called(name, lines) for name in names):
                problems.append((uid, become, *difference))
            if become:
                changed.append(lines)
                counts[become] = counts.get(become, 0) + 1
        print(f"{len(files)} files, {len(before)} cards, {changes(report)}: {counts}", end=" ... ")
        self.assertEqual(problems, [])
        self.assertEqual(len(report["refused"]), counts["missing"])
        self.assertEqual([name for name in noted if not any(is_called(name, lines) for lines in changed)], [])
        self.assertEqual(set(there) - set(before), set())
        self.expect_quiet(self.one, self.two)

    def difference(self, lines, there):
        """What a card has become, and what has to be told of by the run."""
        if there is None:
            return "missing", [lines]
        if there == lines:
            return None, []
        kept = {self.server.spelling(line): line for line in there}
        sent = {self.server.spelling(line): line for line in lines}
        less = sorted(line for spelling, line in sent.items() if spelling not in kept)
        other = sorted(line for spelling, line in kept.items() if spelling not in sent)
        if not less and not other:
            return "respelt", []
        is_known = len(less) == len(other) and all(map(self.server.keeps_less, less, other))
        return "less" if is_known else "lost", [less, other]
