#!/usr/bin/env python3
"""The movie switches of VlFile_GetMetaData against exiftool, ffprobe and MediaInfo, over the files
in the folder VELL_CORPUS.

usage: movie_test.py FOLDER-OF-VELLHOST

Each fact on a movie and its tracks that a peer tells is compared, and each item of metadata in both
directions. What differs for a reason is listed in movie_reasons.py. Exit codes: 0, 1 for a
difference without a reason, 77 without the files.
"""
import math
import os
import pathlib
import re
import sys
import xml.etree.ElementTree

sys.dont_write_bytecode = True  # the folder is that of the sources

import metadata_test
import movie_peers
import movie_reasons
import vellhost

FOLDERS = ("movie", "movie2")
QUESTIONS = {
    "description": "-GetMovieDescription",
    "items": "-GetMovieMetadata -Verbose",
    "items as XML": "-GetMovieMetadata -Verbose -Format=XML",
    "valid": "-IsValidMovie",
    "position": "-GetMovieGPS -Format=Decimal",
    "ISO 6709": "-GetMovieGPS -Format=ISO6709",
    "date": "-GetMovieCreationDate",
    "Duration (seconds)": "-GetMovieDuration",
    "Width": "-GetMovieWidth",
    "Height": "-GetMovieHeight",
    "Rotation": "-GetMovieRotation",
    "Frame count": "-GetMovieFrameCount",
    "Title": "-GetMovieTitle",
    "Comment": "-GetMovieComment",
    "Copyright": "-GetMovieCopyright",
    "Description": "-GetMovDescriptionStr",
    "Keywords": "-GetMovieKeywords",
    "Year": "-GetMovieYear",
    "Encoded by": "-GetMovieEncodedBy",
    "Software": "-GetMovieSoftware",
}
NO_MOVIE, NOTHING = "$$-2010", "$$-2026"
ITEM = re.compile(r"(?:Track (\d+) )?([^\r\[]*) \[(iTunes|QuickTime keys|user data|3GPP|XMP), "
                  r"(.{4,}?)(?:, ([a-z]{3}))?\]: (.*)", re.DOTALL)
# ffprobe's names of tags; those that begin with "com." are keys themselves.
FFPROBE_TAGS = {"title": "Title", "artist": "Artist", "album": "Album", "comment": "Comment",
                "composer": "Composer", "copyright": "Copyright", "genre": "Genre",
                "grouping": "Grouping", "lyrics": "Lyrics", "album_artist": "Album artist",
                "description": "Description", "synopsis": "Long description", "date": "Date",
                "keywords": "Keywords", "location": "Location", "category": "Category",
                "compilation": "Compilation", "network": "TV network", "show": "TV show",
                "episode_id": "TV episode ID", "season_number": "TV season", "rating": "Rating",
                "sort_name": "Sort title", "sort_artist": "Sort artist", "publisher": "Publisher",
                "media_type": "Media kind", "make": "Make", "model": "Model",
                "track": "Track number", "disc": "Disk number"}


def ask_plugin(folder, paths):
    """The answers by path and question, from one process."""
    asked = [(path, question) for path in paths for question in QUESTIONS]
    return dict(zip(asked, vellhost.results(
        folder, [f'VlFile_GetMetaData( "{QUESTIONS[question]}" ; {vellhost.path(path)} )'
                 for path, question in asked])))


class Description:
    """The lines of a description: those on the whole, and those on each track."""

    def __init__(self, text):
        self.whole, self.tracks = {}, []
        for line in text.split("\r"):
            match = re.match(r"(?:Track (\d+) )?([^:]+): (.*)", line)
            if match is None:
                continue
            number, name, value = match.groups()
            while number and len(self.tracks) < int(number):
                self.tracks.append({})
            (self.tracks[int(number) - 1] if number else self.whole)[name] = value

    def track(self, number):
        return next((track for track in self.tracks if track.get("ID") == str(number)), None)


def items_of(text):
    """(track, name, place, key, value) of each item in a list."""
    parts = re.split(r"(?:^|\r)(?=(?:Track \d+ )?[^\r\[]* \[(?:iTunes|QuickTime|user|3GPP|XMP))",
                     text)
    found = [ITEM.fullmatch(part) for part in parts if part]
    return [(m[1], m[2], m[3], m[4], m[6]) for m in found if m]


# How near a number is to be: the peers round seconds, and rates with them.
TOLERANCES = {"Duration (seconds)": 2e-3, "Media seconds": 2e-3, "Presented seconds": 2e-3,
              "Frame rate": 5e-3, "Latitude": 1e-5, "Longitude": 1e-5, "Altitude": 1e-2}


