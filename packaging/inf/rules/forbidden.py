"""What a universal driver package must not do, and what it takes from the inbox driver."""

from collections.abc import Iterator

from inf.context import Context, Found, RuleSet
from inf.driver import SUFFIXES, number

rule = RuleSet()

DIRECTIVES = {"delfiles", "delreg", "renfiles", "registerdlls", "unregisterdlls", "updateinis", "updateinifields",
              "ini2reg", "bitreg", "delservice", "profileitems", "copyinf", "delproperty"}
SECTIONS = {"classinstall32", "classinstall32.nt", "classinstall32.services", "coinstallers"}
ASSOCIATED_SERVICE = 0x2  # SPSVCINST_ASSOCSERVICE
ROOTS = {"HKR", "HKCR"}


# 1222, 1285, 1300-1309
@rule("forbidden-directive", "No directive and section that a universal package must not have.")
def _forbidden_directive(context: Context) -> Iterator[Found]:
    for section in context.document.sections():
        if section.name.lower() in SECTIONS or section.name.lower().endswith(".coinstallers"):
            yield section.line, f"[{section.name}]"
        for entry in section.entries:
            if entry.key.lower() in DIRECTIVES and not section.name.lower().startswith("strings"):
                yield entry.line, entry.key


@rule("forbidden-root", "The registry is written below HKR and HKCR only, and no RunOnce.")
def _forbidden_root(context: Context) -> Iterator[Found]:
    for value in context.driver.all_registry():
        if value.root not in ROOTS or "runonce" in value.key.lower():
            yield value.line, f"{value.root},{value.key}"


# 1383, 1296
@rule("services", "An extension associates no service; in a base INF every install section has its .Services.")
def _services(context: Context) -> Iterator[Found]:
    for install in context.driver.installs:
        name = f"{install.section}.Services"
        if not context.driver.is_extension and not context.document.section(name):
            yield context.document.line_of(install.section), f"[{name}] is missing"
        for entry in context.document.entries(name):
            flags = number(entry.value(1)) or 0
            if context.driver.is_extension and entry.key.lower() == "addservice" and flags & ASSOCIATED_SERVICE:
                yield entry.line, entry.value(0)


@rule("include-needs", "Include and Needs come together.")  # 2651
def _include_needs(context: Context) -> Iterator[Found]:
    for section in context.document.sections():
        include, needs = section.entry("Include"), section.entry("Needs")
        if (include is None) != (needs is None):
            yield (include or needs or section).line, f"[{section.name}]"


@rule("needs-suffix", "Needs names sections of the kind that it stands in.")  # 1310-1319
def _needs_suffix(context: Context) -> Iterator[Found]:
    known = {suffix.lower() for suffix in SUFFIXES}
    for section in context.document.sections():
        suffix = section.name.lower().rpartition(".")[2]
        for entry in section.all("Needs"):
            for name in entry.values:
                theirs = name.lower().rpartition(".")[2]
                if (theirs if theirs in known else "") != (suffix if suffix in known else ""):
                    yield entry.line, f"{name} in [{section.name}]"


@rule("base-parts", "A base INF includes the inbox driver in install, .HW, .Services and .WDF sections.")
def _base_parts(context: Context) -> Iterator[Found]:
    if context.driver.is_extension:
        return
    for install in context.driver.installs:
        for suffix in ("", ".HW", ".Services", ".WDF"):
            entry = context.document.first(install.section + suffix, "Include")
            if entry is None or "usbvideo.inf" not in (value.lower() for value in entry.values):
                yield context.document.line_of(install.section + suffix), f"[{install.section}{suffix}]"
