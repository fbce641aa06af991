#!/usr/bin/env python3
"""bench/process tells what processes cost, and says so where one isn't there."""

import os
import subprocess
import sys
import time
import unittest

from scripts import BENCH, script

def run(*arguments):
    return subprocess.run([f"{BENCH}/process", *map(str, arguments)], capture_output=True, text=True, check=False)


PROCESS = script("process")


class AProcess(unittest.TestCase):
    def test_has_the_processor_time_that_it_spent(self):
        before = PROCESS.processor_time(os.getpid())
        began = time.process_time()
        while time.process_time() - began < 0.1:
            pass
        self.assertGreater(PROCESS.processor_time(os.getpid()), before)

    def test_has_memory_that_grows_with_what_it_holds(self):
        before = PROCESS.memory(os.getpid())
        held = bytearray(os.urandom(8 << 20))
        self.assertGreater(PROCESS.memory(os.getpid()), before + 7)
        del held

    def test_is_counted_together_with_the_others_for_each_link(self):
        own = run("--links", 4, "--seconds", 0.1, os.getpid())
        twice = run("--links", 4, "--seconds", 0.1, os.getpid(), os.getpid())
        self.assertEqual((own.returncode, twice.returncode), (0, 0))
        memory = [float(ran.stdout.split()[-2]) for ran in (own, twice)]
        self.assertAlmostEqual(memory[1], 2 * memory[0], delta=memory[0] / 2)

    def test_that_is_not_there_is_said_with_the_remedy(self):
        ran = run("--links", 1, 2**22 + 1)
        self.assertEqual(ran.returncode, 1)
        self.assertIn("name processes that run", ran.stderr)

    def test_looks_after_one_link_at_least(self):
        self.assertEqual(run("--links", 0, os.getpid()).returncode, 2)


if __name__ == "__main__":
    sys.exit(unittest.main())
