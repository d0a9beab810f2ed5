"""Which files were found clean before, kept under build/, so that a check looks only at what differs.

A file is known by the bytes of everything that its check depends on: itself, the headers of ours
that it includes (however far away), and the words given by the check: tools, flags, settings.
"""
import hashlib
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parent.parent
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)


class CleanRecord:
    def __init__(self, name):
        self._folder = ROOT / "build" / name
        self._folder.mkdir(parents=True, exist_ok=True)
        self._texts = {}

    def key(self, name, *words):
        """The name of a file, by its path from the root, as the check sees it now."""
        found = {name}
        todo = [name]
        while todo:
            for include in INCLUDE.findall(self._text(todo.pop())):
                if include not in found and (ROOT / include).is_file():
                    found.add(include)
                    todo.append(include)
        digest = hashlib.sha256()
        for part in (*words, name, *(self._text(each) for each in sorted(found))):
            digest.update(part.encode() + b"\0")
        return digest.hexdigest()

    def has(self, key):
        return (self._folder / key).exists()

    def add(self, key):
        (self._folder / key).touch()

    def _text(self, name):
        if name not in self._texts:
            self._texts[name] = (ROOT / name).read_text(encoding="utf-8")
        return self._texts[name]
