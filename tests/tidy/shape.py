"""The size of things: lines of a file, lines of a C++ function."""

import re

FILE_LINES = 400
FUNCTION_LINES = 60

MEASURED = (".h", ".cpp", ".py")

OPERATOR = re.compile(r"\boperator\s*(?:\(\s*\)|\[\s*\]|\"\s*\"\s*\w+|[^\w\s(]+|(?:new|delete)\b)")
LABEL = re.compile(r"\b(?:public|private|protected)\s*:(?!:)")
ATTRIBUTE = re.compile(r"\[\[.*?\]\]|\balignas\s*\([^()]*\)", re.DOTALL)
ANGLES = re.compile(r"<[^<>;]*>")
GROUP = re.compile(r"\([^()]*\)|\{[^{}]*\}|\[[^\[\]]*\]")
NAMESPACE = re.compile(r"\bnamespace(?:\s+[\w:]+)?$|^extern\s*\"\s*\"$")
TYPE = re.compile(r"^(?:typedef\s+|static\s+|inline\s+|constexpr\s+|const\s+)*"
                  r"(?:class|struct|union|enum)\b[^#]*$")
LAMBDA = re.compile(r"@\s*(?:\#\s*)?(?:mutable\b\s*|constexpr\b\s*|noexcept\b\s*)*(?:->.*)?$",
                    re.DOTALL)


def check(source):
    """Findings of the rules `file-length`, `function-length` and `braces`."""
    if not source.path.endswith(MEASURED):
        return
    lines = source.text.count("\n") + (not source.text.endswith("\n"))
    if lines > FILE_LINES:
        yield source.finding(lines, "file-length", f"{lines} lines",
                             f"at most {FILE_LINES}; split it by duty")
    if source.is_cpp:
        yield from check_functions(source)


def check_functions(source):
    found, balanced = functions(source.statements)
    if not balanced:
        yield source.finding(1, "braces", "braces don't match, so functions can't be measured",
                             "balance the braces within each #if branch")
    for start, end, name in found:
        length = source.text.count("\n", start, end) + 1
        if length > FUNCTION_LINES:
            yield source.finding(source.line_of(start), "function-length",
                                 f"{name} has {length} lines",
                                 f"at most {FUNCTION_LINES}; name its steps as functions")


class Scope:
    """An open brace: where its head began, what the head says, what the brace opens."""

    def __init__(self, kind, start, head, parens):
        self.kind = kind
        self.start = start
        self.head = head
        self.parens = parens


def functions(code):
    """([(start, end, name)], balanced): every outermost function of code without comments,
    directives and literals, from the first character of its head to its closing brace."""
    found, scopes = [], []
    head, parens = 0, 0
    for match in re.finditer(r"[(){};]", code):
        token, at = match.group(), match.start()
        if token in "()":
            parens += 1 if token == "(" else -1
        elif token == ";" and parens == 0:
            head = at + 1
        elif token == "{":
            inside = any(scope.kind == "function" for scope in scopes)
            kind = "block" if inside else classify(code[head:at], parens)
            scopes.append(Scope(kind, head, code[head:at], parens))
            if kind != "initializer":
                head, parens = at + 1, 0
        elif token == "}":
            if not scopes:
                return found, False
            scope = scopes.pop()
            parens = scope.parens
            if scope.kind == "function":
                found.append((first_line(scope), at, name_of(scope.head)))
            if scope.kind != "initializer":
                head = scope.start if parens else at + 1
    return found, not scopes


def first_line(scope):
    """Where the head of a function begins: after blanks and access labels."""
    begin = 0
    for label in LABEL.finditer(scope.head):
        begin = label.end()
    return scope.start + begin + len(scope.head[begin:]) - len(scope.head[begin:].lstrip())


def flatten(head):
    """A head with each bracketed group as one sign: () is #, {} is %, [] is @; no template
    arguments, no operator signs, no labels."""
    head = OPERATOR.sub("operator_", ATTRIBUTE.sub("", LABEL.sub(" ", head))).strip()
    signs = {"(": "#", "{": "%", "[": "@"}
    while True:
        flat = GROUP.sub(lambda match: signs[match.group()[0]], head)
        flat = ANGLES.sub("", flat.replace("->", "\0")).replace("\0", "->")
        if flat == head:
            return re.sub(r"\btemplate\b|\brequires\s*#", "", flat).strip()
        head = flat


def classify(head, parens):
    """What a brace opens after this head: namespace, type, function or initializer."""
    if parens > 0:
        head = head[unclosed_paren(head) + 1:]
    flat = flatten(head)
    if LAMBDA.search(flat):
        return "function"
    if parens > 0:
        return "initializer"
    if NAMESPACE.search(flat):
        return "namespace"
    if TYPE.search(flat):
        return "type"
    if "#" not in flat or re.search(r"(?<![=!<>])=(?!=)", flat):
        return "initializer"
    members = re.search(r"#[^#:]*(?<!:):(?!:)", flat)
    if members and re.search(r"[\w>]$", flat) and not flat.endswith("try"):
        return "initializer"
    return "function"


def unclosed_paren(head):
    """The offset of the last parenthesis of the head that is still open."""
    depth = 0
    for at in range(len(head) - 1, -1, -1):
        depth += {")": 1, "(": -1}.get(head[at], 0)
        if depth < 0:
            return at
    return -1


def name_of(head):
    """What the reader calls a function: the words before its first parameter list."""
    head = LABEL.sub(" ", head)
    match = re.search(r"([~\w:]+(?:<[^()]*>)?|operator\s*[^\w\s]+)\s*\(([^()]*)\)", head)
    if not match:
        return "a lambda"
    if re.fullmatch(r"[A-Z][A-Z_]+", match[1]):
        return f"{match[1]}({match[2].strip()})"
    return match[1]
