"""What an INF installs: models, install sections, what they reach. Understands the directives of a camera package."""

from __future__ import annotations

import re
from collections.abc import Iterator
from dataclasses import dataclass, field

from inf.document import Document, Entry

# Builds from which a class is found below the device's software key, and as a COM server of the package.
BUILD_SOFTWARE_KEY = 25300
BUILD_COM_SERVER = 26100

ROOTS = ("Version", "SourceDisksNames", "SourceDisksNames.amd64", "SourceDisksFiles", "SourceDisksFiles.amd64",
         "DestinationDirs", "Manufacturer", "Strings", "ControlFlags")
# Sections that Windows finds by their name, beside the install section of that name.
SUFFIXES = ("HW", "Interfaces", "COM", "Services", "WDF", "Components", "Events", "CoInstallers", "Software", "Filters")
# Directives whose values name sections.
LISTS = ("CopyFiles", "DelFiles", "RenFiles", "AddReg", "DelReg", "AddProperty", "UpdateInis", "BitReg", "LogConfig",
         "RegisterDlls", "ProfileItems")
# Directives with a section at a place of their own.
TARGETS = {"AddInterface": 2, "AddService": 2, "AddComServer": 2, "AddComClass": 2, "AddComponent": 2, "AddFilter": 2}


def number(text: str) -> int | None:
    """None when it is none: decimal, or hexadecimal with 0x."""
    if re.fullmatch(r"0x[0-9a-f]+", text, re.IGNORECASE):
        return int(text, 16)
    return int(text) if text.isascii() and text.isdigit() else None


@dataclass(frozen=True)
class Reference:
    section: str  # as written
    line: int
    source: str  # the section that it stands in


@dataclass(frozen=True)
class Decoration:
    text: str  # "NTamd64.10.0...16299"
    line: int

    @property
    def architecture(self) -> str:
        match = re.match(r"NT(\w*)", self.text, re.IGNORECASE)
        return match.group(1).lower() if match else ""

    @property
    def build(self) -> int:
        """0 when there is none."""
        match = re.fullmatch(r"NT\w*\.10\.0\.\d*\.\d*\.(\d+)", self.text, re.IGNORECASE)
        return int(match.group(1)) if match else 0


@dataclass(frozen=True)
class RegistryValue:
    """A line of an AddReg section, tokens expanded."""

    root: str
    key: str
    name: str
    flags: str
    data: tuple[str, ...]
    line: int

    @property
    def type(self) -> int | None:
        """None when the flags are not a number."""
        return number(self.flags) if self.flags else 0


@dataclass
class Interface:
    category: str  # upper case
    reference: str
    section: str
    line: int
    values: list[RegistryValue] = field(default_factory=list)


@dataclass
class Install:
    """An install section with those beside it, as one decoration uses it for one filter."""

    section: str
    decoration: Decoration
    hardware_id: str
    line: int
    role: str  # "depth", "color", or "" for a filter that is neither

    @property
    def generation(self) -> str:
        build = self.decoration.build
        return "C" if build >= BUILD_COM_SERVER else "B" if build >= BUILD_SOFTWARE_KEY else "A"


