"""Fills packaging/tarn.inf.in.

In the template `@NAME@` is a variable; `;@if KIND` and `;@each NAME VALUE...`, up to their `;@end`, select and repeat
lines.
"""

from __future__ import annotations

import configparser
import datetime
import os
import re
import subprocess
from pathlib import Path

from inf.module import Module

KINDS = ("extension", "base")


class GenerateError(Exception):
    """Something that the INF needs is missing or malformed."""


def generate(template: str, kind: str, variables: dict[str, str]) -> str:
    """The INF's text, lines ending in LF."""
    lines = template.splitlines()
    produced, end = _block(lines, 0, kind, {}, depth=0)
    assert end == len(lines)
    text = "\n".join(produced) + "\n"
    return re.sub(r"@(\w+)@", lambda match: _value(match.group(1), variables), text)


def variables_of(module: Module, vendor: dict[str, str], date: datetime.date) -> dict[str, str]:
    values = {name.upper(): value for name, value in vendor.items()}
    values["DRIVER_DATE"] = date.strftime("%m/%d/%Y")
    values["DRIVER_VERSION"] = module.file_version
    for entry in module.classes:
        values[f"{entry.role.upper()}_CLSID"] = entry.clsid
        values[f"{entry.role.upper()}_NAME"] = entry.name
    return values


def read_vendor(path: Path) -> dict[str, str]:
    parser = configparser.ConfigParser(interpolation=None)
    try:
        with path.open(encoding="ascii") as file:
            parser.read_file(file)
        vendor = dict(parser["vendor"])
    except (OSError, UnicodeDecodeError, configparser.Error, KeyError) as error:
        raise GenerateError(f"{path}: {error}") from error
    for name, value in vendor.items():
        if '"' in value or "%" in value:
            raise GenerateError(f"{path}: {name} must not contain a quote or a per cent sign")
    return vendor


def package_date(source: Path) -> datetime.date:
    """Of SOURCE_DATE_EPOCH, else of the last commit, else, in a package without sources, today; UTC, so that it is the
    same everywhere."""
    seconds = os.environ.get("SOURCE_DATE_EPOCH")
    if not seconds and source.is_file():
        return datetime.datetime.now(datetime.timezone.utc).date()
    if not seconds:
        command = ["git", "-C", str(source), "log", "-1", "--format=%ct"]
        result = subprocess.run(command, capture_output=True, text=True, check=False)
        if result.returncode != 0:
            raise GenerateError(f"no date: set SOURCE_DATE_EPOCH, or run in a clone ({result.stderr.strip()})")
        seconds = result.stdout.strip()
    if not seconds.isdigit():
        raise GenerateError(f"not a date in seconds: '{seconds}'")
    return datetime.datetime.fromtimestamp(int(seconds), datetime.timezone.utc).date()


def _block(lines: list[str], index: int, kind: str, loop: dict[str, str], depth: int) -> tuple[list[str], int]:
    """Lines up to the block's end, and the index of that end."""
    produced: list[str] = []
    while index < len(lines):
        line = lines[index]
        words = line.split()
        if line.startswith(";@if "):
            inner, index = _block(lines, index + 1, kind, loop, depth + 1)
            if words[1] not in KINDS:
                raise GenerateError(f"unknown kind: {line}")
            produced += inner if words[1] == kind else []
        elif line.startswith(";@each "):
            end = index
            for value in words[2:]:
                inner, end = _block(lines, index + 1, kind, {**loop, words[1]: value}, depth + 1)
                produced += inner
            index = end
        elif line == ";@end" and depth > 0:
            return produced, index
        elif line.startswith(";@"):
            raise GenerateError(f"unexpected {line}")
        else:
            for name, value in loop.items():
                line = line.replace(f"@{name}@", value)
            produced.append(line)
        index += 1
    if depth > 0:
        raise GenerateError("a block has no ;@end")
    return produced, index


def _value(name: str, variables: dict[str, str]) -> str:
    if name not in variables:
        raise GenerateError(f"no value for @{name}@")
    return variables[name]
