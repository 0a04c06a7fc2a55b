"""A zip archive that depends on nothing but what is in it and one time."""
import time
import zipfile

REGULAR_FILE = 0o100644
WINDOWS_FROM = 315532800  # 1980, where the times of archives begin


def write_zip(path, files, epoch):
    """`files`: contents by names with slashes."""
    moment = time.gmtime(max(epoch, WINDOWS_FROM))[:6]
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name, content in sorted(files.items()):
            entry = zipfile.ZipInfo(name, moment)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3
            entry.external_attr = REGULAR_FILE << 16
            archive.writestr(entry, content)
