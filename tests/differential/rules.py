"""How the plug-in prints what a peer has read."""
import math
import re

TEXT_TAGS = range(40091, 40096)  # UTF-16 in bytes

# Tags that the plug-in prints outside the GPS directory, and in it.
PRINTED = {11, *range(256, 260), *range(262, 267), *range(269, 275), *range(277, 280),
           *range(282, 286), 296, 301, 305, 306, 315, 316, 513, 514, *range(529, 533), 33432, 33434,
           33437, 34665, 34850, 34852, 34853, 34855, 34856, *range(34864, 34867), 36864, 36867,
           36868, *range(36880, 36883), 37121, 37122, *range(37377, 37387), 37396, 37510,
           *range(37520, 37523), *range(37888, 37891), 37892, 37893, *TEXT_TAGS,
           *range(40960, 40966), 41483, 41484, *range(41486, 41489), 41492, 41493, 41495,
           *range(41728, 41731), *range(41985, 41997), 42016, *range(42032, 42038), 59932}


def is_printed(tag):
    return tag.section == "IPTC" or tag.number in (range(32) if tag.section == "GPS" else PRINTED)


def is_comment(tag):
    """A text that names its character set in eight bytes (Exif 2.3, 4.6.5)."""
    return tag.number in ((27, 28) if tag.section == "GPS" else (37510,))


def characters(numbers):
    return "".join(chr(int(number)) for number in numbers)


def signed32(number):
    return (number + 2**31) % 2**32 - 2**31


def fraction(text, raw, signed, from_file):
    numerator, denominator = map(int, text.split("/"))
    if raw:
        return f"{numerator}/{denominator}"
    if denominator == 0:
        return "" if signed and from_file else "nan"
    return f"{numerator / denominator:g}"


def rendered(tag, raw, from_file, little_endian):
    """The text for a tag with its type, as exiv2 gives it; None when that loses something.

    `from_file` tells the reader of TIFF files from that of blocks in other files.
    """
    parts = tag.value.split()
    if is_comment(tag):
        return None
    if not parts and tag.type not in ("Ascii", "String"):
        return ""
    if tag.type == "Byte":
        if tag.section == "GPS" and tag.number == 0:
            return ".".join("0" if len(parts) > 4 else part for part in parts)
        if tag.section == "GPS" and tag.number == 5:
            return parts[0]
        if tag.number in TEXT_TAGS:
            text = bytes(map(int, parts)).decode("utf-16-le" if little_endian else "utf-16-be",
                                                 "replace")
            return text.split("\0")[0]
        return characters(parts)
    if tag.type == "Ascii":
        return tag.value.split("\0")[0]
    if tag.type in ("Short", "SShort", "SLong", "SByte"):
        return parts[0]
    if tag.type == "Long":
        return parts[0] if from_file else str(signed32(int(parts[0])))
    if tag.type in ("Rational", "SRational"):
        return "\r".join(fraction(part, raw, tag.type == "SRational", from_file) for part in parts)
    if tag.type == "Undefined":
        return characters(parts)
    if tag.type in ("String", "Date", "Time"):  # an IPTC dataset
        return tag.value
    return None


def bare(text):
    """Dates and times without their separators, texts without what pads them."""
    return re.sub(r"[-:]", "", text).strip(" \0\r\n\t")


def numbers_in(text):
    try:
        return [float(word.replace("undef", "nan")) for word in str(text).split()]
    except ValueError:
        return None


def close(ours, theirs):
    # Six digits of an exponent (the units APEX) are fewer of the power.
    return (math.isnan(ours) and math.isnan(theirs)) or math.isclose(ours, theirs, rel_tol=5e-5,
                                                                     abs_tol=1e-9)


def converted(tag, ours):
    """Our numbers as exiftool gives them, which turns some units into others."""
    if tag.section == "GPS":
        if tag.number in (2, 4, 20, 22) and len(ours) == 3:
            return [ours[0] + ours[1] / 60 + ours[2] / 3600]
        return ours
    if tag.number == 37377 and abs(ours[0]) < 100:
        return [2 ** -ours[0]]
    if tag.number in (37378, 37381):
        return [2 ** (ours[0] / 2)]
    return ours


def equals_exiftool(tag, ours):
    """Whether our text is what exiftool read, which does not tell types."""
    theirs = tag.value
    if isinstance(theirs, list):
        theirs = " ".join(map(str, theirs))
    our_numbers, their_numbers = numbers_in(ours), numbers_in(theirs)
    if tag.section == "GPS" and tag.number == 0:
        return ours.split(".") == str(theirs).split()
    if tag.section == "GPS" and tag.number == 7 and our_numbers:
        hours, minutes, seconds = map(float, str(theirs).split(":"))
        return all(map(close, our_numbers, (hours, minutes, seconds)))
    if tag.section == "IPTC" and tag.number == 0:
        return int.from_bytes(ours.encode("latin-1"), "little") == int(theirs)
    if our_numbers and their_numbers:
        mine = converted(tag, our_numbers)
        # Of integers in an array the first one is printed.
        return all(map(close, mine, their_numbers)) and len(mine) in (1, len(their_numbers))
    if their_numbers and tag.number in (37121, 41728, 41729):
        return [ord(byte) for byte in ours] == their_numbers
    if tag.number == 41730 and their_numbers:  # two numbers of 16 bits, then bytes
        return [ord(byte) for byte in ours[4:]] == their_numbers[2:]
    if is_comment(tag):
        return equals_comment(ours, str(theirs))
    return ours == theirs or bare(ours) == bare(str(theirs).split("\0")[0])


def equals_comment(ours, theirs):
    """Ours has the character set in front."""
    theirs = re.sub(r'^charset="?\w+"? ?', "", theirs)
    if ours.startswith("UNICODE\0"):
        return any(bare(ours[8:].encode("latin-1").decode(order, "replace")) == bare(theirs)
                   for order in ("utf-16-le", "utf-16-be"))
    text = ours[8:] if ours[:8] in ("ASCII\0\0\0", "JIS\0\0\0\0\0", "\0" * 8) else ours
    return bare(text) == bare(theirs) or bare(text.split("\0")[0]) == bare(theirs)
