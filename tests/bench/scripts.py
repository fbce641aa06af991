"""The scripts in bench/, as modules."""

import os
import runpy
from types import SimpleNamespace

BENCH = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../bench")


def script(name):
    return SimpleNamespace(**runpy.run_path(os.path.join(BENCH, name)))
