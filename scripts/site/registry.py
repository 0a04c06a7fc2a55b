"""What the plug-in registers, read from the tables of its sources.

The site is built where there is neither a compiler nor Wine, so the rows of function_table.cpp and
step_table.cpp are read as the initializers that they are: strings, numbers, names, braces.
"""
import re
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
VOCABULARY = ROOT / "src" / "plugin" / "vocabulary"

TOKEN = re.compile(r'''
    (?P<space> \s+ | //[^\n]* | /\*.*?\*/ | \#[^\n]* )
  | (?P<string> "(?:\\.|[^"\\])*" )
  | (?P<number> -?(?:0[xX][0-9A-Fa-f]+ | \d+) )
  | (?P<name> [A-Za-z_][\w:]* )
  | (?P<mark> . )
''', re.X | re.S)


class RegistryError(Exception):
    """The tables have another form than the one that is known here."""


@dataclass(frozen=True)
class Function:
    id: int
    name: str
    prototype: str
    description: str


@dataclass(frozen=True)
class Step:
    id: int
    name: str
    description: str


def tokens(text):
    for match in TOKEN.finditer(text):
        if match.lastgroup != "space":
            yield match.lastgroup, match[0]


def unescaped(literal):
    return re.sub(r"\\(.)", r"\1", literal[1:-1])


def value_of(parts):
    """One value from its tokens. Literals side by side are one; what a macro among them is, the
    compiler knows."""
    kinds = {kind for kind, _ in parts}
    if "list" in kinds:
        return parts[-1][1]
    if "string" in kinds:
        return "".join(unescaped(text) if kind == "string" else "…" for kind, text in parts)
    return " ".join(text for _, text in parts)


def initializer(stream):
    """The values of a list behind its "{": texts, numbers, names with calls, lists."""
    values, current = [], []

    def close():
        if current:
            values.append(value_of(current))
            current.clear()

    depth = 0
    for kind, text in stream:
        if text == "{" and kind == "mark":
            current.append(("list", initializer(stream)))
        elif text == "}" and kind == "mark":
            close()
            return values
        elif text == "," and kind == "mark" and depth == 0:
            close()
        else:
            depth += {"(": 1, ")": -1}.get(text, 0) if kind == "mark" else 0
            current.append((kind, text))
    raise RegistryError("a list is not closed")


def rows_of(source, kind):
    """The rows of "constexpr KIND name[] = { … };"."""
    stream = tokens(source)
    seen = []
    for _, text in stream:
        seen = [*seen[-5:], text]
        if seen[:1] == [kind] and seen[2:] == ["[", "]", "=", "{"]:
            return initializer(stream)
    raise RegistryError(f"there is no table of {kind}")


def whole(row, columns, table):
    """The row, once its columns are numbers and texts as expected."""
    for index, kind in columns.items():
        value = row[index] if index < len(row) else None
        if not isinstance(value, str) or not re.fullmatch(kind, value, re.S):
            raise RegistryError(f"{table}: unknown form of the row {row}")
    return row


def read_functions(source=None):
    if source is None:
        source = (VOCABULARY / "function_table.cpp").read_text(encoding="utf-8")
    rows = [whole(row, {0: r"\d+", 4: r"VlFile_\w+.*", 5: r".+"}, "functions")
            for row in rows_of(source, "FunctionRow")]
    return [Function(int(row[0]), re.match(r"\w+", row[4])[0], row[4], row[5]) for row in rows]


def read_steps(source=None):
    if source is None:
        source = (VOCABULARY / "step_table.cpp").read_text(encoding="utf-8")
    rows = [whole(row, {0: r"\d+", 1: r".+", 2: r".+"}, "steps")
            for row in rows_of(source, "StepRow")]
    return [Step(int(row[0]), row[1], row[2]) for row in rows]
