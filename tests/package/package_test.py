#!/usr/bin/python3
"""The package of a release, made twice from what is built: its files, sums and notices, the
plug-in's file as it is shipped, and a signed one in the console host.

  package_test.py BIN    BIN holds the console host
"""
import hashlib
import json
import os
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import zipfile
import zlib
from html import unescape
from pathlib import Path

sys.dont_write_bytecode = True  # the folders are those of the sources
ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "scripts/package"), str(ROOT / "tests/differential")]

import components
import vellhost

BUILD = ROOT / "scripts/package/build.py"
BIN = Path(sys.argv.pop(1)).resolve()
NM = "x86_64-w64-mingw32-nm"
ADDR2LINE = "x86_64-w64-mingw32-addr2line"


def run(*command, **more):
    return subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, check=False, **more)


def environment(**more):
    """Without what somebody has set for packages of his own."""
    kept = {name: value for name, value in os.environ.items()
            if not name.startswith("VELL_") and name != "SOURCE_DATE_EPOCH"}
    return {**kept, **more}


def make(folder, *options, **more):
    done = run(BUILD, *options, folder, env=environment(**more))
    if done.returncode:
        raise AssertionError(done.stderr)
    return Path(done.stdout.strip())


def files_of(path):
    with zipfile.ZipFile(path) as archive:
        return {name: archive.read(name) for name in archive.namelist()}


