#!/usr/bin/env python3
"""VlFile_GetMetaData as JSON, over the files in the folder VELL_CORPUS.

usage: metadata_values_test.py FOLDER-OF-VELLHOST

Each answer is JSON for two parsers and has no name twice. The names and values of tags, datasets and
XMP properties are compared with those that exiftool has for the same file. Exit codes: 0, 1 for a
difference without a reason, 77 without the files.
"""
import collections
import json
import math
import os
import pathlib
import re
import subprocess
import sys

sys.dont_write_bytecode = True  # the folder is that of the sources

import vellhost

FOLDERS = ("jpeg", "jpeg2", "tiff", "tiff2", "png", "png2", "raw", "raw2", "psd")
GROUPS = {"IFD0": "Exif", "ExifIFD": "Exif", "InteropIFD": "Exif", "GPS": "GPS"}

# Names of the standards for which exiftool has its own.
STANDARD_NAMES = {
    "DNGLensInfo": "LensInfo",
    "SubfileType": "NewSubfileType", "OldSubfileType": "SubfileType", "ImageHeight": "ImageLength",
    "Thresholding": "Threshholding", "PreviewImageStart": "StripOffsets",
    "PreviewImageLength": "StripByteCounts", "JpgFromRawStart": "StripOffsets",
    "JpgFromRawLength": "StripByteCounts", "ThumbnailOffset": "JPEGInterchangeFormat",
    "ThumbnailLength": "JPEGInterchangeFormatLength", "OtherImageStart": "JPEGInterchangeFormat",
    "OtherImageLength": "JPEGInterchangeFormatLength", "ModifyDate": "DateTime",
    "CreateDate": "DateTimeDigitized", "ISO": "PhotographicSensitivity",
    "ExposureCompensation": "ExposureBiasValue", "ExifImageWidth": "PixelXDimension",
    "ExifImageHeight": "PixelYDimension", "FocalLengthIn35mmFormat": "FocalLengthIn35mmFilm",
    "OwnerName": "CameraOwnerName", "SerialNumber": "BodySerialNumber",
    "LensInfo": "LensSpecification", "Opto-ElectricConvFactor": "OECF",
    "InteropIndex": "InteroperabilityIndex", "InteropVersion": "InteroperabilityVersion",
    "RelatedImageHeight": "RelatedImageLength", "AmbientTemperature": "Temperature",
    "Tag0x0001": "InteroperabilityIndex", "DNGAdobeData": "DNGPrivateData",
    "TIFF-EPStandardID": "TIFFEPStandardID",
    "CompositeImageCount": "SourceImageNumberOfCompositeImage",
    "CompositeImageExposureTimes": "SourceExposureTimesOfCompositeImage",
    "ProfileCalibrationSig": "ProfileCalibrationSignature", "GDALNoData": "Tag0xA481",
    "CFAPattern2": "CFAPattern",
}
# Made of several tags, shown in another form on purpose, or notes of makers.
OTHER_FORMS = {"MakerNote", "UserComment", "GPSProcessingMethod", "GPSAreaInformation", "GPSDateStamp",
               "GPSTimeStamp", "GPSLatitude", "GPSLongitude", "GPSDestLatitude", "GPSDestLongitude",
               "CFAPattern", "ComponentsConfiguration", "ExifVersion", "FlashpixVersion", "FileSource",
               "SceneType", "DeviceSettingDescription", "OECF", "SpatialFrequencyResponse",
               "InteroperabilityVersion", "GPSVersionID", "DNGVersion", "DNGBackwardVersion",
               "XPTitle", "XPComment", "XPAuthor", "XPKeywords", "XPSubject", "ImageResources",
               "Copyright", "TransferFunction", "RawDataUniqueID"}
# Left out on purpose, of no standard that we name, or made of several tags; RW2 files have numbers
# of their own.
NOT_NAMED = {"Padding", "OffsetSchema", "MakerNoteUnknownText", "ModelTransform", "PreviewImage",
             "ThumbnailTIFF"}
