"""The INF checker against planted errors: every rule finds its own, and what we generate has none."""

import datetime
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PACKAGING = ROOT / "packaging"
sys.path.insert(0, str(PACKAGING))
sys.dont_write_bytecode = True

from inf import generate, module, pe, report  # noqa: E402
from inf.context import Context  # noqa: E402
from inf.document import Document  # noqa: E402
from inf.rules import ALL  # noqa: E402

TODAY = datetime.date(2026, 11, 20)
MODULE = module.load(ROOT)
VENDOR = {**generate.read_vendor(PACKAGING / "vendor.ini"), "hardware_id": r"USB\VID_0000&PID_0001"}
DEPTH, COLOR = MODULE.class_of("depth").clsid, MODULE.class_of("color").clsid


def inf_text(kind="extension", **vendor):
    template = (PACKAGING / "tarn.inf.in").read_text(encoding="ascii")
    return generate.generate(template, kind, generate.variables_of(MODULE, {**VENDOR, **vendor}, TODAY))


# (what an author got wrong, the text that was there, what he wrote, the rule that must speak). Every occurrence goes.
MUTANTS = [
    ("sharp s", "Tarn camera installation", "Tarn camera gro\u00df", "encoding"),
    ("bracket", "[Depth.Device]", "[Depth.Device", "syntax"),
    ("quote", '"%13%\\tarn_dmft.dll"', '"%13%\\tarn_dmft.dll', "syntax"),
    ("copied block", "[ColorB.Class]", "[ColorA.Class]", "section-twice"),
    ("line copied", "ServerType=1", "ServerType=1\nServerType=1", "line-twice"),
    ("second date", "PnpLockdown=1", "PnpLockdown=1\nDriverVer=01/01/2020,1.0.0.0", "line-twice"),
    ("renamed section", "[Depth.Interface.Values]", "[Depth.Interface.Value]", "section-missing"),
    ("mistyped suffix", "[DepthA.HW]", "[DepthA.HWs]", "section-unused"),
    ("token of another", "HKR,,FSSensorGroupId,,%GroupId%", "HKR,,FSSensorGroupId,,%Group%", "token-undefined"),
    ("token again", 'Org="Tarn"', 'Org="Tarn"\nORG="Other"', "token-twice"),
    ("sample left", "Disk=", "Disk2=TODO\nDisk=", "sample-value"),
    ("placeholder", "VID_0000", "VID_xxxx", "placeholder"),
    ("old signature", '"$Windows NT$"', '"$Chicago$"', "signature"),
    ("class of cameras", "Class=Extension", "Class=Camera", "class-pair"),
    ("new extension id", VENDOR["extension_id"], "{11111111-2222-4333-8444-555555555555}", "extension-id"),
    ("no extension id", "ExtensionId=", "; ", "extension-id"),
    ("plain provider", "Provider=%Org%", "Provider=Tarn", "provider"),
    ("no catalog", "CatalogFile=tarn.cat", "CatalogFile=tarn", "catalog"),
    ("catalog copied", "tarn_dmft.dll=1", "tarn_dmft.dll=1\ntarn.cat=1", "catalog"),
    ("day first", "11/20/2026", "20/11/2026", "driver-date"),
    ("future", "11/20/2026", "11/21/2026", "driver-date"),
    ("three numbers", f"2026,{MODULE.file_version}", f"2026,{MODULE.version}", "driver-version"),
    ("large number", f"2026,{MODULE.file_version}", "2026,1.0.0.65535", "driver-version"),
    ("other version", f"2026,{MODULE.file_version}", "2026,9.9.9.9", "module-version"),
    ("last year", "11/20/2026", "11/20/2025", "newer"),
    ("no lockdown", "PnpLockdown=1", "PnpLockdown=0", "lockdown"),
    ("generation forgotten", ",NTamd64.10.0...26100", "", "decoration-section"),
    ("models renamed", "[Tarn.NTamd64.10.0...25326]", "[Tarn.NTamd64.10.0...25300]", "decoration-section"),
    ("32 bit", "NTamd64.10.0...16299", "NTx86.10.0...16299", "decoration-build"),
    ("no build", "NTamd64.10.0...16299", "NTamd64", "decoration-build"),
    ("id forgotten", "%ColorDesc%=ColorB,USB\\VID_0000&PID_0001&MI_02\n", "", "generation-ids"),
    ("section of another", "=DepthB,", "=DepthA,", "generation-section"),
    ("wrong function", "&MI_02", "&MI_01", "filter-ids"),
    ("file not listed", "tarn_dmft.dll=1", "other.dll=1", "copy-source"),
    ("no such disk", "tarn_dmft.dll=1", "tarn_dmft.dll=2", "source-disk"),
    ("nothing copied", "[ColorC]\nCopyFiles=Files", "[ColorC]", "file-copied"),
    ("other spelling", "tarn_dmft.dll=1", "Tarn_Dmft.dll=1", "package-file"),
    ("system folder", "DefaultDestDir=13", "DefaultDestDir=11", "destination"),
    ("renaming copy", "[Files]\ntarn_dmft.dll", "[Files]\ntarn_dmft.dll,old.dll,,2", "copy-form"),
    ("copied twice", "[Files]\ntarn_dmft.dll", "[Files]\ntarn_dmft.dll\ntarn_dmft.dll", "file-unique"),
    ("inbox driver", "[Files]\ntarn_dmft.dll", "[Files]\ntarn_dmft.dll\nusbvideo.sys", "inbox-file"),
    ("a zero short", "0x00020000", "0x0002000", "registry-flags"),
    ("text as number", "SensorCameraMode,0x00010001,1", "SensorCameraMode,0x00010001,on", "registry-data"),
    ("machine's classes", "HKCR,CLSID", "HKLM,SOFTWARE\\Classes\\CLSID", "forbidden-root"),
    ("new form, old build", "HKCR,CLSID\\%Depth", "HKR,Classes\\CLSID\\%Depth", "class-root"),
    ("old form, new build", "HKR,Classes\\CLSID", "HKCR,CLSID", "class-root"),
    ("system32", '"%13%\\tarn_dmft.dll"', '"%11%\\tarn_dmft.dll"', "server-path"),
    ("quotes in the path", '"%13%\\tarn_dmft.dll"', '"""%13%\\tarn_dmft.dll"""', "server-path"),
    ("apartment", "ThreadingModel,,Both", "ThreadingModel,,Apartment", "threading-model"),
    ("free COM class", "ThreadingModel=Both", "ThreadingModel=Free", "threading-model"),
    ("local server", "[DepthA.Class]",
     "[DepthA.Class]\nHKCR,CLSID\\%DepthClsid%\\LocalServer32,,,x.exe", "server-kind"),
    ("other class", DEPTH, DEPTH.replace("7F", "7E"), "class-id"),
    ("other name", MODULE.class_of("color").name, "Tarn Color", "class-name"),
    ("no name", "HKR,Classes\\CLSID\\%ColorClsid%,,,%ColorName%\n", "", "class-name"),
    ("COM for all", "[DepthC.COM]", "[DepthB.COM]", "com-build"),
    ("executable server", "ServerType=1", "ServerType=2", "com-server"),
    ("server without class", "AddComClass=%Color", "; %Color", "com-server"),
    ("one server name", "AddComServer=TarnColor", "AddComServer=TarnDepth", "com-name"),
    ("audio category", "{6994AD05-93EF", "{6994AD04-93EF", "interface-category"),
    ("category forgotten", "AddInterface=%Sensor%,GLOBAL,Depth.Interface\n", "", "interface-set"),
    ("no reference", ",GLOBAL,", ",,", "interface-reference"),
    ("both values", "HKR,,CameraDeviceMftClsid,,%ColorClsid%",
     "HKR,,CameraDeviceMftClsid,,%ColorClsid%\nHKR,,CameraDeviceMftCLSIDChain,0x00010000,%ColorClsid%",
     "transform-value"),
    ("chain of one twice", "CameraDeviceMftClsid,,%ColorClsid%",
     "CameraDeviceMftCLSIDChain,0x00010000,%ColorClsid%,%ColorClsid%", "transform-chain"),
    ("chain as text", "CameraDeviceMftClsid,,%ColorClsid%",
     "CameraDeviceMftCLSIDChain,,%ColorClsid%", "transform-chain"),
    ("other filter's", "MftClsid,,%DepthClsid%", "MftClsid,,%ColorClsid%", "transform-class"),
    ("value beside .HW", "[DepthA.Class]", "[DepthA.Class]\nHKR,,SensorCameraMode,0x00010001,1", "sensor-values"),
    ("two groups", "[Color.Interface.Values]\nHKR,,CameraDeviceMftClsid,,%ColorClsid%\nHKR,,FSSensorGroupId,,%GroupId%",
     f"[Color.Interface.Values]\nHKR,,CameraDeviceMftClsid,,%ColorClsid%\nHKR,,FSSensorGroupId,,{DEPTH}",
     "sensor-group"),
    ("registers itself", "[DepthA.HW]", "[DepthA.HW]\nRegisterDlls=Files", "forbidden-directive"),
    ("own service", "[DepthA.HW]", "[DepthA.Services]\nAddService=usbvideo,2,Files\n[DepthA.HW]", "services"),
    ("needs alone", "[DepthA.HW]", "[DepthA.HW]\nNeeds=USBVideo.NT.HW", "include-needs"),
]
BASE_MUTANTS = [
    ("id in a base INF", "Class=Camera", "Class=Camera\nExtensionId=" + VENDOR["extension_id"], "extension-id"),
    ("no services", "[ColorB.Services]", "[ColorB.Service]", "services"),
    ("part of another", "[DepthA.WDF]\nInclude=usbvideo.inf\nNeeds=USBVideo.NT.WDF",
     "[DepthA.WDF]\nInclude=usbvideo.inf\nNeeds=USBVideo.NT.HW", "needs-suffix"),
    ("no proxy", "HKR,,CLSID,,%Proxy%\n", "", "base-interface"),
    ("inbox driver left out", "[DepthA.WDF]\nInclude=usbvideo.inf", "[DepthA.WDF]\nInclude=ks.inf", "base-parts"),
]
PROFILE_MUTANTS = [
    ("not closed", "</Profiles>", "", "profile-shape"),
    ("id of another", 'Id="Tarn.Light.Memory"', 'Id="Tarn.Light"', "profile-shape"),
    ("no such provider", '<EventProviderId Value="MF"/>', '<EventProviderId Value="MFs"/>', "profile-shape"),
    ("newer attribute", 'Value="1024"/>', 'Value="1024" Strict="true"/>', "profile-attributes"),
    ("only one of ours", '<EventProviderId Value="Tarn_Text_Light"/>', "", "profile-providers"),
    ("other GUID", "C1F3D3B5", "C1F3D3B6", "profile-providers"),
    ("level of others", 'Level="255"', 'Level="5"', "profile-levels"),
    ("verbose without calls", 'Level="255"', 'Level="4"', "profile-levels"),
    ("no flags", '<Keyword Value="0x3"/>', "", "profile-levels"),
    ("paged", ' NonPagedMemory="true"', "", "profile-kernel"),
]
FORMATS_MUTANTS = [
    ("renumbered", "#typev Trace_cpp14 14", "#typev Trace_cpp14 15", "formats"),
    ("other message GUID", "5b1e8f6a-", "5b1e8f6b-", "formats"),
    ("copy left behind", "// Formats", "// The formats", "formats-copy"),
]
# What stands in the DLL, and what is put there; the same length each time.
DLL_MUTANTS = [
    ("32-bit machine", b"PE\0\0\x64\x86", b"PE\0\0\x4c\x01", "dll-machine"),
    ("export misspelt", b"DllCanUnloadNow\0", b"DllCanUnloadNaw\0", "dll-exports"),
    ("foreign import", b"KERNEL32.dll\0", b"libgcc_s.dll\0", "dll-imports"),
    ("debug section", b".CRT\0\0\0\0", b".debug_s", "dll-debug"),
    ("other version", "FileVersion\0".encode("utf-16-le"), "FileVersiom\0".encode("utf-16-le"), "dll-version"),
    ("other name", "tarn_dmft.dll\0".encode("utf-16-le"), "tarn_dmfs.dll\0".encode("utf-16-le"), "dll-name"),
    ("path of the PDB", b"tarn_dmft.pdb\0", b"D:\\x\\dmft.pdb\0", "dll-pdb"),
]


