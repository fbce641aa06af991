"""Words that the tree doesn't say: it explains itself, and refers to IEEE standards by clause."""

import re

GAP = r"[\s/*#]+"  # also over the end of a comment line
# In pieces, so that this file doesn't say them either.
UNSAID = (
    (re.compile(r"\bPa" + r"rt" + GAP + r"[0-9]"), "a numbered chapter of nothing here"),
    (re.compile(r"\bthe" + GAP + "spec" + r"ification\b", re.IGNORECASE),
     "an unnamed document"),
    (re.compile(r"\bspec" + r"\.md\b"), "a file that isn't here"),
)


def check(source):
    """Findings of the rule `words`."""
    for pattern, what in UNSAID:
        for match in pattern.finditer(source.text):
            yield source.finding(source.line_of(match.start()), "words",
                                 f"'{' '.join(match.group().split())}' refers to {what}",
                                 "say the thing itself, or cite the clause of the IEEE standard")
