#!/usr/bin/env python3
"""VlFile_SetMetaData judged by exiftool, exiv2 and djpeg, over the JPEG files in VELL_CORPUS.

usage: written_metadata_test.py FOLDER-OF-VELLHOST

Each kind of metadata is written into a copy of each file that djpeg decodes. Both peers must find
what was written, all other metadata must read as before (maker notes included, which depend on
where they stand), and the picture must decode to the same pixels. Exit codes: 0, 1 for a
difference, 77 without the files.
"""
import collections
import fractions
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True  # the folder is that of the sources

import vellhost

EXIF = {270: "Gr\u00fc\u00dfe", 282: "300", 33437: "2.9", 37379: "-1.5",
        315: "Vell Optics", 36867: "2020:12:31 23:59:59", 37510: "A comment", 40091: "Ti\u65e5"}
GPS = {1: "N", 2: "40\r26\r46.302", 4: "-79.9825", 6: "1/3", 29: "2020:12:31"}
KEYWORDS = ["one", "zwei \u00e4"]
URL = "http://vellfile.example/picture"
COMMENT = "A comment, \u00fc\u00dferhaupt"
XMP = ("<x:xmpmeta xmlns:x='adobe:ns:meta/'>"
       "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
       "<rdf:Description rdf:about='' xmlns:dc='http://purl.org/dc/elements/1.1/'>"
       "<dc:format>image/\u00fc</dc:format></rdf:Description></rdf:RDF></x:xmpmeta>")


def sections(word, values):
    return "".join(f"\r##{word} {number}\r{value}\r##END {number}" for number, value in values)


# kind: switches, text, what exiftool and exiv2 find, and the groups that may change beside it
WRITES = {
    "exif": ("-SetExif -AddExifMakerNote -UTF8Charset",
             sections("EXIF", EXIF.items()) + sections("GPS", GPS.items()),
             {"IFD0:ImageDescription": EXIF[270], "IFD0:Artist": EXIF[315], "IFD0:XResolution": 300,
              "ExifIFD:FNumber": 2.9, "ExifIFD:BrightnessValue": -1.5,
              "ExifIFD:DateTimeOriginal": EXIF[36867], "ExifIFD:UserComment": EXIF[37510],
              "IFD0:XPTitle": EXIF[40091], "GPS:GPSLatitudeRef": "N", "GPS:GPSLongitudeRef": "W",
              "GPS:GPSLatitude": 40.446195, "GPS:GPSLongitude": 79.9825,
              "GPS:GPSAltitude": 0.333333333, "GPS:GPSDateStamp": GPS[29]},
             {"Exif.Image.ImageDescription": EXIF[270], "Exif.Image.XResolution": "300/1",
              "Exif.Photo.FNumber": "29/10", "Exif.Photo.BrightnessValue": "-3/2",
              "Exif.GPSInfo.GPSLatitude": "40/1 26/1 23151/500",
              "Exif.GPSInfo.GPSLongitude": "79/1 58/1 57000000/1000000",
              "Exif.GPSInfo.GPSAltitude": "1/3"},
             ("GPS:GPSVersionID", "ExifIFD:ExifVersion", "Composite:")),
    "iptc": ("-SetIPTC -UTF8Charset",
             sections("IPTC", [(5, "Titel \u65e5")] + [(25, word) for word in KEYWORDS]),
             {"IPTC:ObjectName": "Titel \u65e5", "IPTC:Keywords": KEYWORDS,
              "IPTC:CodedCharacterSet": "\x1b%G"},
             {"Iptc.Application2.ObjectName": "Titel \u65e5",
              "Iptc.Application2.Keywords": KEYWORDS[-1]},
             ("IPTC:",)),
    "xmp": ("-SetXMP", XMP, {"XMP-dc:Format": "image/\u00fc"}, {"Xmp.dc.format": "image/\u00fc"},
            ("XMP",)),
    "url": ("-SetImageURL", URL, {"Photoshop:URL": URL}, {}, ()),
    "comment": ("JPEGComment -UTF8Charset", COMMENT, {"File:Comment": COMMENT}, {}, ()),
}
# exiftool does not follow the Exif pointer in these files, whose entry says that it
# is a text. Written anew, it is a pointer, and exiftool finds what stood there all the time.
MENDED = {"jpg-tests-30-type_error.jpg"}
# Texts of the type 129 of Exif 3.0, which stay of that type and which exiftool does not know yet.
UNKNOWN_TO_EXIFTOOL = {("exif3.jpg", "IFD0:Artist")}
# Where something stands in the file, and what describes the file itself.
PLACES = re.compile(r"SourceFile|(System|ExifTool|Composite):|File:(Current|ExifByteOrder|Comment)|"
                    r"MPImage1:MPImageLength|.*(Offset|Start|OffsetSchema)$")


def pixels(path):
    done = subprocess.run(["djpeg", "-pnm", path], stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, check=False)
    return done.stdout if done.returncode == 0 else None


