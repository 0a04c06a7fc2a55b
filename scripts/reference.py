#!/usr/bin/env python3
"""The reference in docs/reference: checks its pages, runs their examples, gives them as JSON.

  reference.py --check [BIN]        the form of all pages; with BIN also against the functions and
                                    steps that the plug-in there registers
  reference.py --run BIN [PAGE…]    runs all examples, or those of some pages, and compares
  reference.py --update BIN PAGE…   prints what the examples of pages give
  reference.py --update --write BIN PAGE…   puts results that differ into the pages
  reference.py --json FILE          all pages as one JSON document, "-" for standard output

BIN is the folder of vellhost.exe and VellFile.fmx64. A PAGE is a file, or a name such as
VlFile_GetContents. The exit code is 1 when something is wrong.
"""
import argparse
import json
import re
import subprocess
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # the folder is that of the sources

import reference_examples
from reference_pages import NOTHING, REFERENCE, ROOT, STEP, Faults, check_links, read_pages

WORK = ROOT / "build" / "reference"
MISSING = REFERENCE / "missing.txt"  # functions whose pages are still to be written, one a line
ERROR_CODES = ROOT / "src" / "base" / "error_code.h"


def missing_pages():
    return set(MISSING.read_text(encoding="utf-8").split()) if MISSING.exists() else set()


# The registry

def prototype_parameters(prototype):
    """The names in "VlFile_X( a ; { b } )"; None of a function without parentheses."""
    inside = re.search(r"\((.*)\)", re.sub(r"/\*.*?\*/", "", prototype))
    names = re.split(r";", re.sub(r"[{}]", "", inside[1])) if inside else []
    return [name.strip() for name in names]


def registry(binaries):
    """Prototypes by the names of functions, labels of options by the names of steps."""
    done = subprocess.run([reference_examples.WINE, Path(binaries).resolve() / "vellhost.exe",
                           "--list"], stdin=subprocess.DEVNULL, capture_output=True, check=True)
    functions, steps = {}, {}
    for line in done.stdout.decode("utf-8").splitlines():
        step = re.search(r'step "([^"]+)"(?: \[ (.*) \])?$', line)
        function = re.search(r"\b(VlFile_\w+).*", line)
        if step:
            steps[step[1]] = step[2].split(" ; ") if step[2] else []
        elif function:  # the longest prototype of a name counts
            functions[function[1]] = max(function[0], functions.get(function[1], ""), key=len)
    return functions, steps


def check_registry(pages, faults, binaries):
    functions, steps = registry(binaries)
    missing = missing_pages()
    for name in sorted(functions.keys() - pages.keys() - missing):
        faults.add(REFERENCE / "functions" / f"{name}.md", 1, "the function has no page")
    for name in sorted(missing & pages.keys()):
        faults.add(MISSING, 1, f"{name} has its page")
    described = {}
    for page in pages.values():
        if page.name not in functions:
            faults.add(page.path, 1, "no function of this name is registered")
            continue
        names = prototype_parameters(functions[page.name])
        if [row.cells[0] for row in page.parameters] != names:
            faults.add(page.path, 1, f"the parameters are registered as: {', '.join(names)}")
        for step in page.steps:
            described[step.name] = page.name
            if step.name not in steps:
                faults.add(page.path, step.line, f"no step {step.name!r} is registered")
            elif [row.cells[0] for row in step.options] != steps[step.name]:
                labels = ", ".join(steps[step.name]) or NOTHING
                faults.add(page.path, step.line, f"the step's options are: {labels}")
    if not missing:
        for name in sorted(steps.keys() - described.keys()):
            faults.add(REFERENCE, 1, f"the step {name!r} is on no page")


# What the sources know

def own_codes():
    """The numbers of the plug-in's own codes."""
    return {int(number) for number in
            re.findall(r"^\s+\w+ = (-?\d+),", ERROR_CODES.read_text(encoding="utf-8"), re.M)}