class Driver:
    def __init__(self, document: Document):
        self.document = document
        self.decorations: list[Decoration] = []
        self.models: list[tuple[str, Decoration]] = []  # section and decoration, whether the section exists or not
        self.installs: list[Install] = []
        self.references: list[Reference] = []
        self.reached: set[str] = {name.lower() for name in ROOTS}
        self._read_models()
        for install in self.installs:
            self._follow(install.section)
            for suffix in SUFFIXES:
                if document.section(f"{install.section}.{suffix}"):
                    self._follow(f"{install.section}.{suffix}")
        self._follow_roots()

    @property
    def is_extension(self) -> bool:
        entry = self.document.first("Version", "Class")
        return entry is not None and self.document.expand(entry.value(0)).lower() == "extension"

    def parts(self, install: Install, suffix: str = "") -> list[Entry]:
        return self.document.entries(install.section + (f".{suffix}" if suffix else ""))

    def registry(self, install: Install, suffix: str = "") -> list[RegistryValue]:
        """What AddReg of the install section (or of the one with the suffix) writes."""
        return list(self._registry_of(install.section + (f".{suffix}" if suffix else "")))

    def interfaces(self, install: Install) -> list[Interface]:
        found = []
        for entry in self.parts(install, "Interfaces"):
            if entry.key.lower() == "addinterface":
                category, reference, section = (self.document.expand(entry.value(index)) for index in range(3))
                found.append(Interface(category.upper(), reference, section, entry.line,
                                       list(self._registry_of(section))))
        return found

    def servers(self, install: Install) -> list[tuple[Entry, str]]:
        """AddComServer lines with the server section's name."""
        return [(entry, self.document.expand(entry.value(2))) for entry in self.parts(install, "COM")
                if entry.key.lower() == "addcomserver"]

    def all_registry(self) -> Iterator[RegistryValue]:
        """Every line of every section that an AddReg names, once."""
        seen: set[str] = set()
        for section in self.document.sections():
            for entry in section.all("AddReg"):
                for name in entry.values:
                    if name.lower() not in seen:
                        seen.add(name.lower())
                        yield from self._lines(name)

    def source_files(self) -> list[Entry]:
        return [entry for section in ("SourceDisksFiles", "SourceDisksFiles.amd64")
                for entry in self.document.entries(section)]

    def copied_files(self) -> Iterator[tuple[str, Entry]]:
        """Names that CopyFiles lists, directly (@name) or through a section."""
        seen: set[str] = set()
        for section in list(self.document.sections()):
            for entry in section.all("CopyFiles"):
                for value in entry.values:
                    if value.startswith("@"):
                        yield value[1:], entry
                    elif value.lower() not in seen:
                        seen.add(value.lower())
                        for line in self.document.entries(value):
                            yield self.document.expand(line.value(0)), line

    def copy_sections(self) -> set[str]:
        return {value.lower() for section in self.document.sections() for entry in section.all("CopyFiles")
                for value in entry.values if not value.startswith("@")}

    def _read_models(self) -> None:
        for entry in self.document.entries("Manufacturer"):
            base = entry.value(0) or entry.key
            decorations = [Decoration(text, entry.line) for text in entry.values[1:]]
            self.decorations += decorations
            for decoration in decorations or [Decoration("", entry.line)]:
                name = f"{base}.{decoration.text}" if decoration.text else base
                self.models.append((name, decoration))
                self._refer(name, entry.line, "Manufacturer")
                self._read_model(name, decoration)

    def _read_model(self, name: str, decoration: Decoration) -> None:
        for entry in self.document.entries(name):
            for hardware_id in entry.values[1:]:
                text = self.document.expand(hardware_id)
                section = self._decorated(entry.value(0))
                self._refer(section, entry.line, name)
                self.installs.append(Install(section, decoration, text, entry.line, _role(text)))

    def _decorated(self, name: str) -> str:
        """The form of an install section that Windows prefers, of those that are there."""
        forms = (f"{name}.NTamd64", f"{name}.NT")
        return next((form for form in forms if self.document.section(form)), name)

    def _follow_roots(self) -> None:
        for entry in self.document.entries("DestinationDirs"):
            if entry.key.lower() != "defaultdestdir":
                self._refer(entry.key, entry.line, "DestinationDirs", reach=False)

    def _refer(self, name: str, line: int, source: str, reach: bool = True) -> None:
        self.references.append(Reference(name, line, source))
        if reach:
            self.reached.add(name.lower())

    def _follow(self, name: str) -> None:
        """Marks what a section's directives name, and goes on from there."""
        self.reached.add(name.lower())
        for entry in self.document.entries(name):
            for target in _targets(entry):
                target = self.document.expand(target)
                new = target.lower() not in self.reached
                self._refer(target, entry.line, name)
                if new:
                    self._follow(target)

    def _registry_of(self, section: str) -> Iterator[RegistryValue]:
        for entry in self.document.entries(section):
            if entry.key.lower() == "addreg":
                for name in entry.values:
                    yield from self._lines(name)

    def _lines(self, name: str) -> Iterator[RegistryValue]:
        for entry in self.document.entries(name):
            root, key, value_name, flags = (self.document.expand(entry.value(index)) for index in range(4))
            data = tuple(self.document.expand(value) for value in entry.values[4:])
            yield RegistryValue(root.upper(), key, value_name, flags, data, entry.line)


def _targets(entry: Entry) -> list[str]:
    directive = entry.key.lower()
    if directive in (name.lower() for name in LISTS):
        return [value for value in entry.values if value and not value.startswith("@")]
    for name, place in TARGETS.items():
        if directive == name.lower() and entry.value(place):
            return [entry.value(place)]
    return []


def _role(hardware_id: str) -> str:
    match = re.search(r"&MI_(\d\d)", hardware_id, re.IGNORECASE)
    return {"00": "depth", "02": "color"}.get(match.group(1), "") if match else ""
