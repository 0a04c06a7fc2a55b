"""NOTICES.txt: what is inside the plug-in's file, under which licences, with all their texts."""
import re
import textwrap
from pathlib import Path

from components import PackageError, read_text

LICENCES = Path("/usr/share/common-licenses")  # which Debian's copyright files refer to
WIDTH = 79
RULE = "=" * WIDTH


def paragraph(text):
    return textwrap.fill(" ".join(text.split()), WIDTH)


def introduction(version):
    return "\n\n".join(map(paragraph, (
        f"This belongs to Vell File {version} for Windows, the file VellFile.fmx64 and its debug "
        "symbols.",
        """Vell File is free software under the GNU General Public License, version 2 or, at your
        option, any later version; the file LICENCE has the text. Its file contains the libraries
        and data below, too. The core of one of them, Poppler, is under version 2 or version 3 of
        that licence and no other: so the file as a whole may be passed on under that licence only,
        with its source. It comes without any warranty, as the licences say.""",
        """Source: whoever gave you this file without the complete corresponding source offers it
        to you and to anybody else, for at least three years from then, for no more than the cost of
        the copy. Ask there. It consists of the source of Vell File, with the scripts that build the
        plug-in, and of the Debian source packages that are named below with their versions.""",
        """Portions of this software are copyright The FreeType Project (www.freetype.org). All
        rights reserved. This software is based in part on the work of the Independent JPEG
        Group.""",
        """Each section has the complete copyright file of the Debian package that the library comes
        from. Such a file speaks of the whole package: tests, tools and documentation of it are not
        in the plug-in. The licences that these files refer to stand at the end.""")))


def listing(rows, facts):
    lines = []
    for number, row in enumerate(rows, 1):
        fact = facts[row.name]
        lines.append(f"{number:2}. {row.name} {fact.version}: {row.purpose}")
        for text in (f"Licence: {row.licence}", f"From: {fact.origin}",
                     f"Changed: {row.changed}" if row.changed else ""):
            lines += textwrap.wrap(text, WIDTH, initial_indent="    ", subsequent_indent="    ",
                                   break_on_hyphens=False)
    return "\n".join(lines)


def section(title, text):
    return f"{RULE}\n{title}\n{RULE}\n\n{text}"


def referred_licences(texts):
    """The files of Debian's folder of licences that the texts refer to, by their own names."""
    names = set()
    for text in texts:
        for name in re.findall(r"/usr/share/common-licenses/([\w.+-]*\w)", text):
            path = LICENCES / name
            if not path.exists():
                raise PackageError(f"{path} is missing, which a copyright file refers to")
            names.add(path.resolve().name)
    return sorted(names)


def notices(version, rows, facts):
    parts = [introduction(version), listing(rows, facts)]
    parts += [section(f"{number}. {row.name} {facts[row.name].version}", facts[row.name].notice)
              for number, row in enumerate(rows, 1)]
    parts += [section(f"Licence {name}, which sections above refer to", read_text(LICENCES / name))
              for name in referred_licences(facts[row.name].notice for row in rows)]
    return "\n\n".join(parts) + "\n"
