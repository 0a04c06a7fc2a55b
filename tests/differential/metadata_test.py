#!/usr/bin/env python3
"""VlFile_GetMetaData against exiftool and exiv2, over the files in the folder VELL_CORPUS.

usage: metadata_test.py FOLDER-OF-VELLHOST

Each value that the plug-in prints is compared with that of each peer that has it, and each one that
a peer has and the plug-in should print is looked for. What differs for a reason is listed in
reasons.py. Exit codes: 0, 1 for a difference without a reason, 77 without the files.
"""
import collections
import os
import pathlib
import re
import sys
import xml.etree.ElementTree

sys.dont_write_bytecode = True  # the folder is that of the sources

import peers
import reasons
import rules
import vellhost

FOLDERS = ("jpeg", "jpeg2", "tiff", "tiff2", "png", "png2", "raw", "raw2", "psd")
# Of folders with files of other kinds: what is wanted.
KINDS = {"movie": (".heic", ".heif", ".avif"), "movie2": (".heic", ".heif", ".avif"),
         "picture": (".webp", ".psd", ".gif"), "other": (".webp",)}
# Bytes of files come out as the characters U+0000 to U+00FF.
BYTES = " -Encoding=ISO_8859_1"
QUESTIONS = {
    "tags": "GetExif GetGPS" + BYTES,
    "raw tags": "-GetRawExif GetGPS" + BYTES,
    "decimal": "GetGPS -Format=Decimal" + BYTES,
    "iptc": "GetIPTC -DontUseAutoUTF8Detection" + BYTES,
    "iptc in UTF-8": "GetIPTC -SourceUTF8Charset",
    "all iptc": "GetIPTC -ParseAllApplicationRecords" + BYTES,
    "xmp": "GetXMP -SourceUTF8Charset",
    "comment": "GetJPEGComment" + BYTES,
    "url": "GetImageURL" + BYTES,
    "chunks": "-GetTextChunkFromPNG" + BYTES,
    "image": "-GetImageDescription",
    "profile": "-GetIccProfileDescription" + BYTES,
    "verbose profile": "-GetIccProfileDescription -VerboseLevel=2" + BYTES,
    "profile as XML": "-GetIccProfileDescription -VerboseLevel=2 -Format=XML -SourceUTF8Charset",
    "profile name": "-GetIccProfileName" + BYTES,
    "profile names": "-GetLocalizedIccProfileName" + BYTES,
}
PROFILE_QUESTIONS = [question for question in QUESTIONS if "profile" in question]
# What the plug-in may answer instead: not a JPEG, a short file, nothing found, no such image.
CODES = {"$$-71", "$$-302", "$$-2026", "$$-4243"}
SECTION = re.compile(r"\r##(EXIF|GPS|IPTC) (\d+)\r(.*?)\r##END \2(?=\r##|$)", re.DOTALL)


def ask_plugin(folder, paths):
    """The answers by path and question, from one process."""
    asked = [(path, question) for path in paths for question in QUESTIONS]
    return dict(zip(asked, vellhost.results(
        folder, [f'VlFile_GetMetaData( "{QUESTIONS[question]}" ; {vellhost.path(path)} )'
                 for path, question in asked])))