def check_codes(functions, guides, faults):
    """Codes on pages exist, and the guide names them all."""
    known = own_codes()
    guide = guides.get("result-codes")
    explained = set()
    if guide:
        for text in guide.texts.values():
            explained |= {int(code) for code in re.findall(r"^\| (-?\d+) \|", text, re.M)}
        for code in sorted(known - explained):
            faults.add(guide.path, 1, f"code {code} is missing")
        for code in sorted(number for number in explained - known if number < 0):
            faults.add(guide.path, 1, f"there is no code {code}")
    for page in functions.values():
        for row in page.codes:
            for code in re.findall(r"(?<![\w`])-?\d+", row.cells[0]):
                if int(code) not in known | explained:
                    faults.add(page.path, row.line, f"code {code} is not in guide/result-codes.md")


def source_literals():
    """The text literals of the sources, without comments."""
    literals = []
    for path in sorted((ROOT / "src").rglob("*")):
        if path.suffix not in (".cpp", ".h"):
            continue
        for line in path.read_text(encoding="utf-8").split("\n"):
            code = re.sub(r'//.*', "", line) if '"' not in line.partition("//")[0] else line
            if not line.lstrip().startswith(("//", "#")):
                literals += re.findall(r'"([^"\\]*)"', code.split(" // ")[0])
    return literals


def switch_names(row):
    """`-Encoding=UTF8` and `-Name` of a row's first cell, without values."""
    return re.findall(r"`([^`=]+)=?[^`]*`", row.cells[0])


def check_switches(functions, faults):
    """Switches on pages are known to the sources, and each that the sources know is on a page."""
    literals = source_literals()
    all_text = "\n".join(literals).lower()
    described = set()
    for page in functions.values():
        for row in page.switches:
            names = switch_names(row)
            if not names:
                faults.add(page.path, row.line, "a switch stands in backticks")
            for name in names:
                described.add(name.lower())
                if name.lstrip("-").lower() not in all_text:
                    faults.add(page.path, row.line, f"no source knows the switch {name}")
    if missing_pages():
        return
    asked = {found[1] for literal in literals
             if (found := re.fullmatch(r"(-[A-Za-z][A-Za-z0-9_]+)=?", literal))}
    for name in sorted(asked):
        if name.lower() not in described:
            faults.add(REFERENCE, 1, f"the switch {name} is on no page")


# What an option takes that is no list.
OPTION_TYPES = (r"(text|number|timestamp|container|text or container)"
                r"(, \d+ to \d+)?(; empty: .+)?|on|off")


def check_option_values(functions, faults):
    """A list of a step's option holds what the sources have, with its default marked."""
    literals = set(source_literals())
    for page in functions.values():
        for step in page.steps:
            for row in step.options:
                if re.fullmatch(OPTION_TYPES, row.cells[1]):
                    continue
                for item in row.cells[1].split(", "):
                    name = item.removesuffix(" (default)")
                    if name not in literals and not re.fullmatch(OPTION_TYPES, name):
                        faults.add(page.path, row.line, f"no list of a step has {name!r}")


def check(binaries):
    faults = Faults()
    functions, guides = read_pages(faults)
    check_links([*functions.values(), *guides.values()], faults, missing_pages())
    check_codes(functions, guides, faults)
    check_switches(functions, faults)
    check_option_values(functions, faults)
    if binaries:
        check_registry(functions, faults, binaries)
    for line in faults.lines:
        print(line)
    if not faults.lines:
        print(f"{len(functions)} functions, {len(guides)} pages of the guide: no faults")
    return not faults.lines


# Examples

def chosen_pages(names):
    """The pages of these names, all pages without names. A page with faults ends the program."""
    faults = Faults()
    functions, guides = read_pages(faults)
    pages = {**guides, **functions}
    unknown = [name for name in names if Path(name).stem not in pages]
    if unknown:
        sys.exit(f"no such page: {', '.join(unknown)}")
    chosen = [pages[Path(name).stem] for name in names] or list(pages.values())
    places = tuple(f"{page.path.relative_to(ROOT)}:" for page in chosen)
    in_the_way = [line for line in faults.lines if line.startswith(places)]
    if in_the_way:
        sys.exit("\n".join(in_the_way))
    return chosen


def indented(text, mark):
    return "\n".join(f"    {mark} {line}" for line in text.split("\n"))


