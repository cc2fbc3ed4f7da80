"""What the package must agree with: the module's classes, exports, version and trace identities, read from its source.

A package without sources carries the same as JSON (`check-inf --save-module`).
"""

from __future__ import annotations

import dataclasses
import hashlib
import json
import re
import uuid
from dataclasses import dataclass
from pathlib import Path


class ModuleError(Exception):
    """A source file does not say what is looked for."""


@dataclass(frozen=True)
class ComClass:
    role: str  # "depth" or "color"
    clsid: str  # braced, upper case
    name: str


@dataclass(frozen=True)
class Traces:
    provider: str  # GUIDs bare, lower case
    control: str
    message_class: str
    messages: tuple[int, ...]
    flags: int  # every flag bit of the classic channel
    levels: tuple[int, ...]


@dataclass(frozen=True)
class Module:
    file: str
    version: str  # three numbers
    exports: tuple[str, ...]
    classes: tuple[ComClass, ...]
    traces: Traces

    @property
    def file_version(self) -> str:
        return self.version + ".0"

    def class_of(self, role: str) -> ComClass:
        return next(entry for entry in self.classes if entry.role == role)

    def save(self, path: Path) -> None:
        path.write_text(json.dumps(dataclasses.asdict(self), indent=2) + "\n", encoding="ascii")


def provider_guid(name: str) -> str:
    """GUID that trace tools compute from a provider's name."""
    namespace = bytes.fromhex("482C2DB2C39047C887F81A15BFC130FB")
    digest = bytearray(hashlib.sha1(namespace + name.upper().encode("utf-16-be")).digest()[:16])
    digest[7] = (digest[7] & 0x0F) | 0x50
    return str(uuid.UUID(bytes_le=bytes(digest)))


def beside(tools: Path) -> Path | None:
    """What to load when nothing is named: what was saved beside the tools, else the sources around their folder."""
    candidates = (tools / "module.json", tools.parent)
    return next((path for path in candidates if path.is_file() or (path / "module/ClassTable.cpp").is_file()), None)


def load(path: Path) -> Module:
    """From the root of the sources, or from the JSON that was saved from them."""
    try:
        return _from_source(path) if path.is_dir() else _from_json(path)
    except (OSError, ValueError, KeyError, TypeError) as error:
        raise ModuleError(f"{path}: {error}") from error


def _from_json(path: Path) -> Module:
    data = json.loads(path.read_text(encoding="ascii"))
    traces = Traces(**{**data["traces"], "messages": tuple(data["traces"]["messages"]),
                       "levels": tuple(data["traces"]["levels"])})
    return Module(data["file"], data["version"], tuple(data["exports"]),
                  tuple(ComClass(**entry) for entry in data["classes"]), traces)


def _from_source(root: Path) -> Module:
    definition = (root / "module/tarn_dmft.def").read_text(encoding="utf-8")
    return Module(
        file=_find(r"^LIBRARY\s+(\S+)", definition, "LIBRARY"),
        version=project_version(root),
        exports=tuple(sorted(re.findall(r"^\s+(\w+)", definition[definition.index("EXPORTS"):], re.MULTILINE))),
        classes=_classes((root / "module/ClassTable.cpp").read_text(encoding="utf-8")),
        traces=_traces(root / "trace"))


def project_version(root: Path) -> str:
    text = (root / "CMakeLists.txt").read_text(encoding="utf-8")
    return _find(r"^project\(\w+ VERSION (\d+\.\d+\.\d+)\b", text, "project(... VERSION)")


def _classes(text: str) -> tuple[ComClass, ...]:
    rows = re.findall(r"\{\{(0x[^{]*\{[^}]*\})\},\s*CreateTarn(\w+?)DeviceMft,\s*L\"([^\"]+)\"", text)
    if not rows:
        raise ValueError("no class table")
    return tuple(ComClass(role.lower(), "{" + _guid(numbers).upper() + "}", name) for numbers, role, name in rows)


def _traces(folder: Path) -> Traces:
    wpp = (folder / "WppTrace.h").read_text(encoding="utf-8")
    events = (folder / "TraceLoggingProvider.h").read_text(encoding="utf-8")
    levels = (folder / "TraceLevels.h").read_text(encoding="utf-8")
    flags = 0
    for bit in re.findall(r"kWppFlag\w+ = (0x\w+);", wpp):
        flags |= int(bit, 16)
    records = (folder / "TraceRecord.h").read_text(encoding="utf-8")
    messages = _find(r"enum class TraceMessageId[^{]*\{(.*?)\};", records, "TraceMessageId")
    return Traces(
        provider=provider_guid(_find(r"kTraceLoggingProviderName\[\] = \"(\w+)\"", events, "provider name")),
        control=_guid(_find(r"kWppControlGuid = \{(.*?)\};", wpp, "control GUID")),
        message_class=_guid(_find(r"kWppMessageGuid = \{(.*?)\};", wpp, "message GUID")),
        messages=tuple(int(number) for number in re.findall(r"\w+ = (\d+)", messages)),
        flags=flags,
        levels=tuple(int(number) for number in re.findall(
            r"\w+ = (\d+)", _find(r"enum class TraceLevel[^{]*\{(.*?)\};", levels, "TraceLevel"))))


def _find(pattern: str, text: str, what: str) -> str:
    match = re.search(pattern, text, re.MULTILINE | re.DOTALL)
    if match is None:
        raise ValueError(f"no {what}")
    return match.group(1)


def _guid(initialiser: str) -> str:
    numbers = [int(number, 16) for number in re.findall(r"0x(\w+)", initialiser)]
    if len(numbers) != 11:
        raise ValueError(f"not a GUID: {initialiser}")
    return str(uuid.UUID(fields=(numbers[0], numbers[1], numbers[2], numbers[3], numbers[4],
                                 int.from_bytes(bytes(numbers[5:]), "big"))))