class Comparison:
    """Counts what was compared and keeps the differences."""

    def __init__(self, rows=reasons.ROWS):
        self.rows = rows
        self.counts = collections.Counter()
        self.differences = []
        self.used_reasons = set()

    def check(self, equal, path, kind, peer, tag, ours, theirs):
        """`tag` is "SECTION number", or the name of what is compared instead of a tag."""
        self.counts[kind, peer, "compared"] += 1
        if equal:
            self.counts[kind, peer, "equal"] += 1
            return
        reason = reasons.find(self.rows, os.path.basename(path), peer, tag)
        if reason is not None:
            self.counts[kind, peer, "explained"] += 1
            self.used_reasons.add(reason)
            return
        self.differences.append(f"{path}: {kind}: {tag}: we have {ours!r:.200}, {peer} has "
                                f"{theirs!r:.200}")

    def print_summary(self):
        print(f"{'':<18}{'peer':<12}{'compared':>9}{'equal':>9}{'explained':>11}")
        for kind, peer in dict.fromkeys(key[:2] for key in self.counts):
            compared, equal, explained = (self.counts[kind, peer, what]
                                          for what in ("compared", "equal", "explained"))
            print(f"{kind:<18}{peer:<12}{compared:>9}{equal:>9}{explained:>11}")

    def report(self):
        """Prints all of it; the exit code."""
        self.print_summary()
        for difference in self.differences:
            print("DIFFERENCE " + difference)
        unused = reasons.unused(self.rows, self.used_reasons)
        for reason in unused:
            print("REASON without a difference: %s" % (reason,))
        return 1 if self.differences or unused else 0


def sections_of(text):
    found = collections.defaultdict(list)
    for section, number, value in SECTION.findall(text):
        found[section, int(number)].append(value)
    return found


def by_tag(tags, sections):
    found = collections.defaultdict(list)
    for tag in tags:
        if tag.section in sections and rules.is_printed(tag):
            found[tag.section, tag.number].append(tag)
    return found


def compare_tags(comparison, path, kind, ours, theirs_of, equals):
    """`theirs_of` maps peers to their tags; `equals` tells for each whether a value is the same."""
    for peer, theirs in theirs_of.items():
        for key, tags in theirs.items():
            name = "%s %d" % key
            values = ours.get(key, [])
            for i, tag in enumerate(tags):
                value = values[i] if i < len(values) else None
                comparison.check(value is not None and equals[peer](tag, value), path, kind, peer,
                                 name, value, tag.value)


def compare_known(comparison, path, kind, ours, theirs_of):
    """Whatever we print has at least one of the peers."""
    for key, values in ours.items():
        known = max(len(theirs.get(key, [])) for theirs in theirs_of.values())
        for i, value in enumerate(values):
            comparison.check(i < known, path, kind, "either", "%s %d" % key, value, None)


def compare_exif(comparison, path, answers, exiftool, exiv2):
    from_file = pathlib.Path(path).read_bytes()[:2] in (b"II", b"MM")
    little_endian = exiftool.value(path, "File:ExifByteOrder") == "II"
    theirs = {"exiftool": by_tag(exiftool.tags(path), ("EXIF", "GPS")),
              "exiv2": by_tag(exiv2.tags(path), ("EXIF", "GPS"))}

    def equals_exiv2(raw):
        def equals(tag, ours):
            expected = rules.rendered(tag, raw, from_file, little_endian)
            if expected is None:
                return rules.equals_comment(ours, tag.value)
            return ours == expected
        return equals

    ours, raw = sections_of(answers["tags"]), sections_of(answers["raw tags"])
    compare_tags(comparison, path, "tags", ours, theirs,
                 {"exiftool": rules.equals_exiftool, "exiv2": equals_exiv2(False)})
    compare_tags(comparison, path, "raw tags", raw, {"exiv2": theirs["exiv2"]},
                 {"exiv2": equals_exiv2(True)})
    compare_known(comparison, path, "tags", ours, theirs)
    compare_known(comparison, path, "raw tags", raw, theirs)
    for number, name in ((2, "GPSLatitude"), (4, "GPSLongitude")):
        degrees = exiftool.value(path, "Composite:" + name)
        if degrees not in (None, ""):
            ours = (sections_of(answers["decimal"]).get(("GPS", number)) or ["nothing"])[0]
            equal = re.fullmatch(r"-?\d+\.\d{8}", ours) and abs(float(ours) - degrees) < 2e-8
            comparison.check(equal, path, "decimal degrees", "exiftool", name, ours, degrees)


