#!/usr/bin/env python3
"""Descriptions of PDF files against pdfinfo, and their texts against pdftotext, over VELL_CORPUS and
variants.

usage: pdf_test.py FOLDER-OF-VELLHOST

qpdf makes the variants: linearized, with object streams, to be read by humans, encrypted; updates are
appended here. What differs for a reason is listed in REASONS; texts do not differ. Exit codes: 0, 1
for a difference without a reason, 77 without the files or the programs.
"""
import collections
import fnmatch
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True  # the folder is that of the sources

import vellhost

STREAMS = "cross-reference streams are told of, not read"
ENCRYPTED = "the strings are encrypted; pdfinfo has the keys to read them"
# Variant, file, what was compared (patterns), reason.
REASONS = (
    ("*objects", "*", "pages", STREAMS),
    ("*objects", "*", "/*", STREAMS),
    ("original", "multicolumn.pdf", "*", STREAMS),
    ("original", "pdflatex-image.pdf", "*", STREAMS),
    ("encrypted*", "*", "/*", ENCRYPTED),
    ("original", "libreoffice-writer-password.pdf", "/*", ENCRYPTED),
    ("*", "mistitled_outlines_example.pdf", "pages", "the outline has a larger /Count"),
    ("original", "unreadablemetadata.pdf", "pages",
     "the table with the dictionary is all zeros; pdfinfo searches the whole file instead"),
    ("*", "unreadablemetadata.pdf", "readable", "pdfinfo refuses what qpdf made of it"),
    ("encrypted*", "cmyk-image.pdf", "encrypted",
     "what /Info leads to has no strings, so it is told; the line stands where nothing is"),
    ("*", "reportlab-overlay.pdf", "/NeedAppearances", "pdfinfo shows strings only"),
    ("*", "cmyk-image.pdf", "/*", "/Info leads to the page tree; pdfinfo shows strings only"),
    ("*", "*", "/Trapped", "a name, and pdfinfo shows strings only"),
    ("linearized and updated", "*", "linearized",
     "the file begins with the linearized version of before its update"),
    ("linearized and updated", "*", "/*",
     "the file begins with the linearized version of before its update"),
)
PASSWORDS = {"libreoffice-writer-password.pdf": "openpassword"}
# The same bytes in every run: what is encrypted may look like text by chance.
STATIC = ["--static-id", "--static-aes-iv"]
PLAIN = ["--object-streams=disable"]
VARIANTS = {
    "rewritten": PLAIN,
    "linearized": [*PLAIN, "--linearize"],
    "with objects": ["--object-streams=generate"],
    "linearized with objects": ["--object-streams=generate", "--linearize"],
    "readable": [*PLAIN, "--qdf"],
    "encrypted": [*PLAIN, "--encrypt", "", "owner", "256", "--extract=y", "--"],
    "encrypted against copying": [*PLAIN, "--encrypt", "", "owner", "256", "--extract=n", "--"],
    "encrypted weakly": [*PLAIN, "--allow-weak-crypto", "--encrypt", "", "owner", "40", "--"],
    "encrypted by RC4": [*PLAIN, "--allow-weak-crypto", "--encrypt", "", "owner", "128",
                         "--use-aes=n", "--extract=y", "--"],
    "encrypted by RC4 against copying": [*PLAIN, "--allow-weak-crypto", "--encrypt", "", "owner",
                                         "128", "--use-aes=n", "--extract=n", "--"],
    "encrypted with a password": [*PLAIN, "--encrypt", "secret", "owner", "256", "--"],
}


def run(*command):
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, check=False)


def update(source, target, title):
    """Appends updates: an information dictionary, its title, another title, and nothing."""
    data = source.read_bytes()
    size = max(map(int, re.findall(rb"/Size\s+(\d+)", data)))
    root = re.findall(rb"/Root\s+(\d+)", data)[-1]
    previous = re.findall(rb"startxref\s+(\d+)", data)[-1]
    if int(previous) == 0 or b"trailer" not in data:
        return False
    info = b""
    for number, body in ((size, b"<< /Title %d 0 R >>" % (size + 1)), (size + 1, b"(old)"),
                         (size + 1, b"(%s)" % title), (size + 2, b"null")):
        info = info or b"/Info %d 0 R" % number
        data += b"\n"
        start = len(data)
        data += b"%d 0 obj\n%s\nendobj\n" % (number, body)
        table = b"%d" % len(data)
        data += (b"xref\n%d 1\n%010d 00000 n \ntrailer\n<< /Size %d /Root %s 0 R %s /Prev %s >>\n"
                 b"startxref\n%s\n%%%%EOF\n" % (number, start, number + 1, root, info, previous,
                                                table))
        previous = table
    target.write_bytes(data)
    return True


def make_files(folder):
    """The files to look at, by variant and name."""
    files = {}
    for source in sorted(pathlib.Path(os.environ["VELL_CORPUS"], "pdf").iterdir()):
        files["original", source.name] = source
        for variant, options in VARIANTS.items():
            target = folder / variant / source.name
            target.parent.mkdir(exist_ok=True)
            # Repairs are worth a warning (3); 2 stands for nothing written.
            if run("qpdf", *STATIC, *options, source, target).returncode in (0, 3):
                files[variant, source.name] = target
        for variant in ("rewritten", "linearized"):
            target = folder / (variant + " and updated") / source.name
            target.parent.mkdir(exist_ok=True)
            made = files.get((variant, source.name))
            if made and update(made, target, b"Updated \\344"):
                files[target.parent.name, source.name] = target
    # All pages twice: fonts are shared, and more than are kept at hand.
    pages = [path for (variant, _), path in files.items() if variant == "rewritten"
             and run("qpdf", "--show-npages", path).stdout.strip() not in (b"", b"0")]
    target = folder / "merged.pdf"
    if run("qpdf", "--empty", "--pages", *pages, *pages, "--", target).returncode in (0, 3):
        files["merged", target.name] = target
    return files


