"""The daemon as a service manager runs it, without privileges: checks, readiness, signals and exit
statuses. MACSECD is the program."""

import json
import os
import shutil
import signal
import socket
import subprocess
import tempfile
import unittest

MACSECD = os.environ["MACSECD"]
GOOD = """profiles:
  uplink:
    key: {ckn: c0de0001, cak: 0123456789abcdef0123456789abcdef}
interfaces:
  absent0: {profile: uplink}
"""
NETWORKING = 1 << 12 | 1 << 13  # CAP_NET_ADMIN, CAP_NET_RAW
CAK = "0123456789abcdef"


class Program(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)

    def write(self, text, name="macsecd.yaml", mode=0o600):
        path = os.path.join(self.folder, name)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(path, mode)
        return path

    def run_it(self, *arguments):
        return subprocess.run([MACSECD, *arguments], capture_output=True, text=True, check=False,
                              timeout=30)


class Check(Program):
    def test_ends_with_0_and_says_nothing_when_all_is_well(self):
        done = self.run_it("--check", "--config", self.write(GOOD))
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))

    def test_ends_with_1_and_tells_every_mistake(self):
        path = self.write(GOOD.replace("cdef}", "cde}") + "shutdwon: true\n")
        done = self.run_it("--check", "--config", path)
        self.assertEqual(done.returncode, 1)
        lines = done.stderr.splitlines()
        self.assertEqual(len(lines), 2, done.stderr)
        self.assertTrue(lines[0].startswith(path + ":3:"))
        self.assertIn("write 'shutdown'", lines[1])
        self.assertNotIn(CAK, done.stderr)

    def test_ends_with_1_when_the_file_cannot_be_read(self):
        done = self.run_it("--check", "--config", os.path.join(self.folder, "none"))
        self.assertEqual(done.returncode, 1)
        self.assertIn("none:1:1:", done.stderr)


    def test_never_waits_for_a_pipe_a_socket_or_a_device(self):
        pipe = os.path.join(self.folder, "pipe")
        os.mkfifo(pipe)
        with socket.socket(socket.AF_UNIX) as listener:
            listener.bind(os.path.join(self.folder, "socket"))
            for path, kind in ((pipe, "a pipe"), (listener.getsockname(), "a socket"),
                               ("/dev/zero", "a device"), (self.folder, "a directory")):
                done = self.run_it("--check", "--config", path)
                self.assertEqual(done.returncode, 1)
                self.assertEqual(done.stderr, f"{path}:1:1: the file can't be read: it is {kind}; "
                                              "name a regular file\n")

    def test_reads_what_comes_from_its_input_or_another_program(self):
        done = subprocess.run([MACSECD, "--check", "--config", "/dev/stdin"], input=GOOD, text=True,
                              capture_output=True, check=False, timeout=30)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        with open(self.write(GOOD, mode=0o644), encoding="utf-8") as file:
            done = subprocess.run([MACSECD, "--check", "--config", "/dev/stdin"], stdin=file,
                                  capture_output=True, check=False, timeout=30)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        done = subprocess.run(["bash", "-c", f"{MACSECD} --check --config <(echo shutdwon: true)"],
                              text=True, capture_output=True, check=False, timeout=30)
        self.assertEqual(done.returncode, 1)
        self.assertIn("write 'shutdown'", done.stderr)

    def test_ends_at_a_text_that_is_too_long_or_has_no_end(self):
        done = self.run_it("--check", "--config", self.write("{profiles: {}},\n"))
        self.assertEqual(done.returncode, 1)
        self.assertIn(":1:15: this isn't YAML: more text behind the end", done.stderr)
        done = self.run_it("--check", "--config", self.write("#" * (1 << 20) + "\n"))
        self.assertEqual(done.returncode, 1)
        self.assertIn("the file has more than 1048576 octets", done.stderr)

    def test_ends_with_1_when_others_can_read_or_change_the_keys(self):
        for mode, who in ((0o644, "everybody can read it"), (0o620, "its group can change it"),
                          (0o602, "everybody can change it"), (0o666, "everybody can change it")):
            path = self.write(GOOD, mode=mode)
            done = self.run_it("--check", "--config", path)
            self.assertEqual(done.returncode, 1)
            self.assertEqual(done.stderr, f"{path}:1:1: the file holds keys, and {who}; chmod 600 "
                                          f"{path}, and replace its keys: others may know them\n")
        for mode in (0o600, 0o400, 0o640):
            done = self.run_it("--check", "--config", self.write(GOOD, mode=mode))
            self.assertEqual(done.stderr, "")

    @unittest.skipUnless(os.geteuid() == 0, "only root can give files away")
    def test_ends_with_1_when_the_file_is_another_user_s(self):
        path = self.write(GOOD)
        os.chown(path, 65534, 65534)
        done = self.run_it("--check", "--config", path)
        self.assertEqual(done.returncode, 1)
        self.assertIn("belongs to the user 65534; chown 0 " + path, done.stderr)


