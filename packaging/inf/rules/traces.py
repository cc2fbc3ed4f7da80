"""The trace profile (.wprp) and the message formats (.tmf) against the module's source."""

import re
import xml.parsers.expat
from collections.abc import Iterator
from dataclasses import dataclass, field

from inf.context import Context, Found, Rule, RuleSet

_profile = RuleSet("profile")
_formats = RuleSet("formats")

# What every recorder since Windows 10 1709 takes; an attribute that it does not know makes it refuse the file.
ATTRIBUTES = {
    "WindowsPerformanceRecorder": {"Version", "Author", "Comments"},
    "Profiles": set(),
    "EventCollector": {"Id", "Name", "Base"},
    "BufferSize": {"Value"},
    "Buffers": {"Value", "PercentageOfTotalMemory"},
    "EventProvider": {"Id", "Name", "Level", "NonPagedMemory", "Stack"},
    "Keywords": set(),
    "Keyword": {"Value"},
    "Profile": {"Id", "Name", "Description", "DetailLevel", "LoggingMode", "Base", "Default"},
    "Collectors": set(),
    "EventCollectorId": {"Value"},
    "EventProviders": set(),
    "EventProviderId": {"Value"},
}
ORDER = ["EventCollector", "SystemProvider", "EventProvider", "Profile"]
# AvStream, and the USB video driver's own channel.
KERNEL_PROVIDERS = {"46deb98e-b7d7-4578-a15a-e3f365c73ddb", "401f3683-4d1a-4396-99da-6d1fdfab1ddb"}
EVERY_LEVEL = 255


@dataclass
class Node:
    tag: str
    attributes: dict[str, str]
    line: int
    children: list["Node"] = field(default_factory=list)

    def get(self, name: str) -> str:
        return self.attributes.get(name, "")

    def walk(self) -> Iterator["Node"]:
        yield self
        for child in self.children:
            yield from child.walk()

    def all(self, tag: str) -> list["Node"]:
        return [node for node in self.walk() if node.tag == tag]


def _parse(context: Context) -> Node:
    """Root of the file; one without a tag when it is not XML, with the reason in it."""
    assert context.profile
    parser = xml.parsers.expat.ParserCreate()
    root = Node("", {}, 1)
    stack = [root]

    def start(tag: str, attributes: dict[str, str]) -> None:
        node = Node(tag, attributes, parser.CurrentLineNumber)
        stack[-1].children.append(node)
        stack.append(node)

    parser.StartElementHandler = start
    parser.EndElementHandler = lambda _: stack.pop()
    try:
        parser.Parse(context.profile.read_bytes(), True)
    except xml.parsers.expat.ExpatError as error:
        return Node("", {"problem": str(error)}, error.lineno)
    return root.children[0]


def _level(node: Node) -> int:
    return int(node.get("Level")) if node.get("Level").isdigit() else 0


@_profile("profile-shape",
          "The profile file is built as the recorder wants it: order, ids, a File and a Memory form each.", "profile")
def _profile_shape(context: Context) -> Iterator[Found]:
    root = _parse(context)
    if root.tag != "WindowsPerformanceRecorder" or root.get("Version") != "1.0" or len(root.children) != 1:
        yield root.line, root.get("problem") or f"root {root.tag} {root.get('Version')}"
        return
    nodes = root.children[0].children
    places = [ORDER.index(node.tag) if node.tag in ORDER else -1 for node in nodes]
    for node, place, before in zip(nodes, places, [0, *places]):
        if place < before:
            yield node.line, f"{node.tag} is out of order"
    for node in root.walk():
        if re.search(r"[:\s]", node.get("Id")):
            yield node.line, f"id '{node.get('Id')}'"
    yield from _profile_forms(root)
    yield from _profile_references(root)


def _profile_forms(root: Node) -> Iterator[Found]:
    profiles = root.all("Profile")
    ids = {node.get("Id"): node for node in profiles}
    for node in profiles:
        name, detail, mode = node.get("Name"), node.get("DetailLevel"), node.get("LoggingMode")
        if node.get("Id") != f"{name}.{detail}.{mode}" or name != profiles[0].get("Name"):
            yield node.line, f"id {node.get('Id')} of {name}, {detail}, {mode}"
        if detail not in ("Light", "Verbose") or mode not in ("File", "Memory") or not node.get("Description"):
            yield node.line, f"{detail}, {mode}, description '{node.get('Description')}'"
        twin = f"{name}.{detail}.{'Memory' if mode == 'File' else 'File'}"
        if twin not in ids:
            yield node.line, f"no {twin}"
        if mode == "Memory" and not node.children and node.get("Base") not in ids:
            yield node.line, f"nothing in it, base '{node.get('Base')}'"


