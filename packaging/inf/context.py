"""What the rules look at, and how they are declared."""

from __future__ import annotations

import datetime
from collections.abc import Callable, Iterator
from dataclasses import dataclass, field
from pathlib import Path

from inf.document import Document
from inf.driver import Driver
from inf.module import Module
from inf.pe import PdbIdentity, PortableExecutable

Found = tuple[int, str]  # line (0 where the file has none) and what is wrong there


@dataclass
class Context:
    document: Document
    today: datetime.date
    vendor: dict[str, str] = field(default_factory=dict)
    last_release: tuple[datetime.date, tuple[int, ...]] | None = None
    module: Module | None = None
    dll: PortableExecutable | None = None
    pdb: PdbIdentity | None = None
    package: Path | None = None
    profile: Path | None = None
    formats: Path | None = None

    def __post_init__(self) -> None:
        self.driver = Driver(self.document)

    def expand(self, text: str) -> str:
        return self.document.expand(text)


@dataclass(frozen=True)
class Rule:
    name: str
    sentence: str
    check: Callable[[Context], Iterator[Found]]
    needs: tuple[str, ...]  # members of Context without which it cannot run
    subject: str  # whose lines it speaks of: "inf", "dll", "profile", "formats"
    advice: bool  # does not fail the check outside a release

    def can_run(self, context: Context) -> bool:
        return all(getattr(context, name) is not None for name in self.needs)


class RuleSet:
    """The rules of one topic, in the order of their declaration."""

    def __init__(self, subject: str = "inf"):
        self.subject = subject
        self.rules: list[Rule] = []

    def __call__(self, name: str, sentence: str, *needs: str, advice: bool = False):
        def declare(check: Callable[[Context], Iterator[Found]]) -> Callable[[Context], Iterator[Found]]:
            self.rules.append(Rule(name, sentence, check, needs, self.subject, advice))
            return check

        return declare