class Arguments(Program):
    def test_that_are_wrong_end_with_2(self):
        self.assertEqual(self.run_it("--no-such-thing").returncode, 2)
        self.assertEqual(self.run_it("--config").returncode, 2)

    def test_are_explained_with_the_exit_statuses(self):
        done = self.run_it("--help")
        self.assertEqual(done.returncode, 0)
        self.assertIn("Exit status:", done.stdout)
        self.assertNotIn("emulate", done.stdout)


class Running(Program):
    """The daemon on the interfaces of this machine, of which its configuration names none."""

    def start(self, text=GOOD, **environment):
        self.config = self.write(text)
        self.log = os.path.join(self.folder, "log")
        with open(self.log, "wb") as log:
            self.daemon = subprocess.Popen(
                [MACSECD, "--config", self.config, "--counters", "", "--emulate-hardware",
                 "--control", self.folder + "/run/control", "--state", self.folder + "/run/state"],
                stderr=log, env={**os.environ, **environment})
        self.addCleanup(self.kill)

    def kill(self):
        if self.daemon.poll() is None:
            self.daemon.kill()
            self.daemon.wait()

    def start_notifying(self, text=GOOD, **environment):
        path = os.path.join(tempfile.mkdtemp(dir=self.folder), "notify")
        self.manager = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.addCleanup(self.manager.close)
        self.manager.bind(path)
        self.manager.settimeout(20)
        self.start(text, NOTIFY_SOCKET=path, **environment)
        self.assertEqual(self.hear_state(), "READY=1")

    def hear_state(self):
        return next(text for text in iter(self.hear, "") if text != "WATCHDOG=1")

    def hear(self):
        return self.manager.recv(4096).decode()

    def logged(self):
        with open(self.log, encoding="utf-8") as file:
            return file.read()

    def end(self, number):
        self.daemon.send_signal(number)
        return self.daemon.wait(timeout=20)

    def test_tells_the_service_manager_when_it_is_ready_and_when_it_stops(self):
        self.start_notifying()
        self.assertEqual(self.end(signal.SIGTERM), 0)
        self.assertEqual(self.hear(), "STOPPING=1")
        self.assertIn("MACSECD_STOPPED", self.logged())

    def test_stops_on_an_interrupt_too(self):
        self.start_notifying()
        self.assertEqual(self.end(signal.SIGINT), 0)

    def test_keeps_the_watchdog_of_the_service_manager_quiet(self):
        self.start_notifying(WATCHDOG_USEC="300000")
        self.assertEqual([self.hear() for _ in range(3)], ["WATCHDOG=1"] * 3)

    def test_reads_the_configuration_again_on_a_hangup(self):
        self.start_notifying()
        self.write(GOOD + "delay-protection: true\n")
        self.daemon.send_signal(signal.SIGHUP)
        self.assertRegex(self.hear(), "^RELOADING=1\nMONOTONIC_USEC=[0-9]+$")
        self.assertEqual(self.hear(), "READY=1")
        self.assertEqual(self.logged().count("MACSECD_CONFIG_TAKEN"), 2)

    def test_tells_every_mistake_of_a_configuration_read_again_and_goes_on(self):
        self.start_notifying()
        self.write(GOOD + "shutdwon: true\ndelay: 5\n")
        self.daemon.send_signal(signal.SIGHUP)
        self.hear()
        self.assertEqual(self.hear(), "READY=1")
        self.assertEqual(self.logged().count("error: MACSECD_CONFIG_MISTAKE"), 2)
        self.assertIn("MACSECD_CONFIG_REFUSED", self.logged())
        self.assertEqual(self.end(signal.SIGTERM), 0)

    def memory(self):
        """All that the daemon can write to."""
        with open(f"/proc/{self.daemon.pid}/maps", encoding="utf-8") as file:
            parts = [line.split()[0] for line in file if line.split()[1].startswith("rw")]
        with open(f"/proc/{self.daemon.pid}/mem", "rb", buffering=0) as file:
            for part in parts:
                start, end = (int(address, 16) for address in part.split("-"))
                if end - start > 1 << 28:
                    continue  # a sanitizer's own
                file.seek(start)
                try:
                    yield file.read(end - start)
                except OSError:
                    continue

    @unittest.skipUnless(os.geteuid() == 0, "only root can read another process")
    def test_has_no_key_in_clear_in_its_memory(self):
        key = os.urandom(16)
        text = GOOD.replace("0123456789abcdef0123456789abcdef", key.hex())
        self.start_notifying(text)
        for more in ("", "delay-protection: true\n", "shutdwon: true\n", "}", "}\n---\n"):
            self.write(text + more)
            self.daemon.send_signal(signal.SIGHUP)
            self.hear()
            self.assertEqual(self.hear(), "READY=1")
            for part in self.memory():
                for form in (key[:8], key[8:], key.hex()[:16].encode(), key.hex()[16:].encode()):
                    self.assertFalse(form in part, f"{form} at {part.find(form)} of {len(part)}")
        self.assertTrue(any(b"macsecd.yaml" in part for part in self.memory()))

    def test_keeps_no_privileges_but_those_of_networking_and_leaves_no_core(self):
        self.start_notifying()
        with open(f"/proc/{self.daemon.pid}/status", encoding="utf-8") as file:
            status = dict(line.split(":", 1) for line in file)
        for kind in ("CapPrm", "CapEff", "CapInh", "CapAmb"):
            self.assertEqual(int(status[kind], 16) & ~NETWORKING, 0, kind)
        self.assertEqual(status["NoNewPrivs"].strip(), "1")
        with open(f"/proc/{self.daemon.pid}/limits", encoding="utf-8") as file:
            self.assertRegex(file.read(), "Max core file size +0 +0 ")

    def test_ends_with_1_on_a_configuration_with_mistakes(self):
        self.start(GOOD + "shutdwon: true\n")
        self.assertEqual(self.daemon.wait(timeout=20), 1)
        self.assertIn("write 'shutdown'", self.logged())

    def test_goes_on_as_before_when_it_starts_on_a_configuration_with_mistakes(self):
        self.start_notifying()
        self.assertEqual(self.end(signal.SIGUSR1), 0)
        for name in os.listdir(self.folder + "/run"):
            with open(os.path.join(self.folder, "run", name), "rb") as file:
                self.assertNotIn(CAK.encode(), file.read(), name)
        self.start_notifying(GOOD.replace("absent0", "absent1") + "shutdwon: true\n")
        self.assertIn("write 'shutdown'", self.logged())
        self.assertIn("warning: MACSECD_CONFIG_KEPT", self.logged())
        self.assertNotIn("MACSECD_CONFIG_TAKEN", self.logged())
        self.write(GOOD)
        self.daemon.send_signal(signal.SIGHUP)
        self.hear()
        self.assertEqual(self.hear(), "READY=1")
        self.assertEqual(self.logged().count("MACSECD_CONFIG_TAKEN"), 1)
        self.assertEqual(self.end(signal.SIGTERM), 0)

    def test_goes_back_from_a_trial_that_it_died_in(self):
        self.start_notifying()
        new = GOOD + "delay-protection: true\n"
        self.write(new)
        with socket.socket(socket.AF_UNIX) as control:
            control.connect(self.folder + "/run/control")
            control.sendall(json.dumps({"version": 2, "command": "try", "timeout": 60,
                                        "file": self.config}).encode() + b"\n")
            self.assertTrue(json.loads(control.makefile().readline())["result"]["taken"])
        self.kill()
        self.start_notifying(new)
        self.assertIn("was tried and not kept; the configuration that was in force last goes on",
                      self.logged())
        self.assertEqual(self.end(signal.SIGUSR1), 0)
        self.start_notifying(new + "# another one\n")
        self.assertEqual(self.logged().count("MACSECD_CONFIG_TAKEN"), 1)

    def test_ends_with_1_on_mistakes_when_what_was_in_force_before_cannot_be_read(self):
        self.start_notifying()
        self.assertEqual(self.end(signal.SIGUSR1), 0)
        os.remove(self.folder + "/run/state.key")
        self.start(GOOD + "shutdwon: true\n")
        self.assertEqual(self.daemon.wait(timeout=20), 1)

    def test_takes_nothing_of_a_file_that_others_can_read(self):
        self.start_notifying()
        os.chmod(self.write(GOOD + "delay-protection: true\n"), 0o644)
        self.daemon.send_signal(signal.SIGHUP)
        self.hear()
        self.assertEqual(self.hear(), "READY=1")
        self.assertEqual(self.logged().count("MACSECD_CONFIG_TAKEN"), 1)
        self.assertIn("everybody can read it; chmod 600 " + self.config, self.logged())

    def test_never_waits_for_a_pipe_in_the_place_of_its_own_files(self):
        for name in ("state", "state.key", "state-lock"):
            folder = os.path.join(self.folder, "of-" + name)
            os.mkdir(folder)
            os.mkfifo(os.path.join(folder, name), 0o600)
            done = self.run_it("--config", self.write(GOOD), "--counters", "", "--control", "",
                               "--emulate-hardware", "--state", os.path.join(folder, "state"))
            self.assertEqual(done.returncode, 3, name)
            self.assertIn(f"critical: MACSECD_CANNOT_RUN: {folder}/{name}: ", done.stderr)

    def test_ends_with_3_and_a_remedy_when_it_cannot_listen(self):
        done = self.run_it("--config", self.write(GOOD), "--counters", "", "--emulate-hardware",
                           "--eap-keys", os.path.join(self.folder, "no", "such", "folder"))
        self.assertEqual(done.returncode, 3)
        self.assertIn("critical: MACSECD_CANNOT_RUN: ", done.stderr)
        self.assertIn("make its folder", done.stderr)

    def test_ends_with_3_and_names_the_process_that_has_the_state(self):
        self.start_notifying()
        other = ("--config", self.config, "--counters", "", "--emulate-hardware", "--control", "",
                 "--state", self.folder + "/run/state")
        done = self.run_it(*other)
        self.assertEqual(done.returncode, 3)
        self.assertIn(f"run/state.lock: is held by process {self.daemon.pid} ({MACSECD[:100]}",
                      done.stderr)
        self.daemon.kill()
        self.daemon.wait()
        self.start_notifying()
        self.assertEqual(self.end(signal.SIGUSR1), 0)
        self.start_notifying()

    def test_takes_fips_mode_that_cannot_be_had_for_a_mistake_of_the_file(self):
        self.start("fips: true\n" + GOOD, OPENSSL_MODULES="/nowhere")
        self.assertEqual(self.daemon.wait(timeout=20), 1)
        self.assertIn(":1:7: OpenSSL can't run in FIPS mode here: ", self.logged())

    def test_tells_once_that_keys_of_its_state_cannot_be_read(self):
        self.start_notifying()
        self.assertEqual(self.end(signal.SIGUSR1), 0)
        os.remove(self.folder + "/run/state.key")
        self.start_notifying()
        self.assertEqual(self.end(signal.SIGTERM), 0)
        self.assertEqual(self.logged().count("MACSECD_KEY_UNREADABLE: key c0de0001 of absent0: "),
                         1)
        self.assertEqual(self.logged().count("MACSECD_KEY_UNREADABLE"), 1)


