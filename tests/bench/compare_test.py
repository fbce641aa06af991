#!/usr/bin/env python3
"""bench/compare reads the table of macsecd-bench and tells a difference from the spread of the runs."""

import unittest

from scripts import script

COMPARE = script("compare")
HEAD = "   ports  start CPU s start virt s     KiB/port      us/port/s   us/port/s dp     us/MKPDU\n"
EARLIER = "      16        0.003         11.5         20.7           2.46           8.73         2.46       3.48\n"
NOW = "    4096        0.772         11.5         17.1           8.22          32.39         8.23      11.07         0.00\n"
REST = "\ncost of a port at 4096 against 16: 3.34 times\na disabled trace statement: 0.49 ns\n"


class RowsTest(unittest.TestCase):
    def test_rows_have_the_time_of_an_mkpdu_and_the_memory_of_a_port(self):
        self.assertEqual(COMPARE.rows(HEAD + NOW + REST), {4096: (8.23, 17.1)})

    def test_a_table_without_allocations_is_read_too(self):
        self.assertEqual(COMPARE.rows(HEAD + EARLIER + NOW + REST), {16: (2.46, 20.7), 4096: (8.23, 17.1)})


class VerdictTest(unittest.TestCase):
    def test_a_difference_beyond_the_spread_is_one(self):
        self.assertEqual(COMPARE.verdict([1.0, 1.1, 1.2], [1.4, 1.5, 1.6]), "worse")
        self.assertEqual(COMPARE.verdict([1.4, 1.5, 1.6], [1.0, 1.1, 1.2]), "better")

    def test_a_difference_within_the_spread_of_either_is_none(self):
        steady, restless = [1.0, 1.0, 1.0, 1.0, 1.0], [0.8, 0.9, 1.1, 1.3, 1.4]
        self.assertEqual(COMPARE.verdict(steady, restless), "within the spread")
        self.assertEqual(COMPARE.verdict(restless, steady), "within the spread")

    def test_one_slow_run_of_five_makes_no_spread(self):
        self.assertEqual(COMPARE.verdict([1.0, 1.0, 1.0, 1.0, 9.0], [1.1, 1.1, 1.1, 1.1, 1.1]), "worse")

    def test_one_run_has_no_spread(self):
        self.assertEqual(COMPARE.verdict([1.0], [1.1]), "worse")


class TableTest(unittest.TestCase):
    def test_it_has_a_row_of_medians_for_each_number_of_ports(self):
        old = [{16: (2.0, 20.0), 4096: (8.0, 17.0)}] * 2 + [{16: (9.0, 20.0), 4096: (9.0, 17.0)}]
        new = [{16: (1.0, 18.0), 4096: (8.2, 17.0)}] * 3
        lines = COMPARE.table(old, new).splitlines()[2:]
        self.assertEqual([line.split() for line in lines],
                         [["16", "2.00", "1.00", "0.500", "20.0", "18.0", "within", "the", "spread"],
                          ["4096", "8.00", "8.20", "1.025", "17.0", "17.0", "within", "the", "spread"]])


if __name__ == "__main__":
    unittest.main()