def equal(name, ours, theirs):
    if ours is None:
        return False
    try:
        mine, other = float(ours), float(theirs)
    except (TypeError, ValueError):
        return str(ours).strip("\0 ") == str(theirs).strip("\0 ")
    if name == "Bit rate":
        return math.isclose(mine, other, rel_tol=2e-3, abs_tol=1)
    return abs(mine - other) <= TOLERANCES.get(name, 0)


def compare_facts(comparison, path, where, peer, ours, theirs):
    for name, value in theirs.items():
        if name == "Matrix":
            angle = math.degrees(math.atan2(float(value[1]), float(value[0]))) % 360
            name, value = "Rotation", round(angle / 90) % 4 * 90
        mine = ours.get({"Media seconds": "Duration (seconds)"}.get(name, name))
        several = value if isinstance(value, tuple) else (value,)
        comparison.check(any(equal(name, mine, one) for one in several), path, where, peer, name, mine, value)


def compare_tracks(comparison, path, mine, exiftool, others):
    presented = {}
    if exiftool:
        theirs = exiftool.tracks(path)
        comparison.check(len(mine.tracks) == len(theirs), path, "tracks", "exiftool", "count",
                         len(mine.tracks), len(theirs))
        for ours, track in zip(mine.tracks, theirs):
            presented[track.get("ID")] = track.pop("Presented seconds", None)
            formats = [ours.get("Encrypted"), ours.get("Codec type")]
            ours = {**ours, "Sample format": track.get("Sample format")
                    if track.get("Sample format") in formats else formats}
            compare_facts(comparison, path, "tracks", "exiftool", ours, track)
    for peer, tracks in others.items():
        for number, track in tracks.items():
            ours = mine.track(number)
            comparison.check(ours is not None, path, "tracks", peer, "ID", None, number)
            if ours is None:
                continue
            ours = dict(ours)
            ours["Sample count"] = ours.get("Sample count", ours.get("Frame count"))
            if peer == "ffprobe" and "Duration (seconds)" in track and presented.get(number):
                # It tells how long an edit list lets the track be seen.
                if equal("Duration (seconds)", presented[number], track["Duration (seconds)"]):
                    del track["Duration (seconds)"]
            if peer == "ffprobe" and mine.whole["Fragments"] != "0":
                track.pop("Bit rate", None)  # it has read but some of them when it tells that
            if ours["Handler"] in ("pict", "auxv"):
                track.pop("Kind", None)  # which they both call video
            if "Encrypted" in track:
                comparison.check("Encrypted" in ours, path, "tracks", peer, "Encrypted",
                                 ours.get("Encrypted"), track.pop("Encrypted"))
            compare_facts(comparison, path, "tracks", peer, ours, track)


def compare_whole(comparison, path, answers, mine, peers_by_name):
    position = Description(answers["position"]).whole
    for name, peer in peers_by_name.items():
        compare_facts(comparison, path, "movie", name, {**mine.whole, **position},
                      peer.whole(path))
    for name in ("Duration (seconds)", "Width", "Height", "Rotation", "Frame count"):
        expected = mine.whole.get(name, NOTHING)
        comparison.check(answers[name] == expected, path, "selectors", "description", name,
                         answers[name], expected)


def same_value(place, name, ours, theirs):
    """`theirs` is exiftool's, which turns dates, positions and binary values into its own forms."""
    chapters = theirs if isinstance(theirs, list) else [theirs]
    theirs = str(theirs)
    if binary := re.match(r"\(Binary data (\d+) bytes", theirs):
        return f"{binary[1]} bytes)" in ours
    if equal(name, ours, theirs) or " ".join(ours.split()) == " ".join(theirs.split()):
        return True
    if name == "ChapterList":
        times = [(*map(float, line.split(" ")[0].split(":")), line.split(" ", 1)[1])
                 for line in ours.split("\r")]
        return [f"{h * 3600 + m * 60 + s:.10g} {title}" for h, m, s, title in times] == chapters
    if name in ("GPSCoordinates", "LocationInformation"):
        numbers = [float(number) for number in re.findall(r"[-+]?\d+(?:\.\d+)?", ours)]
        if name == "LocationInformation":
            theirs = " ".join(re.findall(r"(?:Lat|Lon|Alt)=(\S+)", theirs))
        return all(abs(a - float(b)) < 1e-5 for a, b in zip(numbers, theirs.split()))
    digits = re.sub(r"\D", "", ours)
    return "Date" in name and digits != "" and digits == re.sub(r"\D", "", theirs)


