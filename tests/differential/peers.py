"""What exiftool and exiv2 read in a file.

Sections are those of the plug-in's text: EXIF (the first and the Exif directory), GPS and IPTC.
Texts have one character for each byte of the file, U+0000 to U+00FF, as the plug-in gives them when
it is asked for ISO 8859-1.
"""
import base64
import collections
import json
import re
import subprocess

# type and count are None where the peer does not tell them.
Tag = collections.namedtuple("Tag", "section number name type count value")


def run(*command):
    """Standard output; warnings and failures on damaged files are the peers' own affair."""
    return subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, check=False).stdout


class Exiftool:
    """One process for all files."""
    GROUPS = {"IFD0": "EXIF", "ExifIFD": "EXIF", "GPS": "GPS", "IPTC": "IPTC"}
    BASE64 = "base64:"  # what is no UTF-8
    SUB_DIRECTORIES = ("SubIFD", "SubIFD1", "SubIFD2")
    # In the IPTC group numbers stand for datasets of the envelope, too.
    ENVELOPE = {"EnvelopeRecordVersion", "Destination", "FileFormat", "FileVersion",
                "ServiceIdentifier", "EnvelopeNumber", "ProductID", "EnvelopePriority", "DateSent",
                "TimeSent", "CodedCharacterSet", "UniqueObjectName", "ARMIdentifier", "ARMVersion"}

    def __init__(self, paths):
        out = run("exiftool", "-a", "-u", "-U", "-n", "-G1", "-j", "-D", "-b", "-struct",
                  "-charset", "exif=Latin", "-charset", "iptc=Latin", "-IFD0:all", "-ExifIFD:all",
                  "-Padding", "-GPS:all", "-IPTC:all", "-ICC-header:all",
                  "-ICC_Profile:ProfileDescription", "-File:all", "-PNG:all", "-Comment",
                  "-JFIF:all", "-Composite:GPSLatitude", "-Composite:GPSLongitude",
                  *(f"-{group}:all" for group in self.SUB_DIRECTORIES), "-XMP", *paths)
        # Pairs instead of objects: a tag may stand there twice.
        self.files = {pairs[0][1]: pairs[1:]
                      for pairs in json.loads(out, object_pairs_hook=lambda pairs: pairs)}

    def _fields(self, path):
        for key, field in self.files[path]:
            group, name = key.split(":", 1)
            field = dict(field)
            yield group, name, field["id"], field["val"]

    def tags(self, path):
        tags = []
        for group, name, number, value in self._fields(path):
            section = self.GROUPS.get(re.sub(r"^(IPTC)\d+$", r"\1", group))
            if section is None or not isinstance(number, int):
                continue
            if section == "IPTC" and name in self.ENVELOPE:
                continue
            for one in value if section == "IPTC" and isinstance(value, list) else [value]:
                if isinstance(one, str) and one.startswith(self.BASE64):
                    one = self._bytes(one).decode("latin-1")
                tags.append(Tag(section, number, name, None, None, one))
        return tags

    def value(self, path, *keys):
        """The first of the fields "group:name" that is there."""
        found = {group + ":" + name: value for group, name, _, value in
                 reversed(list(self._fields(path)))}
        return next((found[key] for key in keys if key in found), None)

    def xmp(self, path):
        return self._bytes(self.value(path, "XMP:XMP") or "")

    def image_group(self, path):
        """The directory of the full-resolution image: the first one, unless that is a thumbnail."""
        if self.value(path, "IFD0:SubfileType") in (None, 0):
            return "IFD0"
        return next((group for group in self.SUB_DIRECTORIES
                     if self.value(path, group + ":SubfileType") == 0), "IFD0")

    @classmethod
    def _bytes(cls, value):
        if value.startswith(cls.BASE64):
            return base64.b64decode(value.removeprefix(cls.BASE64))
        return value.encode()


class Exiv2:
    GROUPS = {"Exif.Image": "EXIF", "Exif.Photo": "EXIF", "Exif.GPSInfo": "GPS",
              "Exif.PanasonicRaw": "EXIF", "Iptc.Application2": "IPTC"}
    # Number, key, type, count, value.
    LINE = re.compile(r"0x([0-9a-f]{4}) ([A-Za-z]+\.[^ .]+)\.(\S+) +([A-Z]\w+) +(\d+)"
                      r"(?: (?: (.*))?)?$", re.DOTALL)

    def tags(self, path):
        tags = []
        # Values run over line ends; each tag begins with its number.
        out = run("exiv2", "-PEIxkycv", path).decode("latin-1")
        for line in re.split(r"\n(?=0x[0-9a-f]{4} [A-Z])", out.removesuffix("\n")):
            match = self.LINE.match(line)
            if match is None:
                continue
            number, group, name, kind, count, value = match.groups()
            if group in self.GROUPS:
                tags.append(Tag(self.GROUPS[group], int(number, 16), name, kind, int(count),
                                value or ""))
        return tags

    def xmp(self, path):
        return run("exiv2", "-pX", path)

    def comment(self, path):
        return run("exiv2", "-pc", path)