OWN_NUMBERS = ".rw2"
# Exif has these as logarithms (APEX), exiftool what they stand for.
IN_APEX = {"ShutterSpeedValue": lambda value: 2 ** -value, "ApertureValue": lambda value: 2 ** (value / 2),
           "MaxApertureValue": lambda value: 2 ** (value / 2)}
# Known to exiftool, not to the standard.
MAKERS_DATASETS = {"Prefs", "DocumentNotes", "DocumentHistory", "ExifCameraInfo", "CatalogSets",
                   "ClassifyState", "SimilarityIndex", "JobID", "MasterDocumentID", "ShortDocumentID",
                   "UniqueDocumentID", "OwnerID", "LocalCaption"}
DATASET_NAMES = {"EnvelopeRecordVersion": "ModelVersion", "FileVersion": "FileFormatVersion",
                 "UniqueObjectName": "UNO", "ApplicationRecordVersion": "RecordVersion",
                 "SupplementalCategories": "SupplementalCategory",
                 "ObjectPreviewFileVersion": "ObjectPreviewFileFormatVersion"}


def without_repetition(pairs):
    names = [name for name, _ in pairs]
    if len(set(names)) != len(names):
        raise ValueError("a name stands twice: %s" % [n for n in names if names.count(n) > 1][0])
    return dict(pairs)


def parsed(text):
    return json.loads(text, object_pairs_hook=without_repetition,
                      parse_constant=lambda word: sys.exit("no JSON: " + word))


def ask_exiftool(paths):
    out = subprocess.run(["exiftool", "-n", "-j", "-G1", "-struct", "-charset", "iptc=Latin",
                          "--ICC_Profile:all", "--MakerNotes:all", *paths], capture_output=True,
                         check=False).stdout
    return {fields.pop("SourceFile"): fields for fields in json.loads(out)}


def jq_agrees(answers):
    """Whether jq reads all of them, and as what Python reads."""
    done = subprocess.run(["jq", "-c", "."], input="\n".join(answers).encode(), capture_output=True,
                          check=False)
    lines = done.stdout.decode().removesuffix("\n").split("\n")
    return done.returncode == 0 and [json.loads(line) for line in lines] == \
        [json.loads(answer) for answer in answers]


def numbers_of(value):
    """Numbers that a value consists of; None for any other value."""
    if isinstance(value, bool) or value is None:
        return None
    if isinstance(value, (int, float)):
        return [float(value)]
    if isinstance(value, list):
        parts = [numbers_of(part) for part in value]
        return None if None in parts else [part for one in parts for part in one]
    try:
        return [float(part) for part in str(value).split()] or None
    except ValueError:
        return None


def is_same(ours, theirs):
    if ours is None or isinstance(ours, list) and None in ours:
        return "undef" in str(theirs) or "inf" in str(theirs)
    theirs_in_numbers, ours_in_numbers = numbers_of(theirs), numbers_of(ours)
    if theirs_in_numbers is not None and ours_in_numbers is not None:
        # Theirs have ten significant digits.
        return len(theirs_in_numbers) == len(ours_in_numbers) and all(
            math.isclose(a, b, rel_tol=1e-8, abs_tol=1e-9)
            for a, b in zip(theirs_in_numbers, ours_in_numbers))
    date = re.match(r"\d{4}-\d\d-\d\d(T[\d:]+)?", str(ours))
    if date:
        ours, theirs = date[0], re.sub(r"^(\d{4}):(\d\d):(\d\d) ?", r"\1-\2-\3T", str(theirs))
        return theirs.rstrip("T").startswith(ours)
    if "Binary data" in str(theirs) or re.fullmatch(r"\(\d+ (bytes|numbers)\)", str(ours)):
        return True
    # A time that is none is left as it stands; exiftool puts colons into any.
    ours, theirs = (str(value).strip("\0 ").replace(":", "") for value in (ours, theirs))
    return ours == theirs or "\ufffd" in theirs


class Comparison:
    def __init__(self):
        self.counts = collections.Counter()
        self.differences = []

    def check(self, equal, kind, path, name, ours, theirs):
        self.counts[kind] += 1
        if not equal:
            self.differences.append(f"{os.path.basename(path)}: {kind} {name}: we have {ours!r:.120}, "
                                    f"exiftool has {theirs!r:.120}")


