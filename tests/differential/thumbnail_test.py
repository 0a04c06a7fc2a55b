#!/usr/bin/python3
"""VlFile_CreateThumbnail against vipsthumbnail and ImageMagick, over the pictures in the folder
VELL_CORPUS.

usage: thumbnail_test.py FOLDER-OF-VELLHOST [--sheet FILE.png] [PATTERN]

Each thumbnail, laid on white, is compared with the nearer of the two peers' of the same size: at
least 32 dB of PSNR, or a reason in thumbnail_reasons.py. With a sheet, the thumbnails are drawn side
by side. Exit codes: 0, 1 for a difference without a reason, 77 without the files.
"""
import concurrent.futures
import fnmatch
import math
import os
import pathlib
import subprocess
import sys
import tempfile

import numpy
from PIL import Image

sys.dont_write_bytecode = True  # the folder is that of the sources

import thumbnail_reasons
import vellhost

FOLDERS = ("picture", "jpeg", "jpeg2")
SIZE = 256
LEAST_PSNR = 32.0
PATIENCE = 60  # seconds for a peer


def on_white(file):
    """A picture's pixels as the user sees them."""
    with Image.open(file) as picture:
        rgba = picture.convert("RGBA")
    paper = Image.new("RGBA", rgba.size, "white")
    return numpy.asarray(Image.alpha_composite(paper, rgba).convert("RGB"), dtype=numpy.float64)


def psnr(ours, theirs):
    """Decibels; 0 for pictures of different sizes."""
    if ours.shape != theirs.shape:
        return 0.0
    error = numpy.mean((ours - theirs) ** 2)
    return 99.0 if error == 0 else 10 * math.log10(255 ** 2 / error)


def by_vips(source, size, target):
    return ["vipsthumbnail", str(source), "--size", f"{size[0]}x{size[1]}!", "--eprofile", "srgb",
            "-o", str(target)]


def by_magick(source, size, target):
    return ["convert", f"{source}[0]", "-auto-orient", "-colorspace", "sRGB", "-scale",
            f"{size[0]}x{size[1]}!", "-depth", "8", str(target)]


def best_peer(source, ours, folder):
    """The nearest peer's name and its PSNR; none for a file that no peer reads."""
    best = (None, 0.0)
    for name, command in (("vips", by_vips), ("magick", by_magick)):
        target = folder / f"{name}-{source.parent.name}-{source.name}.png"
        height, width = ours.shape[:2]
        try:
            subprocess.run(command(source, (width, height), target), capture_output=True,
                           stdin=subprocess.DEVNULL, timeout=PATIENCE, check=True)
            value = psnr(ours, on_white(target))
        except (subprocess.SubprocessError, OSError, ValueError):
            continue
        best = max(best, (name, value), key=lambda found: (found[0] is not None, found[1]))
        if value >= LEAST_PSNR:
            break
    return best


def draw_sheet(files, target):
    """The thumbnails of PNG files side by side."""
    side, across = 64, 24
    rows = (len(files) + across - 1) // across
    sheet = Image.new("RGB", (across * (side + 4), rows * (side + 4)), "#808080")
    for place, file in enumerate(files):
        with Image.open(file) as picture:
            small = picture.convert("RGBA")
        small.thumbnail((side, side))
        corner = ((place % across) * (side + 4) + 2, place // across * (side + 4) + 2)
        sheet.paste(small, corner, small)
    sheet.save(target, optimize=True)


def main():
    arguments = sys.argv[1:]
    sheet = None
    if "--sheet" in arguments:
        at = arguments.index("--sheet")
        sheet = arguments[at + 1]
        del arguments[at:at + 2]
    corpus = os.environ.get("VELL_CORPUS")
    if not corpus or not pathlib.Path(corpus, FOLDERS[0]).is_dir():
        print("VELL_CORPUS names no folder with pictures: nothing is compared")
        return 77
    pattern = arguments[1] if len(arguments) > 1 else "*"
    sources = [file for folder in FOLDERS for file in sorted(pathlib.Path(corpus, folder).iterdir())
               if file.suffix.lower() in thumbnail_reasons.SUFFIXES
               and fnmatch.fnmatch(file.name, pattern)]
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        targets = [folder / f"ours-{source.parent.name}-{source.name}.png" for source in sources]
        answers = vellhost.results(arguments[0], [
            f'VlFile_ExportToFile( "" ; VlFile_CreateThumbnail( "-AsPNG -MaxSize={SIZE}" ; '
            f'{vellhost.path(source)} ) ; {vellhost.path(target)} )'
            for source, target in zip(sources, targets)])
        for source, target in zip(sources, targets): # a failure is a text, which is exported too
            if target.is_file() and not target.read_bytes().startswith(b"\x89PNG"):
                answers[sources.index(source)] = target.read_bytes().decode("utf-8", "replace")
                target.unlink()
        made = [(source, target) for source, target in zip(sources, targets) if target.is_file()]
        with concurrent.futures.ThreadPoolExecutor() as pool:
            found = dict(zip((source for source, _ in made), pool.map(
                lambda pair: best_peer(pair[0], on_white(pair[1]), folder), made)))
        failures = thumbnail_reasons.judge(sources, found, dict(zip(sources, answers)), LEAST_PSNR)
        if sheet:
            draw_sheet([target for _, target in made], sheet)
    values = sorted(value for peer, value in found.values() if peer)
    print(f"{len(sources)} files, {len(made)} thumbnails, {len(values)} compared; PSNR: "
          f"lowest {values[0]:.1f}, median {values[len(values) // 2]:.1f} dB; "
          f"{len(failures)} without a reason")
    for failure in failures:
        print(failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
