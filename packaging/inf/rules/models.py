"""[Manufacturer] and the models: which builds, which devices."""

import re
from collections.abc import Iterator

from inf.context import Context, Found, RuleSet

rule = RuleSet()

# The first build with the driver store as destination directory (Windows 10, version 1709).
FIRST_BUILD = 16299
HARDWARE_ID = re.compile(r"USB\\VID_\w{4}&PID_\w{4}(&REV_\w{4})?&MI_\d\d", re.IGNORECASE)


@rule("decoration-section", "Every decoration has its models section and every models section its decoration.")  # 1287
def _decoration_section(context: Context) -> Iterator[Found]:
    named = {name.lower() for name, _ in context.driver.models}
    if not named:
        yield context.document.line_of("Manufacturer"), "no models"
    for name, decoration in context.driver.models:
        if not context.document.section(name):
            yield decoration.line, f"[{name}] is missing"
    bases = {entry.value(0).lower() for entry in context.document.entries("Manufacturer")}
    for section in context.document.sections():
        base, _, rest = section.name.lower().partition(".")
        if base in bases and (rest.startswith("nt") or not rest) and section.name.lower() not in named:
            yield section.line, f"[{section.name}] is in no [Manufacturer] line"


@rule("decoration-build", f"Decorations name amd64 and a build of {FIRST_BUILD} or above.")  # 1288
def _decoration_build(context: Context) -> Iterator[Found]:
    for name, decoration in context.driver.models:
        if decoration.architecture != "amd64" or decoration.build < FIRST_BUILD:
            yield decoration.line, decoration.text or f"[{name}] without decoration"


@rule("generation-ids", "Every build generation lists the same hardware ids.")
def _generation_ids(context: Context) -> Iterator[Found]:
    listed: dict[str, set[str]] = {name: set() for name, _ in context.driver.models}
    for install in context.driver.installs:
        listed[_models_of(context, install.line)].add(install.hardware_id.upper())
    every = set().union(*listed.values())
    for name, ids in listed.items():
        for missing in sorted(every - ids):
            if context.document.section(name):
                yield context.document.line_of(name), f"[{name}] lacks {missing}"


@rule("generation-section", "Every install section serves one build generation.")
def _generation_section(context: Context) -> Iterator[Found]:
    used: dict[str, str] = {}
    for install in context.driver.installs:
        first = used.setdefault(install.section.lower(), install.generation)
        if first != install.generation:
            yield install.line, f"[{install.section}] for {first} and {install.generation}"


@rule("filter-ids", "Hardware ids are those of the depth filter (MI_00) and the color filter (MI_02), both of them.")
def _filter_ids(context: Context) -> Iterator[Found]:
    for install in context.driver.installs:
        if not install.role or not HARDWARE_ID.fullmatch(install.hardware_id):
            yield install.line, install.hardware_id
    for role in {"depth", "color"} - {install.role for install in context.driver.installs}:
        yield context.document.line_of("Manufacturer"), f"no {role} filter"


def _models_of(context: Context, line: int) -> str:
    """The models section that the line stands in."""
    best = ""
    best_line = 0
    for name, _ in context.driver.models:
        start = context.document.line_of(name)
        if best_line < start <= line:
            best, best_line = name, start
    return best