def pictures(path):
    """The pictures behind the first one, as the index of the file finds them."""
    return subprocess.run(["exiftool", "-b", *(f"-MPImage{number}" for number in range(2, 10)),
                           path], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                          check=False).stdout


def exiftool(paths):
    """What exiftool finds, by path."""
    done = subprocess.run(["exiftool", "-j", "-n", "-G1", "-a", "-struct", "-charset",
                           "iptc=latin1", *paths], stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, check=False)
    return {found["SourceFile"]: found for found in json.loads(done.stdout)}


def exiv2(path):
    """The last value of each key; None when exiv2 refuses the file."""
    done = subprocess.run(["exiv2", "-q", "-PEIXkv", path], stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, check=False)
    if done.returncode not in (0, 253):  # 253: no metadata of that kind
        return None
    values = {}
    for line in done.stdout.decode("utf-8", "replace").splitlines():
        key, _, value = line.partition(" ")
        values[key] = value.strip()
    return values


def write_all(folder, files, target):
    """The path of each copy by file and kind; copies that the plug-in refuses are left out."""
    asked = [(path, kind) for path in files for kind in WRITES]
    copies = {(path, kind): os.path.join(target, f"{index}.jpg")
              for index, (path, kind) in enumerate(asked)}
    statements = []
    for path, kind in asked:
        switches, text = WRITES[kind][:2]
        statements.append(f"VlFile_SetMetaData( {vellhost.text(switches)} ; {vellhost.path(path)} ; "
                          f"{vellhost.path(copies[path, kind])} ; {vellhost.text(text)} )")
    return copies, dict(zip(asked, vellhost.results(folder, statements)))


def numbers(text):
    """Fractions by value: one that says the same already is left as it was."""
    parts = [part.split("/") for part in str(text).split()]
    if all(len(part) == 2 and part[0].lstrip("-").isdigit() and part[1].isdigit()
           for part in parts):
        return [fractions.Fraction(int(top), int(bottom) or 1) for top, bottom in parts]
    return text


def same(ours, theirs):
    if isinstance(ours, float):
        return isinstance(theirs, (int, float)) and abs(ours - theirs) < 1e-8 * max(1, abs(ours))
    return ours == theirs


class Judge:
    def __init__(self):
        self.counts = collections.Counter()
        self.differences = []

    def check(self, holds, what, *details):
        self.counts[what] += 1
        if not holds:
            self.differences.append(": ".join([what, *map(str, details)])[:300])


def judge(checks, path, kind, copy, before, after):
    _, _, by_exiftool, by_exiv2, changing = WRITES[kind]
    for key, value in by_exiftool.items():
        if (os.path.basename(path), key) in UNKNOWN_TO_EXIFTOOL and key not in before:
            continue
        checks.check(same(value, after.get(key)), f"{kind} in exiftool", path, key, after.get(key))
    for key in before.keys() | after.keys():
        is_found_now = key not in before and os.path.basename(path) in MENDED
        if not (key in by_exiftool or key.startswith(changing) or PLACES.match(key) or
                is_found_now):
            checks.check(before.get(key) == after.get(key), f"kept beside {kind}", path, key,
                         before.get(key), after.get(key))
    if "MPImage2:MPImage2" in before:
        checks.check(pictures(copy) == pictures(path), "pictures kept", path, kind)
    values = exiv2(copy)
    checks.check(values is not None or exiv2(path) is None, "accepted by exiv2", path, kind)
    for key, value in by_exiv2.items() if values is not None else ():
        checks.check(numbers(values.get(key)) == numbers(value), f"{kind} in exiv2", path, key,
                     values.get(key))


def main(folder):
    corpus = os.environ.get("VELL_CORPUS", "")
    if not os.path.isdir(corpus):
        print("skipped: the folder VELL_CORPUS is not there")
        return 77
    folders = [pathlib.Path(os.path.abspath(corpus), name) for name in ("jpeg", "found/jpeg")]
    decoded = {str(path): pixels(path)
               for folder_of_files in folders for path in sorted(folder_of_files.glob("*"))}
    files = [path for path, image in decoded.items() if image]
    checks = Judge()
    with tempfile.TemporaryDirectory() as target:
        copies, answers = write_all(folder, files, target)
        before = exiftool(files)
        after = exiftool([copy for copy in copies.values() if os.path.exists(copy)])
        for (path, kind), copy in copies.items():
            checks.check(answers[path, kind] == "0", f"{kind} written", path, answers[path, kind])
            if answers[path, kind] != "0":
                continue
            checks.check(pixels(copy) == decoded[path], "same pixels", path, kind)
            judge(checks, path, kind, copy, before[path], after[copy])
    print(f"{len(files)} files")
    for what, count in sorted(checks.counts.items()):
        print(f"{what:<24}{count:>8}")
    for difference in checks.differences:
        print("DIFFERENCE " + difference)
    return 1 if checks.differences else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
