"""What the Debian package holds: files, permissions, scripts, dependencies. PACKAGES is the folder
that it lies in, VERSION the project's."""

import os
import shutil
import stat
import subprocess
import tempfile
import unittest

PACKAGES = os.environ["PACKAGES"]
VERSION = os.environ["VERSION"]
PROGRAMS = {"usr/sbin/macsecd", "usr/bin/macsecctl", "usr/bin/macsec-lab"}
PAGES = {"man8/macsecd.8", "man1/macsecctl.1", "man1/macsec-lab.1", "man5/macsecd.yaml.5"}
CONFIG = "etc/macsecd/macsecd.yaml"
UNIT = "usr/lib/systemd/system/macsecd.service"


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True, timeout=240).stdout


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp()
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        machine = run("dpkg", "--print-architecture").strip()
        cls.package = os.path.join(PACKAGES, f"macsecd_{VERSION}_{machine}.deb")
        cls.root = os.path.join(cls.folder, "root")
        cls.control = os.path.join(cls.folder, "control")
        run("dpkg-deb", "--extract", cls.package, cls.root)
        run("dpkg-deb", "--control", cls.package, cls.control)
        cls.files = {os.path.relpath(os.path.join(parent, name), cls.root)
                     for parent, _, names in os.walk(cls.root) for name in names}
        # "drwxr-xr-x root/root 0 2026-11-21 08:00 ./etc/"
        cls.listed = [line.split(None, 5)
                      for line in run("dpkg-deb", "--contents", cls.package).splitlines()]

    def mode(self, path):
        return stat.S_IMODE(os.stat(os.path.join(self.root, path)).st_mode)

    def test_has_the_programs_the_unit_the_configuration_and_the_pages(self):
        pages = {f"usr/share/man/{page}.gz" for page in PAGES}
        completion = {f"usr/share/bash-completion/completions/{os.path.basename(program)}"
                      for program in PROGRAMS}
        wanted = PROGRAMS | pages | completion | {UNIT, CONFIG}
        self.assertEqual(wanted - self.files, set())

    def test_has_the_library_with_headers_and_cmake_files(self):
        names = {os.path.basename(path) for path in self.files}
        for name in ("libmacsecd_engine.a", "macsecdConfig.cmake", "macsecdTargets.cmake"):
            self.assertIn(name, names)
        self.assertIn("usr/include/macsecd/engine/MkaRootSm.h", self.files)

    def test_has_documents_whose_links_lead_somewhere(self):
        for name in ("README.md", "docs/operations.md", "examples/switch.yaml"):
            self.assertIn(f"usr/share/doc/macsecd/{name}", self.files)

    def test_lets_root_alone_read_the_configuration(self):
        self.assertEqual(self.mode(CONFIG), 0o600)
        for program in PROGRAMS:
            self.assertEqual(self.mode(program), 0o755, program)
        self.assertEqual(self.mode(UNIT), 0o644)

    def test_belongs_to_root_and_is_written_by_nobody_else(self):
        for mode, owner, *_, path in self.listed:
            self.assertEqual(owner, "root/root", path)
            self.assertEqual((mode[5], mode[8]), ("-", "-"), f"{path} is {mode}")

    def test_has_programs_that_run_and_carry_no_debug_information(self):
        for program in PROGRAMS:
            path = os.path.join(self.root, program)
            self.assertIn("Usage:", run(path, "--help"))
            self.assertNotIn(".debug_info", run("readelf", "-SW", path), program)

    def test_names_the_libraries_that_the_programs_load(self):
        depends = run("dpkg-deb", "--field", self.package, "Depends")
        for library in ("libc6", "libssl3", "libsystemd0", "libnl-3-200", "passwd"):
            self.assertIn(library, depends)

    def test_keeps_what_the_administrator_wrote_into_the_configuration(self):
        with open(os.path.join(self.control, "conffiles"), encoding="utf-8") as file:
            self.assertEqual(file.read(), f"/{CONFIG}\n")

    def test_has_scripts_that_a_shell_reads(self):
        for name in ("postinst", "prerm", "postrm"):
            path = os.path.join(self.control, name)
            self.assertTrue(os.access(path, os.X_OK), name)
            run("sh", "-n", path)

    def test_enables_nothing_without_the_administrator(self):
        with open(os.path.join(self.control, "postinst"), encoding="utf-8") as file:
            script = file.read()
        for word in ("enable ", "systemctl start", "systemctl restart"):
            self.assertNotIn(word, script)
        self.assertFalse([path for path in self.files if ".wants/" in path])


if __name__ == "__main__":
    unittest.main()
