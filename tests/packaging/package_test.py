"""What is delivered: complete, of one version, without a trace of the build machine, and of use to those who get it.

usage: package_test.py FOLDER: one with archives, or a build tree, of which those are made that need nothing more built.
"""

import json
import re
import subprocess
import sys
import tempfile
import unittest
import zipfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILT = ("module", "sdk", "symbols")
DRIVER = {"tarn_dmft.dll", "tarn_dmft.pdb", "tarn.inf", "tarn_dmft.tmf", "5b1e8f6a-7d34-4f0c-a61b-93c80e52641f.tmf",
          "tarn.wprp", "install.cmd", "check-install.ps1", "collect.ps1"}
HEADERS = {path.relative_to(ROOT).as_posix() for path in (ROOT / "include").rglob("*.h")}
BESIDE = {"LICENSE", "THIRD-PARTY-NOTICES", *(f"docs/{path.name}" for path in (ROOT / "docs").glob("*.md"))}
TOOLS = {path.relative_to(ROOT).as_posix() for path in (ROOT / "packaging/inf").rglob("*.py")} | {
    f"packaging/{name}" for name in ("check-inf", "make-inf", "tarn.inf.in", "vendor.ini", "module.json")}
CONTENTS = {
    "module": {f"driver/{name}" for name in DRIVER} | TOOLS | BESIDE,
    "sdk": HEADERS | BESIDE | {"lib/cmake/tarn/tarnConfig.cmake", "lib/cmake/tarn/tarnConfigVersion.cmake",
                               "samples/read-frames/CMakeLists.txt", "samples/read-frames/main.cpp"},
    "tools": {"bin/tarn-host.exe"} | BESIDE,
}


def run(*command, **options):
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False, **options)
    assert result.returncode == 0, f"{command}\n{result.stdout}{result.stderr}"
    return result.stdout


def archives_of(tree, scratch):
    run("cmake", "--build", tree, "--target", "tarn_package")
    run("cpack", "--config", tree / "CPackConfig.cmake", "-B", scratch, "-D", f"CPACK_COMPONENTS_ALL={';'.join(BUILT)}")
    return scratch


class PackageTest(unittest.TestCase):
    source: Path

    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory()
        cls.addClassCleanup(scratch.cleanup)
        cls.folder = Path(scratch.name)
        is_tree = (cls.source / "CPackConfig.cmake").is_file()
        found = archives_of(cls.source, cls.folder / "made") if is_tree else cls.source
        cls.names, cls.dates, cls.versions = {}, set(), set()
        for path in found.glob("*.zip"):
            _, component, version, architecture = path.stem.split("-")
            cls.versions.add((version, architecture))
            with zipfile.ZipFile(path) as archive:
                archive.extractall(cls.folder / component)
                cls.names[component] = set(archive.namelist())
                cls.dates |= {entry.date_time for entry in archive.infolist()}
        assert set(cls.names) == ({*BUILT} if is_tree else {*BUILT, "tools"}), cls.names.keys()

    def test_archives_hold_what_they_should(self):
        self.assertEqual(len(self.dates), 1)
        for component in self.names.keys() - {"symbols"}:
            self.assertEqual(self.names[component] ^ CONTENTS[component], set(), component)
        page = (ROOT / "docs/install.md").read_text(encoding="utf-8")
        self.assertEqual([name for name in DRIVER if f"`{name}`" not in page and not re.match(r"[0-9a-f]{8}-", name)], [])

    def test_no_file_names_a_folder_of_this_machine(self):
        folders = (f"{ROOT}/", f"{Path.home()}/", "/home/")
        files = [self.folder / component / name for component, names in self.names.items() for name in names]
        # The host's PDB stays here, but its hash is in the program.
        for path in (*files, *(ROOT / "build/windows-clang/bin").glob("tarn-host.pdb")):
            for folder in folders:
                for code in ("utf-8", "utf-16-le"):
                    self.assertEqual(path.read_bytes().find(folder.encode(code)), -1, f"{path}: {folder}")

    def test_a_debugger_finds_names_and_lines(self):
        pdb = self.folder / "module/driver/tarn_dmft.pdb"
        summary = run("llvm-pdbutil-16", "dump", "--summary", "--publics", "-l", pdb)
        guid, age = (re.search(rf"^\s*{name}: (\S+)$", summary, re.MULTILINE).group(1) for name in ("GUID", "Age"))
        key = re.sub("[{}-]", "", guid) + f"{int(age):x}"
        self.assertIn(f"symbols/tarn_dmft.pdb/{key}/tarn_dmft.pdb", self.names["symbols"])
        self.assertIn("`DllGetClassObject`", summary)
        self.assertRegex(summary, r"(?m)^\s*/tarn/module/ModuleEntry\.cpp \(MD5: ")
        for path in (self.folder / "symbols").rglob("tarn_dmft.*"):
            if path.is_file():
                self.assertEqual(path.read_bytes(), (pdb.parent / path.name).read_bytes(), path)

    def test_the_vendor_checks_and_makes_an_inf_with_what_the_package_brings(self):
        folder = self.folder / "module"
        for tool in ("check-inf", "make-inf"):
            (folder / "packaging" / tool).chmod(0o755)
        saved = json.loads((folder / "packaging/module.json").read_text(encoding="ascii"))
        self.assertEqual(self.versions, {(saved["version"], "x64")})
        vendor = (folder / "packaging/vendor.ini").read_text(encoding="ascii")
        (folder / "own.ini").write_text(vendor.replace("_xxxx", "_1234"), encoding="ascii")
        run("packaging/make-inf", "own.inf", "--vendor", "own.ini", cwd=folder)
        for inf, options in (("driver/tarn.inf", ["--vendor", "packaging/vendor.ini"]),
                             ("own.inf", ["--vendor", "own.ini", "--release", "--last-release", "1/1/2000,0.0.0.1"])):
            report = json.loads(run("packaging/check-inf", inf, *options, "--package", "driver", "--json", cwd=folder))
            self.assertEqual((report["errors"], len(set(report["skipped"]) - {"newer"})), (0, 0))

    def test_an_application_builds_against_the_sdk(self):
        folder = self.folder / "sdk"
        run("cmake", "-G", "Ninja", "-S", folder / "samples/read-frames", "-B", folder / "build",
            "-D", "CMAKE_SYSTEM_NAME=Windows", "-D", "CMAKE_CXX_COMPILER=x86_64-w64-mingw32-g++-posix",
            "-D", f"CMAKE_PREFIX_PATH={folder}")
        run("cmake", "--build", folder / "build")


if __name__ == "__main__":
    PackageTest.source = Path(sys.argv.pop(1)).resolve()
    if not (PackageTest.source / "CPackConfig.cmake").is_file() and not list(PackageTest.source.glob("*.zip")):
        print(f"{PackageTest.source}: neither archives nor a build tree of what ships")
        sys.exit(77)
    unittest.main()
