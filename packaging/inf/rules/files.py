"""What is copied, from where to where."""

import collections
import re
from collections.abc import Iterator

from inf.context import Context, Found, RuleSet

rule = RuleSet()

DRIVER_STORE = "13"
INBOX_FILES = {"usbvideo.sys", "ks.sys", "usbccgp.sys"}


@rule("copy-source", "Every copied file is in [SourceDisksFiles].")  # 1230
def _copy_source(context: Context) -> Iterator[Found]:
    sources = {entry.key.lower() for entry in context.driver.source_files()}
    for name, entry in context.driver.copied_files():
        if name.lower() not in sources:
            yield entry.line, name


@rule("source-disk", "Every source file names a disk of [SourceDisksNames].")  # 1273
def _source_disk(context: Context) -> Iterator[Found]:
    disks = {entry.key for name in ("SourceDisksNames", "SourceDisksNames.amd64")
             for entry in context.document.entries(name)}
    for entry in context.driver.source_files():
        if entry.value(0) not in disks:
            yield entry.line, f"{entry.key} on disk {entry.value(0)}"


@rule("file-copied", "Every source file is copied by every install section's CopyFiles.")
def _file_copied(context: Context) -> Iterator[Found]:
    copied = {name.lower() for name, _ in context.driver.copied_files()}
    for entry in context.driver.source_files():
        if entry.key.lower() not in copied:
            yield entry.line, entry.key
    for install in context.driver.installs:
        if not any(entry.key.lower() == "copyfiles" for entry in context.driver.parts(install)):
            yield context.document.line_of(install.section), f"[{install.section}] copies nothing"


@rule("package-file", "Every source file is in the package, spelt the same.", "package")
def _package_file(context: Context) -> Iterator[Found]:
    assert context.package
    present = {path.relative_to(context.package).as_posix() for path in context.package.rglob("*") if path.is_file()}
    for entry in context.driver.source_files():
        folder = entry.value(1).replace("\\", "/").strip("/")
        if (f"{folder}/" if folder else "") + entry.key not in present:
            yield entry.line, entry.key


@rule("destination", f"The only destination is {DRIVER_STORE}, the driver store.")  # 1322
def _destination(context: Context) -> Iterator[Found]:
    for entry in context.document.entries("DestinationDirs"):
        if entry.values != (DRIVER_STORE,):
            yield entry.line, ",".join(entry.values)
    if not context.document.first("DestinationDirs", "DefaultDestDir"):
        listed = {entry.key.lower() for entry in context.document.entries("DestinationDirs")}
        for name in sorted(context.driver.copy_sections() - listed):
            yield context.document.line_of("DestinationDirs"), f"none for [{name}]"


@rule("copy-form", "A copied file keeps its name and has no flags.")  # 1103
def _copy_form(context: Context) -> Iterator[Found]:
    for name, entry in context.driver.copied_files():
        if any(entry.values[1:]) and entry.key.lower() != "copyfiles":
            yield entry.line, ",".join((name, *entry.values[1:]))


@rule("file-unique", "A file name stands in [SourceDisksFiles] and in the copied files once.")  # 1100
def _file_unique(context: Context) -> Iterator[Found]:
    for names in ([(entry.key, entry.line) for entry in context.driver.source_files()],
                  [(name, entry.line) for name, entry in context.driver.copied_files()]):
        counts = collections.Counter(name.lower() for name, _ in names)
        for name, line in names:
            if counts[name.lower()] > 1:
                yield line, name


@rule("inbox-file", "No file of the inbox driver is named: Include and Needs bring it.")  # 2650
def _inbox_file(context: Context) -> Iterator[Found]:
    for section in context.document.sections():
        for entry in section.entries:
            for text in (entry.key, *entry.values):
                if re.split(r"[\\/]", text.lower())[-1] in INBOX_FILES:
                    yield entry.line, text
