"""What is compared by thumbnail_test.py, and why some thumbnails differ from the peers'."""
import fnmatch

SUFFIXES = {".jpg", ".jpeg", ".png", ".gif", ".bmp", ".tif", ".tiff", ".ico", ".cur"}

# Patterns of names, with the reason.
DIFFERENT = {
    "*-V3_A1_R5_G5_B5*.bmp": "alpha of one bit, which is never set here, does not count",
    "*-V3_R5_G6_B5.bmp": "five and six bits become the whole range; the peer's blue is not",
    "*-V3_X4_R4_G4_B4*.bmp": "bits become the whole range in each component",
    "*-V3_X8_R8_G8_B8_Top_Down.bmp": "the unused byte is no alpha",
    "*-V5_24_Bit.bmp": "the profile in the file counts",
    "*rle_overflow.bmp": "what run lengths skip is transparent",
    "*rlecut.bmp": "what run lengths skip is transparent",
    "*rletrns.bmp": "what run lengths skip is transparent",
    "*badrle*.bmp": "what run lengths skip is transparent",
    "*pal8os2v2.bmp": "run lengths of OS/2; the peers read them as pixels",
    "*rgb16-231.bmp": "two, three and one bit become the whole range",
    "*rgb16-3103.bmp": "ten bits become eight by rounding",
    "*rgb32fakealpha.bmp": "a bitmap without a mask of alpha has none",
    "*rgba16-*.bmp": "a mask of alpha counts, and bits become the whole range",
    "*rgba32-1010102.bmp": "a mask of alpha counts, and bits become the whole range",
    "*rgba32-81284.bmp": "a mask of alpha counts, and bits become the whole range",
    "*border_touching_layers.gif": "the picture on its screen, where nothing else is drawn",
    "*large-gif-anim-combine.gif": "the picture on its screen, where nothing else is drawn",
    "*gif-anim-oob.gif": "what lies outside the screen is not shown",
    "*bmp_v5_with_icc.ico": "a profile inside a bitmap inside an icon",
    "me-ico-Icon_1_.ico": "the picture with most colours, not the first",
    "*rgb32f_color.tiff": "numbers with a fraction are amounts of light",
    "*.hdr.tiff": "numbers with a fraction are amounts of light",
    "me-png-PngSuite-g*": "gAMA counts",
}
# Patterns of names that get a code, with the reason.
REFUSED = {
    "*Bad_badbitcount.bmp": "no bitmap has that many bits",
    "*badbitcount.bmp": "no bitmap has that many bits",
    "*Bad_height.bmp": "larger than the limit",
    "*reallybig.bmp": "larger than the limit",
    "*badwidth.bmp": "a width below 0",
    "*pal1huff.bmp": "Huffman runs of OS/2",
    "*rgb24jpeg.bmp": "a JPEG inside a bitmap, which is for printers",
    "*rgb24png.bmp": "a PNG inside a bitmap, which is for printers",
    "*ba-bm.bmp": "an array of bitmaps of OS/2",
    "me-bmp-*.ICO": "icons of OS/2",
    "*hpredict_cmyk.tiff": "Wine has no decoder for it",
    "*planar.tiff": "Wine has no decoder for it",
    "*ycbcr_*.tif": "Wine has no decoder for it",
    "*clusterfuzz-*.tif": "damaged",
    "*ico-oom-*.ico": "damaged",
    "me-png-PngSuite-x*": "damaged on purpose",
    "me-jpg-beach.jpg": "a height of 0, which a marker behind the scan would tell",
}


def reason(table, name):
    """The reason for a name, or None."""
    return next((why for pattern, why in table.items() if fnmatch.fnmatch(name, pattern)), None)


def judge(sources, found, answers, least):
    """Lines on what differs without a reason."""
    failures = []
    for source in sources:
        if source not in found:
            if reason(REFUSED, source.name) is None:
                failures.append(f"{source.parent.name}/{source.name}: {answers[source]}")
            continue
        peer, value = found[source]
        if peer is not None and value < least and reason(DIFFERENT, source.name) is None:
            failures.append(f"{source.parent.name}/{source.name}: {value:.1f} dB ({peer})")
    return failures
