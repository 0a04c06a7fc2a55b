#!/usr/bin/env python3
"""Archives of ours and of other programs, each read by the other side.

Usage: zip_test.py BUILD_BIN_DIR. Exit code 77 when there is no program to compare with. The real
archives of $VELL_CORPUS are compared where that folder is there.
"""
import json
import os
import shutil
import subprocess
import sys
import tempfile
import zipfile
import zlib
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
failures = 0


def check(what, expected, actual):
    global failures
    if expected != actual:
        failures += 1
        print(f"FAILED: {what}\n  expected {expected!r}\n  actual   {actual!r}")


def run(*command, cwd=None):
    return subprocess.run(command, cwd=cwd, stdin=subprocess.DEVNULL, capture_output=True,
                          env={**os.environ, "LC_ALL": "C.UTF-8"}, check=False)


def quoted(path):
    return '"Z:' + str(path).replace("/", "\\\\") + '"'


def vell(statements):
    """Runs all statements in one process; their results in order."""
    process = subprocess.run(
        [ROOT / "scripts/wine", sys.argv[1] + "/vellhost.exe", "--json"],
        input="\n".join(statements) + "\n", capture_output=True, text=True, check=False)
    lines = [json.loads(line) for line in process.stdout.splitlines()]
    if len(lines) != len(statements):
        sys.exit(f"vellhost answered {len(lines)} of {len(statements)}:\n{process.stderr}")
    return [str(line.get("result", line.get("error"))) for line in lines]


