"""The script that gathers facts and the page that describes them, against each other and against the module."""

import json
import re
import sys
import textwrap
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "packaging"))
sys.dont_write_bytecode = True

from inf import module  # noqa: E402
from inf.rules import camera  # noqa: E402

SCRIPT = (ROOT / "packaging/check-install.ps1").read_text(encoding="ascii")
PAGE = (ROOT / "docs/check-install-facts.md").read_text(encoding="ascii")


def members(value):
    if isinstance(value, dict):
        for name, inner in value.items():
            yield name
            yield from members(inner)
    elif isinstance(value, list):
        for inner in value:
            yield from members(inner)


class InstallFactsTest(unittest.TestCase):
    def test_script_and_page_name_the_same_facts(self):
        example = json.loads(textwrap.dedent(re.search(r"^    \{\n(?:    .*\n)+", PAGE, re.MULTILINE).group(0)))
        for name in set(members(example)):
            self.assertRegex(SCRIPT, rf"(?m)(\b{name}\s*=|'{name}'|\.{name} = )", name)
        written = set(re.findall(r"(?m)^\$facts\.(\w+) = ", SCRIPT)) | {"format", "time", "hardwareId"}
        self.assertEqual(written, set(example))

    def test_decisions_look_at_facts_that_are_gathered(self):
        table = PAGE[PAGE.index("| row |"):]
        for path in re.findall(r"`((?:system|devices\[\]|files\[\]|loaded\[\]|packages\[\]|server)\.\w+)`", table):
            self.assertRegex(SCRIPT, rf"\b{path.rpartition('.')[2]}\b", path)

    def test_the_table_has_the_rows_of_the_tool(self):
        tool = (ROOT / "tools/installation/InstallDecisions.cpp").read_text(encoding="ascii")
        rows = re.findall(r"(?m)^\| `([\w-]+)` \|", PAGE[PAGE.index("| row |"):])
        self.assertEqual(re.findall(r'(?m)^    \{"([\w-]+)", "\w+",', tool), list(dict.fromkeys(rows)))

    def test_the_script_knows_the_module_and_the_categories(self):
        tool = "".join((ROOT / f"tools/installation/{name}.cpp").read_text(encoding="ascii")
                       for name in ("FactQueries", "JudgesOfDevice"))
        ids, known = (set(re.findall(r"\{[0-9A-F]{8}-[0-9A-F-]{27}\}", text)) for text in (SCRIPT, tool))
        self.assertEqual(ids, known)
        classes = {entry.clsid for entry in module.load(ROOT).classes}
        self.assertEqual(ids, classes | camera.CATEGORIES | {camera.SENSOR})


if __name__ == "__main__":
    unittest.main()
