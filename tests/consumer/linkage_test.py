#!/usr/bin/env python3
"""Every public member function that a header of the own rooms declares can be linked by who includes
that header alone: it is defined in the header, or a library defines it for all.

Called as: SOURCE=... BUILD=... linkage_test.py
"""

import glob
import os
import re
import subprocess
import sys
import unittest

ROOMS = ("runtime", "platform", "model", "controlled_port", "config", "hardware", "codec", "engine")
SOURCE = os.environ.get("SOURCE", ".")
BUILD = os.environ.get("BUILD", "build/default")

NOISE = re.compile(r'//[^\n]*|/\*.*?\*/|^\s*#(?:[^\n]*\\\n)*[^\n]*|"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])\'',
                   re.S | re.M)
SCOPE = re.compile(r"\b(namespace|class|struct|union|enum(?: class)?)\s+([\w:]+)?[^;{}()]*$")
NO_FUNCTION = re.compile(r"\b(friend|using|typedef|template|static_assert|sizeof|std::function)")
FUNCTION = re.compile(r"(~?\b\w+|operator\s*\W+?|operator bool)\s*\(")


def statements(text):
    """Each declaration of a header with its scopes, whether it is public, and whether a body follows."""
    scopes, head, depth = [], "", 0
    for token in re.split(r"([{};])", NOISE.sub(" ", text)):
        if token not in ("{", "}", ";"):
            if depth:
                continue
            for access in re.findall(r"\b(public|private|protected)\s*:(?!:)", token):
                if scopes:
                    scopes[-1][2] = access == "public"
            head += re.sub(r"\b(public|private|protected)\s*:(?!:)", " ", token)
            continue
        if token == "{":
            scope = SCOPE.search(head) if not depth else None
            if scope and scope[1][:4] != "enum":
                scopes.append([scope[1], scope[2] or "", scope[1] != "class", "template" in head])
            else:
                if not depth:
                    yield scopes, head, True
                depth += 1
        elif token == "}":
            if depth:
                depth -= 1
            elif scopes:
                scopes.pop()
        elif not depth:
            yield scopes, head, False
        if not depth or token == "{":
            head = ""


def declared(path):
    """(class, member) of each public function that the header declares without a body."""
    with open(path, encoding="utf-8") as header:
        text = header.read()
    for scopes, head, has_body in statements(text):
        classes = [s for s in scopes if s[0] in ("class", "struct")]
        if has_body or not classes or any(s[3] or not s[2] for s in classes):
            continue
        if NO_FUNCTION.search(head) or re.search(r"=\s*(default|delete|0)\s*$", head):
            continue
        function = FUNCTION.search(head)
        if function:
            name = re.sub(r"\s", "", function[1])
            yield "::".join(s[1] for s in scopes if s[1]), name, text


def defined():
    """How many strong definitions the libraries have of each member, by its name."""
    libraries = [f"{BUILD}/libmacsecd_{room}.a" for room in ROOMS]
    symbols = subprocess.run(["nm", "--demangle", "--defined-only", *libraries], check=True,
                             capture_output=True, text=True).stdout
    names = {}
    for line in set(re.findall(r"^[0-9a-f]+ T (.*)$", symbols, re.M)):
        name = line.split("(")[0].replace("[abi:cxx11]", "").strip()
        names[name] = names.get(name, 0) + 1
    return names


def unlinkable(paths, names):
    """The members that are declared more often than they are defined."""
    for path in paths:
        wanted = {}
        for scope, member, text in declared(path):
            short = scope.split("::")[-1] + "::" + member
            if re.search(r"\binline\b[^;{}]*\b" + re.escape(short) + r"\s*\(", text):
                continue
            wanted[f"{scope}::{member}"] = wanted.get(f"{scope}::{member}", 0) + 1
        for member, count in wanted.items():
            if names.get(member, 0) < count:
                yield f"{os.path.relpath(path, SOURCE)}: {member}"


class Linkage(unittest.TestCase):
    maxDiff = None

    def test_whatever_a_header_declares_can_be_linked(self):
        paths = sorted(p for room in ROOMS for p in glob.glob(f"{SOURCE}/{room}/*.h"))
        self.assertEqual([], list(unlinkable(paths, defined())))

    def test_a_member_that_no_library_defines_is_found(self):
        header = f"{SOURCE}/engine/MkaSm.h"
        names = defined()
        del names["Macsec::MkaSm::updateSci"]
        self.assertEqual(["engine/MkaSm.h: Macsec::MkaSm::updateSci"],
                         list(unlinkable([header], names)))

    def test_headers_have_members(self):
        found = {f"{scope}::{member}" for scope, member, _ in declared(f"{SOURCE}/engine/MkaSm.h")}
        self.assertIn("Macsec::MkaSm::mkaPortSmIs", found)
        self.assertNotIn("Macsec::MkaSm::isLinkUp", found)


if __name__ == "__main__":
    sys.exit(unittest.main())
