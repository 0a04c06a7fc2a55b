#!/usr/bin/env python3
"""The reference in docs/reference: checks its pages, runs their examples, gives them as JSON.

  reference.py --check [BIN]        the form of all pages; with BIN also against the functions and
                                    steps that the plug-in there registers
  reference.py --run BIN [PAGE…]    runs all examples, or those of some pages, and compares
  reference.py --update BIN PAGE…   prints what the examples of pages give
  reference.py --update --write BIN PAGE…   puts results that differ into the pages
  reference.py --json FILE          all pages as one JSON document, "-" for standard output
  reference.py --index              writes docs/reference/README.md, the list of all pages

BIN is the folder of vellhost.exe and VellFile.fmx64. A PAGE is a file, or a name such as
VlFile_GetContents. The exit code is 1 when something is wrong.
"""
import argparse
import difflib
import json
import re
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # the folder is that of the sources

import reference_checks
import reference_examples
from reference_pages import (NOTHING, REFERENCE, ROOT, STEP, SUBJECTS, Faults, check_links,
                             read_pages)

WORK = ROOT / "build" / "reference"
INDEX = REFERENCE / "README.md"


def check(binaries):
    faults = Faults()
    functions, guides = read_pages(faults)
    check_links([*functions.values(), *guides.values()], faults)
    reference_checks.check_sources(functions, guides, faults)
    if binaries:
        reference_checks.check_registry(functions, faults, binaries)
    if not faults.lines and INDEX.read_text(encoding="utf-8") != index_of(functions, guides):
        faults.add(INDEX, 1, "the list of pages is old: scripts/reference.py --index")
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


def report(page, outcome):
    """The lines of a result that differ, with those beside them; where they are few, all."""
    place = f"{page.path.relative_to(ROOT)}:{outcome.example.result_line}"
    print(f'{place}: "{outcome.example.title}" gives another result (- expected, + actual)')
    for statement in outcome.example.statements:
        print(f"    > {statement.text}")
    expected = (outcome.example.result or "").rstrip("\n").split("\n")
    actual = outcome.actual.rstrip("\n").split("\n")
    for line in list(difflib.unified_diff(expected, actual, lineterm="", n=2))[2:]:
        print("    ..." if line.startswith("@@") else f"    {line[:1]} {line[1:]}")


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


# The list of pages

INDEX_HEAD = """# The reference

What every function and script step does, how it is called, and examples that were run.
`scripts/reference.py` checks the pages, runs their examples, and writes this list.
"""


def first_sentence(text):
    """Of a page's beginning, without its links, which start from another folder."""
    text = re.sub(r"\[([^\]]+)\]\([^)]*\)", r"\1", text.partition("\n\n")[0].replace("\n", " "))
    return re.split(r"(?<=\.) ", text)[0].replace("|", "\\|")


def index_table(heading, entries):
    lines = [f"| {' | '.join(heading)} |", "|" + "---|" * len(heading)]
    return "\n".join(lines + [f"| {' | '.join(cells)} |" for cells in entries]) + "\n"


def index_of(functions, guides):
    parts = [INDEX_HEAD, "## Guide\n", index_table(("page", "what it is about"), [
        (f"[{guide.title}](guide/{name}.md)", first_sentence(guide.summary))
        for name, guide in guides.items()])]
    for subject in SUBJECTS:
        parts += [f"## {subject}\n", index_table(("function", "what it does"), [
            (f"[{name}](functions/{name}.md)", first_sentence(page.summary))
            for name, page in functions.items() if page.properties["subject"] == subject])]
    steps = sorted(((step.name, page.name) for page in functions.values() for step in page.steps),
                   key=lambda step: step[0].lower())
    parts += ["## Script steps\n", index_table(("step", "described with"), [
        (name, f"[{page}](functions/{page}.md)") for name, page in steps])]
    return "\n".join(parts)


def write_index():
    faults = Faults()
    pages = read_pages(faults)
    print("\n".join(faults.lines), end="")
    if not faults.lines:
        INDEX.write_text(index_of(*pages), encoding="utf-8")
    return not faults.lines


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
    action.add_argument("--index", action="store_true")
    parser.add_argument("--write", action="store_true")
    parser.add_argument("names", nargs="*")
    arguments = parser.parse_args()
    names = arguments.names
    if arguments.json:
        return write_json(arguments.json)
    if arguments.index:
        return write_index()
    if arguments.check:
        return check(names[0] if names else None)
    if not names:
        parser.error("the folder of vellhost.exe is missing")
    if arguments.run:
        return run(names[0], names[1:])
    return update(names[0], names[1:], arguments.write)


if __name__ == "__main__":
    sys.exit(0 if main() else 1)
