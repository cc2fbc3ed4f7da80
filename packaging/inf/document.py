"""An INF file as sections of entries, every one with its line. Knows the syntax, not what directives mean."""

from __future__ import annotations

import codecs
import re
from collections.abc import Iterator
from dataclasses import dataclass, field
from pathlib import Path

TOKEN = re.compile(r"%([^%]*)%")


@dataclass(frozen=True)
class Entry:
    line: int
    key: str  # left of "=", empty when there is none
    values: tuple[str, ...]  # quotes taken off, tokens as written

    def value(self, index: int) -> str:
        return self.values[index] if index < len(self.values) else ""


@dataclass
class Section:
    name: str
    line: int
    entries: list[Entry] = field(default_factory=list)

    def entry(self, key: str) -> Entry | None:
        return next(iter(self.all(key)), None)

    def all(self, key: str) -> list[Entry]:
        return [entry for entry in self.entries if entry.key.lower() == key.lower()]


@dataclass(frozen=True)
class Problem:
    line: int
    text: str


class Document:
    """Merges sections by name ignoring case, as the setup API does; `problems` and `headers` keep what that hides."""

    def __init__(self, data: bytes):
        self.problems: list[Problem] = []
        self.encoding_problem = ""
        self.headers: list[tuple[str, int]] = []
        self._sections: dict[str, Section] = {}
        self._read(self._decode(data))
        self.strings = {entry.key.lower(): entry.value(0) for entry in self.entries("Strings")}

    @classmethod
    def load(cls, path: Path) -> Document:
        return cls(path.read_bytes())

    def section(self, name: str) -> Section | None:
        return self._sections.get(name.lower())

    def entries(self, name: str) -> list[Entry]:
        section = self.section(name)
        return section.entries if section else []

    def sections(self) -> Iterator[Section]:
        return iter(self._sections.values())

    def first(self, section: str, key: str) -> Entry | None:
        found = self.section(section)
        return found.entry(key) if found else None

    def line_of(self, section: str, key: str = "") -> int:
        """Of the entry, else of the section, else 1: where a reader would add what is missing."""
        found = self.section(section)
        entry = found.entry(key) if found and key else None
        return entry.line if entry else found.line if found else 1

    def expand(self, text: str) -> str:
        """Replaces %tokens%. Those that are not defined and directory ids stay, as they do at the installation."""
        return TOKEN.sub(lambda match: self._token(match), text)

    def _token(self, match: re.Match[str]) -> str:
        name = match.group(1)
        return "%" if not name else self.strings.get(name.lower(), match.group(0))

    def _decode(self, data: bytes) -> str:
        if data.startswith(codecs.BOM_UTF16_LE):
            return data[2:].decode("utf-16-le", errors="replace")
        if not data.isascii():
            self.encoding_problem = "UTF-8" if data.startswith(codecs.BOM_UTF8) else "neither ASCII nor UTF-16LE"
        return data.decode("utf-8-sig", errors="replace")

    def _read(self, text: str) -> None:
        section: Section | None = None
        pending, pending_line = "", 0
        for number, raw in enumerate(text.splitlines(), 1):
            line = _without_comment(raw).strip()
            if pending:
                line, number = pending + line, pending_line
            if line.endswith("\\") and not line.startswith("["):
                pending, pending_line = line[:-1], number
                continue
            pending = ""
            if line.startswith("["):
                section = self._open(line, number)
            elif line and section is None:
                self.problems.append(Problem(number, "an entry before the first section"))
            elif line and section is not None:
                if line.replace('""', "").count('"') % 2:
                    self.problems.append(Problem(number, "a quote is not closed"))
                section.entries.append(_entry(line, number))
        if pending:
            self.problems.append(Problem(pending_line, "the last line is continued"))

    def _open(self, line: str, number: int) -> Section:
        if not line.endswith("]") or len(line) < 3:
            self.problems.append(Problem(number, "a section's name is not closed"))
        name = line.strip("[]").strip()
        self.headers.append((name, number))
        return self._sections.setdefault(name.lower(), Section(name, number))


def _without_comment(line: str) -> str:
    quoted = False
    for index, character in enumerate(line):
        if character == '"':
            quoted = not quoted
        elif character == ";" and not quoted:
            return line[:index]
    return line


def _entry(line: str, number: int) -> Entry:
    equals = _split(line, "=", limit=1)
    key = _unquote(equals[0]) if len(equals) == 2 else ""
    return Entry(number, key, tuple(_unquote(value) for value in _split(equals[-1], ",")))


def _split(text: str, separator: str, limit: int = -1) -> list[str]:
    """Splits where the separator is not quoted."""
    parts, start, quoted = [], 0, False
    for index, character in enumerate(text):
        if character == '"':
            quoted = not quoted
        elif character == separator and not quoted and limit != 0:
            parts.append(text[start:index])
            start, limit = index + 1, limit - 1
    return parts + [text[start:]]


def _unquote(text: str) -> str:
    text = text.strip()
    if len(text) >= 2 and text.startswith('"') and text.endswith('"'):
        return text[1:-1].replace('""', '"')
    return text
