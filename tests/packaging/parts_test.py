"""What goes into the package beside the programs: unit, pages, example, completion. PACKAGING is
the folder, and MACSECD, MACSECCTL and MACSEC_LAB are the programs."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest

PACKAGING = os.environ["PACKAGING"]
PROGRAMS = {"macsecd": os.environ["MACSECD"], "macsecctl": os.environ["MACSECCTL"],
            "macsec-lab": os.environ["MACSEC_LAB"]}
PAGES = {"macsecd": "macsecd.8", "macsecctl": "macsecctl.1", "macsec-lab": "macsec-lab.1"}


def run(*command, **more):
    return subprocess.run(command, capture_output=True, text=True, check=False, timeout=60, **more)


def needs(tool, package):
    return unittest.skipUnless(shutil.which(tool), f"there is no {tool} (apt-get install {package})")


def page(name):
    return os.path.join(PACKAGING, "man", name)


def words_of_help(program, *subcommand):
    """The options and the subcommands that a program explains."""
    text = run(PROGRAMS[program], *subcommand, "--help").stdout
    options = set(re.findall(r"^  (?:-\w,)?(--[\w-]+)", text, re.MULTILINE))
    listed = text.split("\nSubcommands:\n")[1:]
    return options, re.findall(r"^  ([\w-]+)", listed[0].split("\n\n")[0], re.MULTILINE) \
        if listed else []


class Unit(unittest.TestCase):
    def setUp(self):
        with open(os.path.join(PACKAGING, "macsecd.service"), encoding="utf-8") as file:
            self.text = file.read()

    @needs("systemd-analyze", "systemd")
    def test_is_understood_by_systemd(self):
        folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, folder)
        path = os.path.join(folder, "macsecd.service")
        here = self.text.replace("/usr/sbin/macsecd ", PROGRAMS["macsecd"] + " ")
        here = here.replace("/usr/bin/macsecctl ", PROGRAMS["macsecctl"] + " ")
        with open(path, "w", encoding="utf-8") as file:
            file.write(here)
        done = run("systemd-analyze", "verify", "--man=no", "--recursive-errors=no", path)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))

    @needs("systemd-analyze", "systemd")
    def test_is_found_safe_by_systemd(self):
        done = run("systemd-analyze", "security", "--offline=yes", "--threshold=30",
                   os.path.join(PACKAGING, "macsecd.service"))
        self.assertEqual(done.returncode, 0, done.stdout[-200:] + done.stderr)

    def test_keeps_two_privileges_and_the_state_over_a_restart(self):
        for line in ("CapabilityBoundingSet=CAP_NET_ADMIN CAP_NET_RAW", "LimitCORE=0",
                     "LimitMEMLOCK=infinity", "RestartKillSignal=SIGUSR1",
                     "RuntimeDirectoryPreserve=yes", "Group=macsec"):
            self.assertIn(line, self.text.splitlines())


class Pages(unittest.TestCase):
    @needs("mandoc", "mandoc")
    def test_are_understood_by_mandoc(self):
        for name in os.listdir(os.path.join(PACKAGING, "man")):
            done = run("mandoc", "-T", "lint", "-W", "warning", page(name))
            self.assertEqual((done.returncode, done.stdout), (0, ""), name)

    @needs("man", "man-db")
    def test_are_understood_by_man(self):
        for name in os.listdir(os.path.join(PACKAGING, "man")):
            done = run("man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", page(name),
                       env={**os.environ, "LC_ALL": "C.UTF-8", "MANROFFSEQ": ""})
            self.assertEqual((done.returncode, done.stderr), (0, ""), name)

    def test_explain_every_option_and_command_that_a_program_has(self):
        for program, name in PAGES.items():
            with open(page(name), encoding="utf-8") as file:
                text = file.read()
            options, commands = words_of_help(program)
            self.assertIn("--help", options)
            for command in commands:
                self.assertRegex(text, rf"(?m)^\.(It )?Cm {command}\b", f"{program} {command}")
                options |= words_of_help(program, command)[0]
            for option in options:
                self.assertIn(f"Fl Fl {option[2:]}", text, f"{program} {option}")

    def test_explain_every_word_of_the_configuration(self):
        with open(page("macsecd.yaml.5"), encoding="utf-8") as file:
            text = file.read()
        path = os.path.join(PACKAGING, "..", "docs", "configuration.md")
        with open(path, encoding="utf-8") as file:
            words = re.findall(r"^\| `([a-z0-9-]+)` \|", file.read(), re.MULTILINE)
        self.assertGreater(len(words), 15)
        for word in words:
            self.assertIn(f"Cm {word}", text, word)


class Example(unittest.TestCase):
    def path(self, change):
        with open(os.path.join(PACKAGING, "macsecd.yaml"), encoding="utf-8") as file:
            text = change(file.read())
        folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, folder)
        path = os.path.join(folder, "macsecd.yaml")
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(path, 0o600)
        return path

    def check(self, change):
        done = run(PROGRAMS["macsecd"], "--check", "--config", self.path(change))
        # Of what this machine has on an interface of that name it may warn.
        told = [line for line in done.stderr.splitlines() if ": warning: " not in line]
        return done.returncode, "\n".join(told)

    def test_has_no_mistake(self):
        self.assertEqual(self.check(lambda text: text), (0, ""))

    def test_has_no_mistake_when_the_comment_is_lifted_and_the_key_filled_in(self):
        def lifted(text):
            text = text[text.index("# profiles:"):text.index("\nprofiles: {}")]
            lines = [line.removeprefix("#").removeprefix(" ") for line in text.splitlines()]
            lines = [re.sub(r"cak: 32 .*", "cak: " + "0123" * 8, line) for line in lines]
            return "\n".join(lines) + "\n"
        self.assertEqual(self.check(lifted), (0, ""))


class Completion(unittest.TestCase):
    def complete(self, *words):
        """What bash offers for the last of the words."""
        words = [PROGRAMS[words[0]], *words[1:]]
        script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); '
                  '_macsec "$1" "${!#}" "${COMP_WORDS[COMP_CWORD - 1]}"; '
                  'printf "%s\\n" "${COMPREPLY[@]}"')
        done = run("bash", "-c", script, "bash", os.path.join(PACKAGING, "completion"), *words,
                   cwd=PACKAGING)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return set(done.stdout.split())

    def test_offers_the_options_of_the_daemon(self):
        self.assertEqual(self.complete("macsecd", "--c"), {"--config", "--check", "--counters",
                                                           "--control"})

    def test_offers_files_for_a_configuration(self):
        self.assertEqual(self.complete("macsecd", "--config", "macsecd.y"), {"macsecd.yaml"})

    def test_offers_every_command_and_its_interfaces(self):
        self.assertEqual(self.complete("macsecctl", ""), set(words_of_help("macsecctl")[1]))
        self.assertIn("lo", self.complete("macsecctl", "explain", ""))
        self.assertEqual(self.complete("macsecctl", "reload", ""), set())

    def test_offers_the_options_of_a_subcommand(self):
        self.assertEqual(self.complete("macsec-lab", "decode", "--show"),
                         {"--show", "--show-keys"})
        self.assertIn("decode", self.complete("macsec-lab", "de"))

    def test_is_bound_to_the_programs(self):
        done = run("bash", "-c", 'source "$1"; complete -p macsecd macsecctl macsec-lab', "bash",
                   os.path.join(PACKAGING, "completion"))
        self.assertEqual(done.stdout.count("-F _macsec "), 3)


if __name__ == "__main__":
    unittest.main()
