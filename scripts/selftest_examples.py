#!/usr/bin/env python3
"""The examples of the reference, as the self-test takes them along.

  selftest_examples.py FOLDER     writes examples.txt, setup.vell and the folder files there

In examples.txt a line begins with its kind: "page NAME", "example TITLE", "> " a statement, "= " a
line of the result. "needs plain path" stands where a command has the path of the folder of examples
without quotes, or prints it.
"""
import shutil
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # the folder is that of the sources

from reference_examples import FILES, SETUP
from reference_pages import Faults, read_pages

# What the pages show of one machine, and what any machine may answer instead.
ON_ANY_MACHINE = {
    ("VlFile_DiskInfo", "Several facts"): "DiskPath: C:\\\nType: Fixed\nFileSystem: …",
    ("VlFile_FindFolder", "The desktop and the temporary folder"): "…\\\n…\\Temp\\",
    ("VlFile_FindFolder", "FileMaker's form"): "filewin:/…/",
    ("VlFile_GetPreferredLanguages", "All of them"): "…-…",
    ("VlFile_GetPreferredLanguages", "Texts in the language of the user"): "…",
    ("VlFile_ListDisks", "All disks"): "C:\\…",
    ("VlFile_ListDisks", "Local disks that can be read, in FileMaker's form"): "filewin:/C:/…",
    ("VlFile_ListDisks", "Is there a network disk with the letter S?"): "…",
}
UNQUOTED = ("A text in another encoding", "Start something and go on",
            "The lines of a program, without the last line end")


def any_result(page, example):
    return ON_ANY_MACHINE.get((page.name, example.title), example.result or "")


def lines_of(page, example):
    lines = [f"example {example.title}"]
    if page.name == "VlFile_ExecuteShell" and example.title in UNQUOTED:
        lines.append("needs plain path")
    lines += [f"> {statement.text}" for statement in example.statements]
    return lines + [f"= {line}" for line in any_result(page, example).split("\n")]


def examples_text(pages):
    lines = []
    for page in pages:
        examples = [example for example in page.examples if example.is_run]
        if examples:
            lines.append(f"page {page.name}")
        for example in examples:
            lines += lines_of(page, example)
    return "\n".join(lines) + "\n"


def unknown_titles(pages):
    known = {(page.name, example.title) for page in pages for example in page.examples}
    wanted = [*ON_ANY_MACHINE, *(("VlFile_ExecuteShell", title) for title in UNQUOTED)]
    return [key for key in wanted if key not in known]


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    faults = Faults()
    functions, guides = read_pages(faults)
    pages = [*guides.values(), *functions.values()]
    faults.lines += [f"{page}: there is no example \"{title}\" any more"
                     for page, title in unknown_titles(pages)]
    if faults.lines:
        sys.exit("\n".join(faults.lines))
    target = Path(sys.argv[1])
    shutil.rmtree(target, ignore_errors=True)
    shutil.copytree(FILES, target / "files", ignore=shutil.ignore_patterns(SETUP.name))
    shutil.copy(SETUP, target)
    (target / "examples.txt").write_text(examples_text(pages), encoding="utf-8")


if __name__ == "__main__":
    main()
