"""Why some values of the plug-in are not those of a peer.

Each row: the file (a pattern), the peer, the tag or what else was compared (a pattern), the reason.
"""
import fnmatch

ANY = ("exiftool", "exiv2", "either")
NOT_READ = "the file is neither JPEG, PNG nor TIFF; the peers know its container"
BIG_TIFF = "offsets of 64 bits are another format than TIFF 6.0"

ROWS = (
    ("FujiFilm.raf", ANY, "*", NOT_READ),
    ("Minolta.mrw", ANY, "*", NOT_READ),
    ("CanonRaw.cr3", ANY, "*", NOT_READ),
    ("BigTIFF.btf", ANY, "*", BIG_TIFF),
    ("me-tif-BigTIFF-BigTIFF*.tif", ("exiftool",), "EXIF *", BIG_TIFF),
    ("me-tif-BigTIFF-BigTIFF*.tif", ("exiftool",), "Width", BIG_TIFF),
    ("me-tif-BigTIFF-BigTIFF*.tif", ("exiftool",), "Height", BIG_TIFF),
    ("me-tif-BigTIFF-BigTIFF*.tif", ("exiftool",), "Depth", BIG_TIFF),
    ("me-tif-BigTIFF-BigTIFF*.tif", ("codes",), "*: $$-39",
     BIG_TIFF + "; taken for such, the directory or its entries lie beyond the end"),
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