def report(page, outcome):
    place = f"{page.path.relative_to(ROOT)}:{outcome.example.result_line}"
    print(f'{place}: "{outcome.example.title}" gives another result')
    print(indented("\n".join(s.text for s in outcome.example.statements), " "))
    print("  expected")
    print(indented(outcome.example.result or "", "-"))
    print("  actual")
    print(indented(outcome.actual, "+"))


def outcomes_of(page, binaries):
    try:
        return reference_examples.run_page(page, binaries, WORK)
    except reference_examples.RunFailure as failure:
        print(f"{page.path.relative_to(ROOT)}:1: {failure}")
        return None


def run(binaries, names):
    right = wrong = 0
    for page in chosen_pages(names):
        outcomes = outcomes_of(page, binaries)
        if outcomes is None:
            wrong += 1
            continue
        for outcome in outcomes:
            if outcome.matches():
                right += 1
            else:
                wrong += 1
                report(page, outcome)
    print(f"{right} examples as described, {wrong} not")
    return wrong == 0


def put_results(page, outcomes):
    lines = page.path.read_text(encoding="utf-8").split("\n")
    for outcome in reversed(outcomes):  # what changes a page's length comes last
        example = outcome.example
        if not outcome.matches():
            result = outcome.actual.rstrip("\n")
            lines[example.result_line - 1:example.result_end - 1] = result.split("\n")
    page.path.write_text("\n".join(lines), encoding="utf-8")


def update(binaries, names, write):
    done = True
    for page in chosen_pages(names):
        outcomes = outcomes_of(page, binaries)
        done &= outcomes is not None
        for outcome in outcomes or []:
            print(f"### {outcome.example.title}\n\n```result\n{outcome.actual}\n```\n")
        if outcomes and write:
            put_results(page, outcomes)
    return done


# JSON

def rows(table, *names):
    return [dict(zip(names, row.cells)) for row in table]


def example_value(example):
    return {"title": example.title, "statements": [s.text for s in example.statements],
            "result": example.result, "run": example.is_run}


def function_value(page):
    properties = page.properties
    return {
        "name": page.name,
        "subject": properties["subject"],
        "keywords": [word.strip() for word in properties["keywords"].split(",")],
        "hosts": properties["hosts"],
        "since": properties["since"],
        "summary": page.summary,
        "parameters": rows(page.parameters, "name", "type", "meaning"),
        "switches": rows(page.switches, "name", "default", "meaning"),
        "steps": [{"name": step.name, "options": rows(step.options, "label", "values", "meaning"),
                   "text": page.texts.get(f"{STEP}: {step.name}", "")} for step in page.steps],
        "result": page.texts["Result"],
        "codes": rows(page.codes, "code", "cause"),
        "texts": {name: page.texts[name] for name in ("Parameters", "Switches", "Result codes")
                  if page.texts.get(name, NOTHING) not in ("", NOTHING)},
        "notes": page.texts.get("Notes", ""),
        "examples": [example_value(example) for example in page.examples],
        "seeAlso": page.texts["See also"],
    }


def write_json(target):
    faults = Faults()
    functions, guides = read_pages(faults)
    if faults.lines:
        print("\n".join(faults.lines))
        return False
    value = {
        "functions": [function_value(page) for page in functions.values()],
        "guides": [{"name": page.name, "title": page.title, "summary": page.summary,
                    "text": page.path.read_text(encoding="utf-8")} for page in guides.values()],
    }
    text = json.dumps(value, ensure_ascii=False, indent=1) + "\n"
    if target == "-":
        sys.stdout.write(text)
    else:
        Path(target).write_text(text, encoding="utf-8")
    return True


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    action = parser.add_mutually_exclusive_group(required=True)
    action.add_argument("--check", action="store_true")
    action.add_argument("--run", action="store_true")
    action.add_argument("--update", action="store_true")
    action.add_argument("--json", metavar="FILE")
    parser.add_argument("--write", action="store_true")
    parser.add_argument("names", nargs="*")
    arguments = parser.parse_args()
    names = arguments.names
    if arguments.json:
        return write_json(arguments.json)
    if arguments.check:
        return check(names[0] if names else None)
    if not names:
        parser.error("the folder of vellhost.exe is missing")
    if arguments.run:
        return run(names[0], names[1:])
    return update(names[0], names[1:], arguments.write)


if __name__ == "__main__":
    sys.exit(0 if main() else 1)
