#!/usr/bin/env python3
"""bench/lines counts what valgrind tells between two stores to the mark, and nothing else."""

import io
import unittest

from scripts import script

LINES = script("lines")
MARK = 0x5C1040
STORE = " S 005c1040,8\n"


class Pipe(io.BytesIO):
    """Hands out a few octets at a time, so that lines fall apart."""

    def read(self, size=-1):
        return super().read(min(size, 7))


def window(text, pipe=io.BytesIO):
    found = LINES.Window(MARK)
    found.read(pipe(text.encode()))
    return found


class WindowTest(unittest.TestCase):
    def counts(self, text, pipe=io.BytesIO):
        found = window(f"I  00401000,4\n L 10000000,8\n{STORE}{text}{STORE}I  00401000,4\n L 20000000,8\n",
                       pipe)
        self.assertEqual(found.stores, 2)
        return found.own, found.library, len(found.lines)

    def test_what_stands_before_and_behind_does_not_count(self):
        self.assertEqual(self.counts(""), (0, 0, 0))

    def test_instructions_below_the_libraries_are_the_program_s_own(self):
        self.assertEqual(self.counts("I  00401000,4\nI  03ffffff,2\nI  04000000,3\n"), (2, 1, 0))

    def test_each_line_of_memory_counts_once_however_often_and_in_whichever_way_it_is_touched(self):
        self.assertEqual(self.counts(" L 10000000,8\n S 10000038,8\n M 10000010,4\n"), (0, 0, 1))

    def test_an_access_over_the_end_of_a_line_touches_both(self):
        self.assertEqual(self.counts(" L 1000003c,8\n"), (0, 0, 2))

    def test_the_stack_belongs_to_no_port(self):
        self.assertEqual(self.counts(" L 1ffefff8c8,8\n"), (0, 0, 0))

    def test_other_lines_of_valgrind_are_none_of_them(self):
        self.assertEqual(self.counts("==17== 1,2\n\n"), (0, 0, 0))

    def test_lines_may_come_in_pieces(self):
        self.assertEqual(self.counts("I  00401000,4\n L 10000000,8\n", Pipe), (1, 0, 1))

    def test_a_run_that_ends_early_has_no_whole_window(self):
        self.assertEqual(window("I  00401000,4\n").stores, 0)
        self.assertEqual(window(f"{STORE}I  00401000,4\n").stores, 1)


class FiguresTest(unittest.TestCase):
    def test_what_both_numbers_of_ports_share_does_not_count(self):
        shared = "I  00401000,4\n" * 100 + " L 10000000,8\n"
        more = "I  00401000,4\nI  04000000,4\nI  04000000,4\n L 20000000,8\n L 30000000,8\n L 40000000,8\n"
        few = window(STORE + shared + STORE), {"mkpdus": 10, "allocations": 5}
        many = window(STORE + shared + more * 2 + STORE), {"mkpdus": 12, "allocations": 6}
        self.assertEqual(LINES.figures(few, many), {
            "own-instructions-per-mkpdu": 1, "library-instructions-per-mkpdu": 2,
            "lines-per-mkpdu": 1.5, "allocations-per-mkpdu": 0.5})

    def test_the_text_names_each_figure(self):
        self.assertEqual(LINES.text({"own-instructions-per-mkpdu": 1234, "lines-per-mkpdu": 5.5}),
                         "     1,234  own instructions per MKPDU\n       5.5  lines per MKPDU")


if __name__ == "__main__":
    unittest.main()