def compare_items(comparison, path, answers, exiftool):
    ours = [] if answers["items"] == NOTHING else items_of(answers["items"])
    left = list(ours)
    for place, key, name, value in exiftool.items(path):
        def fits(item):
            mine = item[3].replace("\u00a9", "?")
            return (mine == key or mine.removeprefix("com.apple.quicktime.") == key or
                    mine.endswith(f":{key}")) and (item[2] == place or item[2] == "3GPP")
        found = [item for item in left if fits(item)]
        same = [item for item in found if same_value(place, name, item[4], value)]
        comparison.check(bool(same), path, "items", "exiftool", f"{place} {key}",
                         found[0][4] if found else None, value)
        if same or found:
            left.remove((same or found)[0])
    for item in left:
        comparison.check(False, path, "items", "exiftool", f"{item[2]} {item[3]}", item[4], None)


def near(position, other):
    """Whether two positions in ISO 6709 are the same to four digits, the altitude aside."""
    parts = [re.findall(r"[-+][\d.]+", text)[:2] for text in (position, other)]
    return all(abs(float(a) - float(b)) < 1e-4 for a, b in zip(*parts))


def compare_ffprobe_tags(comparison, path, answers, ffprobe):
    ours = [] if answers["items"] == NOTHING else items_of(answers["items"])
    for tag, value in ffprobe.tags(path).items():
        name = FFPROBE_TAGS.get(tag)
        found = [item[4] for item in ours if not item[0] and (item[1] == name or item[3] == tag)]
        if name is None and not tag.startswith("com."):
            continue
        if tag in ("track", "disc"):
            value = value.replace("/", " of ")
        same = tag == "location" and any(near(text, value) for text in found)
        same = same or any(" ".join(text.split()) == " ".join(value.split()) for text in found)
        comparison.check(same, path, "items", "ffprobe", tag, found, value)


def compare_forms(comparison, path, answers):
    """Lists in lines and as XML say the same, and single questions what the list says."""
    if answers["items"] == NOTHING:
        comparison.check(answers["items as XML"] == NOTHING, path, "items", "XML", "nothing",
                         answers["items as XML"], NOTHING)
        return
    ours = items_of(answers["items"])
    document = xml.etree.ElementTree.fromstring(answers["items as XML"].replace("\r", "\n"))
    as_xml = [(item.get("track"), item.get("name"), item.get("source"), item.get("key"),
               (item.text or "")) for item in document]
    plain = [(*item[:4], item[4].replace("\r", "\n")) for item in ours]
    comparison.check(plain == as_xml, path, "items", "XML", "all", plain, as_xml)
    for name in ("Title", "Comment", "Copyright", "Description", "Keywords", "Encoded by"):
        expected = next((item[4] for item in ours if item[1] == name), None)
        if expected:
            comparison.check(answers[name] == expected, path, "selectors", "list", name,
                             answers[name], expected)


def compare(comparison, path, answers, peers_by_name):
    exiftool, ffprobe = peers_by_name.get("exiftool"), peers_by_name.get("ffprobe")
    is_movie = answers["valid"] == "1"
    if exiftool:
        comparison.check(is_movie == exiftool.is_movie(path), path, "kind", "exiftool", "movie",
                         answers["valid"], exiftool.is_movie(path))
    if not is_movie:
        for question in QUESTIONS.keys() - {"valid"}:
            comparison.check(answers[question] in (NO_MOVIE, NOTHING), path, "kind", "codes",
                             f"{question}: {answers[question]}", answers[question], NO_MOVIE)
        return
    mine = Description(answers["description"])
    compare_whole(comparison, path, answers, mine, peers_by_name)
    compare_tracks(comparison, path, mine, exiftool,
                   {name: peer.tracks(path) for name, peer in peers_by_name.items()
                    if name != "exiftool"})
    if exiftool:
        compare_items(comparison, path, answers, exiftool)
    if ffprobe:
        compare_ffprobe_tags(comparison, path, answers, ffprobe)
    compare_forms(comparison, path, answers)


def main(folder):
    corpus = os.path.abspath(os.environ.get("VELL_CORPUS", ""))
    folders = [pathlib.Path(corpus, name) for name in FOLDERS]
    if not os.environ.get("VELL_CORPUS") or not all(path.is_dir() for path in folders):
        print("skipped: the folder VELL_CORPUS is not there, or has no movies")
        return 77
    paths = sorted(str(path) for folder_path in folders for path in folder_path.iterdir())
    answers = ask_plugin(folder, paths)
    peers_by_name = movie_peers.installed(paths)
    comparison = metadata_test.Comparison(movie_reasons.ROWS)
    for path in paths:
        compare(comparison, path, {question: answers[path, question] for question in QUESTIONS},
                peers_by_name)
    return comparison.report()


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
