"""What a class with a describe() forgets to describe: each field `name_` has to be named in it."""

import re

DESCRIBE = re.compile(r"\bstatic\s+(?:constexpr\s+)?void\s+describe\s*\([^()]*\)\s*\{")
CLASS = re.compile(r"\b(?:class|struct)\s+(\w+)[^;{}()]*\{")
BLOCK = re.compile(r"\{[^{}]*\}")
# The name of a declaration at the depth of the class: at its end, or before its initializer.
FIELD = re.compile(r"[\w>*&]\s+(\w+_)\s*(?:=[^;]*|\{\s*\}|\[[^\]]*\])?\s*;")
STATIC = re.compile(r"\bstatic\b[^;{}]*;")


def check(source):
    """Findings of the rule `described`."""
    if not source.path.endswith(".h") or source.room in ("tests", "bench", "fuzz"):
        return
    code = source.statements
    for match in CLASS.finditer(code):
        body = body_at(code, match.end())
        own = own_code(body)
        described = described_in(body, own)
        if described is None:
            continue
        for field in FIELD.finditer(STATIC.sub(lambda m: " " * len(m.group()), own)):
            if not re.search(rf"::\s*{field[1]}\b", described):
                yield source.finding(
                    source.line_of(match.end() + field.start(1)), "described",
                    f"'{field[1]}' of {match[1]} is not in its describe()",
                    "describe it, in order of declaration")


def body_at(code, start):
    """The code from behind an opening brace to its closing one."""
    depth = 1
    for at in range(start, len(code)):
        depth += {"{": 1, "}": -1}.get(code[at], 0)
        if depth == 0:
            return code[start:at]
    return code[start:]


def own_code(body):
    """The body of a class with all that stands in braces blanked, offsets kept."""
    while True:
        flat = BLOCK.sub(lambda match: re.sub(r"[^\n]", " ", match.group())[:-2] + "\1\1", body)
        if flat == body:
            return body.replace("\1\1", "{}")
        body = flat


def described_in(body, own):
    """The body of the class's own describe(), or None; that of a nested class doesn't count."""
    for match in DESCRIBE.finditer(body):
        if DESCRIBE.match(own[match.start():match.start() + len(match.group()) - 1] + "{"):
            return body_at(body, match.end())
    return None
