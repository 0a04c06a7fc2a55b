"""The pages of the reference: their form, and what stands on them.

A page of docs/reference/functions describes one function and has the form that the table of sections
below shows; a page of docs/reference/guide is free text with the same kind of examples.
Every fault is told with its file and line.
"""
import re
from dataclasses import dataclass, field
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
REFERENCE = ROOT / "docs" / "reference"

SUBJECTS = (
    "Contents of files", "Text and encodings", "Copying, moving, deleting",
    "Information about files", "Listing and searching", "Paths and folders", "Disks", "Dialogs",
    "Opening and showing", "Shell commands", "Metadata", "Pictures", "Documents", "Archives",
    "Drag and drop", "The plug-in",
)
HOSTS = ("all", "user")
PROPERTIES = ("subject", "keywords", "hosts", "since")

# Sections in their order: name, heading row of its table (None for free text), whether it must be
# there. "Script step: NAME" may stand several times.
STEP = "Script step"
SECTIONS = (
    ("Parameters", ("parameter", "type", "meaning"), True),
    ("Switches", ("switch", "default", "meaning"), True),
    (STEP, ("option", "values", "meaning"), False),
    ("Result", None, True),
    ("Result codes", ("code", "cause"), True),
    ("Notes", None, False),
    ("Examples", None, True),
    ("See also", None, True),
)
ORDER = {name: position for position, (name, _, _) in enumerate(SECTIONS)}
HEADINGS = {name: heading for name, heading, _ in SECTIONS}
NOTHING = "None."  # instead of a table without rows
LEAST_EXAMPLES = 2
WIDEST_STATEMENT = 110


@dataclass
class Statement:
    line: int
    text: str


@dataclass
class Example:
    title: str
    line: int
    statements: list
    result: str | None = None  # lines separated by "\n"
    result_line: int = 0  # of its first line
    result_end: int = 0  # of the fence that closes it
    is_run: bool = True


@dataclass
class Row:
    line: int
    cells: list


@dataclass
class Step:
    name: str
    line: int
    options: list = field(default_factory=list)


@dataclass
class Section:
    title: str
    line: int
    body: list = field(default_factory=list)  # pairs of line number and text


@dataclass
class Page:
    path: Path
    name: str
    properties: dict = field(default_factory=dict)
    title: str = ""
    summary: str = ""
    parameters: list = field(default_factory=list)
    switches: list = field(default_factory=list)
    steps: list = field(default_factory=list)
    codes: list = field(default_factory=list)
    texts: dict = field(default_factory=dict)  # of the sections without a table
    examples: list = field(default_factory=list)
    links: list = field(default_factory=list)  # pairs of line number and target


class Faults:
    """Faults of pages, each with its place."""

    def __init__(self):
        self.lines = []

    def add(self, path, line, message):
        place = path.relative_to(ROOT) if path.is_relative_to(ROOT) else path
        self.lines.append(f"{place}:{line}: {message}")


def split_cells(text):
    """The cells of a row; a bar with a backslash before it is none."""
    cells = re.split(r"(?<!\\)\|", text.strip())
    return [cell.strip().replace("\\|", "|") for cell in cells[1:-1]]


