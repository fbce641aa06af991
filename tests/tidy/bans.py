"""What only certain rooms may touch: clock, randomness, sleep, threads, raw new and delete."""

import re
from typing import NamedTuple

from source import blank

# Words that may stand right before a call; any other word there is the type of a declaration.
BEFORE_CALL = {"return", "else", "do", "case", "throw", "and", "or", "not", "co_return"}


class Ban(NamedTuple):
    rule: str
    names: tuple  # patterns of what is banned wherever it stands
    calls: tuple  # patterns of what is banned as a call of a free function
    rooms: tuple  # where it is allowed
    mirrored: bool  # and in the tests of those rooms
    remedy: str


def named(pattern):
    return re.compile(pattern)


def called(names, arguments=""):
    """A call of a function by one of these names; `is_free_call` tells it from a member's."""
    return re.compile(rf"\b(?:{names})\s*\({arguments}")


BANS = (
    Ban("clock",
        (named(r"\b(?:system|steady|high_resolution|utc)_clock\b"),),
        (called("clock_gettime|gettimeofday|timespec_get"),
         called("time", r"\s*(?:nullptr|NULL|0|&\s*\w+)\s*\)"),
         called("clock", r"\s*\)")),
        ("apps", "linux", "bench"), True,
        "ask Vesk::now()"),
    Ban("randomness",
        (named(r"\b(?:random_device|mt19937(?:_64)?|default_random_engine|minstd_rand0?)\b"),),
        (called("RAND_bytes|RAND_priv_bytes|getrandom|getentropy|arc4random\w*"),
         called("s?rand|s?random|[dlm]rand48")),
        ("apps", "linux", "lab"), True,
        "take Vesk::world().rand() for delays, Vesk::world().randomBytes() for keys"),
    Ban("sleep",
        (named(r"\b(?:sleep_for|sleep_until)\b"),),
        (called("sleep|usleep|nanosleep|clock_nanosleep"),),
        (), False,
        "arm a timer reactor of Zorn::TimerWheel with timeMinIs()"),
    Ban("threads",
        (named(r"\bstd::(?:jthread|thread|async|packaged_task|promise)\b"),
         named(r"\bstd::(?:(?:\w+_)?mutex|condition_variable\w*)\b"),
         named(r"\bstd::(?:lock_guard|unique_lock|scoped_lock|shared_lock)\b")),
        (called(r"pthread_\w+"),),
        ("bench",), False,
        "the process has one thread; use a reactor or a timer"),
    Ban("raw-new",
        (named(r"\bnew\b"), named(r"\bdelete\b")),
        (),
        ("runtime",), False,
        "use Vesk::make<T>() or a container of std"),
)
RULES = {ban.rule for ban in BANS}
HARMLESS = re.compile(r"^[ \t]*#[ \t]*include\b.*|=\s*delete\b", re.MULTILINE)


def check(source):
    """Findings of the bans, less those that the file allows itself with a reason; and findings
    of the rule `allow` for exceptions without rule, reason or use."""
    if not source.is_cpp:
        return
    allows = list(source.allows)
    used = set()
    for found in all_findings(source):
        allow = next((a for a in allows if a.rule == found.rule
                      and found.line in (a.line, a.line + 1)), None)
        if allow:
            used.add(allow)
        else:
            yield found
    for allow in allows:
        yield from check_allow(source, allow, allow in used)


def all_findings(source):
    code = HARMLESS.sub(lambda match: blank(match.group()), source.code)
    for ban in BANS:
        if is_allowed(ban, source.folders):
            continue
        where = " outside " + ", ".join(f"{room}/" for room in ban.rooms) if ban.rooms else ""
        for match in places(ban, code):
            what = " ".join(match.group().split())
            yield source.finding(source.line_of(match.start()), ban.rule, f"'{what}'{where}",
                                 ban.remedy)


def places(ban, code):
    for pattern in ban.names:
        yield from pattern.finditer(code)
    for pattern in ban.calls:
        yield from (match for match in pattern.finditer(code)
                    if is_free_call(code[:match.start()]))


def is_free_call(before):
    """Whether a name with arguments behind this code calls a function of the C library: not a
    member, not of another scope, not a declaration."""
    scope = re.search(r"(\w*)::\s*\Z", before[-200:])
    if scope:
        return scope[1] in ("", "std")
    before = before[-200:].rstrip()
    if before.endswith((".", "->")):
        return False
    word = re.search(r"\w+\Z", before)
    return word is None or word.group() in BEFORE_CALL


def is_allowed(ban, folders):
    home = folders[1:2] if ban.mirrored and folders[:1] == ["tests"] else folders[:1]
    return bool(home) and home[0] in ban.rooms


def check_allow(source, allow, used):
    if allow.rule not in RULES:
        yield source.finding(allow.line, "allow", f"no ban is called '{allow.rule}'",
                             f"name one of {', '.join(sorted(RULES))}")
    elif not allow.reason:
        yield source.finding(allow.line, "allow", f"allow({allow.rule}) gives no reason",
                             "write the reason behind it")
    elif not used:
        yield source.finding(allow.line, "allow", f"allow({allow.rule}) allows nothing",
                             "remove it")
