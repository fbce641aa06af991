"""One file of the tree, as the rules see it: its text, its code, its includes, what it allows."""

import re
from typing import NamedTuple

CPP = (".h", ".cpp")

# What C++ text falls apart into, as far as needed to tell code from comments and literals.
TOKEN = re.compile(
    r"""(?P<comment>//(?:\\\n|[^\n])*|/\*.*?(?:\*/|\Z))
      | (?P<raw>(?:u8|[uUL])?R"(?P<mark>[^()\\\s]{0,16})\(.*?\)(?P=mark)")
      | (?P<word>[A-Za-z_]\w*|\d(?:'?[\w.])*)
      | (?P<literal>"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])*')""",
    re.VERBOSE | re.DOTALL,
)
DIRECTIVE = re.compile(r"^[ \t]*\#(?:\\\n|[^\n])*", re.MULTILINE)
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*(?:"([^"\n]+)"|<([^>\n]+)>)')
ALLOW = re.compile(r"//\s*tidy:\s*allow\(([\w-]*)\)[ \t]*(.*)")


class Finding(NamedTuple):
    path: str
    line: int
    rule: str
    what: str
    remedy: str

    def __str__(self):
        return f"{self.path}:{self.line}: {self.rule}: {self.what}: {self.remedy}"


class Include(NamedTuple):
    line: int
    name: str
    quoted: bool


class Allow(NamedTuple):
    line: int
    rule: str
    reason: str


def blank(text):
    """The same lines and columns with nothing in them."""
    return re.sub(r"[^\n]", " ", text)


def code_of(text):
    """C++ text without comments and without what stands in its literals; offsets stay."""

    def keep(match):
        token = match.group()
        if match.lastgroup == "word":
            return token
        if match.group("comment") is not None:
            return blank(token)
        return token[0] + blank(token[1:-1]) + token[-1] if match.group("literal") else (
            '"' + blank(token[1:-1]) + '"')

    return TOKEN.sub(keep, text)


class Source:
    """A file by its path from the root of the tree, with '/' between the folders."""

    def __init__(self, path, text):
        self.path = path
        self.text = text
        self.is_cpp = path.endswith(CPP)
        self.folders = path.split("/")[:-1]
        self.room = self.folders[0] if self.folders else ""
        self.code = code_of(text) if self.is_cpp else ""

    def line_of(self, offset):
        return self.text.count("\n", 0, offset) + 1

    def finding(self, line, rule, what, remedy):
        return Finding(self.path, line, rule, what, remedy)

    @property
    def statements(self):
        """The code without preprocessor directives."""
        return DIRECTIVE.sub(lambda match: blank(match.group()), self.code)

    @property
    def includes(self):
        code = self.code.split("\n")
        for number, line in enumerate(self.text.split("\n")):
            match = INCLUDE.match(line)
            if match and code[number].lstrip().startswith("#"):
                yield Include(number + 1, match[1] or match[2], match[1] is not None)

    @property
    def allows(self):
        """The exceptions that the file claims, each for its own line and the next."""
        for comment in TOKEN.finditer(self.text) if self.is_cpp else ():
            match = ALLOW.match(comment.group()) if comment.group("comment") else None
            if match:
                yield Allow(self.line_of(comment.start()), match[1], match[2].strip())
