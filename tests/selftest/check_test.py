#!/usr/bin/env python3
"""The check in FileMaker: its script is well-formed, and its calculations find what they should.

  check_test.py BIN     BIN is the folder of vellhost.exe and VellFile.fmx64

Every "Set Variable" of the script is run in order by the console host, whose language has what the
calculations use.
"""
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
CHECK = ROOT / "docs" / "check" / "vell-file-check.xml"
WINE = ROOT / "scripts" / "wine"
STEP_IDS = {"Set Variable": "141", "# (comment)": "89", "Show Custom Dialog": "87",
            "Exit Script": "103"}
binaries = None


def script():
    return ElementTree.fromstring(CHECK.read_bytes()).find("Script")


def assignments():
    return [(step.findtext("Name"), step.findtext("Value/Calculation"))
            for step in script().findall("Step") if step.get("name") == "Set Variable"]


def run(pairs, last):
    """What the console host prints for a calculation behind the assignments."""
    statements = [f"{name} = {calculation}" for name, calculation in pairs] + [last]
    with tempfile.TemporaryDirectory() as folder:
        file = Path(folder) / "check.vell"
        file.write_text("\n".join(statements) + "\n", encoding="utf-8")
        done = subprocess.run(
            [WINE, Path(binaries) / "vellhost.exe", "--file", "Z:" + str(file).replace("/", "\\")],
            stdin=subprocess.DEVNULL, capture_output=True, timeout=300, check=False)
    return done.stdout.decode("utf-8"), done.stderr.decode("utf-8")


class CheckInFileMaker(unittest.TestCase):
    def test_the_snippet_is_a_script(self):
        self.assertFalse(CHECK.read_bytes().startswith(b"\xEF\xBB\xBF"))
        self.assertNotIn(b"\r", CHECK.read_bytes())
        root = ElementTree.fromstring(CHECK.read_bytes())
        self.assertEqual((root.tag, root.get("type")), ("fmxmlsnippet", "FMObjectList"))
        for step in script().findall("Step"):
            self.assertEqual(step.get("id"), STEP_IDS[step.get("name")])
        for name, calculation in assignments():
            self.assertRegex(name, r"^\$\w+$")
            self.assertNotIn("\n", calculation)

    def test_every_call_gives_what_is_expected(self):
        pairs = assignments()
        checks = sum(name == "$answer" for name, _ in pairs)
        self.assertGreaterEqual(checks, 12)
        output, errors = run(pairs, "$table")
        self.assertEqual(errors, "")
        lines = output.splitlines()
        self.assertEqual(len(lines), checks)
        for line in lines:
            self.assertRegex(line, r": ok$")

    def test_a_wrong_answer_is_shown(self):
        for index, (name, _) in enumerate(pairs := assignments()):
            if name == "$answer":
                pairs[index] = (name, '"$$-1"')
        output, _ = run(pairs, '$failed & ¶ & $table')
        lines = output.splitlines()
        self.assertEqual(int(lines[0]), len(lines) - 1)
        for line in lines[1:]:
            self.assertRegex(line, r": FAILED, \$\$-1$")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    binaries = Path(sys.argv.pop()).resolve()
    unittest.main()
