"""Checks what a reader relies on: folders include only what stands below them, headers are guarded, files stay short,
a source file includes its own header first, and includes come in one order.

usage: check_layout.py ROOT
"""

import os
import re
import sys

ORDER = ["module", "device", "nodes", "core", "recorder", "ks", "media", "trace", "base", "platform"]
# What a folder may include besides those after it in ORDER and itself.
EXTRA = {
    "device": {"kernels", "tarn"},
    "nodes": {"kernels", "tarn"},
    "module": {"tarn"},
    "core": {"tarn"},
    "recorder": {"tarn"},
    "ks": {"tarn"},
    "kernels": set(),
    "sim": {"platform", "base", "tarn"},
    # Everything in tools knows the module through COM, but for the command that shows single nodes.
    "tools": {"platform", "base", "sim", "tarn"},
    "tools/nodes": {"platform", "base", "trace", "media", "core", "nodes", "device", "kernels", "sim", "tools"},
}
LONGEST = 400


def allowed(folder, shown):
    inner = os.path.dirname(shown)
    if "/" in inner and inner in EXTRA:
        return EXTRA[inner]
    names = {folder} | EXTRA.get(folder, set())
    if folder in ORDER:
        names |= set(ORDER[ORDER.index(folder):])
    return names


def kind(line):
    """0 own platform declarations, 1 system and standard headers, 2 ours."""
    if line.startswith("#include <"):
        return 1
    return 0 if line.startswith('#include "platform/') else 2


def include_errors(lines, shown):
    """One order: the file's own header, platform, the system's and the standard's, ours."""
    includes = [line for line in lines if line.startswith("#include ")]
    if shown.endswith(".cpp") and includes:
        # A class in two source files has one header, whose name begins theirs.
        stem = os.path.splitext(shown)[0]
        own = [line for line in includes if line.endswith('.h"') and stem.startswith(line[len('#include "'):-3])]
        if own and includes[0] not in own:
            return [f"{shown}: its own header comes first"]
        includes = includes[1:] if own else includes
    kinds = [kind(line) for line in includes]
    return [f"{shown}: includes out of order"] if kinds != sorted(kinds) else []


def main():
    root = sys.argv[1]
    errors = []
    includes = 0
    for folder in ORDER + ["kernels", "sim", "tools"]:
        for parent, _, files in os.walk(os.path.join(root, folder)):
            for name in files:
                if not name.endswith((".h", ".cpp")):
                    continue
                path = os.path.join(parent, name)
                with open(path, encoding="utf-8") as file:
                    lines = file.read().splitlines()
                shown = os.path.relpath(path, root)
                if len(lines) > LONGEST:
                    errors.append(f"{shown}: {len(lines)} lines, {LONGEST} is the end")
                if name.endswith(".h") and not any(line == "#pragma once" for line in lines):
                    errors.append(f"{shown}: no include guard")
                errors += include_errors(lines, shown)
                for number, line in enumerate(lines, 1):
                    match = re.match(r'#include "([^/"]+)/', line)
                    if match:
                        includes += 1
                        if match.group(1) not in allowed(folder, shown):
                            errors.append(f"{shown}:{number}: {folder} must not include {match.group(1)}")
    for error in errors:
        print(error)
    print(f"{includes} includes checked")
    return 1 if errors or includes < 100 else 0


if __name__ == "__main__":
    sys.exit(main())
