#!/usr/bin/env python3
"""The self-test from end to end: a few checks in Wine, their report, and a program that fails.

  selftest_test.py FOLDER PROBE     FOLDER is build/selftest, PROBE the program of probe.cpp
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
WINE = ROOT / "scripts" / "wine"
EXAMPLES = {"VlFile_GetFileHash": 5, "VlFile_FindFolder": 4}  # pages, and how many they have
TESTS = {"ItemNames.ADriveAloneIsItsRoot": "pass", "Listing.SumsUpTheSizesOfAllFiles": "pass",
         "Links.JunctionsAreListedAndNotFollowed": "skip",
         "Information.KindsAreTheShells": "skip"}
FILTER = ":".join([*TESTS, *(f"Examples.{page}" for page in EXAMPLES)])
folder = None
probe = None


def selftest(*arguments, where=None):
    environment = {name: value for name, value in os.environ.items() if name != "DISPLAY"}
    return subprocess.run([WINE, (where or folder) / "selftest.exe", *arguments], env=environment,
                          stdin=subprocess.DEVNULL, capture_output=True, timeout=600, check=False)


def windows_path(path):
    return "Z:" + str(path).replace("/", "\\")


def outcomes(report):
    """Words and names of the checks, from the lists of all of them."""
    lists = report[report.index("\r\ntests\r\n"):]
    return dict(reversed(match) for match in
                re.findall(r"^  (pass|FAIL|skip) +[\d.]+ s  (.*?)\r$", lists, re.MULTILINE))


class SelfTest(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.work = Path(holder.name)

    def run_with_report(self, *arguments, where=None):
        file = self.work / "report.txt"
        done = selftest("--report", windows_path(file), "--work", windows_path(self.work),
                        *arguments, where=where)
        report = file.read_bytes().decode("utf-8") if file.exists() else ""
        return done, report

    def test_the_folder_holds_what_it_needs(self):
        self.assertIn("Do not copy", (folder / "host" / "README.txt").read_text())
        self.assertFalse((folder / "FMWrapper.dll").exists())
        for name in ("vellhost.exe", "windows_tests.exe", "FMWrapper.dll", "VellFile.fmx64"):
            self.assertTrue((folder / "host" / name).is_file(), name)

    def test_a_run_reports_every_check(self):
        done, report = self.run_with_report("--filter", FILTER)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertEqual(report.count("\n"), report.count("\r\n"))
        facts = dict(re.findall(r"^([A-Za-z- ]+?)  +(\S.*?)\r$", report, re.MULTILINE))
        for name in ("processors", "code pages", "locale", "time zone", "rights", "its disk"):
            self.assertIn(name, facts)
        self.assertRegex(facts["Windows"], r"^\d+\.\d+\.\d+")
        self.assertRegex(facts["Wine"], r"^\d")
        self.assertEqual(facts["plug-in"], facts["self-test"])
        found = outcomes(report)
        for name, word in TESTS.items():
            self.assertEqual(found.pop(name), word, report)
        for page, count in EXAMPLES.items():
            names = [name for name in found if name.startswith(page + ": ")]
            self.assertEqual([found.pop(name) for name in names], ["pass"] * count, report)
        self.assertEqual(found, {})
        self.assertIn("Wine has no links of Windows\r\n", report)
        self.assertNotIn("not come to its end", report)
        self.assertEqual([path.name for path in self.work.iterdir()], ["report.txt"])

    def test_failures_crashes_and_hangs_do_not_end_the_rest(self):
        copy = self.work / "copy"
        shutil.copytree(folder, copy)
        examples = copy / "examples" / "examples.txt"
        text = examples.read_text(encoding="utf-8")
        examples.write_text(text.replace("= 313219", "= 323219"), encoding="utf-8")
        shutil.copy(probe, copy / "host" / "windows_tests.exe")
        done, report = self.run_with_report(
            "--limit", "8",
            "--filter", "Crashing.*:Hanging.*:Failing.*:Examples.VlFile_GetFileHash", where=copy)
        self.assertEqual(done.returncode, 1, done.stdout + done.stderr)
        found = outcomes(report)
        words = {name: word for name, word in found.items() if not name.startswith("VlFile_")}
        self.assertEqual(words, {"Crashing.Before": "pass", "Crashing.Ends": "FAIL",
                                 "Crashing.After": "pass", "Hanging.Waits": "FAIL",
                                 "Failing.TellsPaths": "FAIL"})
        self.assertIn("the program ended with 0xC0000005\r\n", report)
        self.assertIn("the last line", report)
        self.assertIn("stopped after 8 seconds\r\n", report)
        self.assertRegex(report, r'%USERPROFILE% and u"%USERPROFILE%\\\\a"\r\n')
        self.assertEqual(found["VlFile_GetFileHash: The MD5 of a letter"], "FAIL")
        self.assertEqual(list(found.values()).count("FAIL"), 4)
        self.assertIn("expected\r\n         323219", report)
        self.assertIn("actual\r\n         313219", report)
        self.assertLess(report.index("What failed"), report.index("\r\ntests\r\n"))


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    probe = Path(sys.argv.pop()).resolve()
    folder = Path(sys.argv.pop()).resolve()
    unittest.main()
