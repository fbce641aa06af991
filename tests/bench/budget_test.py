#!/usr/bin/env python3
"""bench/budget fails for what is above the budget, and says what is below."""

import contextlib
import io
import json
import os
import tempfile
import unittest

from scripts import BENCH, script

BUDGET = script("budget")
NAME = "own-instructions-per-mkpdu"
OTHER = "library-instructions-per-mkpdu"


class BudgetTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = os.path.join(folder.name, "budget.json")

    def run_with(self, figures, *arguments):
        output = io.StringIO()
        with contextlib.redirect_stdout(output):
            status = BUDGET.main(arguments, self.path, lambda program: figures)
        return status, output.getvalue()

    def judge(self, figure, budget):
        self.budget_is({NAME: budget})
        return self.run_with({NAME: figure})

    def budget_is(self, budget):
        with open(self.path, "w", encoding="utf-8") as file:
            json.dump(budget, file)

    def test_a_figure_within_five_percent_passes(self):
        for figure in (950, 1000, 1050):
            status, output = self.judge(figure, 1000)
            self.assertEqual(status, 0)
            self.assertEqual(output, f"budget: {NAME} is {figure}, within 5% of the budget of 1000\n")

    def test_a_figure_above_fails_and_names_figure_budget_and_remedy(self):
        status, output = self.judge(1051, 1000)
        self.assertEqual(status, 1)
        for word in (NAME, "1051", "above the budget of 1000", "bench/budget --write"):
            self.assertIn(word, output)

    def test_a_figure_below_passes_and_asks_for_a_lower_budget(self):
        status, output = self.judge(949, 1000)
        self.assertEqual(status, 0)
        self.assertIn("949, more than 5% below the budget of 1000: lower the budget", output)

    def test_of_a_budget_of_nothing_nothing_is_left_over(self):
        self.assertEqual(self.judge(0.0, 0)[0], 0)
        self.assertEqual(self.judge(0.01, 0)[0], 1)

    def test_one_figure_above_fails_among_others_that_are_not(self):
        self.budget_is({"a": 10, "b": 10, "c": 10})
        status, output = self.run_with({"a": 1, "b": 11, "c": 10})
        self.assertEqual((status, output.count("\n")), (1, 3))

    def test_a_figure_that_one_side_misses_fails(self):
        self.budget_is({NAME: 1})
        for figures in ({}, {NAME: 1, "new": 2}):
            status, output = self.run_with(figures)
            self.assertEqual(status, 1)
            self.assertIn("renew the budget", output)

    def test_instructions_of_libraries_have_no_budget(self):
        self.assertEqual(self.run_with({NAME: 7, OTHER: 8}, "--write")[0], 0)
        with open(self.path, encoding="utf-8") as file:
            self.assertEqual(json.load(file), {NAME: 7})
        self.assertEqual(self.run_with({NAME: 7, OTHER: 800})[0], 0)

    def test_what_it_wrote_is_the_budget(self):
        self.budget_is({NAME: 1})
        self.assertEqual(self.run_with({NAME: 7})[0], 1)
        self.run_with({NAME: 7}, "--write")
        self.assertEqual(self.run_with({NAME: 7})[0], 0)

    def test_the_budget_of_the_tree_has_a_figure_for_all_that_is_counted_but_libraries(self):
        window, said = script("lines").Window(0), {"mkpdus": 0, "allocations": 0}
        counted = script("lines").figures((window, said), (window, {**said, "mkpdus": 1}))
        with open(os.path.join(BENCH, "budget.json"), encoding="utf-8") as file:
            self.assertEqual({*json.load(file), OTHER}, {*counted})


if __name__ == "__main__":
    unittest.main()
