#!/usr/bin/env python3
"""Everything that is told as JSON, over all files in the folder VELL_CORPUS, hostile ones included.

usage: json_test.py FOLDER-OF-VELLHOST

Each answer is JSON for Python and for jq, which read the same, and has no name twice; a failure is a
code. What VlFile_GetZipInfo and VlFile_ListFolder tell is compared with Python's own look at the files.
Exit codes: 0, 1 for a difference, 77 without the files.
"""
import os
import pathlib
import re
import sys
import zipfile

sys.dont_write_bytecode = True  # the folder is that of the sources

import vellhost
from metadata_values_test import jq_agrees, parsed

QUESTIONS = {
    "metadata": ('VlFile_GetMetaData( "-GetAll -Format=JSON" ; {} )', None),
    "movie": ('VlFile_GetMetaData( "-GetMovieDescription -GetMovieMetadata -Format=JSON" ; {} )',
              ("movie", "movie2")),
    "pdf": ('VlFile_GetMetaData( "-GetPDFDescription -Format=JSON" ; {} )', ("pdf", "found")),
    "archive": ('VlFile_GetZipInfo( "-Format=JSON" ; {} )', ("zip", "zip-refused", "found")),
}
LARGEST_ANSWER = 1 << 26  # characters, of all answers that jq reads at once


def is_json_or_code(kind, path, answer, faults):
    if re.fullmatch(r"\$\$-?\d+", answer):
        return False
    try:
        parsed(answer)
        return True
    except ValueError as error:
        faults.append(f"{kind} of {path}: {error}")
        return False


def check_by_jq(kind, answers, faults):
    part, size = [], 0
    for answer in [*answers, None]:
        if part and (answer is None or size + len(answer) > LARGEST_ANSWER):
            if not jq_agrees(part):
                faults.append(f"{kind}: jq reads something else")
            part, size = [], 0
        if answer is not None:
            part.append(answer)
            size += len(answer)


def ask(folder, kind, paths, faults):
    calculation = QUESTIONS[kind][0]
    answers = dict(zip(paths, vellhost.results(
        folder, [calculation.format(vellhost.path(path)) for path in paths])))
    given = {path: answer for path, answer in answers.items()
             if is_json_or_code(kind, path, answer, faults)}
    check_by_jq(kind, given.values(), faults)
    print(f"{kind:<9} {len(paths):>6} files, {len(given):>6} in JSON")
    return given


def check_archives(given, faults):
    """Names and sizes of the archives that Python reads without a complaint."""
    for path, answer in given.items():
        try:
            with zipfile.ZipFile(path) as archive:
                theirs = [(entry.file_size, entry.compress_size, f"{entry.CRC:08X}")
                          for entry in archive.infolist()]
        except (zipfile.BadZipFile, NotImplementedError, ValueError, OSError):
            continue
        ours = [(entry.get("Size"), entry.get("CompressedSize"), entry["CRC32"])
                for entry in parsed(answer)]
        if len(ours) == len(theirs) and any(
                told is not None and told != true
                for own, other in zip(ours, theirs) for told, true in zip(own, other)):
            faults.append(f"archive {path}: sizes or checksums differ")


def check_listing(folder, corpus, faults):
    (answer,) = vellhost.results(folder, [
        f'VlFile_ListFolder( "-files -recursive showinvisibles showpointdirs showaliases -Format=JSON" ; '
        f'{vellhost.path(corpus)} )'])
    ours = sorted((entry["Name"], entry["Size"]) for entry in parsed(answer))
    theirs = sorted((path.name, path.stat().st_size) for path in corpus.rglob("*") if path.is_file())
    if ours != theirs:
        faults.append(f"the listing has {len(ours)} files, there are {len(theirs)}")
    print(f"listing   {len(ours):>6} files")


def main(folder):
    corpus = pathlib.Path(os.environ.get("VELL_CORPUS", "") or "/nowhere").absolute()
    if not corpus.is_dir():
        print("skipped: the folder VELL_CORPUS is not there")
        return 77
    paths = sorted(path for path in corpus.rglob("*") if path.is_file())
    faults = []
    for kind, (_, folders) in QUESTIONS.items():
        chosen = [path for path in paths
                  if folders is None or path.relative_to(corpus).parts[0] in folders]
        given = ask(folder, kind, chosen, faults)
        if kind == "archive":
            check_archives(given, faults)
    check_listing(folder, corpus / "jpeg", faults)
    for fault in faults:
        print("FAULT " + fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
