#!/usr/bin/python3
"""Makes the package of a release from what is built.

  build.py [OPTION…] FOLDER     writes FOLDER/VellFile-VERSION-windows-x64.zip

  --release FOLDER     where the preset release is built (build/release)
  --reference FOLDER   the site of the reference, which becomes reference/
  --selftest FOLDER    the self-test, which becomes selftest/
  --epoch SECONDS      the time of everything (SOURCE_DATE_EPOCH, or that of the last commit)

The environment tells whether the plug-in is signed; see signing.py.
"""
import argparse
import hashlib
import os
import re
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # the folders are those of the sources

import archive
import pages
import signing
from components import ROOT, PackageError, check_libraries, components, output_of, read_text
from notices import notices
from sbom import sbom

PLUGIN = "VellFile.fmx64"
SYMBOLS = f"{PLUGIN}.debug"


def release_version():
    """14.0.508 of 14.0.0.508: the number between them is none of ours."""
    found = re.search(r"^project\(VellFile VERSION (\d+)\.(\d+)\.\d+\.(\d+) ",
                      read_text(ROOT / "CMakeLists.txt"), re.M)
    if not found:
        raise PackageError("CMakeLists.txt does not tell the version")
    return ".".join(found.groups())


def release_time():
    given = os.environ.get("SOURCE_DATE_EPOCH")
    return int(given or output_of("git", "-C", ROOT, "log", "-1", "--format=%ct"))


def for_windows(text):
    return text.replace("\n", "\r\n").encode("utf-8")


def built(path):
    if not path.is_file():
        raise PackageError(f"{path} is missing; ./package builds it")
    return path.read_bytes()


def folder_files(folder, name):
    """The files of a folder, which has some, by their names in the package."""
    files = {f"{name}/{path.relative_to(folder).as_posix()}": path.read_bytes()
             for path in folder.rglob("*") if path.is_file()}
    if not files:
        raise PackageError(f"{folder} is empty")
    return files


def sums(files):
    return "".join(f"{hashlib.sha256(content).hexdigest()}  {name}\n"
                   for name, content in sorted(files.items())).encode("utf-8")


def contents(version, options):
    """Everything of the package, by its name in it."""
    rows = components()
    check_libraries(rows, options.release / "build.ninja")
    facts = {row.name: row.origin.facts(row.files) for row in rows}
    plugin = built(options.release / "bin" / PLUGIN)
    if signing.wanted(os.environ):
        plugin = signing.signed(plugin, os.environ)
    install = read_text(ROOT / "docs/install.md").replace("](policy.md)", "](POLICY.html)")
    policy = read_text(ROOT / "docs/policy.md")
    files = {
        PLUGIN: plugin,
        f"symbols/{SYMBOLS}": built(options.release / "bin" / SYMBOLS),
        "INSTALL.html": pages.as_html(install).encode("utf-8"),
        "INSTALL.txt": for_windows(pages.as_text(install)),
        "POLICY.html": pages.as_html(policy).encode("utf-8"),
        "policy.schema.json": (ROOT / "docs/policy.schema.json").read_bytes(),
        "LICENCE": for_windows(read_text(ROOT / "LICENSE") + "\n"),
        "NOTICES.txt": for_windows(notices(version, rows, facts)),
        "sbom.spdx.json": sbom(version, plugin, options.epoch, rows, facts).encode("utf-8"),
    }
    if options.reference:
        files |= folder_files(options.reference, "reference")
    if options.selftest:
        files |= folder_files(options.selftest, "selftest")
    files["SHA256SUMS"] = sums(files)
    return files


def arguments():
    parser = argparse.ArgumentParser()
    parser.add_argument("target", type=Path)
    parser.add_argument("--release", type=Path, default=ROOT / "build/release")
    parser.add_argument("--reference", type=Path)
    parser.add_argument("--selftest", type=Path)
    parser.add_argument("--epoch", type=int)
    options = parser.parse_args()
    if options.epoch is None:
        options.epoch = release_time()
    return options


def main():
    try:
        options = arguments()
        version = release_version()
        files = contents(version, options)
        options.target.mkdir(parents=True, exist_ok=True)
        path = options.target / f"VellFile-{version}-windows-x64.zip"
        archive.write_zip(path, files, options.epoch)
    except PackageError as fault:
        sys.exit(str(fault))
    print(path)


if __name__ == "__main__":
    main()
