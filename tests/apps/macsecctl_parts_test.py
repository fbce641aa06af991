#!/usr/bin/env python3
"""What macsecctl is made of: it asks a daemon and lays out answers, so it needs neither the engine nor
the libraries of a daemon. MACSECCTL names the program, MACSECD the daemon, which has all of it."""

import os
import subprocess
import unittest

# Of each part one that a program can't have without the part.
PARTS = ("Macsec::MkaSm::", "Macsec::ControlledPortSm::", "Macsecd::Host::", "Macsecd::readConfig",
         "Linux::KernelDriver::", "Codec::FrameCodec::")
LIBRARIES = ("libcrypto", "libyaml-cpp", "liblmdb", "libsystemd", "libnl-3", "libprometheus")


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def parts(program):
    symbols = output("nm", "--demangle", "--defined-only", program)
    return {part for part in PARTS if part in symbols}


def libraries(program):
    needed = output("readelf", "--dynamic", "--wide", program)
    return {name for name in LIBRARIES if name in needed}


class MacsecctlPartsTest(unittest.TestCase):
    def test_it_has_no_part_of_a_switch_and_no_library_of_a_daemon(self):
        self.assertEqual(parts(os.environ["MACSECCTL"]), set())
        self.assertEqual(libraries(os.environ["MACSECCTL"]), set())

    def test_a_daemon_has_all_of_them(self):
        self.assertEqual(parts(os.environ["MACSECD"]), set(PARTS))
        self.assertEqual(libraries(os.environ["MACSECD"]), set(LIBRARIES))


if __name__ == "__main__":
    unittest.main()