def tree(folder):
    """Contents and times of files by name, None for folders. Times have steps of two seconds."""
    result = {}
    for path in sorted(Path(folder).rglob("*")):
        name = str(path.relative_to(folder))
        if path.is_dir():
            result[name] = None
        else:
            result[name] = (zlib.crc32(path.read_bytes()), int(path.stat().st_mtime) // 2)
    return result


def make_tree(folder):
    files = {
        "plain.txt": b"plain text\n" * 5000, "empty": b"", "three": b"123", "four": b"1234",
        "Gr\u00fc\u00dfe \u65e5\u672c \U0001f600.txt": "\u00e4".encode() * 9,
        "sub/.point/random": os.urandom(200_000), "sub/\u00e9/deep.lnk": b"x" * 70_000,
    }
    for number, (name, data) in enumerate(files.items()):
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(data)
        # In winter and in summer, at even seconds.
        os.utime(path, (1_600_000_000 + number * 10_000_000,) * 2)
    (folder / "nothing inside").mkdir()


def ascii_names(names):
    """Items with their names as far as unzip writes them: it heeds the mark of UTF-8 names only in
    archives whose entries are not made by MS-DOS."""
    return sorted((name if name.isascii() else "", str(item)) for name, item in names.items())


def read_by_others(archive, expected, work):
    """Every other program finds the archive sound and expands it to the same tree."""
    testers = {"unzip": ["unzip", "-tq"], "7z": ["7z", "t"], "bsdtar": ["bsdtar", "-tf"]}
    expanders = {"unzip": lambda target: ["unzip", "-q", archive, "-d", target],
                 "7z": lambda target: ["7z", "x", archive, f"-o{target}"],
                 "bsdtar": lambda target: ["bsdtar", "-xf", archive, "-C", target]}
    for program, command in expanders.items():
        check(f"{program} tests ours", 0, run(*testers[program], archive).returncode)
        target = work / f"by {program}"
        target.mkdir()
        done = run(*command(target))
        check(f"{program} expands ours", 0, done.returncode)
        comparable = ascii_names if program == "unzip" else lambda names: names
        check(f"{program} gets the same from ours", comparable(expected), comparable(tree(target)))
    with zipfile.ZipFile(archive) as opened:
        check("Python tests ours", None, opened.testzip())
        check("Python lists ours", sorted(expected),
              sorted(name.rstrip("/") for name in opened.namelist()))


def archives_of_others(folder, work):
    """Archives of the folder's contents by other programs, by name."""
    commands = {
        "zip": ["zip", "-qr9", "{}", "."],
        "zip stored": ["zip", "-qr0", "{}", "."],
        "7z deflate": ["7z", "a", "-tzip", "-mcu=on", "{}", "."],
        "7z Deflate64": ["7z", "a", "-tzip", "-mm=Deflate64", "-mcu=on", "{}", "."],
        "7z store": ["7z", "a", "-tzip", "-mm=Copy", "-mcu=on", "{}", "."],
        "bsdtar": ["bsdtar", "-cf", "{}", "--format", "zip",
                   "--options", "zip:compression=deflate", *sorted(os.listdir(folder))],
    }
    made = {}
    for name, command in commands.items():
        archive = work / f"{name}.zip"
        done = run(*[part.replace("{}", str(archive)) for part in command], cwd=folder)
        check(f"{name} makes an archive", 0, done.returncode)
        made[name] = archive
    made["Python"] = work / "Python.zip"
    with zipfile.ZipFile(made["Python"], "w", zipfile.ZIP_DEFLATED) as archive:
        for path in sorted(folder.rglob("*")):
            archive.write(path, path.relative_to(folder))
    return made


# Archives that we treat differently from unzip: what each makes of it, and why.
DIFFERENCES = json.loads((Path(__file__).parent / "zip_differences.json").read_text())


def unzip_result(archive, target):
    """What unzip makes of an archive: "" when all is well, else in a word what is wrong."""
    done = run("unzip", "-q", "-o", "-P", "", archive, "-d", target)
    return "expands" if done.returncode == 0 else "fails"


def compare_corpus(corpus, work):
    archives = sorted((corpus / "zip").iterdir()) + sorted((corpus / "zip-refused").iterdir())
    statements = []
    for number, archive in enumerate(archives):
        (work / f"ours {number}").mkdir()
        (work / f"theirs {number}").mkdir()
        statements.append(f'VlFile_GetZipInfo( "" ; {quoted(archive)} )')
        statements.append('VlFile_UnZip( "-DontCreateArchiveFolder -OverwriteExisting" ; '
                          f'{quoted(archive)} ; {quoted(work / f"ours {number}")} )')
    results = vell(statements)
    for number, archive in enumerate(archives):
        listed, expanded = results[2 * number:2 * number + 2]
        ours = expanded if expanded != "0" else "expands"
        theirs = unzip_result(archive, work / f"theirs {number}")
        mine, other = tree(work / f"ours {number}"), tree(work / f"theirs {number}")
        contents = [{name: data and data[0] for name, data in side.items()}
                    for side in (mine, other)]
        if (ours == "expands") == (theirs == "expands") and contents[0] == contents[1]:
            continue
        known = DIFFERENCES.get(archive.name, {"ours": "", "theirs": ""})
        check(f"{archive.name} (listed: {listed[:60]!r}, ours: {mine}, theirs: {other})",
              (known["ours"], known["theirs"]), (ours, theirs))


def main():
    if not all(shutil.which(program) for program in ("zip", "unzip", "7z", "bsdtar")):
        print("zip, unzip, 7z or bsdtar is missing: nothing to compare with")
        sys.exit(77)
    with tempfile.TemporaryDirectory() as name:
        work = Path(name)
        source = work / "source"
        make_tree(source)
        expected = tree(source)
        others = archives_of_others(source, work)
        statements = [f'VlFile_CreateZip( "{switches}" ; {quoted(source)} ; {quoted(work / to)} )'
                      for switches, to in (("-DontAddEnclosingFolder", "ours.zip"),
                                           ("-DontAddEnclosingFolder -ForceUTF8Filenames",
                                            "utf8.zip"))]
        for program, archive in others.items():
            target = work / f"{program} by us"
            target.mkdir()
            # zip does not mark its names, which are UTF-8.
            switches = "-DontCreateArchiveFolder -Encoding=UTF8"
            statements.append(f'VlFile_UnZip( "{switches}" ; {quoted(archive)} ; '
                              f'{quoted(target)} )')
        check("results", ["0"] * len(statements), vell(statements))
        for program in others:
            check(f"what {program} wrote", expected, tree(work / f"{program} by us"))
        for archive in ("ours.zip", "utf8.zip"):
            by_others = work / archive.replace(".zip", "")
            by_others.mkdir()
            read_by_others(work / archive, expected, by_others)
        corpus = os.environ.get("VELL_CORPUS")
        if corpus:
            compare_corpus(Path(corpus), work)
        else:
            print("VELL_CORPUS names no folder of real files: these are not compared")
    sys.exit(1 if failures else 0)


main()
