"""What the pages of the reference say, compared with what the plug-in registers and its sources know."""
import re
import subprocess
from pathlib import Path

from reference_examples import WINE
from reference_pages import NOTHING, REFERENCE, ROOT

SOURCES = ROOT / "src"
ERROR_CODES = SOURCES / "base" / "error_code.h"
ENCODING_NUMBERS = SOURCES / "params" / "encodings.h"
ENCODING_NAMES = SOURCES / "params" / "encodings.cpp"
SPECIAL_FOLDERS = SOURCES / "files" / "paths" / "special_folders.cpp"


def text_of(path):
    return path.read_text(encoding="utf-8")


# The registry

def prototype_parameters(prototype):
    """The names in "VlFile_X( a ; { b } )"; none of a function without parentheses."""
    inside = re.search(r"\((.*)\)", re.sub(r"/\*.*?\*/", "", prototype))
    names = re.split(r";", re.sub(r"[{}]", "", inside[1])) if inside else []
    return [name.strip() for name in names]


def registry(binaries):
    """Prototypes by the names of functions, labels of options by the names of steps."""
    done = subprocess.run([WINE, Path(binaries).resolve() / "vellhost.exe", "--list"],
                          stdin=subprocess.DEVNULL, capture_output=True, check=True)
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
    """Every function has its page and every page its function; parameters and steps agree."""
    functions, steps = registry(binaries)
    for name in sorted(functions.keys() - pages.keys()):
        faults.add(REFERENCE / "functions" / f"{name}.md", 1, "the function has no page")
    described = set()
    for page in pages.values():
        if page.name not in functions:
            faults.add(page.path, 1, "no function of this name is registered")
            continue
        names = prototype_parameters(functions[page.name])
        if [row.cells[0] for row in page.parameters] != names:
            faults.add(page.path, 1, f"the parameters are registered as: {', '.join(names)}")
        for step in page.steps:
            described.add(step.name)
            if step.name not in steps:
                faults.add(page.path, step.line, f"no step {step.name!r} is registered")
            elif [row.cells[0] for row in step.options] != steps[step.name]:
                labels = ", ".join(steps[step.name]) or NOTHING
                faults.add(page.path, step.line, f"the step's options are: {labels}")
    for name in sorted(steps.keys() - described):
        faults.add(REFERENCE, 1, f"the step {name!r} is on no page")


# The sources

def own_codes():
    """The numbers of the plug-in's own codes."""
    return {int(number) for number in re.findall(r"^\s+\w+ = (-?\d+),", text_of(ERROR_CODES), re.M)}


# What any function can give; pages leave that to the guide.
CODES_OF_ALL = {-108, -4220, -4222, -4298}


def codes_in(text):
    return {int(code) for code in re.findall(r"(?<![\w`])-?\d+", text)}


def check_codes_shown(page, faults):
    """What a function answers in examples of its own is among its codes."""
    listed = CODES_OF_ALL.union(*(codes_in(row.cells[0]) for row in page.codes))
    for example in page.examples:
        called = re.findall(r"VlFile_\w+", "\n".join(s.text for s in example.statements))
        shown = {int(code) for code in re.findall(r"^\$\$(-?\d+)$", example.result or "", re.M)}
        for code in sorted(shown - listed):
            if set(called) == {page.name}:
                faults.add(page.path, example.result_line, f"code {code} is not among the codes")


def check_codes(functions, guides, faults):
    """Codes on pages exist, and the guide explains them all."""
    known = own_codes()
    guide = guides["result-codes"]
    explained = {int(code) for text in guide.texts.values()
                 for code in re.findall(r"^\| (-?\d+) \|", text, re.M)}
    for code in sorted(known - explained):
        faults.add(guide.path, 1, f"code {code} is missing")
    for code in sorted(number for number in explained - known if number < 0):
        faults.add(guide.path, 1, f"there is no code {code}")
    for page in functions.values():
        check_codes_shown(page, faults)
        for row in page.codes:
            for code in sorted(codes_in(row.cells[0]) - known - explained):
                faults.add(page.path, row.line, f"code {code} is not in guide/result-codes.md")


