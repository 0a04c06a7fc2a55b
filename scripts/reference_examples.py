"""The examples of the reference, run by the console host in Wine."""
import json
import os
import re
import shutil
import subprocess
from dataclasses import dataclass
from pathlib import Path

from reference_pages import REFERENCE, ROOT

WINE = ROOT / "scripts" / "wine"
FILES = REFERENCE / "files"
SETUP = FILES / "setup.vell"
ANYTHING = "…"  # in a result: whatever stands there
SHOWN_FOLDER = "Work"  # C:\Work\ is what results show for the folder of examples
LONGEST_RUN = 300  # seconds


class RunFailure(Exception):
    """The console host, or what makes the folder ready for examples, failed."""


class LostOutput(RunFailure):
    """The console host ended well, with nothing on its standard output and no complaint. It happens
    about once in two thousand starts in Wine, on any page."""


@dataclass
class Outcome:
    """What an example printed."""
    example: object
    actual: str

    def matches(self):
        expected = (self.example.result or "").rstrip("\n")
        pattern = ".*?".join(re.escape(part) for part in expected.split(ANYTHING))
        return re.fullmatch(pattern, self.actual.rstrip("\n"), re.DOTALL) is not None


def windows_path(path):
    return "Z:" + str(path).replace("/", "\\")


def text(value):
    """A text of the console host's language."""
    return '"' + value.replace("\\", "\\\\").replace('"', '\\"') + '"'


def is_assignment(statement):
    return re.match(r"\s*\$\w+\s*=", statement) is not None


def statements_of(path):
    lines = path.read_text(encoding="utf-8").split("\n")
    return [line for line in lines if line.strip() and not line.startswith("//")]


def make_folder(folder):
    """A fresh copy of the files, writable whatever an earlier run has done to it."""
    if folder.exists():
        for path in [folder, *folder.rglob("*")]:
            path.chmod(0o755 if path.is_dir() else 0o644)
        shutil.rmtree(folder)
    shutil.copytree(FILES, folder, ignore=shutil.ignore_patterns(SETUP.name))
    for path in folder.rglob("*"):
        path.chmod(0o755 if path.is_dir() else 0o644)


def answers_to(binaries, statements, folder):
    """What the console host answers to statements, by their numbers from 1."""
    script = folder.with_suffix(".vell")
    script.write_text("\n".join(statements) + "\n", encoding="utf-8")
    environment = {name: value for name, value in os.environ.items() if name != "DISPLAY"}
    environment["TZ"] = "UTC"
    try:
        done = subprocess.run(
            [WINE, Path(binaries).resolve() / "vellhost.exe", "--json", "--raw", "--file",
             windows_path(script)],
            cwd=folder.parent, env=environment, stdin=subprocess.DEVNULL, capture_output=True,
            timeout=LONGEST_RUN, check=False)
    except subprocess.TimeoutExpired as error:
        raise RunFailure(f"the examples took more than {LONGEST_RUN} seconds") from error
    answers = {}
    for line in filter(None, done.stdout.decode("utf-8").split("\n")):
        answer = json.loads(line)
        answers[answer["line"]] = answer
    if len(answers) != len(statements):
        is_lost = not done.stdout and not done.stderr and done.returncode in (0, 1)
        raise (LostOutput if is_lost else RunFailure)(
            f"vellhost gave {len(answers)} answers to {len(statements)} statements and ended with "
            f"{done.returncode}\n" + done.stderr.decode("utf-8", "replace"))
    return answers


def printed(answer):
    """What the console host prints where --json is not given."""
    if "error" in answer:
        return f"column {answer.get('column', 1)}: {answer['error']}"
    if answer["type"] != "container":
        return answer["result"].replace("\r\n", "\n").replace("\r", "\n")
    streams = answer["streams"]
    head = f'container "{answer["result"]}", {len(streams)} stream{"s" * (len(streams) != 1)}'
    return "\n".join([head] + [f'  {s["type"]}{s["size"]:>12} bytes' for s in streams])


def with_shown_folder(result, folder):
    """The result with C:\\Work for the folder that the examples ran in, in either form of a path
    and as JSON has it."""
    parts = [re.escape(part) for part in folder.parts[1:]]
    pattern = "Z:" + r"(?P<first>\\{1,2}|/)" + parts[0] + "".join(
        r"(?:\\{1,2}|/)" + part for part in parts[1:])
    pattern += r"(?![^\\/\s\"';])"  # not the beginning of another name
    return re.sub(pattern, lambda found: f"C:{found['first']}{SHOWN_FOLDER}", result,
                  flags=re.IGNORECASE)


def run_page(page, binaries, work):
    """The outcomes of a page's examples, in their order, all from one process."""
    examples = [example for example in page.examples if example.is_run]
    if not examples:
        return []
    folder = (Path(work) / page.name).resolve()
    setup = [f"$work = {text(windows_path(folder) + chr(92))}", *statements_of(SETUP)]
    statements = setup + [s.text for example in examples for s in example.statements]
    make_folder(folder)
    try:
        answers = answers_to(binaries, statements, folder)
    except LostOutput:
        make_folder(folder)
        answers = answers_to(binaries, statements, folder)
    for number, statement in enumerate(setup, 1):
        if "error" in answers[number] or answers[number].get("code"):
            raise RunFailure(f"{SETUP.name}: {statement}: {printed(answers[number])}")

    outcomes = []
    number = len(setup)
    for example in examples:
        results = []
        for statement in example.statements:
            number += 1
            if not is_assignment(statement.text) or "error" in answers[number]:
                results.append(with_shown_folder(printed(answers[number]), folder))
        outcomes.append(Outcome(example, "\n".join(results)))
    return outcomes
