"""The file itself: encoding, syntax, sections and tokens."""

import collections
import re
from collections.abc import Iterator

from inf.context import Context, Found, RuleSet
from inf.document import TOKEN

rule = RuleSet()

# Values that samples carry and that nobody may ship.
SAMPLES = re.compile(r"\$ARCH\$|\bTODO\b|\{0{8}-(?:0{4}-){3}0{12}\}|\bcontoso\b|\bfabrikam\b|\{X{8}-", re.IGNORECASE)
PLACEHOLDER = re.compile(r"VID_(?![0-9A-F]{4}(?:&|$))\w*|PID_(?![0-9A-F]{4}(?:&|$))\w*", re.IGNORECASE)


@rule("encoding", "The file is ASCII, or UTF-16LE with a byte order mark.")  # 1003
def _encoding(context: Context) -> Iterator[Found]:
    if context.document.encoding_problem:
        yield 1, context.document.encoding_problem


@rule("syntax", "Every line is a section, an entry of one, or a comment.")
def _syntax(context: Context) -> Iterator[Found]:
    for problem in context.document.problems:
        yield problem.line, problem.text


@rule("section-twice", "A section stands in the file once; the setup API would merge them.")  # 1209
def _section_twice(context: Context) -> Iterator[Found]:
    seen: set[str] = set()
    for name, line in context.document.headers:
        if name.lower() in seen:
            yield line, f"[{name}]"
        seen.add(name.lower())


@rule("line-twice", "No line stands twice in its section, and no key twice in [Version].")
def _line_twice(context: Context) -> Iterator[Found]:
    for section in context.document.sections():
        seen: set[tuple[str, ...]] = set()
        for entry in section.entries:
            values = () if section.name.lower() == "version" else entry.values
            line = tuple(text.lower() for text in (entry.key, *values))
            if line in seen and not section.name.lower().startswith("strings"):
                yield entry.line, f"{entry.key}={','.join(entry.values)}" if entry.key else ",".join(entry.values)
            seen.add(line)


@rule("section-missing", "Every section that is named exists; the setup API skips a missing one silently.")  # 1203
def _section_missing(context: Context) -> Iterator[Found]:
    models = {name.lower() for name, _ in context.driver.models}  # have a rule of their own
    for reference in context.driver.references:
        name = reference.section
        if name.lower() not in models and not context.document.section(name):
            yield reference.line, f"[{name}], named in [{reference.source}]"


@rule("section-unused", "Every section is reached from [Manufacturer]; a mistyped name is never looked for.")  # 2083
def _section_unused(context: Context) -> Iterator[Found]:
    models = context.document.section("Manufacturer")
    bases = tuple(entry.value(0).lower() + "." for entry in models.entries) if models else ()
    for section in context.document.sections():
        name = section.name.lower()
        is_models = bool(bases) and name.startswith(bases)
        if name not in context.driver.reached and not name.startswith("strings.") and not is_models:
            yield section.line, f"[{section.name}]"


@rule("token-undefined", "Every %token% is defined in [Strings]; one that is not stays as it is written.")  # 1235
def _token_undefined(context: Context) -> Iterator[Found]:
    for section in context.document.sections():
        if section.name.lower().startswith("strings"):
            continue
        for entry in section.entries:
            for text in (entry.key, *entry.values):
                for token in TOKEN.findall(text):
                    if token and not token.isdigit() and token.lower() not in context.document.strings:
                        yield entry.line, f"%{token}%"


@rule("token-twice", "A token is defined once, ignoring case.")
def _token_twice(context: Context) -> Iterator[Found]:
    entries = context.document.entries("Strings")
    counts = collections.Counter(entry.key.lower() for entry in entries)
    for entry in entries:
        if counts[entry.key.lower()] > 1:
            yield entry.line, f"%{entry.key}%"


@rule("sample-value", "Nothing of a sample is left: no TODO, $ARCH$, sample organisation or GUID of zeros.")  # 1274
def _sample_value(context: Context) -> Iterator[Found]:
    for section in context.document.sections():
        for entry in section.entries:
            for text in (entry.key, *entry.values):
                if SAMPLES.search(text):
                    yield entry.line, text


@rule("placeholder", "Hardware ids are the vendor's, not the placeholders of packaging/vendor.ini.", advice=True)
def _placeholder(context: Context) -> Iterator[Found]:
    for install in context.driver.installs:
        if PLACEHOLDER.search(install.hardware_id):
            yield install.line, install.hardware_id
