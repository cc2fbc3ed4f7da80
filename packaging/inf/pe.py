"""Reads of a 64-bit DLL and its PDB what a package check needs.

After "PE Format" (Microsoft Learn) and "The PDB File Format" (LLVM).
"""

from __future__ import annotations

import re
import struct
import uuid
from dataclasses import dataclass
from pathlib import Path


class FormatError(Exception):
    """The file is not what it should be."""


@dataclass(frozen=True)
class PdbIdentity:
    guid: str
    age: int
    path: str = ""  # as the DLL has it; empty when read from the PDB


class PortableExecutable:
    def __init__(self, data: bytes):
        self._data = data
        try:
            self._read_headers()
            self.exports = self._read_exports()
            self.imports = self._read_imports()
            self.pdb = self._read_pdb()
            self.fixed_version, self.version_strings = self._read_version()
        except (struct.error, IndexError, ValueError) as error:
            raise FormatError(f"not a complete 64-bit DLL: {error}") from error

    def _read_headers(self) -> None:
        if self._data[:2] != b"MZ":
            raise FormatError("no MZ header")
        header = self._u32(0x3C)
        if self._data[header:header + 4] != b"PE\0\0":
            raise FormatError("no PE header")
        self.machine, count = struct.unpack_from("<HH", self._data, header + 4)
        self.timestamp = self._u32(header + 8)
        optional_size = struct.unpack_from("<H", self._data, header + 20)[0]
        optional = header + 24
        if struct.unpack_from("<H", self._data, optional)[0] != 0x20B:
            raise FormatError("not a 64-bit image")
        self.image_size = self._u32(optional + 56)
        self.characteristics = struct.unpack_from("<H", self._data, optional + 70)[0]
        self._directories = [struct.unpack_from("<II", self._data, optional + 112 + 8 * index)
                             for index in range(self._u32(optional + 108))]
        strings = self._u32(header + 12) + 18 * self._u32(header + 16)
        self.sections: list[str] = []
        self._ranges: list[tuple[int, int, int]] = []
        for index in range(count):
            at = optional + optional_size + 40 * index
            name = self._data[at:at + 8].rstrip(b"\0").decode("latin-1")
            if name.startswith("/"):  # too long for its field
                name = self._text(strings + int(name[1:]))
            self.sections.append(name)
            size, address, raw_size, raw = struct.unpack_from("<IIII", self._data, at + 8)
            self._ranges.append((address, max(size, raw_size), raw))

    def _read_exports(self) -> list[str]:
        address, size = self._directories[0]
        if size == 0:
            return []
        at = self._offset(address)
        names = self._offset(self._u32(at + 32))
        return sorted(self._text(self._offset(self._u32(names + 4 * index))) for index in range(self._u32(at + 24)))

    def _read_imports(self) -> list[str]:
        address, size = self._directories[1]
        found: list[str] = []
        at = self._offset(address) if size else 0
        while size and self._u32(at + 12):
            found.append(self._text(self._offset(self._u32(at + 12))).lower())
            at += 20
        return sorted(found)

    def _read_pdb(self) -> PdbIdentity | None:
        address, size = self._directories[6]
        for index in range(size // 28):
            at = self._offset(address) + 28 * index
            kind, raw = self._u32(at + 12), self._u32(at + 24)
            if kind == 2 and self._data[raw:raw + 4] == b"RSDS":
                guid = str(uuid.UUID(bytes_le=self._data[raw + 4:raw + 20]))
                return PdbIdentity(guid, self._u32(raw + 20), self._text(raw + 24))
        return None

    def _read_version(self) -> tuple[str, dict[str, str]]:
        address, size = self._directories[2]
        if size == 0:
            return "", {}
        block = self._data[self._offset(address):self._offset(address) + size]
        at = block.find(struct.pack("<I", 0xFEEF04BD))
        if at < 0:
            return "", {}
        high, low = struct.unpack_from("<II", block, at + 8)
        fixed = ".".join(str(part) for part in (high >> 16, high & 0xFFFF, low >> 16, low & 0xFFFF))
        text = block[at % 2:].decode("utf-16-le", errors="replace")
        return fixed, dict(re.findall(r"(\w+)\0+([^\0]+)\0", text))

    def _offset(self, address: int) -> int:
        for start, size, raw in self._ranges:
            if start <= address < start + size:
                return address - start + raw
        raise FormatError(f"address {address:#x} is in no section")

    def _text(self, at: int) -> str:
        return self._data[at:self._data.index(b"\0", at)].decode("utf-8")

    def _u32(self, at: int) -> int:
        return struct.unpack_from("<I", self._data, at)[0]


def load_dll(path: Path) -> PortableExecutable:
    try:
        return PortableExecutable(path.read_bytes())
    except (FormatError, ValueError) as error:
        raise FormatError(f"{path}: {error}") from error


def load_pdb(path: Path) -> PdbIdentity:
    """Stream 1 of the file says who it is."""
    data = path.read_bytes()
    try:
        if not data.startswith(b"Microsoft C/C++ MSF 7.00\r\n\x1aDS"):
            raise FormatError(f"{path}: not a PDB")
        block_size, _, _, directory_bytes, _, map_block = struct.unpack_from("<IIIIII", data, 32)

        def blocks_of(size: int) -> int:
            return -(-size // block_size)

        blocks = struct.unpack_from(f"<{blocks_of(directory_bytes)}I", data, map_block * block_size)
        directory = b"".join(data[block * block_size:(block + 1) * block_size] for block in blocks)
        count = struct.unpack_from("<I", directory)[0]
        sizes = struct.unpack_from(f"<{count}I", directory, 4)
        first = blocks_of(sizes[0] if sizes[0] != 0xFFFFFFFF else 0)
        block = struct.unpack_from("<I", directory, 4 + 4 * count + 4 * first)[0]
        _, _, age = struct.unpack_from("<III", data, block * block_size)
        return PdbIdentity(str(uuid.UUID(bytes_le=data[block * block_size + 12:block * block_size + 28])), age)
    except (struct.error, IndexError, ValueError) as error:
        raise FormatError(f"{path}: {error}") from error
