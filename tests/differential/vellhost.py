"""The plug-in in the console host: many calls in one process."""
import json
import pathlib
import subprocess
import sys
import tempfile

WINE = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "wine"


def text(value):
    """A text of the console host's language."""
    return '"' + str(value).replace("\\", "\\\\").replace('"', '\\"').replace("\r", "\u00b6") + '"'


def path(value):
    """A path as the plug-in takes it."""
    return text("Z:" + str(value).replace("/", "\\"))


def results(folder, statements):
    """The results of statements, in order and with the host's line ends."""
    with tempfile.NamedTemporaryFile("w", suffix=".vell", encoding="utf-8") as file:
        file.write("\n".join(statements) + "\n")
        file.flush()
        done = subprocess.run([WINE, f"{folder}/vellhost.exe", "--json", "--raw", "--file",
                               "Z:" + file.name.replace("/", "\\")], stdin=subprocess.DEVNULL,
                              capture_output=True, check=False)
    answers = [json.loads(line) for line in done.stdout.decode("utf-8").split("\n") if line]
    if len(answers) != len(statements):
        sys.exit(f"vellhost gave {len(answers)} answers to {len(statements)} statements and ended "
                 f"with {done.returncode}:\n" + done.stderr.decode("utf-8", "replace"))
    return [str(answer.get("result", answer.get("error"))) for answer in answers]