def known_encodings():
    """The switches of encodings with their numbers, in the order in which they are looked for."""
    numbers = dict(re.findall(r"^\s+(\w+) = (\d+),", text_of(ENCODING_NUMBERS), re.M))
    names = re.findall(r'\{"(-Encoding=[^"]+)", TextEncoding::(\w+)\}', text_of(ENCODING_NAMES))
    return [("-Encoding=BytesOnly", numbers["BytesOnly"]),
            *((name, numbers[encoding]) for name, encoding in names)]


def check_encodings(guides, faults):
    guide = guides["encodings"]
    listed = [(name, row[2]) for row in re.findall(r"^\| ((`-Encoding=[^|]+) \| (\d+)) \|",
                                                   "\n".join(guide.texts.values()), re.M)
              for name in re.findall(r"`([^`]+)`", row[1])]
    if listed != known_encodings():
        wrong = set(listed) ^ set(known_encodings()) or "their order"
        faults.add(guide.path, 1, f"the encodings are others: {wrong}")


def source_lines():
    """The lines of the sources that are neither comments nor directives."""
    for path in sorted(SOURCES.rglob("*")):
        if path.suffix in (".cpp", ".h"):
            for line in text_of(path).split("\n"):
                if not line.lstrip().startswith(("//", "#")):
                    yield line.split(" // ")[0]


def literals_in(lines):
    return [literal for line in lines for literal in re.findall(r'"([^"\\]*)"', line)]


def asked_switches(lines):
    """The names that functions look for among their switches."""
    asks = re.compile(r'\b(?:has|option|option_is)\([^"]*"([^"]+)"')
    names = {name for line in lines for name in asks.findall(line)}
    names |= {literal for literal in literals_in(lines)
              if re.fullmatch(r"-[A-Za-z][A-Za-z0-9_]+=?", literal)}
    names |= set(re.findall(r'\{"(\w+)", SpecialFolder::', text_of(SPECIAL_FOLDERS)))
    return {name.rstrip("=") for name in names
            if re.match(r"-?\w", name) and not name.startswith("-Encoding=")}


def bare(name):
    """A switch without its dash, since some are found without one, and in small letters."""
    return name.lstrip("-").lower()


def switches_in(row):
    """Such as `-Name` and `-Name=value` in a row's first cell."""
    return re.findall(r"`([^`]+)`", row.cells[0])


def check_switches(functions, faults):
    """Switches on pages are known to the sources, and each that the sources know is on a page."""
    lines = list(source_lines())
    all_literals = "\n".join(literals_in(lines)).lower()
    described = set()
    for page in functions.values():
        for row in page.switches:
            switches = switches_in(row)
            if not switches:
                faults.add(page.path, row.line, "a switch stands in backticks")
            for switch in switches:
                name = switch.partition("=")[0]
                described |= {bare(name), bare(switch)}
                if bare(name) not in all_literals:
                    faults.add(page.path, row.line, f"no source knows the switch {name}")
    for name in sorted(asked_switches(lines)):
        if bare(name) not in described:
            faults.add(REFERENCE, 1, f"the switch {name} is on no page")


# What an option of a step takes that is no list.
OPTION_TYPES = (r"(text|number|timestamp|container|text or container)"
                r"(, \d+ to \d+)?(; empty: .+)?|on|off")


def check_option_values(functions, faults):
    """A list of a step's option holds what the sources have, with its default marked."""
    literals = set(literals_in(source_lines()))
    for page in functions.values():
        for step in page.steps:
            for row in step.options:
                if re.fullmatch(OPTION_TYPES, row.cells[1]):
                    continue
                for item in row.cells[1].split(", "):
                    name = item.removesuffix(" (default)")
                    if name not in literals and not re.fullmatch(OPTION_TYPES, name):
                        faults.add(page.path, row.line, f"no list of a step has {name!r}")


def check_sources(functions, guides, faults):
    check_codes(functions, guides, faults)
    check_encodings(guides, faults)
    check_switches(functions, faults)
    check_option_values(functions, faults)
