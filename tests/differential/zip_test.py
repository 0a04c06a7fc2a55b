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

sys.dont_write_bytecode = True  # the folder is that of the sources

import vellhost

failures = 0


def check(what, expected, actual):
    global failures
    if expected != actual:
        failures += 1
        print(f"FAILED: {what}\n  expected {expected!r}\n  actual   {actual!r}")


def run(*command, cwd=None):
    return subprocess.run(command, cwd=cwd, stdin=subprocess.DEVNULL, capture_output=True,
                          env={**os.environ, "LC_ALL": "C.UTF-8"}, check=False)


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
                   "--options", "zip:compression=deflate", "."],  # names begin with "./"
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


# Archives that another program treats differently: what each makes of it, and why.
DIFFERENCES = json.loads((Path(__file__).parent / "zip_differences.json").read_text())
PEERS = {"unzip": lambda archive, target: run("unzip", "-q", "-o", "-P", "", archive, "-d", target),
         "7z": lambda archive, target: run("7z", "x", "-y", "-pnone", archive, f"-o{target}")}


def contents(folder):
    return {name: data and data[0] for name, data in tree(folder).items()}


def compare_corpus(corpus, work):
    archives = sorted((corpus / "zip").iterdir()) + sorted((corpus / "zip-refused").iterdir())
    targets = {archive: {side: work / f"{number} by {side}" for side in ("ours", *PEERS)}
               for number, archive in enumerate(archives)}
    statements = []
    for archive, folders in targets.items():
        for folder in folders.values():
            folder.mkdir()
        statements.append('VlFile_UnZip( "-DontCreateArchiveFolder -OverwriteExisting" ; '
                          f'{vellhost.path(archive)} ; {vellhost.path(folders["ours"])} )')
    agreed = explained = 0
    for archive, result in zip(archives, vellhost.results(sys.argv[1], statements)):
        folders = targets[archive]
        found = {"ours": "expands" if result == "0" else result}
        same = True
        for peer, expand in PEERS.items():
            done = expand(archive, folders[peer]).returncode == 0
            found[peer] = "expands" if done else "fails"
            same = (same and done == (result == "0") and
                    contents(folders["ours"]) == contents(folders[peer]))
        row = DIFFERENCES.get(archive.name)
        agreed += same and not row
        explained += row is not None
        if row or not same:
            check(f"{archive.name} ({[contents(folder) for folder in folders.values()]})",
                  {side: (row or {}).get(side) for side in found}, found)
    print(f"archives of the collection: {agreed} the same, {explained} explained")


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
        statements = [f'VlFile_CreateZip( "{switches}" ; {vellhost.path(source)} ; '
                      f'{vellhost.path(work / to)} )'
                      for switches, to in (("-DontAddEnclosingFolder", "ours.zip"),
                                           ("-DontAddEnclosingFolder -ForceUTF8Filenames",
                                            "utf8.zip"))]
        for program, archive in others.items():
            target = work / f"{program} by us"
            target.mkdir()
            # zip does not mark its names, which are UTF-8.
            switches = "-DontCreateArchiveFolder -Encoding=UTF8"
            statements.append(f'VlFile_UnZip( "{switches}" ; {vellhost.path(archive)} ; '
                              f'{vellhost.path(target)} )')
        check("results", ["0"] * len(statements), vellhost.results(sys.argv[1], statements))
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
