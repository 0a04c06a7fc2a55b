#!/usr/bin/env python3
"""VlFile_SetMetaData judged by exiftool and exiv2 over the PNG, WebP, TIFF and DNG files in
VELL_CORPUS, and by pngcheck, webpinfo and tiffinfo.

usage: written_formats_test.py FOLDER-OF-VELLHOST

Each kind of metadata is written into a copy of each file. Both peers must find what was written
and read all other metadata as before, the third must say of the copy what it says of the file, and
ImageMagick must decode both to the same pixels. Sidecars are written beside raw photographs and
read by both peers. Exit codes: 0, 1 for a difference, 77 without the files.
"""
import functools
import os
import pathlib
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True  # the folder is that of the sources

import vellhost
import written_metadata_test as jpeg

FOLDERS = ("png", "png2", "picture", "tiff", "tiff2", "raw")
FORMATS = {b"\x89PNG": "png", b"RIFF": "webp", b"II*\0": "tif", b"MM\0*": "tif"}
RAW = (".nef", ".cr2", ".arw", ".pef", ".rw2", ".orf")
CHECKERS = {"png": ["pngcheck", "-q"], "webp": ["webpinfo", "-quiet"], "tif": ["tiffinfo"]}
# What a format has no place for.
NOT_SUPPORTED = {("webp", "iptc"), ("webp", "url"), ("webp", "comment"), ("tif", "comment")}
COMMENT = {"PNG:Comment": jpeg.COMMENT}
# What describes the container: VP8X is made where it is missing, and IPTC comes with its resource.
CHANGING = {"webp": ("RIFF:", "File:FileType", "File:MIMEType"), "png": (), "tif": ()}
CHANGING_WITH = {"iptc": ("IPTC:", "Photoshop:"), "comment": ("PNG:Comment", "PNG:comment"),
                 "url": ("Photoshop:",)}


def format_of(path):
    with open(path, "rb") as file:
        start = file.read(12)
    name = FORMATS.get(start[:4])
    return None if name == "webp" and start[8:] != b"WEBP" else name


@functools.cache
def pixels(path):
    """The signatures of all pictures in the file; None for one that cannot be decoded."""
    done = subprocess.run(["convert", "-quiet", path, "-format", "%#\\n", "info:"],
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    return done.stdout if done.returncode == 0 else None


@functools.cache
def said(name, path):
    """What the checker of the format says of a file."""
    done = subprocess.run([*CHECKERS[name], path], capture_output=True, check=False)
    words = done.stderr + (done.stdout if name == "png" else b"")
    lines = words.decode("utf-8", "replace").replace(str(path), "").splitlines()
    # libtiff does not know the tags of titles and of GPS that others write.
    return done.returncode, [line for line in lines if "Unknown field with tag" not in line]


def write_all(folder, asked):
    """The answers to pairs of a file and a kind, each with the copy to be made."""
    statements = []
    for (path, kind), copy in asked.items():
        switches, text = jpeg.WRITES[kind][:2]
        statements.append(f"VlFile_SetMetaData( {vellhost.text(switches)} ; {vellhost.path(path)} ; "
                          f"{vellhost.path(copy)} ; {vellhost.text(text)} )")
    return dict(zip(asked, vellhost.results(folder, statements)))


def judge(checks, path, kind, copy, before, after):
    name = format_of(path)
    _, _, by_exiftool, by_exiv2, changing = jpeg.WRITES[kind]
    by_exiftool = COMMENT if kind == "comment" else by_exiftool
    changing = (*changing, *CHANGING[name], *CHANGING_WITH.get(kind, ()))
    for key, value in by_exiftool.items():
        checks.check(jpeg.same(value, after.get(key)), f"{kind} in exiftool", path, key,
                     after.get(key))
    for key in before.keys() | after.keys():
        if not (key in by_exiftool or key.startswith(changing) or jpeg.PLACES.match(key)):
            checks.check(before.get(key) == after.get(key), f"kept beside {kind}", path, key,
                         before.get(key), after.get(key))
    values = jpeg.exiv2(copy)
    checks.check(values is not None or jpeg.exiv2(path) is None, "accepted by exiv2", path, kind)
    for key, value in by_exiv2.items() if values is not None else ():
        checks.check(jpeg.numbers(values.get(key)) == jpeg.numbers(value), f"{kind} in exiv2", path,
                     key, values.get(key))
    checks.check(said(name, path) == said(name, copy), f"{CHECKERS[name][0]}", path, kind,
                 said(name, path), said(name, copy))


def judge_files(checks, folder, files, target):
    asked = {(path, kind): os.path.join(target, f"{number}-{kind}{path.suffix}")
             for number, path in enumerate(files) for kind in jpeg.WRITES}
    answers = write_all(folder, asked)
    decoded = {path: pixels(path) for path in files}
    before = jpeg.exiftool([str(path) for path in files])
    after = jpeg.exiftool([copy for copy in asked.values() if os.path.exists(copy)])
    for (path, kind), copy in asked.items():
        if (format_of(path), kind) in NOT_SUPPORTED:
            checks.check(answers[path, kind] == "$$-4243", "refused", path, answers[path, kind])
        elif decoded[path] or answers[path, kind] == "0":
            checks.check(answers[path, kind] == "0", f"{kind} written", path, answers[path, kind])
        if not os.path.exists(copy):
            continue
        if decoded[path]:  # ImageMagick refuses some files for their size alone
            checks.check(pixels(copy) == decoded[path], "same pixels", path, kind)
        judge(checks, path, kind, copy, before[str(path)], after[copy])


def judge_sidecars(checks, folder, photographs, target):
    asked = {(path, "xmp"): os.path.join(target, path.stem + ".xmp") for path in photographs}
    for (path, kind), answer in write_all(folder, asked).items():
        checks.check(answer == "0", "sidecar written", path, answer)
        sidecar = asked[path, kind]
        found = jpeg.exiftool([sidecar])[sidecar] if answer == "0" else {}
        for key, value in jpeg.WRITES["xmp"][2].items():
            checks.check(found.get(key) == value, "sidecar in exiftool", path, found.get(key))
        for key, value in jpeg.WRITES["xmp"][3].items():
            values = jpeg.exiv2(sidecar) or {}
            checks.check(values.get(key) == value, "sidecar in exiv2", path, values.get(key))


def main(folder):
    corpus = os.environ.get("VELL_CORPUS", "")
    if not os.path.isdir(corpus):
        print("skipped: the folder VELL_CORPUS is not there")
        return 77
    paths = [path for name in FOLDERS
             for path in sorted(pathlib.Path(os.path.abspath(corpus), name).glob("*"))]
    raw = [path for path in paths if path.suffix.lower() in RAW]
    files = [path for path in paths if path not in raw and format_of(path)]
    checks = jpeg.Judge()
    with tempfile.TemporaryDirectory() as target:
        judge_files(checks, folder, files, target)
        judge_sidecars(checks, folder, raw, target)
    print(f"{len(files)} files, {len(raw)} raw photographs")
    for what, count in sorted(checks.counts.items()):
        print(f"{what:<24}{count:>8}")
    for difference in checks.differences:
        print("DIFFERENCE " + difference)
    return 1 if checks.differences else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