def ask_pdfinfo(path):
    """Fields and information dictionary as pdfinfo tells them; None when it cannot."""
    options = ("-enc", "UTF-8", "-rawdates")
    if path.name in PASSWORDS:
        options += ("-upw", PASSWORDS[path.name])
    if path.parent.name == "encrypted with a password":
        options += ("-upw", "secret")
    outputs = [run("pdfinfo", *extra, *options, path) for extra in ((), ("-custom",))]
    if any(output.returncode for output in outputs):
        return None
    fields, entries = (dict(re.findall(r"^([^:\n]+):[ ]*(.*)$",
                                       output.stdout.decode("utf-8", "replace"), re.M))
                       for output in outputs)
    theirs = {"version": fields["PDF version"], "pages": fields["Pages"],
              "linearized": fields["Optimized"], "encrypted": fields["Encrypted"].split()[0]}
    for key, value in entries.items():
        if "Date" in key and "D:" in value:
            digits = re.match(r"\d*", value.split("D:")[1]).group()
            value = re.sub(r"(....)(..)(..)(..)(..)(..).*", r"\1:\2:\3 \4:\5:\6", digits)
        theirs["/" + key] = value.strip("\r\n \0")
    return theirs


def parse(text):
    """The same of a description of ours."""
    lines = [line.partition(": ") for line in text.split("\r")]
    names = {"PDF Version": "version", "Fast Web View": "linearized", "Encrypted": "encrypted",
             "Number of pages": "pages"}
    ours = {"encrypted": "no"}
    for key, _, value in lines:
        if key not in ("ParseError", "Version compatibility"):
            ours[names.get(key, "/" + key)] = value
    for key in ("linearized", "encrypted"):
        ours[key] = ours.get(key, "").lower()
    return ours


def reason_for(variant, name, what):
    for number, (variants, names, whats, _) in enumerate(REASONS):
        if all(map(fnmatch.fnmatchcase, (variant, name, what), (variants, names, whats))):
            return number
    return None


def compare(files, texts):
    counts, used, differences = collections.Counter(), set(), []
    for ((variant, name), path), text in zip(files.items(), texts):
        theirs, ours = ask_pdfinfo(path), parse(text)
        if theirs is None:
            theirs = {"readable": "no"} | ours
        for what in sorted(theirs.keys() | ours.keys()):
            kind = "information" if what.startswith("/") else what
            counts[kind, "compared"] += 1
            if ours.get(what) == theirs.get(what):
                counts[kind, "equal"] += 1
                continue
            reason = reason_for(variant, name, what)
            if reason is None:
                differences.append(f"{variant}: {name}: {what}: we have {ours.get(what)!r}, "
                                   f"pdfinfo has {theirs.get(what)!r}")
            else:
                counts[kind, "explained"] += 1
                used.add(reason)
    print(f"{'':<14}{'compared':>9}{'equal':>9}{'explained':>11}")
    for kind in dict.fromkeys(kind for kind, _ in counts):
        print(f"{kind:<14}" + "".join(f"{counts[kind, what]:>{width}}" for what, width in
                                      (("compared", 9), ("equal", 9), ("explained", 11))))
    differences += [f"REASON without a difference: {row}"
                    for number, row in enumerate(REASONS) if number not in used]
    return differences


def ask_pdftotext(path):
    """The text as we are to give it, or the code."""
    done = run("pdftotext", "-enc", "UTF-8", path, "-")
    if done.returncode == 0:
        return done.stdout.decode("utf-8").removesuffix("\f").replace("\n", "\r").replace(
            "\f", "\r<---------->\r")
    if done.returncode == 99:  # no pages
        return "$$2"
    return "$$4" if b"Incorrect password" in done.stderr else "$$3"


def compare_texts(files, texts):
    """Differences; an empty text of a corpus of documents would be one, too."""
    # Debian's pdftotext gives the text of files that forbid it, too.
    theirs = ["$$8" if variant.endswith("against copying") else ask_pdftotext(path)
              for (variant, _), path in files.items()]
    codes = collections.Counter(text for text in theirs if text.startswith("$$"))
    print(f"{len(theirs)} texts with {sum(map(len, theirs))} characters, of which " +
          ", ".join(f"{count} are {code}" for code, count in sorted(codes.items())))
    return [f"{variant}: {name}: text: we have {ours[:200]!r}, pdftotext has {text[:200]!r}"
            for (variant, name), ours, text in zip(files, texts, theirs) if ours != text]


def main(folder):
    if not os.path.isdir(os.environ.get("VELL_CORPUS", "")):
        print("skipped: the folder VELL_CORPUS is not there")
        return 77
    if not shutil.which("pdftotext") or not shutil.which("qpdf"):
        print("skipped: no poppler-utils or no qpdf")
        return 77
    with tempfile.TemporaryDirectory() as work:
        files = make_files(pathlib.Path(work))
        texts = vellhost.results(
            folder, [f'VlFile_GetMetaData( "-GetPDFDescription" ; {vellhost.path(path.resolve())} )'
                     for path in files.values()])
        differences = compare(files, texts)
        texts = vellhost.results(
            folder, [f'VlFile_GetAsPlainText( "" ; {vellhost.path(path.resolve())} )'
                     for path in files.values()])
        differences += compare_texts(files, texts)
    print("\n".join(differences))
    return 1 if differences else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
