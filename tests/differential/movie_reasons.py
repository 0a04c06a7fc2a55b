"""Why some answers on movies are not those of a peer.

Each row: the file (a pattern), the peers, what was compared (a pattern), the reason.
"""

ENTRY = ("exiftool gives the fields of the sample entry, where writers put two channels or any rate; "
         "what the decoder is told counts here, as for the other peers")
UNKNOWN = "a duration of which all bits are set is not known; a number there, nothing or the tracks' here"
ONE_SEGMENT = ("the header tells how long the whole movie is, of which the file has a part; the track "
               "lasts as long as its fragments that are there")
FROM_ZERO = "the fragments begin at 10 s; ffprobe counts from 0 to their end"
EDITED = "the edit list begins after the first sample; ffprobe leaves out what comes before"

ROWS = (
    ("QuickTime.m4a", ("exiftool",), "Channels", ENTRY),
    ("QuickTime.m4a", ("exiftool",), "Sample rate", ENTRY),
    ("me-mp4-FLIR_Thermal.mp4", ("exiftool",), "Channels", ENTRY),
    ("*amr_[nw]b_1f.3gp", ("exiftool",), "Channels", ENTRY),
    ("*-tests-metadata.mp4", ("exiftool",), "Channels", ENTRY),
    ("*-tests-minimal.mp4", ("exiftool",), "Channels", ENTRY),
    ("QuickTime.m4a", ("ffprobe",), "Bit rate",
     "ffprobe gives the rate that the decoder is told; here it is what the samples take"),
    ("me-mp4-with-gps.mp4", ("exiftool",), "Media seconds",
     "the media's header tells less than its samples last, which count here"),
    ("me-mp4-with-gps.mp4", ("ffprobe",), "Bit rate", "from the duration in the media's header"),
    ("me-mp4-with-gps.mp4", ("exiftool",), "user data smta",
     "exiftool reads boxes of the camera's maker inside"),
    ("*PIFF-audio-init.mp4", ("exiftool", "mediainfo"), "* seconds", UNKNOWN),
    ("*PIFF-audio-init.mp4", ("mediainfo",), "Duration (seconds)", UNKNOWN),
    ("*PIFF-audio-init.mp4", ("ffprobe",), "Duration (seconds)",
     "ffprobe adds up an index of segments that are in other files"),
    ("*PIFF-audio-init.mp4", ("ffprobe",), "Bit rate", "from the same duration"),
    ("*loop_forever.avif", ("exiftool", "ffprobe"), "Duration (seconds)", UNKNOWN),
    ("*PIFF-wma_piff_scheme-audio.mp4", ("exiftool",), "Media seconds", ONE_SEGMENT),
    ("*PIFF-wma_piff_scheme-audio.mp4", ("mediainfo",), "Duration (seconds)", ONE_SEGMENT),
    ("*v300_multiple_segments.mp4", ("exiftool",), "Media seconds", ONE_SEGMENT),
    ("*v300_multiple_segments.mp4", ("mediainfo",), "Duration (seconds)", ONE_SEGMENT),
    ("*cbcs_audio.mp4", ("ffprobe",), "Duration (seconds)", FROM_ZERO),
    ("*cbcs_audio.mp4", ("ffprobe",), "Bit rate", FROM_ZERO),
    ("*cbcsdec.mp4", ("ffprobe",), "Duration (seconds)", FROM_ZERO),
    ("*cbcsdec.mp4", ("ffprobe",), "Bit rate", FROM_ZERO),
    ("*iamf.mp4", ("ffprobe",), "Sample rate",
     "stands in the description of the codec alone, which is not looked into"),
    ("*init1.cmfv", ("mediainfo",), "Bit rate", "stands in the parameters of the codec alone"),
    ("*amr_[nw]b_1f.3gp", ("ffprobe",), "Duration (seconds)", EDITED),
    ("*-tests-metadata.mp4", ("ffprobe",), "Duration (seconds)", EDITED),
    ("*-tests-minimal.mp4", ("ffprobe",), "Duration (seconds)", EDITED),
    ("*-tests-metadata.mp4", ("exiftool",), "user data WM/*",
     "exiftool reads the list inside Microsoft's Xtra, of which the size is told here"),
    ("*-tests-metadata.mp4", ("exiftool",), "user data Xtra", "the same list"),
    ("*test_case_1185230.mp4", ("exiftool",), "iTunes [?]too",
     "the file has two movies, of which the first one counts; exiftool reads both"),
    ("*test_case_1185230.mp4", ("ffprobe",), "Bit rate",
     "a damaged time scale of 3.5 GHz makes the samples last microseconds"),
    ("*-alac.m4a", ("exiftool",), "iTunes com.apple.iTunes:Encoding Params",
     "binary, which exiftool leaves out"),
    ("*nero-chapters.m4b", ("ffprobe",), "Duration (seconds)",
     "ffprobe lets the last chapter last as long as the sound"),
)
