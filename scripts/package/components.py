"""What is inside the plug-in's file: the libraries and data that the build puts there, where each
one comes from, and its notices as its Debian package tells them.

A row for each origin, by the name of its Debian source or package. A source that no script builds
is passed over; one that a script builds and that has no row is a fault, and so is a library that
the plug-in is linked with and that belongs to no row.
"""
import re
import subprocess
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SCRIPTS = ROOT / "scripts"
DOCUMENTS = Path("/usr/share/doc")


class PackageError(Exception):
    """The package cannot be made."""


def output_of(*command):
    done = subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, check=False)
    if done.returncode:
        raise PackageError(f"{' '.join(map(str, command))} failed:\n{done.stderr.strip()}")
    return done.stdout.strip()


@dataclass
class Facts:
    """What a package says of itself."""
    version: str
    origin: str   # the package and its version, in words
    locator: str  # the same as a package URL
    notice: str   # its copyright file, complete


@dataclass(frozen=True)
class Origin:
    package: str


class BuiltSource(Origin):
    """A Debian source that a script of ours builds (fetch_sources)."""

    def facts(self, files=()):
        folder = Path(output_of(SCRIPTS / "source_package.sh", self.package))
        first = (folder / "debian/changelog").read_text(encoding="utf-8").split("\n", 1)[0]
        version = re.fullmatch(r"\S+ \((\S+)\) .*", first)[1]
        parts = [folder / "debian/copyright", *(folder / name for name in files)]
        return Facts(upstream(version), f"Debian source package {self.package} {version}",
                     f"pkg:deb/debian/{self.package}@{version.replace(':', '%3A')}?arch=source",
                     "\n\n".join(read_text(part) for part in parts))


class InstalledPackage(Origin):
    """A Debian package with libraries or data that are put into the plug-in as they are."""

    def facts(self, files=()):
        version, source, source_version = output_of(
            "dpkg-query", "-W", "-f", "${Version}\n${source:Package}\n${source:Version}",
            self.package).split("\n")
        return Facts(upstream(version), f"Debian package {self.package} {version}, "
                     f"source package {source} {source_version}",
                     f"pkg:deb/debian/{source}@{source_version.replace(':', '%3A')}?arch=source",
                     read_text(DOCUMENTS / self.package / "copyright"))


class Deflate64Source(Origin):
    """The few files of zlib that scripts/deflate64_source.sh takes out of another package's source:
    their notice is the comment that its header begins with."""

    def facts(self, files=()):
        folder = Path(output_of(SCRIPTS / "deflate64_source.sh"))
        header = read_text(folder / "../../zlib.h")
        comments = [first_comment(header), first_comment(read_text(folder / "infback9.c"))]
        version = re.search(r'define ZLIB_VERSION "([\d.]+)', header)[1]
        return Facts(version, f"zlib {version}, contrib/infback9, in the Debian source package "
                     f"{self.package}", f"pkg:generic/zlib@{version}", "\n\n".join(comments))


@dataclass(frozen=True)
class Component:
    name: str
    origin: Origin
    licence: str   # an SPDX expression
    purpose: str
    libraries: tuple = ()  # the files that the plug-in is linked with
    files: tuple = ()      # of the source, beside Debian's copyright file
    changed: str = ""      # what we change in it
    is_data: bool = False


COMPONENTS = (
    Component("Poppler", BuiltSource("poppler"), "GPL-2.0-only OR GPL-3.0-only",
              "text and pages of PDF files", ("libpoppler.a",),
              changed="The changes are scripts/poppler.patch in the source of Vell File, which "
                      "describes them."),
    Component("FreeType", BuiltSource("freetype"), "FTL OR GPL-2.0-or-later",
              "letters on pages of PDF files", ("libfreetype.a",), files=("LICENSE.TXT",)),
    Component("libjpeg-turbo", BuiltSource("libjpeg-turbo"), "IJG AND BSD-3-Clause AND Zlib",
              "JPEG pictures", ("libjpeg.a",),
              changed="Its memory manager is another one, scripts/picture_libraries/jpeg_memory.c "
                      "in the source of Vell File."),
    Component("libpng", BuiltSource("libpng1.6"), "libpng-2.0", "PNG pictures", ("libpng.a",)),
    Component("Little CMS", BuiltSource("lcms2"), "MIT", "colour profiles", ("liblcms2.a",)),
    Component("Expat", BuiltSource("expat"), "MIT", "XML", ("libexpat.a",)),
    Component("JSON for Modern C++", InstalledPackage("nlohmann-json3-dev"), "MIT",
              "the policy's JSON, as headers"),
    Component("zlib", InstalledPackage("libz-mingw-w64-dev"), "Zlib", "compressed data",
              ("libz.a",)),
    Component("libdeflate", BuiltSource("libdeflate"), "MIT", "archives", ("libvell_deflate.a",),
              files=("COPYING",),
              changed="The changes are scripts/deflate.patch in the source of Vell File, which "
                      "describes them."),
    Component("zlib Deflate64 decoder", Deflate64Source("binutils"), "Zlib",
              "archives compressed by Deflate64", ("libdeflate64.a",)),
    Component("poppler-data", InstalledPackage("poppler-data"),
              "BSD-3-Clause AND GPL-2.0-only",
              "encodings of East Asian and other texts in PDF files",
              changed="The mapping Identity-UTF16-H, which has a notice of its own, is left out.",
              is_data=True),
    Component("mingw-w64 runtime and winpthreads", InstalledPackage("mingw-w64-x86-64-dev"),
              "ZPL-2.1 AND MIT AND BSD-3-Clause", "the C runtime's start, threads"),
    Component("GCC runtime libraries (libstdc++, libgcc)",
              InstalledPackage("gcc-mingw-w64-x86-64-posix-runtime"),
              "GPL-3.0-or-later WITH GCC-exception-3.1", "the C++ runtime"),
)


def upstream(version):
    """The library's own version, of Debian's."""
    return re.sub(r"^\d+:|[+-].*$", "", version)


def read_text(path):
    return Path(path).read_text(encoding="utf-8").rstrip("\n")


def first_comment(text):
    return text[text.index("/*"):text.index("*/") + 2]


def built_sources():
    """The Debian sources that scripts build."""
    names = set()
    for script in sorted(SCRIPTS.glob("*.sh")):
        for line in re.findall(r"\$\(fetch_sources ([^)]*)\)", script.read_text(encoding="utf-8")):
            names |= set(line.split())
    return names


def components():
    built = built_sources()
    known = {row.origin.package for row in COMPONENTS if isinstance(row.origin, BuiltSource)}
    if unknown := built - known:
        raise PackageError(f"{__file__} has no row for what is built: {', '.join(sorted(unknown))}")
    return [row for row in COMPONENTS
            if not isinstance(row.origin, BuiltSource) or row.origin.package in built]


def linked_libraries(ninja):
    """The static libraries of others that the plug-in is linked with, by the build's own rule."""
    rule = re.search(r"^build bin/VellFile\.fmx64[^:\n]*: (.*)$", read_text(ninja), re.M)
    if not rule:
        raise PackageError(f"{ninja} does not tell how the plug-in is linked")
    names = {Path(word).name for word in rule[1].split() if word.endswith(".a")}
    return {name for name in names if not name.startswith(("libvell_", "libFMWrapper"))}


def check_libraries(rows, ninja):
    covered = {library for row in rows for library in row.libraries}
    linked = linked_libraries(ninja)
    if linked != covered:
        raise PackageError("The libraries that the plug-in is linked with are not those of "
                           f"{__file__}: {', '.join(sorted(linked ^ covered))}")
