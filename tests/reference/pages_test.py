#!/usr/bin/env python3
"""What the check of the reference's pages finds: each fault at its line, and none on a good page."""
import re
import sys
import unittest
from pathlib import Path

sys.dont_write_bytecode = True  # the folders are those of the sources
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))

import reference
import reference_checks
import reference_examples
import reference_pages

GOOD = """---
subject: Disks
keywords: word
hosts: all
since: 14.0
---
# VlFile_Some

Does something.

## Parameters

| parameter | type | meaning |
|---|---|---|
| switches | text | a bar \\| in a cell |

## Switches

None.

## Script step: Some

| option | values | meaning |
|---|---|---|
| FilePath | text | a file |

## Result

A text.

## Result codes

| code | cause |
|---|---|
| -43, 206 | nothing there |

## Examples

### One

```vell
$a = 1
$a
```

```result
1
```

### Two

```vell not-run
VlFile_Some( "" )
```

## See also

[another](VlFile_Other.md)
"""


def faults_of(text):
    faults = reference_pages.Faults()
    page = reference_pages.Reader(Path("/VlFile_Some.md"), faults, text).read_function()
    return page, [re.sub(r"^/VlFile_Some.md:", "", line) for line in faults.lines]


class Pages(unittest.TestCase):
    def test_reads_a_good_page(self):
        page, faults = faults_of(GOOD)
        self.assertEqual(faults, [])
        self.assertEqual(page.properties["subject"], "Disks")
        self.assertEqual(page.parameters[0].cells, ["switches", "text", "a bar | in a cell"])
        self.assertEqual(page.steps[0].name, "Some")
        self.assertEqual([example.is_run for example in page.examples], [True, False])
        self.assertEqual((page.examples[0].result, page.examples[0].result_line), ("1", 47))

    def test_tells_each_fault_with_its_line(self):
        cases = (
            ("subject: Disks", "subject: Disk", "1: no such subject"),
            ("hosts: all\n", "", "1: the property hosts is missing"),
            ("since: 14.0", "version 14", '5: "name: value" is expected'),
            ("# VlFile_Some", "# VlFile_Sum", "7: the title is 'VlFile_Sum'"),
            ("Does something.", "", "7: a sentence"),
            ("| parameter | type |", "| name | type |", "13: the table's heading"),
            ("| text | a bar", "| a bar", "15: a row has 3 cells"),
            ("None.", "Nothing.", "17: a table, or the sentence"),
            ("## Result\n", "## Results\n", "27: no section of this form is named 'Results'"),
            ("## Result\n\nA text.\n\n", "", 'the section "Result" is missing'),
            ("## See also", "## Switches", "56: the sections are, in this order"),
            ("| -43, 206 |", "| -43 206 |", "35: no code"),
            ("```result\n1\n```\n", "", "39: the example has no result block"),
            ("```result\n", "```result not-run\n", "46: not-run stands at the example"),
            ("```vell\n$a", "```calc\n$a", "41: a block is vell"),
            ("( \"\" )\n```\n", "( \"\" )\n", "a block that begins with ``` is not closed"),
        )
        for old, new, fault in cases:
            self.assertIn(old, GOOD)
            found = faults_of(GOOD.replace(old, new, 1))[1]
            self.assertTrue(any(fault in line for line in found), (fault, found))


class Examples(unittest.TestCase):
    def test_compares_results_with_what_may_differ_left_open(self):
        def matches(expected, actual):
            example = reference_pages.Example("", 1, [], expected)
            return reference_examples.Outcome(example, actual).matches()
        self.assertTrue(matches("a.b\nc", "a.b\nc\n"))
        self.assertFalse(matches("a.b", "axb"))
        self.assertFalse(matches("a", "ab"))
        self.assertTrue(matches("size …\nend", "size 12\n13\nend"))
        self.assertFalse(matches("size …\nend", "12\nend"))

    def test_shows_the_folder_of_examples_under_one_name(self):
        shown = reference_examples.with_shown_folder(
            "Z:\\a\\b c\\x.txt filewin:/z:/a/b c/x.txt Z:\\a\\x", Path("/a/b c"))
        self.assertEqual(shown, "C:\\Work\\x.txt filewin:/C:/Work/x.txt Z:\\a\\x")

    def test_prints_values_as_the_console_host_does(self):
        self.assertEqual(reference_examples.printed({"type": "text", "result": "a\rb"}), "a\nb")
        self.assertEqual(
            reference_examples.printed({"type": "container", "result": "a.png",
                                        "streams": [{"type": "PNGf", "size": 12}]}),
            'container "a.png", 1 stream\n  PNGf          12 bytes')


class Output(unittest.TestCase):
    def test_gives_a_page_as_json(self):
        value = reference.function_value(faults_of(GOOD)[0])
        self.assertEqual(value["subject"], "Disks")
        self.assertEqual(value["keywords"], ["word"])
        self.assertEqual(value["steps"], [
            {"name": "Some", "options": [{"label": "FilePath", "values": "text",
                                          "meaning": "a file"}], "text": ""}])
        self.assertEqual(value["codes"], [{"code": "-43, 206", "cause": "nothing there"}])
        self.assertEqual((value["switches"], value["texts"], value["notes"]), ([], {}, ""))
        self.assertEqual(value["examples"][0], {"title": "One", "statements": ["$a = 1", "$a"],
                                                "result": "1", "run": True})

    def test_lists_a_page_by_its_first_sentence(self):
        self.assertEqual(
            reference.first_sentence("Takes [a name](a.md), 1.5 MB | more.\nThen.\n\nFar."),
            "Takes a name, 1.5 MB \\| more.")


class Registry(unittest.TestCase):
    def test_reads_parameters_of_every_form_of_a_prototype(self):
        for prototype, names in (
                ("VlFile_Some", []),
                ("VlFile_Some( switches )", ["switches"]),
                ("VlFile_Some( a { ; b ; { c } } )", ["a", "b", "c"]),
                ('VlFile_Some( a /* Use "-x" ; y */ ; b c )', ["a", "b c"])):
            self.assertEqual(reference_checks.prototype_parameters(prototype), names)


if __name__ == "__main__":
    unittest.main()
