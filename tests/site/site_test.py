#!/usr/bin/env python3
"""The site of the reference: what is in it, where its links lead, and how a browser shows it.

  site_test.py [OPTION…]        without a build of the plug-in
  site_test.py BIN [OPTION…]    also what the plug-in there registers against what the site knows

Options are those of unittest, such as -k NAME.
"""
import os
import re
import shutil
import subprocess
import sys
import unittest
from html.parser import HTMLParser
from pathlib import Path

sys.dont_write_bytecode = True  # the folders are those of the sources
HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[1]
sys.path[:0] = [str(ROOT / "scripts"), str(ROOT / "scripts" / "site")]

import reference_checks
import reference_pages
import registry

WORK = ROOT / "build" / "site-test"
SITE = WORK / "site"
BINARIES = (Path(sys.argv.pop(1)).resolve()
            if len(sys.argv) > 1 and Path(sys.argv[1]).is_dir() else None)


def build(target, **environment):
    done = subprocess.run([ROOT / "scripts" / "site" / "build.py", target], capture_output=True,
                          text=True, cwd=WORK, env={**os.environ, **environment})
    if done.returncode:
        raise AssertionError(f"the site is not built:\n{done.stdout}{done.stderr}")


class Page(HTMLParser):
    """Addresses that a page leads to, anchors in it, texts of its headings by their anchors."""

    def __init__(self, path):
        super().__init__()
        self.anchors, self.targets, self.headings, self.doubled = set(), [], {}, []
        self.heading = None
        self.prototype, self.in_prototype = "", False
        self.targets_of_text, self.in_text = [], False  # without the list of pages beside it
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        if "id" in values:
            if values["id"] in self.anchors:
                self.doubled.append(values["id"])
            self.anchors.add(values["id"])
        targets = [values[name] for name in ("href", "src", "action") if name in values]
        self.targets += targets
        self.in_text |= tag == "main"
        if self.in_text:
            self.targets_of_text += targets
        if values.get("http-equiv") == "refresh":
            self.targets.append(values["content"].split("url=")[1])
        if re.fullmatch(r"h[1-3]", tag):
            self.heading = values.get("id", tag)
            self.headings[self.heading] = ""
        if values.get("class") == "anchor":
            self.heading = None
        if values.get("class") == "block prototype":
            self.in_prototype = True

    def handle_endtag(self, tag):
        if tag in ("h1", "h2", "h3"):
            self.heading = None
        if tag == "figure":
            self.in_prototype = False
        if tag == "main":
            self.in_text = False

    def handle_data(self, data):
        if self.heading:
            self.headings[self.heading] += data
        if self.in_prototype:
            self.prototype += data


def files_of(folder):
    return {path.relative_to(folder): path.read_bytes()
            for path in sorted(folder.rglob("*")) if path.is_file()}


class SiteTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        WORK.mkdir(parents=True, exist_ok=True)
        build(SITE)
        faults = reference_pages.Faults()
        cls.functions, cls.guides = reference_pages.read_pages(faults)
        assert not faults.lines, faults.lines
        cls.rows = registry.read_functions()
        cls.steps = registry.read_steps()
        cls.pages = {str(path.relative_to(SITE)): Page(path)
                     for path in sorted(SITE.rglob("*.html"))}

    def test_the_same_pages_give_the_same_bytes(self):
        other = WORK / "again" / "elsewhere"
        build(other, PYTHONHASHSEED="7", TZ="Asia/Tokyo", LC_ALL="C")
        first, second = files_of(SITE), files_of(other)
        self.assertEqual(first.keys(), second.keys())
        self.assertEqual([name for name in first if first[name] != second[name]], [])
        for name, data in first.items():
            self.assertNotIn(str(ROOT).encode(), data, name)
        shutil.rmtree(other.parent)

    def test_links_lead_somewhere(self):
        index = (SITE / "search-index.js").read_text(encoding="utf-8")
        addresses = [("search-index.js", address)
                     for address in re.findall(r'"address":"([^"]*)"', index)]
        for entry in re.findall(r'"address":"([^"#]*)[^\n]*"sections":(\[\[.*?\]\])', index):
            addresses += [("search-index.js", f"{entry[0]}#{anchor}")
                          for anchor in re.findall(r'","([^"]*)"\]', entry[1])]
        self.assertGreater(len(addresses), 2 * len(self.functions))
        for name, page in self.pages.items():
            self.assertEqual(page.doubled, [], name)
            addresses += [(name, target) for target in page.targets]
        wrong = [f"{name}: {address}" for name, address in addresses
                 if not self.leads_somewhere(name, address)]
        self.assertEqual(wrong, [])

    def leads_somewhere(self, name, address):
        if re.match(r"[a-z]+:|/", address):
            return False  # all that a page needs is in the site, and it may stand in any folder
        path, _, anchor = address.partition("#")
        target = (SITE / name).parent / path.partition("?")[0] if path else SITE / name
        if not target.is_file():
            return False
        if not anchor:
            return True
        return anchor in self.pages[str(target.resolve().relative_to(SITE))].anchors

    def test_ids_lead_to_pages(self):
        expected = {row.id: row.name for row in self.rows}
        expected.update({step.id: f"Script step: {step.name}" for step in self.steps})
        actual = {}
        for name, page in self.pages.items():
            if name.startswith("id/") and name != "id/index.html":
                (address,) = set(page.targets)
                path, _, anchor = address.removeprefix("../").partition("#")
                headings = self.pages[path].headings
                actual[int(Path(name).stem)] = headings[anchor or next(iter(headings))]
        self.assertEqual(actual, expected)

    def test_lists_name_all(self):
        functions = sorted(f"{function}.html" for function in self.functions)
        for name in ("functions.html", "subjects.html"):
            targets = self.pages[name].targets_of_text
            self.assertEqual(sorted(target for target in targets if "VlFile_" in target), functions)
        for name, page in self.pages.items():
            if not name.startswith("id/"):
                self.assertEqual(set(functions) - set(page.targets), set(), name)
        for guide in self.guides:
            self.assertIn(f"{guide}.html", self.pages["index.html"].targets_of_text)
        steps = {f"{page.name}.html#{step_anchor(step.name)}"
                 for page in self.functions.values() for step in page.steps}
        self.assertEqual(steps - set(self.pages["steps.html"].targets), set())

    def test_prototypes_are_the_registered_ones(self):
        for name, page in self.functions.items():
            prototypes = [row.prototype for row in self.rows if row.name == name]
            self.assertEqual(self.pages[f"{name}.html"].prototype, "\n".join(prototypes))
            parameters = reference_checks.prototype_parameters(max(prototypes, key=len))
            self.assertEqual([row.cells[0] for row in page.parameters], parameters, name)

    @unittest.skipUnless(BINARIES, "without a build of the plug-in")
    def test_the_tables_are_read_as_the_plug_in_registers_them(self):
        functions, steps = reference_checks.registry(BINARIES)
        longest = {}
        for row in self.rows:
            longest[row.name] = max(row.prototype, longest.get(row.name, ""), key=len)
        self.assertEqual(longest, functions)
        self.assertEqual({step.name for step in self.steps}, steps.keys())

    def test_a_browser_shows_it(self):
        install_browser_packages()
        done = subprocess.run(["node", HERE / "browser_test.mjs", WORK / "node_modules", SITE],
                              capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stderr), (0, ""), done.stdout)


class RegistryTest(unittest.TestCase):
    def test_forms_of_rows(self):
        functions = registry.read_functions('''
            constexpr FunctionRow rows[] = { // {1, 2}
                {42, least(1, 0), 2, all, "VlFile_A( s ; \\"x\\" )", "One " "two"
                 MACRO ".", ns::body, Served::Always}, /* } */
                {43, 0, 0, all, "VlFile_B", "B.", [] { return 1; }},
            };''')
        self.assertEqual([(row.id, row.name, row.prototype, row.description) for row in functions],
                         [(42, "VlFile_A", 'VlFile_A( s ; "x" )', "One two…."),
                          (43, "VlFile_B", "VlFile_B", "B.")])
        (step,) = registry.read_steps('constexpr StepRow steps[] = {{7, "S", "Does.", 0, {}, b}};')
        self.assertEqual((step.id, step.name, step.description), (7, "S", "Does."))

    def test_unknown_forms_are_told(self):
        for source in ("", "constexpr FunctionRow rows[] = {{1, 2",
                       'constexpr FunctionRow rows[] = {{"VlFile_A", 1, 2, 3, "VlFile_A", "x"}};',
                       "constexpr FunctionRow rows[] = {{4210, 1, 2, 3, prototype, text}};"):
            with self.assertRaises(registry.RegistryError, msg=source):
                registry.read_functions(source)


def step_anchor(step):
    return "script-step-" + re.sub(r"[^\w\- ]", "", step.lower()).replace(" ", "-")


def install_browser_packages():
    """puppeteer-core and axe-core as the lock file has them, once."""
    kept = WORK / "package-lock.json"
    lock = (HERE / "package-lock.json").read_bytes()
    if (WORK / "node_modules" / ".package-lock.json").exists() and kept.read_bytes() == lock:
        return
    for name in ("package.json", "package-lock.json"):
        shutil.copyfile(HERE / name, WORK / name)
    done = subprocess.run(["npm", "ci", "--ignore-scripts", "--no-audit", "--no-fund"], cwd=WORK,
                          capture_output=True, text=True)
    if done.returncode:  # a registry that cannot be reached is no fault of the site
        raise unittest.SkipTest(f"npm could not install the packages:\n{done.stdout}{done.stderr}")


if __name__ == "__main__":
    unittest.main()
