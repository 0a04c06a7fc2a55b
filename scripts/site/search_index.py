"""What the search page looks through: one entry for each page and each script step."""
import json
import re

from render import plain
from reference_pages import STEP

CODE = re.compile(r"(?<![\w`])-?\d+")
GUIDE_ROW = re.compile(r"^\| (-?\d+) \| (.*) \|$", re.M)


def unmarked(text):
    """A cell of Markdown as a text."""
    return re.sub(r"[`*]|\[([^\]]*)\]\([^)]*\)", lambda match: match[1] or "", text)


def explained_codes(page):
    """Causes by codes, as the guide has them; of a code that stands there twice the first one."""
    rows = [row for text in page.texts.values() for row in GUIDE_ROW.findall(text)]
    return {code: unmarked(" · ".join(cell.strip() for cell in cells.split("|") if cell.strip()))
            for code, cells in reversed(rows)}


class SearchIndex:
    def __init__(self):
        self.entries = []

    def add(self, address, title, kind, description, done=None, **fields):
        """Empty fields stay away. "text" is all that the page shows."""
        entry = {"address": address, "title": title, "kind": kind, "description": description,
                 **{name: value for name, value in fields.items() if value}}
        if done:
            entry["sections"] = [[heading.text, heading.anchor] for heading in done.headings
                                 if heading.level > 1 and not heading.text.startswith(STEP)]
            entry["text"] = plain(" ".join(done.parts))
        self.entries.append(entry)

    def add_guide(self, page, description, done):
        self.add(f"{page.name}.html", page.title, "guide", description, done,
                 codes=explained_codes(page) if done.rows else {})

    def add_function(self, page, words, description, steps, registered, done):
        self.add(f"{page.name}.html", page.name, "function", description, done, words=words,
                 keywords=page.properties["keywords"], subject=page.properties["subject"],
                 registered=" ".join(registered),
                 switches=[unmarked(row.cells[0]) for row in page.switches],
                 codes={code: unmarked(row.cells[1]) for row in reversed(page.codes)
                        for code in CODE.findall(row.cells[0])})
        for name, text, anchor in steps:
            self.add(f"{page.name}.html#{anchor}", name, "script step", text,
                     keywords=page.properties["keywords"], words=page.name)

    def script(self):
        """A script, not JSON: pages from the disk may load no other files."""
        lines = ",\n".join(json.dumps(entry, ensure_ascii=False, separators=(",", ":"))
                           for entry in self.entries)
        return f"window.searchIndex = [\n{lines}\n];\n"
