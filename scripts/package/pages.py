"""A page of Markdown as HTML that stands alone, and as plain text."""
import html
import re
import textwrap

from markdown_it import MarkdownIt

STYLE = """
:root { color-scheme: light dark; }
body { font: 1rem/1.55 "Segoe UI", system-ui, sans-serif; max-width: 44rem; margin: 2rem auto;
  padding: 0 1rem; }
h1, h2 { line-height: 1.25; }
h2 { margin-top: 2.2rem; }
table { border-collapse: collapse; }
th, td { text-align: left; vertical-align: top; padding: .2em .8em .2em 0; }
code, pre { font-family: Consolas, monospace; font-size: .94em; }
code { background: #8882; padding: .1em .25em; border-radius: 3px; overflow-wrap: anywhere; }
pre { background: #8882; padding: .7rem 1rem; overflow-x: auto; border-radius: 4px; }
pre code { background: none; padding: 0; }
"""
WIDTH = 79
UNBROKEN = "\u2007"  # a blank that lines are not broken at


def parsed(text):
    markdown = MarkdownIt("commonmark", {"html": False}).enable("table")
    return markdown, markdown.parse(text)


def title_of(tokens):
    return next(token.content for token in tokens if token.type == "inline")


def as_html(text):
    markdown, tokens = parsed(text)
    body = markdown.renderer.render(tokens, markdown.options, {})
    return ('<!doctype html>\n<html lang="en">\n<head>\n<meta charset="utf-8">\n'
            '<meta name="viewport" content="width=device-width, initial-scale=1">\n'
            f"<title>{html.escape(title_of(tokens))}</title>\n<style>{STYLE}</style>\n</head>\n"
            f"<body>\n{body}</body>\n</html>\n")


def words(inline):
    """A line of text without marks; a link to another place has its address behind it."""
    parts, address = [], ""
    for child in inline.children:
        if child.type == "link_open":
            address = child.attrGet("href")
        elif child.type == "link_close" and re.match("https?:", address):
            parts.append(f" ({address})")
        elif child.type in ("softbreak", "hardbreak"):
            parts.append(" ")
        elif child.type == "code_inline":
            parts.append(child.content.replace(" ", UNBROKEN))
        else:
            parts.append(child.content)
    return "".join(parts)


def as_text(text):
    _, tokens = parsed(text)
    blocks, lists, mark = [], [], ""
    for index, token in enumerate(tokens):
        if token.type in ("bullet_list_open", "ordered_list_open"):
            lists.append(0 if token.type == "ordered_list_open" else None)
        elif token.type in ("bullet_list_close", "ordered_list_close"):
            lists.pop()
        elif token.type == "list_item_open":
            if lists[-1] is not None:
                lists[-1] += 1
            mark = "- " if lists[-1] is None else f"{lists[-1]}. "
        elif token.type == "fence":
            blocks.append(textwrap.indent(token.content.rstrip("\n"), "    " * (1 + len(lists))))
        elif token.type == "inline":
            line = words(token)
            if tokens[index - 1].type == "heading_open":
                rule = "=" if tokens[index - 1].tag == "h1" else "-"
                blocks.append(f"{line}\n{rule * len(line)}")
            else:
                room = "   " * len(lists)
                blocks.append(textwrap.fill(
                    line, WIDTH, initial_indent=room[:-3] + mark.ljust(3) if mark else room,
                    subsequent_indent=room, break_long_words=False, break_on_hyphens=False))
            mark = ""
    return "\n\n".join(blocks).replace(UNBROKEN, " ") + "\n"
