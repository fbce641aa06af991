#!/usr/bin/env python3
"""formatted.py finds what is laid out in another way, and says so if it can't look."""

import contextlib
import io
import os
import tempfile
import unittest

import formatted

STYLE = "BasedOnStyle: Google\n"


class FormattedTest(unittest.TestCase):
    def run_on(self, files, **options):
        with tempfile.TemporaryDirectory() as root:
            for path, text in {".clang-format": STYLE, **files}.items():
                os.makedirs(os.path.dirname(os.path.join(root, path)), exist_ok=True)
                with open(os.path.join(root, path), "w", encoding="utf-8") as file:
                    file.write(text)
            output = io.StringIO()
            with contextlib.redirect_stdout(output):
                status = formatted.main([root], **options)
        return status, output.getvalue()

    def test_a_formatted_tree_passes(self):
        self.assertEqual(self.run_on({"model/a.cpp": "int x;\n", "model/a.h": "int y;\n"}),
                         (0, "2 files, 0 places to lay out anew\n"))

    def test_a_source_that_is_not_formatted_fails_with_its_place(self):
        for name in ("model/a.cpp", "model/a.h"):
            status, output = self.run_on({name: "int x;\nint  y;\n"})
            self.assertEqual(status, 1)
            self.assertIn(f"{name}:2:", output)
            self.assertTrue(output.endswith("1 files, 1 places to lay out anew\n"), output)

    def test_what_a_build_made_is_left_alone(self):
        self.assertEqual(self.run_on({"a.cpp": "int x;\n", "build/b.cpp": "int  y;\n"})[0], 0)

    def test_an_empty_tree_proves_nothing_and_fails(self):
        self.assertEqual(self.run_on({})[0], 1)

    def test_without_a_formatter_it_fails_and_says_what_to_do(self):
        status, output = self.run_on({"a.cpp": "int x;\n"}, formatter="no-formatter-of-this-name")
        self.assertEqual(status, 1)
        self.assertIn("isn't installed: run scripts/install-packages", output)


if __name__ == "__main__":
    unittest.main()