class Unprivileged(Program):
    """With the kernel's own hardware: it ends before it asks the kernel for anything."""

    def run_without(self, *capabilities):
        # Root has what the bounding set leaves; anybody else has nothing anyway.
        limit = ["setpriv", "--bounding-set", ",".join("-" + name for name in capabilities)]
        return subprocess.run(
            [*(limit if os.geteuid() == 0 else []), MACSECD, "--config", self.write(GOOD),
             "--counters", "", "--control", "", "--state", ""],
            capture_output=True, text=True, check=False, timeout=30)

    def test_ends_with_3_and_says_what_it_lacks(self):
        done = self.run_without("all")
        self.assertEqual(done.returncode, 3)
        self.assertIn("critical: MACSECD_CANNOT_RUN: this process lacks CAP_NET_ADMIN and "
                      "CAP_NET_RAW, ", done.stderr)
        self.assertIn("run it as root", done.stderr)

    @unittest.skipIf(os.geteuid() != 0, "only root can lack one of the two")
    def test_ends_with_3_if_it_lacks_one_of_the_two(self):
        for name in ("net_admin", "net_raw"):
            done = self.run_without(name)
            self.assertEqual(done.returncode, 3)
            self.assertIn(f"lacks CAP_{name.upper()}, without", done.stderr)


if __name__ == "__main__":
    unittest.main()
