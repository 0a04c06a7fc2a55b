"""Markdown of the reference as HTML: anchors, colours of examples, links between pages."""
import html
import re
from dataclasses import dataclass, field
from itertools import groupby

from markdown_it import MarkdownIt
from pygments.lexers import get_lexer_by_name
from pygments.token import STANDARD_TYPES, Name

from vell_lexer import VellLexer

RESULT_CODE = re.compile(r"-?\d+")


@dataclass
class Heading:
    level: int
    text: str
    anchor: str


@dataclass
class Rendered:
    """A text as HTML, in parts: the first one reaches up to the first heading of level two."""
    parts: list
    headings: list
    rows: dict = field(default_factory=dict)  # anchors of rows by result codes


def escaped(text):
    return html.escape(text, quote=True)


def slug(text):
    """As scripts/reference_pages.py expects it of links to headings."""
    return re.sub(r"[^\w\- ]", "", text.strip().lower()).replace(" ", "-")


def code_anchor(code):
    return f"code{code}"  # "code-43" is -43, "code43" is 43


def plain(text):
    """HTML as the text that it shows."""
    text = re.sub(r"<button.*?</button>|<a class=\"anchor\".*?</a>", "", text, flags=re.S)
    text = re.sub(r"</(?:p|li|tr|td|th|h\d|pre|dt|dd)>", " ", text)
    return re.sub(r"\s+", " ", html.unescape(re.sub(r"<[^>]*>", "", text))).strip()


def lexer_of(language):
    return VellLexer() if language == "vell" else get_lexer_by_name(language)


def css_class(kind):
    while kind not in STANDARD_TYPES:
        kind = kind.parent
    return STANDARD_TYPES[kind]


# Tables of three columns and more stand as blocks on narrow screens; browsers forget then that they
# are tables, so the roles are said.
ROLES = {"table_open": "table", "thead_open": "rowgroup", "tbody_open": "rowgroup",
         "tr_open": "row", "th_open": "columnheader", "td_open": "cell"}


def mark_wide_tables(tokens):
    table, labels, column = [], [], 0
    for index, token in enumerate(tokens):
        if token.type == "table_open":
            table, labels = [], []
        if token.type in ROLES:
            table.append(token)
        if token.type == "th_open":
            labels.append(tokens[index + 1].content)
        elif token.type == "tr_open":
            column = 0
        elif token.type == "td_open":
            if 0 < column < len(labels) - 1:
                token.attrSet("data-label", labels[column])
            column += 1
        elif token.type == "table_close" and len(labels) > 2:
            table[0].attrSet("class", "wide")
            for part in table:
                part.attrSet("role", ROLES[part.type])


class Renderer:
    """`functions` are the names that have a page; `link` turns a target of Markdown into one of the
    site."""

    def __init__(self, functions, link):
        self.functions = functions
        self.link = link
        self.codes = {}  # addresses of the rows that explain result codes
        self.pictures = set()  # names of files beside the pages that show them
        self.here = ""   # the function whose page this is: it has no links to itself
        self.markdown = MarkdownIt("commonmark", {"html": False}).enable("table")
        self.markdown.renderer.rules.update({
            "fence": self.fence})

    def code(self, text, language):
        """A block's text in colours; functions lead to their pages."""
        parts = []
        tokens = lexer_of(language).get_tokens(text.rstrip("\n"))
        for kind, run in groupby(tokens, key=lambda token: token[0]):
            value = "".join(piece for _, piece in run)
            name = css_class(kind)
            inner = escaped(value)
            if kind is Name.Function and value in self.functions and value != self.here:
                inner = f'<a href="{self.link(value + ".md")}">{inner}</a>'
            parts.append(f'<span class="{name}">{inner}</span>' if name else inner)
        return "".join(parts).rstrip("\n")

    def fence(self, tokens, index, options, env):
        language, *_ = tokens[index].info.split()
        text = tokens[index].content
        if language == "result":
            return ('<figure class="block result"><figcaption>Result</figcaption>'
                    f"<pre><code>{escaped(text.rstrip(chr(10)))}</code></pre></figure>\n")
        return (f'<figure class="block {language}"><pre><code>'
                f"{self.code(text, language)}</code></pre></figure>\n")

    def render(self, text, here="", explains_codes=False):
        """`explains_codes`: rows that begin with a result code get an anchor; elsewhere such a code
        leads there."""
        self.here = here
        tokens = self.markdown.parse(text)
        headings = self.number_headings(tokens)
        rows = self.mark_codes(tokens, explains_codes)
        mark_wide_tables(tokens)
        self.adjust_links(tokens)
        return Rendered(self.parts(tokens), headings, rows)

    def inline(self, text):
        """A line of Markdown without a paragraph around it."""
        tokens = self.markdown.parseInline(text)
        self.adjust_links(tokens)
        return self.markdown.renderer.render(tokens, self.markdown.options, {})

    def parts(self, tokens):
        starts = [index for index, token in enumerate(tokens)
                  if token.type == "heading_open" and token.tag == "h2"]
        bounds = [0, *starts, len(tokens)]
        return [self.markdown.renderer.render(tokens[start:end], self.markdown.options, {})
                for start, end in zip(bounds, bounds[1:])]

    def number_headings(self, tokens):
        headings = []
        taken = set()
        for index, token in enumerate(tokens):
            if token.type != "heading_open":
                continue
            inline = tokens[index + 1]
            text = "".join(child.content for child in inline.children)
            anchor = slug(text) or "section"
            number = 1
            while anchor in taken:
                anchor, number = f"{slug(text)}-{number}", number + 1
            taken.add(anchor)
            token.attrSet("id", anchor)
            headings.append(Heading(int(token.tag[1]), text, anchor))
            if token.tag != "h1":
                self.append_html(inline, f'<a class="anchor" href="#{anchor}" '
                                         f'aria-label="Address of: {escaped(text)}">#</a>')
        return headings

    def append_html(self, inline, text):
        piece = type(inline)("html_inline", "", 0)
        piece.content = text
        inline.children.append(piece)

    def mark_codes(self, tokens, explains):
        """Anchors at the rows that explain codes, and links to them."""
        rows = {}
        in_codes = False
        for index, token in enumerate(tokens):
            if token.type == "thead_open":
                in_codes = tokens[index + 3].content == "code"
            elif token.type == "table_close":
                in_codes = False
            elif in_codes and token.type == "tr_open" and tokens[index + 1].type == "td_open":
                cell = tokens[index + 2]
                if explains and RESULT_CODE.fullmatch(cell.content):
                    if cell.content not in rows:
                        rows[cell.content] = code_anchor(cell.content)
                        token.attrSet("id", rows[cell.content])
                elif not explains:
                    self.link_codes(cell)
        return rows

    def link_codes(self, cell):
        parts = cell.content.split(", ")
        if not any(part in self.codes for part in parts):
            return
        cell.children = []
        self.append_html(cell, ", ".join(
            f'<a href="{self.codes[part]}">{part}</a>' if part in self.codes
            else self.inline(part) for part in parts))

    def adjust_links(self, tokens):
        for token in tokens:
            for child in token.children or []:
                if child.type == "link_open":
                    child.attrSet("href", self.link(child.attrGet("href")))
                elif child.type == "image":
                    self.pictures.add(child.attrGet("src"))