class WithFolder(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = Path(cls.enterClassContext(tempfile.TemporaryDirectory()))


class Package(WithFolder):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        selftest = cls.folder / "test"
        selftest.mkdir()
        (selftest / "read me.txt").write_text("how to run it")
        parts = ["--selftest", selftest]
        if (ROOT / "scripts/site/build.py").exists():
            site = cls.folder / "site"
            subprocess.run([ROOT / "scripts/site/build.py", site], check=True, capture_output=True)
            parts += ["--reference", site]
        cls.path = make(cls.folder / "first", *parts)
        # Made elsewhere, later, and of files with other times.
        os.utime(selftest / "read me.txt", (1, 1))
        cls.second = make(cls.folder / "second", *parts, TZ="Pacific/Auckland", LC_ALL="C")
        cls.files = files_of(cls.path)

    def text(self, name):
        return self.files[name].decode("utf-8")

    def test_two_runs_give_the_same_bytes(self):
        self.assertEqual(self.path.name, self.second.name)
        self.assertEqual(self.path.read_bytes(), self.second.read_bytes())

    def test_it_holds_what_it_should_under_the_version_of_the_plug_in(self):
        reference = {name for name in self.files if name.startswith("reference/")}
        self.assertEqual(set(self.files) - reference, {
            "VellFile.fmx64", "symbols/VellFile.fmx64.debug", "INSTALL.html", "INSTALL.txt",
            "LICENCE", "NOTICES.txt", "POLICY.html", "SHA256SUMS", "policy.schema.json",
            "sbom.spdx.json", "selftest/read me.txt"})
        if reference:
            self.assertLessEqual({"reference/index.html", "reference/server.html",
                                  "reference/site.css"}, reference)
        major, minor, build = re.fullmatch(r"VellFile-(\d+)\.(\d+)\.(\d+)-windows-x64\.zip",
                                           self.path.name).groups()
        plugin = self.files["VellFile.fmx64"]
        resource = plugin.index(struct.pack("<I", 0xFEEF04BD))  # VS_FIXEDFILEINFO
        self.assertEqual(struct.unpack_from("<4H", plugin, resource + 8),
                         (int(minor), int(major), int(build), 0))

    def test_the_sums_are_those_of_all_files(self):
        lines = self.text("SHA256SUMS").splitlines()
        sums = {name: digest for digest, name in (line.split("  ", 1) for line in lines)}
        self.assertEqual(sums, {name: hashlib.sha256(content).hexdigest()
                                for name, content in self.files.items() if name != "SHA256SUMS"})

    def assert_without(self, name, words):
        for word in words:
            for form in (word.encode(), word.encode("utf-16-le")):
                self.assertFalse(form in self.files[name], f"{name} has {word} in it")

    def test_the_plug_in_tells_nothing_of_the_machine_that_built_it(self):
        own = (f"{ROOT}/", f"{Path.home()}/")  # a name behind another byte is no folder
        self.assert_without("VellFile.fmx64", (*own, "/vell-file/", "/usr/", "/tmp", ".debug_info"))
        self.assert_without("symbols/VellFile.fmx64.debug", own)
        header = struct.unpack_from("<I", self.files["VellFile.fmx64"], 0x3C)[0]
        time_of_link = struct.unpack_from("<I", self.files["VellFile.fmx64"], header + 8)[0]
        self.assertEqual(time_of_link, 0)

    def test_the_symbols_are_those_of_the_plug_in_and_lead_to_lines(self):
        content = self.files["symbols/VellFile.fmx64.debug"]
        link = b"VellFile.fmx64.debug".ljust(24, b"\0") + struct.pack("<I", zlib.crc32(content))
        self.assertTrue(link in self.files["VellFile.fmx64"], "the plug-in names other symbols")
        symbols = self.folder / "symbols"
        symbols.write_bytes(content)
        address = next(line.split()[0] for line in run(NM, symbols).stdout.splitlines()
                       if line.endswith(" T FMExternCallProc"))
        line = run(ADDR2LINE, "-Cfpie", symbols, "0x" + address).stdout
        self.assertRegex(line, r"FMExternCallProc.* at /vell-file/src/host/entry/\w+\.cpp:\d+")

    def test_the_notices_name_everything_that_is_built_in(self):
        notices = self.text("NOTICES.txt").replace("\r\n", "\n")
        built = set(components.built_sources())
        for script in (ROOT / "scripts").glob("*.sh"):  # by another way than the package goes
            for line in script.read_text(encoding="utf-8").splitlines():
                if found := re.search(r"fetch_sources ((?:[a-z][\w.+-]+ ?)+)", line):
                    self.assertLessEqual(set(found[1].split()), built, script.name)
        self.assertGreaterEqual(built, {"poppler", "freetype", "libpng1.6", "lcms2"})
        for name in built:
            self.assertRegex(notices, rf"Debian\s+source\s+package\s+{re.escape(name)}\s+\S*\d")
        for words in ("Adobe Systems", "The FreeType Project", "Independent JPEG Group",
                      "Mark Adler", "Marti Maria", "winpthreads", "GCC RUNTIME LIBRARY EXCEPTION",
                      "GNU GENERAL PUBLIC LICENSE\n                       Version 2",
                      "GNU GENERAL PUBLIC LICENSE\n                       Version 3",
                      "at least\nthree years"):
            self.assertIn(" ".join(words.split()), " ".join(notices.split()))
        referred = set(re.findall(r"/usr/share/common-licenses/([\w.+-]*\w)", notices))
        for licence in referred:
            text = Path("/usr/share/common-licenses", licence).read_text(encoding="utf-8").strip()
            self.assertIn(text, notices, licence)

    def test_the_sbom_has_what_spdx_asks_for(self):
        document = json.loads(self.text("sbom.spdx.json"))
        self.assertEqual((document["spdxVersion"], document["dataLicense"], document["SPDXID"]),
                         ("SPDX-2.3", "CC0-1.0", "SPDXRef-DOCUMENT"))
        self.assertRegex(document["documentNamespace"], r"https://[^#\s]+")
        self.assertRegex(document["creationInfo"]["created"],
                         r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ")
        for creator in document["creationInfo"]["creators"]:
            self.assertRegex(creator, "(Person|Organization|Tool): .+")
        identifiers = ["SPDXRef-DOCUMENT"]
        for package in document["packages"]:
            self.assertRegex(package["SPDXID"], r"SPDXRef-[A-Za-z0-9.-]+")
            self.assertRegex(package["versionInfo"], r"\d+(\.\d+)+")
            for field in ("name", "downloadLocation", "copyrightText", "supplier"):
                self.assertTrue(package[field], field)
            for field in ("licenseConcluded", "licenseDeclared"):
                self.assertRegex(package[field], r"[A-Za-z0-9.-]+( (AND|OR|WITH) [A-Za-z0-9.-]+)*")
            for reference in package.get("externalRefs", []):
                self.assertRegex(reference["referenceLocator"],
                                 "^pkg:(deb/debian|generic)/[^@ ]+@[^@ ]+$")
            identifiers.append(package["SPDXID"])
        self.assertEqual(len(identifiers), len(set(identifiers)))
        related = {relation["relatedSpdxElement"] for relation in document["relationships"]}
        self.assertEqual(related, set(identifiers[1:]))
        plugin = document["packages"][0]
        self.assertEqual(plugin["checksums"][0]["checksumValue"],
                         hashlib.sha256(self.files["VellFile.fmx64"]).hexdigest())
        self.assertEqual({package["name"] for package in document["packages"][1:]},
                         {row.name for row in components.components()})

    def test_the_pages_for_installing_say_the_same(self):
        html, text = self.text("INSTALL.html"), self.text("INSTALL.txt")
        self.assertNotIn("\n", text.replace("\r\n", ""))
        body = re.search(r"<body>(.*)</body>", html, re.S)[1]
        shown = unescape(re.sub(r"<[^>]+>", " ", body))
        self.assertEqual(*([word for word in re.findall(r"\w+", page) if not word.isdigit()]
                           for page in (text, shown)))
        for part in ("Extensions", "SHA256SUMS", "fmsadmin enable plugin 1"):
            self.assertIn(part, text)


class Faults(WithFolder):
    def test_a_library_without_a_notice_stops_the_package(self):
        ninja = self.folder / "build.ninja"
        rows = components.components()
        known = [library for row in rows for library in row.libraries]
        rule = ("build bin/VellFile.fmx64 | bin/VellFile.fmx64.debug: LINK a.obj | "
                "src/libvell_base.a " + " ".join(known))
        ninja.write_text(rule + "\n")
        components.check_libraries(rows, ninja)
        ninja.write_text(rule + " /elsewhere/libnew.a\n")
        with self.assertRaisesRegex(components.PackageError, "libnew.a"):
            components.check_libraries(rows, ninja)

    def test_a_certificate_without_its_password_is_no_unsigned_package(self):
        done = run(BUILD, self.folder, env=environment(VELL_CERTIFICATE="any.pfx"))
        self.assertNotEqual(done.returncode, 0)
        self.assertIn("VELL_CERTIFICATE_PASSWORD_FILE", done.stderr)
        self.assertEqual(list(self.folder.glob("*.zip")), [])


class SignedPackage(WithFolder):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.certificate(cls.folder)
        path = make(cls.folder / "signed", VELL_CERTIFICATE=str(cls.folder / "signer.pfx"),
                    VELL_CERTIFICATE_PASSWORD_FILE=str(cls.folder / "password"))
        cls.files = files_of(path)
        cls.plugin = cls.folder / "VellFile.fmx64"
        cls.plugin.write_bytes(cls.files["VellFile.fmx64"])

    @staticmethod
    def certificate(folder):
        """An authority, and a certificate for signing code that it issues."""
        (folder / "password").write_text("two words, é", encoding="utf-8")
        (folder / "extensions").write_text("basicConstraints=CA:FALSE\nkeyUsage=digitalSignature\n"
                                           "extendedKeyUsage=codeSigning\n")
        for command in (
                "req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=Authority "
                "-keyout authority.key -out authority.pem",
                "req -newkey rsa:2048 -nodes -subj /CN=Signer -keyout signer.key -out signer.csr",
                "x509 -req -in signer.csr -CA authority.pem -CAkey authority.key -CAcreateserial "
                "-days 2 -extfile extensions -out signer.pem",
                "pkcs12 -export -inkey signer.key -in signer.pem -passout file:password "
                "-out signer.pfx"):
            subprocess.run(["openssl", *command.split()], cwd=folder, check=True,
                           capture_output=True)

    def verify(self, path):
        return run("osslsigncode", "verify", "-CAfile", self.folder / "authority.pem", path)

    def test_the_signature_is_good_and_covers_the_file(self):
        good = self.verify(self.plugin)
        self.assertEqual(good.returncode, 0, good.stdout + good.stderr)
        self.assertIn("CN=Signer", good.stdout)
        changed = bytearray(self.files["VellFile.fmx64"])
        changed[len(changed) // 2] ^= 1
        path = self.folder / "changed.fmx64"
        path.write_bytes(changed)
        self.assertNotEqual(self.verify(path).returncode, 0)

    def test_sums_and_sbom_speak_of_the_signed_file(self):
        digest = hashlib.sha256(self.files["VellFile.fmx64"]).hexdigest()
        self.assertIn(f"{digest}  VellFile.fmx64\n", self.files["SHA256SUMS"].decode())
        self.assertIn(digest, self.files["sbom.spdx.json"].decode())

    def test_the_signed_file_loads_and_tells_its_signer(self):
        host = self.folder / "host"
        host.mkdir()
        for name in ("vellhost.exe", "FMWrapper.dll"):
            shutil.copy(BIN / name, host)
        shutil.copy(self.plugin, host)
        version, info = vellhost.results(host, [
            'VlFile_Version( "" )',
            f'VlFile_GetCodeSignInfo( "" ; {vellhost.path(host / "VellFile.fmx64")} )'])
        self.assertRegex(version, r"^Vell File Plug-In \d+\.\d+$")
        self.assertIn("Signed: 1", info)
        self.assertIn("Signer", info)


if __name__ == "__main__":
    unittest.main()
