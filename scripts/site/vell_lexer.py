"""The calculation language of the examples, for Pygments."""
from pygments.lexer import RegexLexer, words
from pygments.token import Comment, Keyword, Name, Number, Operator, Punctuation, String, Text


class VellLexer(RegexLexer):
    name = "FileMaker calculation"
    aliases = ["vell"]

    tokens = {
        "root": [
            (r"//[^\n]*", Comment.Single),
            (r"/\*.*?\*/", Comment.Multiline),
            (r'"', String, "string"),
            (r"¶", String.Escape),
            (r"\$\$?[^\W\d]\w*", Name.Variable),
            (r"\d+(?:\.\d+)?|\.\d+", Number),
            (words(("and", "or", "xor", "not", "step"), prefix=r"\b", suffix=r"\b"), Keyword),
            (r"VlFile_\w+", Name.Function),
            (r"[^\W\d]\w*(?=\s*\()", Name.Builtin),
            (r"[^\W\d]\w*", Name),
            (r"<>|≠|<=|≤|>=|≥|[-+*/^&=<>]", Operator),
            (r"[()\[\];:]", Punctuation),
            (r"\s+", Text),
        ],
        "string": [
            (r'\\["\\¶]', String.Escape),  # any other backslash stands for itself
            (r"¶", String.Escape),
            (r'"', String, "#pop"),
            (r'[^"\\¶]+|\\', String),
        ],
    }
