"""How the transforms' COM classes are registered, in each of the three generations."""

import collections
import re
from collections.abc import Iterator
from dataclasses import dataclass

from inf.context import Context, Found, RuleSet
from inf.document import Entry
from inf.driver import BUILD_COM_SERVER, Install, RegistryValue

rule = RuleSet()

CLASS_KEY = re.compile(r"(?:Classes\\)?CLSID\\(\{[^}\\]*\}|%[^%\\]*%)(?:\\(.+))?", re.IGNORECASE)
SERVER_KEY = "inprocserver32"
REG_SZ, REG_MULTI_SZ, REG_DWORD, REG_EXPAND_SZ = 0x0, 0x00010000, 0x00010001, 0x00020000


@dataclass(frozen=True)
class ClassValue:
    """A registry line below a class's key."""

    install: Install
    clsid: str
    subkey: str
    value: RegistryValue

    @property
    def is_server(self) -> bool:
        return self.subkey.lower() == SERVER_KEY


def _class_values(context: Context) -> list[ClassValue]:
    found = []
    for install in context.driver.installs:
        for value in context.driver.registry(install):
            match = CLASS_KEY.fullmatch(value.key)
            if match:
                found.append(ClassValue(install, match.group(1).upper(), match.group(2) or "", value))
    return found


def _com_classes(context: Context, install: Install) -> Iterator[tuple[Entry, str, str]]:
    """AddComClass lines with class id and section."""
    for _, server in context.driver.servers(install):
        for entry in context.document.entries(server):
            if entry.key.lower() == "addcomclass":
                yield entry, context.expand(entry.value(0)).upper(), context.expand(entry.value(2))


def _once(findings: Iterator[Found]) -> Iterator[Found]:
    """Sections that several installs share are reported once."""
    return iter(dict.fromkeys(findings))


@rule("registry-flags",
      "AddReg flags are empty, 0x00010000, 0x00010001 or 0x00020000; others write nothing or another type.")
def _registry_flags(context: Context) -> Iterator[Found]:  # 1431
    for value in context.driver.all_registry():
        if value.type not in (REG_SZ, REG_MULTI_SZ, REG_DWORD, REG_EXPAND_SZ):
            yield value.line, value.flags


@rule("registry-data", "Registry data fit their type: one number, one text, or a list of texts.")
def _registry_data(context: Context) -> Iterator[Found]:
    for value in context.driver.all_registry():
        text = ",".join(value.data)
        if value.type == REG_DWORD and not re.fullmatch(r"0x[0-9a-f]{1,8}|\d{1,10}", text, re.IGNORECASE):
            yield value.line, text or "no number"
        if value.type in (REG_SZ, REG_EXPAND_SZ) and len(value.data) != 1:
            yield value.line, text or "no text"


@rule("class-root", "Classes go to HKCR below build 25300, to HKR,Classes from there, and into no AddReg from 26100.")
def _class_root(context: Context) -> Iterator[Found]:  # 1320, 1321
    def found() -> Iterator[Found]:
        for entry in _class_values(context):
            root, generation = entry.value.root, entry.install.generation
            below = entry.value.key.lower().startswith("classes\\")
            right = {"A": root == "HKCR" and not below, "B": root == "HKR" and below, "C": False}[generation]
            if not right:
                yield entry.value.line, f"{root},{entry.value.key} for build {entry.install.decoration.build}"

    return _once(found())


@rule("server-path", "InprocServer32 names a copied file in the driver store, %13%\\name, without more.")
def _server_path(context: Context) -> Iterator[Found]:
    files = {name.lower() for name, _ in context.driver.copied_files()}

    def found() -> Iterator[Found]:
        servers: set[tuple[str, str]] = set()
        for entry in _class_values(context):
            if entry.is_server and not entry.value.name:
                servers.add((entry.install.section, entry.clsid))
                text = ",".join(entry.value.data)
                if not text.lower().startswith("%13%\\") or text[5:].lower() not in files:
                    yield entry.value.line, text or "empty"
        for entry in _class_values(context):
            if (entry.install.section, entry.clsid) not in servers:
                yield entry.value.line, f"{entry.clsid} has no server"

    return _once(found())


