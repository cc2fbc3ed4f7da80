"""[Version]: who made the package, which one it is."""

import datetime
import re
from collections.abc import Iterator

from inf.context import Context, Found, RuleSet

rule = RuleSet()

# "System-Defined Device Setup Classes Available to Vendors" and "Using an Extension INF File".
CLASSES = {
    "extension": "{e2f84ce7-8efa-411c-aa69-97454ca4cb57}",
    "camera": "{ca3e7ab9-b4c3-4ae6-8251-579ef933890f}",
    "image": "{6bdd1fc6-810f-11d0-bec7-08002be2092f}",
    "softwarecomponent": "{5c4c3332-344d-483c-8739-259e934c9cc8}",
}
GUID = re.compile(r"\{[0-9a-f]{8}-(?:[0-9a-f]{4}-){3}[0-9a-f]{12}\}", re.IGNORECASE)


def _value(context: Context, key: str, index: int = 0) -> str:
    entry = context.document.first("Version", key)
    return context.expand(entry.value(index)) if entry else ""


def _line(context: Context, key: str) -> int:
    return context.document.line_of("Version", key)


def driver_date(context: Context) -> datetime.date | None:
    try:
        return datetime.datetime.strptime(_value(context, "DriverVer"), "%m/%d/%Y").date()
    except ValueError:
        return None


def driver_version(context: Context) -> tuple[int, ...]:
    text = _value(context, "DriverVer", 1)
    return tuple(int(part) for part in text.split(".")) if re.fullmatch(r"\d+(\.\d+)*", text) else ()


@rule("signature", 'Signature is "$Windows NT$".')  # 1001
def _signature(context: Context) -> Iterator[Found]:
    if _value(context, "Signature").lower() != "$windows nt$":
        yield _line(context, "Signature"), _value(context, "Signature") or "missing"


@rule("class-pair", "Class and ClassGuid belong together.")  # 1280, 1281
def _class_pair(context: Context) -> Iterator[Found]:
    name, guid = _value(context, "Class"), _value(context, "ClassGuid")
    if CLASSES.get(name.lower()) != guid.lower():
        yield _line(context, "ClassGuid"), f"{name or 'no class'} with {guid or 'no GUID'}"


@rule("extension-id", "An extension has its own ExtensionId, the same in every release; a base INF has none.")  # 1380
def _extension_id(context: Context) -> Iterator[Found]:
    value, line = _value(context, "ExtensionId"), _line(context, "ExtensionId")
    pinned = context.vendor.get("extension_id", "")
    if not context.driver.is_extension:
        if value:
            yield line, "in an INF that is no extension"
    elif not GUID.fullmatch(value):
        yield line, value or "missing"
    elif pinned and value.lower() != pinned.lower():
        yield line, f"{value}, not {pinned}"


@rule("provider", "Provider is a token, and not Microsoft.")  # 1204
def _provider(context: Context) -> Iterator[Found]:
    entry = context.document.first("Version", "Provider")
    written = entry.value(0) if entry else ""
    if not re.fullmatch(r"%[^%]+%", written) or context.expand(written).lower().startswith("microsoft"):
        yield _line(context, "Provider"), written or "missing"


@rule("catalog", "CatalogFile is a bare name.cat, and no source file: a catalog does not sign itself.")  # 1213, 1233
def _catalog(context: Context) -> Iterator[Found]:
    name, line = _value(context, "CatalogFile"), _line(context, "CatalogFile")
    if not re.fullmatch(r"[\w.-]+\.cat", name, re.IGNORECASE):
        yield line, name or "missing"
    elif context.document.first("SourceDisksFiles", name):
        yield context.document.line_of("SourceDisksFiles", name), name


@rule("driver-date", "DriverVer starts with a date, mm/dd/yyyy, that is not in the future.")  # 1217
def _driver_date(context: Context) -> Iterator[Found]:
    date, text = driver_date(context), _value(context, "DriverVer")
    if date is None or not re.fullmatch(r"\d\d/\d\d/\d{4}", text) or date > context.today:
        yield _line(context, "DriverVer"), text or "missing"


@rule("driver-version", "DriverVer has four numbers below 65535, not all zero.")  # 1218
def _driver_version(context: Context) -> Iterator[Found]:
    parts = driver_version(context)
    if len(parts) != 4 or not any(parts) or max(parts) >= 65535:
        yield _line(context, "DriverVer"), _value(context, "DriverVer", 1) or "missing"


@rule("module-version", "DriverVer has the module's version.", "module")
def _module_version(context: Context) -> Iterator[Found]:
    assert context.module
    if _value(context, "DriverVer", 1) != context.module.file_version:
        yield _line(context, "DriverVer"), f"{_value(context, 'DriverVer', 1)}, not {context.module.file_version}"


@rule("newer", "DriverVer is above the last release: the date counts first, then the version.", "last_release")
def _newer(context: Context) -> Iterator[Found]:
    assert context.last_release
    date, parts = driver_date(context), driver_version(context)
    if date is not None and parts and (date, parts) <= context.last_release:
        yield _line(context, "DriverVer"), f"last: {context.last_release[0]:%m/%d/%Y}"


@rule("lockdown", "PnpLockdown is 1: only the installation may change the package's files.")  # 1324
def _lockdown(context: Context) -> Iterator[Found]:
    if _value(context, "PnpLockdown") != "1":
        yield _line(context, "PnpLockdown"), _value(context, "PnpLockdown") or "missing"