def compare_iptc(comparison, path, answers, exiftool, exiv2):
    is_utf8 = exiftool.value(path, "IPTC:CodedCharacterSet") == "\x1b%G"

    def equals(tag, ours):
        if tag.number == 0:
            return rules.equals_exiftool(tag, ours)
        return rules.bare(ours) == rules.bare(str(tag.value))

    def equals_exiftool(tag, ours):  # which decodes what says that it is UTF-8
        return equals(tag, ours.encode("latin-1").decode("utf-8", "replace") if is_utf8 else ours)

    def equals_exiv2(tag, ours):  # which adds a zone to a time without one
        return equals(tag, ours + "+0000" if tag.type == "Time" and len(ours) == 6 else ours)

    ours = sections_of(answers["iptc"])
    theirs = {"exiftool": by_tag(exiftool.tags(path), ("IPTC",)),
              "exiv2": by_tag(exiv2.tags(path), ("IPTC",))}
    compare_tags(comparison, path, "iptc", ours, theirs, {"exiftool": equals_exiftool, "exiv2": equals_exiv2})
    compare_known(comparison, path, "iptc", ours, theirs)


def compare_texts(comparison, path, answers, exiftool, exiv2):
    packet = answers["xmp"].replace('begin="0xEFBBBF"', 'begin="\ufeff"')
    packet = re.sub(r"^http://ns\.adobe\.com/[^\r]*\r", "", packet).rstrip("\0")
    for peer, theirs in (("exiftool", exiftool.xmp(path)), ("exiv2", exiv2.xmp(path))):
        theirs = theirs.decode("utf-8", "replace").rstrip("\0")
        if theirs.strip():
            equal = "".join(packet.split()) == "".join(theirs.split())
            comparison.check(equal, path, "xmp", peer, "XMP", packet, theirs)
    comment = "".join(re.findall(r"\r##JCOM\r(.*?)\r##END ", answers["comment"], re.DOTALL))
    theirs = exiv2.comment(path).decode("latin-1")
    if comment or theirs.strip():
        comparison.check(rules.bare(comment.split("\0")[0]) == rules.bare(theirs.split("\0")[0]),
                         path, "comment", "exiv2", "comment", comment, theirs)


def compare_answers(comparison, path, answers, exiftool):
    """Every question has an answer, whatever the file."""
    for question, answer in answers.items():
        comparison.check(not answer.startswith("$$") or answer in CODES, path, "answers", "codes",
                         f"{question}: {answer}", answer, CODES)
    comment = exiftool.value(path, "PNG:Comment")
    if comment is not None:
        comparison.check(f"omment: {comment}\r" in answers["chunks"], path, "text chunks",
                         "exiftool", "Comment", answers["chunks"], comment)


def compare_image(comparison, path, answers, exiftool):
    fields = dict(line.split(": ", 1) for line in answers["image"].split("\r") if ": " in line)

    def check(name, ours, theirs):
        if theirs is not None:
            equal = ours is not None and rules.close(float(ours), float(theirs))
            comparison.check(equal, path, "image description", "exiftool", name, ours, theirs)

    directory = exiftool.image_group(path)
    groups = ("PNG" if path.endswith("png") else "File", directory)
    check("Width", fields.get("Width"), exiftool.value(path, *(g + ":ImageWidth" for g in groups)))
    check("Height", fields.get("Height"),
          exiftool.value(path, *(g + ":ImageHeight" for g in groups)))
    bits = exiftool.value(path, "File:BitsPerSample", directory + ":BitsPerSample", "PNG:BitDepth")
    samples = exiftool.value(path, "File:ColorComponents", directory + ":SamplesPerPixel")
    if bits is not None and samples is not None:
        check("Depth", fields.get("Depth"), float(str(bits).split()[0]) * samples)
    for name, key in (("Horizontal Res", "XResolution"), ("Vertical Res", "YResolution")):
        group = "JFIF" if exiftool.value(path, "JFIF:ResolutionUnit") else "IFD0"
        unit = exiftool.value(path, group + ":ResolutionUnit")
        value = exiftool.value(path, f"{group}:{key}")
        inch, centimetre = (1, 2) if group == "JFIF" else (2, 3)
        if value and unit in (inch, centimetre):
            check(name, fields.get(name), f"{value * (1 if unit == inch else 2.54):.6g}")