@rule("threading-model", "The threading model is Both.")  # 1160
def _threading_model(context: Context) -> Iterator[Found]:
    def found() -> Iterator[Found]:
        models = {(entry.install.section, entry.clsid): entry for entry in _class_values(context)
                  if entry.is_server and entry.value.name.lower() == "threadingmodel"}
        for entry in _class_values(context):
            model = models.get((entry.install.section, entry.clsid))
            if model is None or model.value.data != ("Both",):
                yield (model or entry).value.line, ",".join(model.value.data) if model else "missing"
        for install in context.driver.installs:
            for entry, _, section in _com_classes(context, install):
                model_entry = context.document.first(section, "ThreadingModel")
                if model_entry is None or model_entry.values != ("Both",):
                    yield (model_entry or entry).line, ",".join(model_entry.values) if model_entry else "missing"

    return _once(found())


@rule("server-kind", "A class has an in-process server and nothing else.")  # 1325
def _server_kind(context: Context) -> Iterator[Found]:
    def found() -> Iterator[Found]:
        for entry in _class_values(context):
            if entry.subkey and not entry.is_server:
                yield entry.value.line, entry.subkey

    return _once(found())


@rule("class-id", "Every filter's install section registers its class of the module, and none that it lacks.", "module")
def _class_id(context: Context) -> Iterator[Found]:
    assert context.module
    known = {entry.clsid for entry in context.module.classes}
    values = _class_values(context)
    for install in context.driver.installs:
        lines = {entry.clsid: entry.value.line for entry in values if entry.install is install}
        lines.update({clsid: entry.line for entry, clsid, _ in _com_classes(context, install)})
        for clsid in lines.keys() - known:
            yield lines[clsid], f"the module has no class {clsid}"
        if install.role and context.module.class_of(install.role).clsid not in lines:
            yield context.document.line_of(install.section), f"no {install.role} class in [{install.section}]"


@rule("class-name", "Classes are described by the names that the module has for them.", "module")
def _class_name(context: Context) -> Iterator[Found]:
    assert context.module
    names = {entry.clsid: entry.name for entry in context.module.classes}
    values = _class_values(context)
    described = {(entry.install.section, entry.clsid): entry for entry in values
                 if not entry.subkey and not entry.value.name}
    for key, entry in {(entry.install.section, entry.clsid): entry for entry in values}.items():
        name = described[key].value.data if key in described else ("no description",)
        if name != (names.get(entry.clsid, ""),):
            yield described.get(key, entry).value.line, ",".join(name)
    for install in context.driver.installs:
        for line, clsid, section in _com_classes(context, install):
            text = context.document.first(section, "Description")
            if text is None or context.expand(text.value(0)) != names.get(clsid, ""):
                yield (text or line).line, text.value(0) if text else "no description"


@rule("com-build", f"COM sections belong to builds of {BUILD_COM_SERVER} and above, which all have one.")  # 1199
def _com_build(context: Context) -> Iterator[Found]:
    for install in context.driver.installs:
        section = context.document.section(f"{install.section}.COM")
        build = install.decoration.build
        if section and build < BUILD_COM_SERVER:
            yield section.line, f"[{section.name}] serves build {build}"
        if not section and build >= BUILD_COM_SERVER:
            yield context.document.line_of(install.section), f"[{install.section}.COM] is missing"


@rule("com-server", "A COM server is of type 1, lies in the driver store and has a class.")  # 1013
def _com_server(context: Context) -> Iterator[Found]:
    files = {name.lower() for name, _ in context.driver.copied_files()}
    for install in context.driver.installs:
        for line, server in context.driver.servers(install):
            kind, binary = (context.document.first(server, key) for key in ("ServerType", "ServerBinary"))
            if kind is None or kind.value(0) != "1":
                yield (kind or line).line, f"ServerType {kind.value(0) if kind else 'missing'}"
            path = binary.value(0) if binary else ""
            if not path.lower().startswith("%13%\\") or path[5:].lower() not in files:
                yield (binary or line).line, f"ServerBinary {path or 'missing'}"
        if context.driver.servers(install) and not list(_com_classes(context, install)):
            yield context.document.line_of(f"{install.section}.COM"), "no class"


@rule("com-name", "COM server names are there and differ.")  # 1289
def _com_name(context: Context) -> Iterator[Found]:
    entries = {entry.line: entry for install in context.driver.installs for entry, _ in context.driver.servers(install)}
    counts = collections.Counter(entry.value(0).lower() for entry in entries.values())
    for line, entry in entries.items():
        if not entry.value(0) or counts[entry.value(0).lower()] > 1:
            yield line, entry.value(0) or "no name"