class Reader:
    """Reads the text of a page."""

    def __init__(self, path, faults, text=None):
        self.path = path
        self.faults = faults
        self.lines = (path.read_text(encoding="utf-8") if text is None else text).split("\n")
        self.page = Page(path, path.stem)

    def fault(self, line, message):
        self.faults.add(self.path, line, message)

    def read_function(self):
        start = self.read_properties()
        head, *sections = self.sections(start)
        self.page.title = head.title
        if head.title != self.page.name:
            self.fault(head.line, f"the title is {head.title!r}, the file is named {self.page.name}")
        self.page.summary = self.free_text(head)
        if not self.page.summary:
            self.fault(head.line, "a sentence that says what the function does is missing")
        self.check_order(sections)
        for section in sections:
            self.read_section(section)
        self.read_links()
        return self.page

    def read_guide(self):
        head, *sections = self.sections(0)
        self.page.title = head.title
        self.page.summary = self.free_text(head)
        if not re.match(r"\w|`", self.page.summary):
            self.fault(head.line, "a sentence that says what the page is about is missing")
        for section in [head, *sections]:
            self.page.texts[section.title] = self.free_text(section)
            self.page.examples += self.examples_in(section)
        self.check_results()
        self.read_links()
        return self.page

    def read_properties(self):
        """The index of the line behind the properties."""
        if self.lines[0] != "---":
            self.fault(1, 'the page begins with "---" and its properties')
            return 0
        for index, line in enumerate(self.lines[1:], 1):
            if line == "---":
                self.check_properties()
                return index + 1
            name, colon, value = line.partition(": ")
            if not colon or name not in PROPERTIES or not value.strip():
                self.fault(index + 1, f'"name: value" is expected, the names are {", ".join(PROPERTIES)}')
            elif name in self.page.properties:
                self.fault(index + 1, f"{name} stands here twice")
            self.page.properties[name] = value.strip()
        self.fault(1, 'the properties do not end with "---"')
        return 1

    def check_properties(self):
        properties = self.page.properties
        for name in PROPERTIES:
            if name not in properties:
                self.fault(1, f"the property {name} is missing")
        if properties.get("subject", SUBJECTS[0]) not in SUBJECTS:
            self.fault(1, f"no such subject: {properties['subject']}")
        if properties.get("hosts", HOSTS[0]) not in HOSTS:
            self.fault(1, f"hosts is one of {', '.join(HOSTS)}")
        if not re.fullmatch(r"\d+\.\d+", properties.get("since", "1.0")):
            self.fault(1, "since is a version such as 14.0")

    def sections(self, start):
        """The title of the page with what follows it, then each section of the second level."""
        sections = [Section("", start + 1)]
        fence = None
        for number, line in enumerate(self.lines[start:], start + 1):
            mark = re.match(r"`{3,}", line)
            if mark and fence is None:
                fence = mark[0]
            elif mark and line == fence:
                fence = None
            if fence is None and line.startswith("# "):
                if sections[-1].title or len(sections) > 1:
                    self.fault(number, "a page has one title")
                sections[0] = Section(line[2:].strip(), number)
            elif fence is None and line.startswith("## "):
                sections.append(Section(line[3:].strip(), number))
            else:
                sections[-1].body.append((number, line))
        if fence is not None:
            self.fault(len(self.lines), f"a block that begins with {fence} is not closed")
        if not sections[0].title:
            self.fault(start + 1, 'the title, "# Name", is missing')
        return sections

    def check_order(self, sections):
        last = -1
        seen = set()
        for section in sections:
            name = STEP if section.title.startswith(STEP + ": ") else section.title
            if name not in ORDER or name == STEP == section.title:
                self.fault(section.line, f"no section of this form is named {section.title!r}")
                continue
            if ORDER[name] < last or (name in seen and name != STEP):
                self.fault(section.line, f"the sections are, in this order: {', '.join(ORDER)}")
            last = ORDER[name]
            seen.add(name)
        for name, _, must in SECTIONS:
            if must and name not in seen:
                self.fault(len(self.lines), f'the section "{name}" is missing')

    def read_section(self, section):
        page = self.page
        if section.title.startswith(STEP + ": "):
            name = section.title[len(STEP) + 2:]
            page.steps.append(Step(name, section.line, self.table(section, HEADINGS[STEP])))
        elif section.title == "Parameters":
            page.parameters = self.table(section, HEADINGS["Parameters"])
        elif section.title == "Switches":
            page.switches = self.table(section, HEADINGS["Switches"])
        elif section.title == "Result codes":
            page.codes = self.table(section, HEADINGS["Result codes"])
            self.check_codes()
        elif section.title == "Examples":
            page.examples = self.examples_in(section)
            self.check_examples(section)
        else:
            page.texts[section.title] = self.free_text(section)
            if not page.texts[section.title]:
                self.fault(section.line, f'the section "{section.title}" is empty')

    def free_text(self, section):
        return "\n".join(line for _, line in section.body).strip("\n")

    def table(self, section, heading):
        """The rows of a section's only table. Sentences may stand before and behind it."""
        rows = []
        cells_end = False
        lines = [(number, line) for number, line in section.body if line.strip()]
        table = [(number, line) for number, line in lines if line.startswith("|")]
        self.page.texts[section.title] = "\n".join(
            line for _, line in section.body if not line.startswith("|")).strip("\n")
        if not table:
            if [line for _, line in lines] != [NOTHING]:
                self.fault(section.line, f'a table, or the sentence "{NOTHING}", is expected')
            return rows
        first, *rest = table
        if split_cells(first[1]) != list(heading):
            self.fault(first[0], f"the table's heading is | {' | '.join(heading)} |")
        if not rest or not re.fullmatch(r"(\|-+)+\|", rest[0][1].strip()):
            self.fault(first[0], "a line |---|---| is expected below the heading")
        for (before, _), (number, line) in zip(table, table[1:]):
            cells_end |= number != before + 1
        if cells_end:
            self.fault(first[0], "a section has one table")
        for number, line in rest[1:]:
            cells = split_cells(line)
            if len(cells) != len(heading) or not cells[0]:
                self.fault(number, f"a row has {len(heading)} cells, the first of which is not empty")
                continue
            rows.append(Row(number, cells))
        if not rows:
            self.fault(first[0], f'a table without rows is the sentence "{NOTHING}"')
        return rows

    def check_codes(self):
        for row in self.page.codes:
            for code in re.split(r", ", row.cells[0]):
                if not re.fullmatch(r"-?\d+|`[^`]+`", code):
                    self.fault(row.line, f"no code: {code}")

    def examples_in(self, section):
        examples = []
        title, title_line = section.title, section.line
        lines = iter(section.body)
        for number, line in lines:
            if line.startswith("### "):
                title, title_line = line[4:].strip(), number
            mark = re.match(r"(`{3,})(.*)", line)
            if not mark:
                continue
            words = mark[2].split()
            block = []
            end = number
            for end, text in lines:
                if text == mark[1]:
                    break
                block.append((end, text))
            self.take_block(examples, words, block, (title, title_line), (number, end))
        return examples

    def take_block(self, examples, words, block, titled, place):
        number, end = place
        if words == ["vell"] or words == ["vell", "not-run"]:
            statements = [Statement(line, text) for line, text in block
                          if text.strip() and not text.startswith("//")]
            if not statements:
                self.fault(number, "an example without a statement")
            for statement in statements:
                if len(statement.text) > WIDEST_STATEMENT:
                    self.fault(statement.line, f"more than {WIDEST_STATEMENT} characters in a line")
            examples.append(Example(*titled, statements, is_run=len(words) == 1))
        elif words == ["result"] or words == ["result", "not-run"]:
            if not examples or examples[-1].result is not None:
                self.fault(number, "a result without an example before it")
                return
            if (len(words) == 1) != examples[-1].is_run:
                self.fault(number, "not-run stands at the example and at its result, or at neither")
            examples[-1].result = "\n".join(text for _, text in block)
            examples[-1].result_line = number + 1
            examples[-1].result_end = end
        elif words not in (["text"], ["xml"], ["json"]):
            self.fault(number, "a block is vell, result, text, xml or json, and no other")

    def check_examples(self, section):
        if len(self.page.examples) < LEAST_EXAMPLES:
            self.fault(section.line, f"a page has {LEAST_EXAMPLES} examples at least")
        for example in self.page.examples:
            if example.title == section.title:
                self.fault(example.line, 'an example has a title, "### What is done"')
        self.check_results()

    def check_results(self):
        for example in self.page.examples:
            if example.is_run and example.result is None:
                self.fault(example.line, "the example has no result block")

    def read_links(self):
        fence = None
        for number, line in enumerate(self.lines, 1):
            mark = re.match(r"`{3,}", line)
            if mark:
                fence = mark[0] if fence is None else (None if line == fence else fence)
            if fence is None:
                for target in re.findall(r"\]\(([^)\s]+)\)", re.sub(r"`[^`]*`", "", line)):
                    self.page.links.append((number, target))


def heading_anchors(path):
    """The anchors of a page's headings, as sites for Markdown make them."""
    anchors = set()
    for line in path.read_text(encoding="utf-8").split("\n"):
        if line.startswith("#"):
            text = re.sub(r"[^\w\- ]", "", line.lstrip("#").strip().lower())
            anchors.add(text.replace(" ", "-"))
    return anchors


def read_pages(faults, reference=REFERENCE):
    """The pages of functions and those of the guide, by their names."""
    functions = {path.stem: Reader(path, faults).read_function()
                 for path in sorted((reference / "functions").glob("*.md"))}
    guides = {path.stem: Reader(path, faults).read_guide()
              for path in sorted((reference / "guide").glob("*.md"))}
    return functions, guides


def check_links(pages, faults):
    """Links lead to files that are there, and to headings in them."""
    for page in pages:
        for line, target in page.links:
            if re.match(r"[a-z]+:", target):
                continue
            name, _, anchor = target.partition("#")
            path = (page.path.parent / name).resolve() if name else page.path
            if not path.is_file():
                faults.add(page.path, line, f"the link leads nowhere: {target}")
            elif anchor and anchor not in heading_anchors(path):
                faults.add(page.path, line, f"no such heading: {target}")
