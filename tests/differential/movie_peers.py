"""What exiftool, ffprobe and MediaInfo read in a movie.

Each peer gives facts on the whole file and on each track by its number, under the names that the
plug-in's description has for them: what a peer does not tell is not there.
"""
import concurrent.futures
import json
import os
import re
import shutil

import peers


def iso(date):
    """A date of a peer as "2019-07-24T08:25:57Z"; nothing for one that is no moment."""
    match = re.match(r"(\d{4})[-:](\d\d)[-:](\d\d)[T ](\d\d:\d\d:\d\d)", str(date))
    if match is None or match[1] == "0000":
        return None
    return "{}-{}-{}T{}Z".format(*match.groups())


def known(facts):
    return {name: value for name, value in facts.items() if value not in (None, "", [])}


class Exiftool:
    name = "exiftool"
    command = "exiftool"
    # The groups of what people and programs wrote, by the names that we have for the places.
    ITEMS = {"ItemList": "iTunes", "iTunes": "iTunes", "Keys": "QuickTime keys",
             "UserData": "user data", "Microsoft": "user data"}

    def __init__(self, paths):
        out = peers.run("exiftool", "-a", "-u", "-U", "-n", "-G1:4", "-j", "-D", *paths)
        # Pairs instead of objects, to keep their order. What a file has twice has a group more.
        self.files = {pairs[0][1]: [(key.split(":")[0], key.split(":")[-1], dict(field))
                                    for key, field in pairs[1:]]
                      for pairs in json.loads(out, object_pairs_hook=lambda pairs: pairs)
                      if pairs}

    def _group(self, path, group):
        return {name: field["val"] for its, name, field in reversed(self.files[path])
                if its == group}

    def _all(self, path, group, name):
        return tuple(str(field["val"]) for its, tag, field in self.files[path]
                     if (its, tag) == (group, name)) or None

    def is_movie(self, path):
        return "MovieHeaderVersion" in self._group(path, "QuickTime")

    def whole(self, path):
        movie = self._group(path, "QuickTime")
        composite = self._group(path, "Composite")
        # Durations of 0 are those of headers that do not tell any.
        return known({"Duration (seconds)": movie.get("Duration") or None,
                      "Creation date": iso(movie.get("CreateDate")),
                      "Modification date": iso(movie.get("ModifyDate")),
                      "Time scale": movie.get("TimeScale"),
                      "Brand": movie.get("MajorBrand"),
                      "Compatible brands": ", ".join(movie.get("CompatibleBrands", [])),
                      "Latitude": composite.get("GPSLatitude"),
                      "Longitude": composite.get("GPSLongitude"),
                      "Altitude": composite.get("GPSAltitude")})

    def tracks(self, path):
        found = []
        while track := self._group(path, group := f"Track{len(found) + 1}"):
            matrix = str(track.get("MatrixStructure", "")).split()
            found.append(known({
                # Of QuickTime's two handlers, one for the media and one for its data.
                "Handler": self._all(path, group, "HandlerType"),
                "Name": self._all(path, group, "HandlerDescription"),
                "ID": track.get("TrackID"),
                "Presented seconds": track.get("TrackDuration") or None,
                "Media seconds": track.get("MediaDuration") or None,
                # What is encrypted has its own format here, and sometimes the one below it.
                "Sample format": track.get("CompressorID", track.get("AudioFormat", track.get(
                    "OtherFormat", track.get("MetaFormat")))),
                "Codec type": track.get("OriginalFormat"),
                "Width": track.get("SourceImageWidth"),
                "Height": track.get("SourceImageHeight"),
                "Depth": track.get("BitDepth"),
                "Compressor": track.get("CompressorName"),
                "Frame rate": track.get("VideoFrameRate"),
                "Matrix": matrix[:5] if "SourceImageWidth" in track else None,
                "Channels": track.get("AudioChannels") or None,
                "Sample size": track.get("AudioBitsPerSample"),
                "Sample rate": track.get("AudioSampleRate") or None,
                "Language": track.get("MediaLanguageCode")}))
        return found

    def items(self, path):
        """(place, key, name, value) of each item."""
        for group, name, field in self.files[path]:
            if group in self.ITEMS:
                yield self.ITEMS[group], field["id"], name, field["val"]


