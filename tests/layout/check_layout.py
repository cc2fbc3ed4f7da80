"""Checks what a reader relies on: folders include only what stands below them, headers are guarded, files stay short.

usage: check_layout.py ROOT
"""

import os
import re
import sys

ORDER = ["module", "device", "nodes", "core", "recorder", "ks", "utils", "platform"]
# What a folder may include besides those after it in ORDER and itself.
EXTRA = {
    "device": {"kernels", "tarn"},
    "nodes": {"kernels", "tarn"},
    "module": {"tarn"},
    "ks": {"tarn"},
    "kernels": set(),
    "sim": {"platform", "utils", "tarn"},
    # The node command shows single nodes; everything else in tools knows the module through COM.
    "tools": {"platform", "utils", "sim", "tarn"},
}
NODE_COMMAND = {"nodes", "device", "core", "kernels"}
LONGEST = 500


def allowed(folder, path):
    names = {folder} | EXTRA.get(folder, set())
    if folder in ORDER:
        names |= set(ORDER[ORDER.index(folder):])
    if folder == "tools" and os.path.basename(path).startswith("Node"):
        names |= NODE_COMMAND
    return names


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
                for number, line in enumerate(lines, 1):
                    match = re.match(r'#include "([^/"]+)/', line)
                    if match:
                        includes += 1
                        if match.group(1) not in allowed(folder, path):
                            errors.append(f"{shown}:{number}: {folder} must not include {match.group(1)}")
    for error in errors:
        print(error)
    print(f"{includes} includes checked")
    return 1 if errors or includes < 100 else 0


if __name__ == "__main__":
    sys.exit(main())