def _profile_references(root: Node) -> Iterator[Found]:
    for tag in ("EventCollector", "EventProvider"):
        ids = [node.get("Id") for node in root.all(tag)]
        for node in root.all(tag):
            if ids.count(node.get("Id")) > 1:
                yield node.line, f"{node.get('Id')} twice"
        used = {node.get("Value") for node in root.all(f"{tag}Id")}
        for node in root.all(f"{tag}Id"):
            if node.get("Value") not in ids:
                yield node.line, f"no {tag} {node.get('Value')}"
        for node in root.all(tag):
            if node.get("Id") not in used:
                yield node.line, f"{node.get('Id')} is in no profile"


@_profile("profile-attributes", "Elements and attributes are those that every recorder of Windows 10 knows.", "profile")
def _profile_attributes(context: Context) -> Iterator[Found]:
    for node in _parse(context).walk():
        if node.tag and node.tag not in ATTRIBUTES and node.tag not in ORDER:
            yield node.line, node.tag
        for name in sorted(node.attributes.keys() - ATTRIBUTES.get(node.tag, set())):
            if node.tag:
                yield node.line, f"{node.tag} {name}"


@_profile("profile-providers", "Every profile records the module's two providers.", "profile", "module")
def _profile_providers(context: Context) -> Iterator[Found]:
    assert context.module
    root = _parse(context)
    traces = context.module.traces
    guids = {node.get("Id"): node.get("Name").lower() for node in root.all("EventProvider")}
    for node in root.all("Profile"):
        if node.children:
            recorded = {guids.get(child.get("Value")) for child in node.all("EventProviderId")}
            for wanted in (traces.provider, traces.control):
                if wanted not in recorded:
                    yield node.line, f"{node.get('Id')} lacks {wanted}"


@_profile("profile-levels",
          "The module's providers have a level of the module, in verbose profiles the highest; the classic channel has "
          "all its flags, without which it is silent.", "profile", "module")
def _profile_levels(context: Context) -> Iterator[Found]:
    assert context.module
    traces = context.module.traces
    root = _parse(context)
    ours = (traces.provider, traces.control)
    for node in root.all("EventProvider"):
        if node.get("Name").lower() in ours and _level(node) not in (*traces.levels, EVERY_LEVEL):
            yield node.line, f"{node.get('Id')} level {node.get('Level') or 'missing'}"
        if node.get("Name").lower() == traces.control:
            masks = [child.get("Value") for child in node.all("Keyword")]
            if masks != [f"{traces.flags:#x}"]:
                yield node.line, f"{node.get('Id')} keywords {' '.join(masks) or 'missing'}"
    levels = {node.get("Id"): (_level(node), node.get("Name").lower()) for node in root.all("EventProvider")}
    for profile in root.all("Profile"):
        for child in profile.all("EventProviderId") if profile.get("DetailLevel") == "Verbose" else ():
            level, name = levels.get(child.get("Value"), (EVERY_LEVEL, ""))
            if name in ours and level < max(traces.levels):
                yield child.line, f"{child.get('Value')} in {profile.get('Id')}"


@_profile("profile-kernel", "Providers in the kernel have non-paged buffers.", "profile")
def _profile_kernel(context: Context) -> Iterator[Found]:
    for node in _parse(context).all("EventProvider"):
        if node.get("Name").lower() in KERNEL_PROVIDERS and node.get("NonPagedMemory") != "true":
            yield node.line, node.get("Id")


@_formats("formats", "The message formats are those of the module: control and message GUID, and every number once.",
          "formats", "module")
def _format_numbers(context: Context) -> Iterator[Found]:
    assert context.formats and context.module
    text = context.formats.read_text(encoding="ascii")
    traces = context.module.traces
    if traces.control not in text.lower():
        yield 1, f"no control GUID {traces.control}"
    classes = re.findall(r"^([0-9a-f]{8}(?:-[0-9a-f]{4}){3}-[0-9a-f]{12}) ", text, re.MULTILINE | re.IGNORECASE)
    if [name.lower() for name in classes] != [traces.message_class]:
        yield 1, f"message GUID {' '.join(classes) or 'missing'}"
    numbers = tuple(sorted(int(number) for number in re.findall(r"^#typev \S+ (\d+) ", text, re.MULTILINE)))
    if numbers != tuple(sorted(traces.messages)):
        yield 1, f"messages {numbers}, not {traces.messages}"


@_formats("formats-copy",
          "The formats are in the package under the message GUID too: readers that search a folder look for that.",
          "formats", "module", "package")
def _formats_copy(context: Context) -> Iterator[Found]:
    assert context.formats and context.module and context.package
    copy = context.package / f"{context.module.traces.message_class}.tmf"
    if not copy.is_file() or copy.read_bytes() != context.formats.read_bytes():
        yield 0, copy.name


@dataclass
class _Topic:
    rules: list[Rule]


rule = _Topic(_profile.rules + _formats.rules)