class Ffprobe:
    name = "ffprobe"
    command = "ffprobe"
    KINDS = {"video": "Video", "audio": "Audio"}
    # Codecs that have one name there and one here.
    CODECS = {"h264": "H.264", "hevc": "HEVC", "vvc": "VVC", "av1": "AV1", "vp8": "VP8",
              "vp9": "VP9", "mpeg4": "MPEG-4 Visual", "h263": "H.263", "aac": "AAC",
              "alac": "Apple Lossless", "mp3": "MP3", "ac3": "AC-3", "eac3": "Enhanced AC-3",
              "opus": "Opus", "flac": "FLAC", "amr_nb": "AMR narrow band",
              "amr_wb": "AMR wide band", "mjpeg": "Motion JPEG", "iamf": "Immersive Audio",
              "webvtt": "WebVTT", "ttml": "TTML", "mov_text": "3GPP timed text"}

    def __init__(self, paths):
        def read(path):  # it takes one file at a time
            return json.loads(peers.run("ffprobe", "-v", "quiet", "-of", "json", "-show_format",
                                        "-show_streams", path) or "{}")
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            self.files = dict(zip(paths, pool.map(read, paths)))

    def whole(self, path):
        whole = self.files[path].get("format", {})
        return known({"Duration (seconds)": whole.get("duration"),
                      "Creation date": iso(whole.get("tags", {}).get("creation_time")),
                      "Bit rate": whole.get("bit_rate"),
                      "Brand": whole.get("tags", {}).get("major_brand")})

    def tracks(self, path):
        """By the track's ID; pictures that stand for items are left out."""
        return {int(stream["id"], 0): self._track(stream)
                for stream in self.files[path].get("streams", [])
                if "id" in stream and not stream["disposition"]["attached_pic"]}

    def _track(self, stream):
        kind = self.KINDS.get(stream.get("codec_type"))
        frames, _, seconds = stream.get("avg_frame_rate", "0/0").partition("/")
        turned = [data["rotation"] for data in stream.get("side_data_list", [])
                  if "rotation" in data]
        tags = stream.get("tags", {})
        tag = stream.get("codec_tag_string", "")
        return known({"Kind": kind,
                      "Codec name": self.CODECS.get(stream.get("codec_name")),
                      "Codec type": None if "[" in tag else tag,
                      "Width": stream.get("width"), "Height": stream.get("height"),
                      "Rotation": (-turned[0]) % 360 if turned else 0 if kind == "Video" else None,
                      "Frame rate": float(frames) / float(seconds)
                                    if float(seconds) and kind == "Video" else None,
                      "Sample count": stream.get("nb_frames"),
                      "Channels": stream.get("channels") or None,
                      "Sample rate": stream.get("sample_rate"),
                      "Duration (seconds)": stream.get("duration"),
                      "Bit rate": stream.get("bit_rate"),
                      "Language": tags.get("language"),
                      "Name": tags.get("handler_name")})

    def tags(self, path):
        return self.files[path].get("format", {}).get("tags", {})


class MediaInfo:
    name = "mediainfo"
    command = "mediainfo"

    def __init__(self, paths):
        out = peers.run("mediainfo", "--Output=JSON", *paths)
        # Behind the document it may print how many files it has read.
        documents, _ = json.JSONDecoder().raw_decode(out.decode("utf-8", "replace"))
        self.files = {document["media"]["@ref"]: document["media"]["track"]
                      for document in documents if document.get("media")}

    def whole(self, path):
        whole = self.files.get(path, [{}])[0]
        return known({"Duration (seconds)": whole.get("Duration"),
                      "Creation date": iso(whole.get("Encoded_Date")),
                      "Modification date": iso(whole.get("Tagged_Date")),
                      "Brand": whole.get("CodecID")})

    def tracks(self, path):
        return {int(track["ID"]): self._track(track)
                for track in self.files.get(path, [])
                if track["@type"] in ("Video", "Audio", "Text") and
                re.fullmatch(r"\d+", track.get("ID", ""))}

    def _track(self, track):
        codec = re.sub(r"^enc[av]-?\S* / ", "", track.get("CodecID", "")).split(" / ")[-1]
        sound = track["@type"] == "Audio"
        return known({"Kind": track["@type"] if track["@type"] != "Text" else None,
                      "Codec type": codec[:4],
                      "Width": track.get("Width"), "Height": track.get("Height"),
                      "Rotation": track.get("Rotation"),
                      "Sample count": track.get("Source_FrameCount", track.get("FrameCount")),
                      "Channels": track.get("Channels"), "Sample rate": track.get("SamplingRate"),
                      "Media seconds": track.get("Source_Duration", track.get("Duration")),
                      "Bit rate": None if sound else track.get("BitRate"),
                      "Encrypted": track.get("Encryption")})


def installed(paths):
    """The peers that this machine has, by their names; the others with a word."""
    found = {}
    for peer in (Exiftool, Ffprobe, MediaInfo):
        if shutil.which(peer.command):
            found[peer.name] = peer(paths)
        else:
            print(f"{peer.name} is not installed and left out")
    return found