def compare_tags(comparison, path, ours, theirs):
    for key, value in theirs.items():
        group, name = key.split(":", 1)
        kind = GROUPS.get(group)
        name = STANDARD_NAMES.get(name, name)
        if kind is None or kind not in ours or path.endswith(OWN_NUMBERS):
            continue
        comparison.check(name in ours[kind] or name in NOT_NAMED, kind + " name", path, name, None,
                         value)
        if name not in ours[kind]:
            continue
        # A tag of several directories has the value of the first one here.
        if kind == "Exif" and sum(other.split(":", 1)[0] in GROUPS and
                                  STANDARD_NAMES.get(other.split(":", 1)[1],
                                                     other.split(":", 1)[1]) == name
                                  for other in theirs) > 1:
            continue
        found = ours[kind][name]
        if name in IN_APEX and isinstance(found, (int, float)) and abs(found) < 100:
            found = IN_APEX[name](found)
        if name not in OTHER_FORMS:
            comparison.check(is_same(found, value), kind, path, name, found, value)
    for name in ("Latitude", "Longitude"):
        value = theirs.get("Composite:GPS" + name)
        if value is not None and name in ours.get("GPS", {}):
            comparison.check(math.isclose(ours["GPS"][name], value, abs_tol=1e-7), "GPS", path, name,
                             ours["GPS"][name], value)


def compare_datasets(comparison, path, ours, theirs):
    for key, value in theirs.items():
        group, name = key.split(":", 1)
        if group != "IPTC" or "IPTC" not in ours:
            continue
        name = DATASET_NAMES.get(name, name).replace("-", "")
        if name not in MAKERS_DATASETS:
            comparison.check(name in ours["IPTC"], "IPTC name", path, name, None, value)
        found = ours["IPTC"].get(name)
        if isinstance(found, list) and len(found) == 1:
            found = found[0]
        if isinstance(found, str) and found.isascii() and name != "CodedCharacterSet":
            comparison.check(is_same(found, value), "IPTC", path, name, found, value)


def compare_properties(comparison, path, ours, theirs):
    """Simple texts of XMP, by names without their case."""
    flat = {(prefix + ":" + name).lower(): value
            for prefix, fields in ours.get("XMP", {}).items() for name, value in fields.items()}
    for key, value in theirs.items():
        if not key.startswith("XMP-"):
            continue
        found = flat.get(key.removeprefix("XMP-").lower())
        if isinstance(found, str) and isinstance(value, (str, int, float)):
            if "/" not in found and not re.match(r"\d{4}[-:]", found):
                comparison.check(is_same(found, value), "XMP", path, key, found, value)
        elif isinstance(found, list) and isinstance(value, list) and \
                all(isinstance(each, str) for each in found):
            comparison.check(len(found) == len(value), "XMP arrays", path, key, found, value)


def main():
    corpus = os.environ.get("VELL_CORPUS", "")
    paths = [str(path) for folder in FOLDERS
             for path in sorted((pathlib.Path(corpus) / folder).glob("*")) if path.is_file()]
    if not corpus or not paths:
        print("no corpus of real files (VELL_CORPUS)")
        return 77
    answers = dict(zip(paths, vellhost.results(sys.argv[1], [
        f'VlFile_GetMetaData( "-GetAll -Format=JSON" ; {vellhost.path(path)} )'
        for path in paths])))
    given = {path: answer for path, answer in answers.items() if not answer.startswith("$$")}
    theirs = ask_exiftool(paths)
    comparison = Comparison()
    comparison.check(jq_agrees(list(given.values())), "jq", "all files", "JSON", None, None)
    for path, answer in given.items():
        ours = parsed(answer)
        compare_tags(comparison, path, ours, theirs[path])
        compare_datasets(comparison, path, ours, theirs[path])
        compare_properties(comparison, path, ours, theirs[path])
    print(f"{len(given)} of {len(paths)} files answered")
    for kind, count in comparison.counts.items():
        print(f"{kind:<12}{count:>8} compared")
    for difference in comparison.differences:
        print("DIFFERENCE " + difference)
    return 1 if comparison.differences else 0


if __name__ == "__main__":
    sys.exit(main())
