"""What is compared by thumbnail_test.py, and why some thumbnails differ from the peers'."""
import fnmatch

SUFFIXES = {".jpg", ".jpeg", ".png", ".gif", ".bmp", ".tif", ".tiff", ".ico", ".cur"}

# Patterns of names, with the reason.
DIFFERENT = {}
# Patterns of names that get a code, with the reason.
REFUSED = {}


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