def compare_profile(comparison, path, answers, exiftool):
    name = exiftool.value(path, "ICC_Profile:ProfileDescription")
    if name is None:
        comparison.check(all(answers[question].startswith("$$") for question in PROFILE_QUESTIONS),
                         path, "no profile", "exiftool", "profile", answers["profile"], None)
        return
    fields = dict(re.findall(r"(?:^|\r)([A-Z][A-Za-z ]+): ([^\r]*)", answers["profile"]))

    def check(what, ours, theirs):
        comparison.check(ours == theirs, path, "profile", "exiftool", what, ours, theirs)

    def signature(text):
        return str(text).rstrip() or "(none)"

    check("name", answers["profile name"], name)
    check("first of the names", answers["profile names"].split("\r")[0].split(": ")[-1], name)
    for ours, theirs in (("CMM", "ProfileCMMType"), ("Class", "ProfileClass"),
                         ("Colour space", "ColorSpaceData"), ("Manufacturer", "DeviceManufacturer"),
                         ("Connection space", "ProfileConnectionSpace"), ("Model", "DeviceModel"),
                         ("Signature", "ProfileFileSignature"), ("Platform", "PrimaryPlatform"),
                         ("Creator", "ProfileCreator")):
        check(ours, fields.get(ours, "").split(" (")[0] or fields.get(ours),
              signature(exiftool.value(path, "ICC-header:" + theirs)))
    version = exiftool.value(path, "ICC-header:ProfileVersion")
    check("Version", fields.get("Version"), f"{version >> 8}.{version >> 4 & 15}.{version & 15}")
    date = exiftool.value(path, "ICC-header:ProfileDateTime").replace(":", "-", 2)
    check("Date", fields.get("Date"), date)
    check("Intent", fields.get("Intent", "").split(" ")[0],
          str(exiftool.value(path, "ICC-header:RenderingIntent")))
    illuminant = str(exiftool.value(path, "ICC-header:ConnectionSpaceIlluminant"))
    ours = list(map(float, fields.get("Illuminant", "nan").split()))
    comparison.check(all(abs(a - b) < 1e-5 for a, b in zip(ours, map(float, illuminant.split()))),
                     path, "profile", "exiftool", "Illuminant", ours, illuminant)
    document = xml.etree.ElementTree.fromstring(answers["profile as XML"])
    tags = [tag.attrib["signature"] for tag in document.findall("tag")]
    check("tags in XML", tags, re.findall(r"\rTag (.{1,4}):", answers["verbose profile"]))
    check("name in XML", document.findtext("description"), name)


def main(folder):
    corpus = os.environ.get("VELL_CORPUS", "")
    if not os.path.isdir(corpus):
        print("skipped: the folder VELL_CORPUS is not there")
        return 77
    corpus = os.path.abspath(corpus)
    paths = sorted([str(path) for name in FOLDERS for path in pathlib.Path(corpus, name).iterdir()] +
                   [str(path) for name, kinds in KINDS.items()
                    for path in pathlib.Path(corpus, name).iterdir()
                    if path.suffix.lower() in kinds])
    answers = ask_plugin(folder, paths)
    exiftool, exiv2, comparison = peers.Exiftool(paths), peers.Exiv2(), Comparison()
    for path in paths:
        mine = {question: answers[path, question] for question in QUESTIONS}
        compare_exif(comparison, path, mine, exiftool, exiv2)
        compare_iptc(comparison, path, mine, exiftool, exiv2)
        compare_texts(comparison, path, mine, exiftool, exiv2)
        compare_answers(comparison, path, mine, exiftool)
        compare_image(comparison, path, mine, exiftool)
        if not path.endswith("png"):
            compare_profile(comparison, path, mine, exiftool)
    return comparison.report()


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
