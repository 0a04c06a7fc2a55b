"""Why some values of the plug-in are not those of a peer.

Each row: the file (a pattern), the peer, the tag or what else was compared (a pattern), the reason.
"""
import fnmatch

ANY = ("exiftool", "exiv2", "either")

TURNED = "the image is described as it is shown, turned by \"irot\""

ROWS = (
    ("FujiFilm.raf", ("exiftool",), "[WH]*",
     "the size is that of the photograph here, that of the JPEG inside there"),
    ("me-avif-32Bit-72dpi-sRGB-800x600.avif", ("exiftool",), "* Res",
     "the resolution stands in Exif, which the description of items does not look at"),
    *((file, ("exiftool",), "[WH]*", TURNED) for file in
      ("me-heic-Issue_263_dotnet.heic", "me-heic-Issue_487.heic",
       "mp4parse-mp4parse-tests-corrupt-transformation-before-ispe.avif",
       "mp4parse-mp4parse-tests-irot-missing-essential.avif")),
    *((file, ("exiv2",), "XMP", "exiv2 writes the packets of items anew")
      for file in ("me-heic-IMG_2927.HEIC", "me-heic-Issue_263_dotnet.heic")),
    ("me-heic-Issue_437_dotnet_.heic", ("either",), "EXIF 34665",
     "exiv2 refuses the file, and exiftool lists no pointers"),
    ("me-heic-Issue_487.heic", ("exiftool",), "GPS [24]",
     "0/0 is nan here, nothing there"),
    ("Panasonic.rw2", ANY, "*", "the peers add the tags of the JPEG preview inside"),
    ("AFCP.jpg", ("exiftool",), "IPTC *", "stands in a trailer, in no resource of Photoshop's"),
    ("FotoStation.jpg", ("exiftool",), "IPTC *",
     "stands in a trailer, in no resource of Photoshop's"),
    ("Nikon.nef", ("exiftool",), "IPTC *", "exiftool adds a second copy, from the maker note"),
    ("ExtendedXMP.jpg", ("exiftool",), "XMP",
     "the first segment of the namespace counts, here one of the extension; exiftool joins them"),
    ("InfiRay.jpg", ("exiftool",), "GPS [247]", "0/0 is nan here, nothing or zero there"),
    ("jpg-tests-30-type_error.jpg", ("either",), "EXIF *",
     "the pointer to the Exif directory has the type ASCII, which keeps the peers from following"),
    ("jpg-xmp-no_exif.jpg", ("exiftool",), "EXIF 4009[1-5]",
     "written with the other byte order than that of the block, which counts here"),
    ("*.nef", ("exiftool",), "Model",
     "the bytes 0 0 0 1 in the profile's header, which for exiftool end before the first"),
    ("me-png-Issue_204_dotnet_.png", ("exiftool",), "XMP",
     "stands in a zTXt chunk \"Raw profile type xmp\" as digits; a packet's chunk is iTXt"),
    ("me-rw2-Issue_419.rw2", ("exiv2",), "EXIF 279",
     "stands behind a value that the file lacks, which ends the reading here"),
    ("me-rw2-Issue_419.rw2", ("codes",), "*tags: $$-39", "the value that the file lacks"),
    ("me-rw2-Issue_419.rw2", ("codes",), "chunks: $$-39", "the value that the file lacks"),
    ("me-rw2-Issue_419.rw2", ("exiv2",), "XMP",
     "there is none; exiv2 prints what kind of file it takes this for"),
)


def find(rows, file, peer, tag):
    """The first row that fits, by its number; None when there is none."""
    for number, (files, peers, tags, _) in enumerate(rows):
        if fnmatch.fnmatchcase(file, files) and peer in peers and fnmatch.fnmatchcase(tag, tags):
            return number
    return None


def unused(rows, numbers):
    return [row for number, row in enumerate(rows) if number not in numbers]
