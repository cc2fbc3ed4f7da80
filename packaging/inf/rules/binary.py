"""The DLL that the package brings, and its PDB."""

import ntpath
from collections.abc import Iterator

from inf.context import Context, Found, RuleSet

rule = RuleSet("dll")

MACHINE_AMD64 = 0x8664
# Part of every Windows 10; anything else would have to be in the package.
SYSTEM_DLLS = {"advapi32.dll", "kernel32.dll", "mf.dll", "mfplat.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll",
               "propsys.dll", "rpcrt4.dll", "shlwapi.dll", "user32.dll", "ntdll.dll", "mfsensorgroup.dll", "ksuser.dll"}
HARDENING = {0x20: "high-entropy addresses", 0x40: "dynamic base", 0x100: "no execution of data"}
VERSION_STRINGS = ("CompanyName", "FileDescription", "FileVersion", "InternalName", "OriginalFilename", "ProductName",
                   "ProductVersion")


@rule("dll-machine", "The DLL is for x64.", "dll")
def _machine(context: Context) -> Iterator[Found]:
    assert context.dll
    if context.dll.machine != MACHINE_AMD64:
        yield 0, f"machine {context.dll.machine:#06x}"


@rule("dll-exports", "The DLL exports the four entry points of the module's definition file.", "dll", "module")
def _exports(context: Context) -> Iterator[Found]:
    assert context.dll and context.module
    if tuple(context.dll.exports) != context.module.exports:
        yield 0, ", ".join(context.dll.exports) or "nothing"


@rule("dll-imports", "The DLL imports from the system only.", "dll")
def _imports(context: Context) -> Iterator[Found]:
    assert context.dll
    for name in context.dll.imports:
        if name not in SYSTEM_DLLS and not name.startswith(("api-ms-win-", "ext-ms-win-")):
            yield 0, name


@rule("dll-hardening", "The DLL carries the marks of dynamic base, high entropy and no execution.", "dll")
def _hardening(context: Context) -> Iterator[Found]:
    assert context.dll
    for bit, name in HARDENING.items():
        if not context.dll.characteristics & bit:
            yield 0, f"no {name}"


@rule("dll-debug", "The DLL that ships carries no debug sections.", "dll")
def _debug(context: Context) -> Iterator[Found]:
    assert context.dll
    for name in context.dll.sections:
        if name.startswith(".debug"):
            yield 0, name


@rule("dll-timestamp", "The DLL's time stamp is not 0: builds would share one place in a symbol store.", "dll")
def _timestamp(context: Context) -> Iterator[Found]:
    assert context.dll
    if context.dll.timestamp == 0:
        yield 0, "0"


@rule("dll-version", "The version resource has the module's version and all strings that are required.",
      "dll", "module")
def _version(context: Context) -> Iterator[Found]:
    assert context.dll and context.module
    if context.dll.fixed_version != context.module.file_version:
        yield 0, f"{context.dll.fixed_version or 'none'}, not {context.module.file_version}"
    for name in VERSION_STRINGS:
        if name not in context.dll.version_strings:
            yield 0, f"no {name}"


@rule("dll-name", "OriginalFilename is the name under which the INF copies the file.", "dll")
def _name(context: Context) -> Iterator[Found]:
    assert context.dll
    original = context.dll.version_strings.get("OriginalFilename", "")
    if original.lower() not in {name.lower() for name, _ in context.driver.copied_files()}:
        yield 0, original or "none"


@rule("dll-pdb", "The DLL names its PDB by the bare file name, with the PDB's own GUID and age.", "dll", "pdb")
def _pdb(context: Context) -> Iterator[Found]:
    assert context.dll and context.pdb
    named = context.dll.pdb
    if named is None:
        yield 0, "no PDB is named"
    elif ntpath.basename(named.path) != named.path or "/" in named.path:
        yield 0, named.path
    elif (named.guid, named.age) != (context.pdb.guid, context.pdb.age):
        yield 0, f"{named.guid} age {named.age}, the PDB has {context.pdb.guid} age {context.pdb.age}"