class Package:
    """A package's folder with a DLL that has the module's face and nothing behind it."""

    def __init__(self, folder):
        self.folder = Path(folder)
        shutil.copy(PACKAGING / "tarn.wprp", self.folder)
        shutil.copy(PACKAGING / "tarn_dmft.tmf", self.folder)
        shutil.copy(PACKAGING / "tarn_dmft.tmf", self.folder / f"{MODULE.traces.message_class}.tmf")
        self.inf = self.folder / "tarn.inf"
        self.inf.write_text(inf_text(), encoding="ascii")
        self._build_dll()

    def _build_dll(self):
        with tempfile.TemporaryDirectory() as scratch:
            resource = (ROOT / "module/tarn_dmft.rc.in").read_text(encoding="ascii")
            for part, value in zip(("_MAJOR", "_MINOR", "_PATCH"), MODULE.version.split(".")):
                resource = resource.replace(f"@PROJECT_VERSION{part}@", value)
            source = Path(scratch)
            (source / "stub.rc").write_text(resource.replace("@PROJECT_VERSION@", MODULE.version), encoding="ascii")
            (source / "stub.c").write_text(
                "".join(f"long {name}(void) {{ return 0; }}\n" for name in MODULE.exports), encoding="ascii")
            run = {"cwd": scratch, "check": True, "capture_output": True}
            subprocess.run(["x86_64-w64-mingw32-windres", "stub.rc", "rc.o"], **run)
            subprocess.run(["x86_64-w64-mingw32-gcc", "-shared", "-s", "stub.c", "rc.o", ROOT / "module/tarn_dmft.def",
                            "-Wl,--dynamicbase,--nxcompat,--high-entropy-va,--pdb=tarn_dmft.pdb",
                            "-o", "tarn_dmft.dll"], **run)
            for name in ("tarn_dmft.dll", "tarn_dmft.pdb"):
                shutil.copy(source / name, self.folder)

    def check(self, inf=None, dll=None, profile=None, formats=None):
        """Names of the rules that find something; a part that is given stands in for the package's own."""
        written = {}
        for name, content in (("tarn.wprp", profile), ("tarn_dmft.tmf", formats)):
            path = self.folder / name
            if content is not None:
                written[path] = path.read_bytes()
                path.write_text(content, encoding="utf-8")
        try:
            context = Context(
                document=Document((inf or inf_text()).encode("utf-8")), today=TODAY, vendor=VENDOR,
                last_release=(datetime.date(2026, 1, 1), (0, 1, 0, 0)), module=MODULE,
                dll=pe.PortableExecutable(dll or self.dll()), pdb=pe.load_pdb(self.folder / "tarn_dmft.pdb"),
                package=self.folder, profile=self.folder / "tarn.wprp", formats=self.folder / "tarn_dmft.tmf")
            result = report.run(ALL, context, {}, release=True)
            assert not result.skipped, result.skipped
            return {finding.rule for finding in result.findings}
        finally:
            for path, content in written.items():
                path.write_bytes(content)

    def dll(self):
        return (self.folder / "tarn_dmft.dll").read_bytes()


class CheckInfTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.package = Package(folder.name)

    def expect(self, name, rule, found):
        with self.subTest(name):
            self.assertIn(rule, found)

    def edited(self, text, old, new, name):
        self.assertIn(old, text, f"{name}: nothing to edit")
        return text.replace(old, new)

    def test_what_we_generate_has_no_findings(self):
        for kind in generate.KINDS:
            with self.subTest(kind):
                self.assertEqual(self.package.check(inf=inf_text(kind)), set())
        wide = ("\ufeff" + inf_text()).encode("utf-16-le")
        self.assertEqual(Document(wide).strings, Document(inf_text().encode("ascii")).strings)

    def test_other_spellings_have_no_findings(self):
        install_sections = re.compile(r"^\[((?:Depth|Color)[ABC])(\.(?:HW|Interfaces|COM))?\]", re.MULTILINE)
        text = install_sections.sub(r"[\1.NTamd64\2]", inf_text())
        text = text.replace("[SourceDisksFiles]", "[SourceDisksFiles.amd64]").replace("AddReg=", " ADDREG = ")
        text = text.replace("HKCR,CLSID", "hkcr, \\\n  clsid").replace("[Files]", "[files] ; the module")
        self.assertEqual(self.package.check(inf=text), set())

    def test_planted_errors_in_the_inf_are_found(self):
        for kind, mutants in (("extension", MUTANTS), ("base", BASE_MUTANTS)):
            for name, old, new, rule in mutants:
                self.expect(name, rule, self.package.check(inf=self.edited(inf_text(kind), old, new, name)))

    def test_planted_errors_in_the_trace_files_are_found(self):
        for part, file, mutants in (("profile", "tarn.wprp", PROFILE_MUTANTS),
                                    ("formats", "tarn_dmft.tmf", FORMATS_MUTANTS)):
            text = (PACKAGING / file).read_text(encoding="utf-8")
            for name, old, new, rule in mutants:
                self.expect(name, rule, self.package.check(**{part: self.edited(text, old, new, name)}))

    def test_planted_errors_in_the_dll_are_found(self):
        good = self.package.dll()
        for name, old, new, rule in DLL_MUTANTS:
            self.assertEqual(len(old), len(new), name)
            self.expect(name, rule, self.package.check(dll=self.edited(good, old, new, name)))
        header = int.from_bytes(good[0x3C:0x40], "little")
        for name, at, size, rule in (("no time stamp", 8, 4, "dll-timestamp"), ("no marks", 94, 2, "dll-hardening")):
            broken = good[:header + at] + bytes(size) + good[header + at + size:]
            self.expect(name, rule, self.package.check(dll=broken))
        at = good.index(b"RSDS") + 4
        self.expect("PDB of another build", "dll-pdb", self.package.check(dll=good[:at] + bytes(16) + good[at + 16:]))
        for cut in range(0, len(good), 997):
            try:
                pe.PortableExecutable(good[:cut])
            except pe.FormatError:
                pass

    def test_every_rule_has_a_planted_error(self):
        rows = [*MUTANTS, *BASE_MUTANTS, *PROFILE_MUTANTS, *FORMATS_MUTANTS, *DLL_MUTANTS]
        covered = {row[3] for row in rows} | {"dll-timestamp", "dll-hardening"}
        self.assertEqual({rule.name for rule in ALL} - covered, set())

    def test_the_generator_takes_its_date_from_outside(self):
        def make(name, date):
            command = [sys.executable, PACKAGING / "make-inf", self.package.folder / name]
            environment = {**os.environ, "SOURCE_DATE_EPOCH": date, "TZ": "America/Los_Angeles"}
            return subprocess.run(command, env=environment, capture_output=True, check=False).returncode

        self.assertEqual((make("new/a.inf", "86400"), make("b.inf", "86400"), make("c.inf", "yesterday")), (0, 0, 2))
        made = (self.package.folder / "new/a.inf").read_bytes()
        self.assertEqual(made, (self.package.folder / "b.inf").read_bytes())
        self.assertIn(f"\r\nDriverVer=01/02/1970,{MODULE.file_version}\r\n".encode("ascii"), made)

    def test_the_tool_reports_to_persons_and_scripts(self):
        def run(*arguments):
            command = [sys.executable, PACKAGING / "check-inf", *arguments]
            return subprocess.run(command, capture_output=True, text=True, check=False)

        saved = self.package.folder / "module.json"
        self.assertEqual(run("--module", ROOT, "--save-module", saved).returncode, 0)
        self.assertEqual(module.load(saved), MODULE)
        good = run(self.package.inf, "--module", saved, "--package", self.package.folder)
        self.assertEqual(good.returncode, 0, good.stdout + good.stderr)
        bad = self.package.folder / "bad.inf"
        bad.write_text(inf_text().replace("PnpLockdown=1", "PnpLockdown=0"), encoding="ascii")
        text, data = run(bad), run(bad, "--json")
        line = bad.read_text(encoding="ascii").splitlines().index("PnpLockdown=0") + 1
        self.assertEqual((text.returncode, data.returncode), (1, 1))
        self.assertIn(f"bad.inf:{line}: error: lockdown: 0", text.stdout)
        finding = json.loads(data.stdout)["findings"][0]
        self.assertEqual((finding["rule"], finding["line"]), ("lockdown", line))
        for usage in ((), (saved / "none.inf",), (bad, "--dll", bad), (bad, "--last-release", "yesterday")):
            self.assertEqual(run(*usage).returncode, 2, usage)


if __name__ == "__main__":
    unittest.main()
