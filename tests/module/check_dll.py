"""Checks what the linker made: exports, imports, hardening, version resource, split symbols.

usage: check_dll.py OBJDUMP DLL BUILD_TYPE
"""

import os
import re
import subprocess
import sys

EXPORTS = ["DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer", "DllUnregisterServer"]
# Part of every Windows 10; anything else would have to be shipped.
SYSTEM_DLLS = {"advapi32.dll", "kernel32.dll", "mfplat.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll", "rpcrt4.dll",
               "shlwapi.dll", "user32.dll"}
# High-entropy addresses, dynamic base, no-execute.
HARDENING = 0x20 | 0x40 | 0x100


def main():
    objdump, dll, build_type = sys.argv[1:4]
    headers = subprocess.run([objdump, "-p", dll], capture_output=True, text=True, check=True).stdout
    errors = []

    table = headers[headers.index("[Ordinal/Name Pointer] Table"):]
    exports = re.findall(r"\[\s*\d+\]\s+(?:\+base\[\s*\d+\]\s+)?(?:[0-9a-f]+\s+)?(\w+)", table.split("\n\n")[0])
    if sorted(exports) != EXPORTS:
        errors.append(f"exports are {sorted(exports)}, not {EXPORTS}")

    imports = {name.lower() for name in re.findall(r"DLL Name: (\S+)", headers)}
    if not imports or imports - SYSTEM_DLLS:
        errors.append(f"imports {sorted(imports - SYSTEM_DLLS) or 'nothing'} beyond the system's DLLs")

    characteristics = int(re.search(r"DllCharacteristics\s+([0-9a-f]+)", headers).group(1), 16)
    if characteristics & HARDENING != HARDENING:
        errors.append(f"DllCharacteristics {characteristics:#x} lack {HARDENING:#x}")

    with open(dll, "rb") as file:
        if "Tarn camera device transforms".encode("utf-16-le") not in file.read():
            errors.append("no version resource")

    if build_type == "Release":
        sections = subprocess.run([objdump, "-h", dll], capture_output=True, text=True, check=True).stdout
        if ".debug_info" in sections:
            errors.append("the release carries debug information")
        if not os.path.exists(dll + ".debug") and not os.path.exists(os.path.splitext(dll)[0] + ".pdb"):
            errors.append("the split-off debug information is missing")

    for error in errors:
        print(f"{dll}: {error}")
    print(f"exports {sorted(exports)}, imports {sorted(imports)}, characteristics {characteristics:#x}")
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
