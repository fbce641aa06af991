"""What an operator does with a running daemon: macsecctl against macsecd, and a scrape of its metrics.
Without privileges: the interface isn't there. MACSECD and MACSECCTL are the programs."""

import json
import os
import shutil
import signal
import socket
import stat
import subprocess
import tempfile
import unittest
import urllib.error
import urllib.request

MACSECD = os.environ["MACSECD"]
MACSECCTL = os.environ["MACSECCTL"]
CONFIGURATION = """profiles:
  uplink:
    key: {ckn: c0de0001, cak: 0123456789abcdef0123456789abcdef}
interfaces:
  absent0: {profile: uplink}
"""


def free_port():
    with socket.socket() as some:
        some.bind(("127.0.0.1", 0))
        return some.getsockname()[1]


class Operator(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        self.socket = self.path("control")
        self.trace = self.path("trace")

    def path(self, name):
        return os.path.join(self.folder, name)

    def command(self, *options):
        config = self.path("macsecd.yaml")
        with open(config, "w", encoding="utf-8") as file:
            file.write(CONFIGURATION)
        os.chmod(config, 0o600)
        return [MACSECD, "--config", config, "--counters", "", "--emulate-hardware", "--control",
                self.socket, "--state", "", "--trace", self.trace, *options]

    def start(self, *options):
        """Runs the daemon until it is ready."""
        manager = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.addCleanup(manager.close)
        manager.bind(self.path("notify"))
        manager.settimeout(20)
        with open(self.path("log"), "wb") as log:
            self.daemon = subprocess.Popen(
                self.command(*options), stderr=log,
                env={**os.environ, "NOTIFY_SOCKET": self.path("notify")})
        self.addCleanup(self.kill)
        self.assertEqual(manager.recv(4096), b"READY=1")

    def kill(self):
        if self.daemon.poll() is None:
            self.daemon.kill()
        self.daemon.wait()

    def ask(self, *arguments):
        done = subprocess.run([MACSECCTL, "--socket", self.socket, *arguments],
                              capture_output=True, text=True, check=False, timeout=30)
        return done.returncode, done.stdout, done.stderr

    def test_is_told_when_nobody_answers(self):
        for command in (["status"], ["watch"], ["capture", "absent0", self.path("pcap")]):
            status, _, err = self.ask(*command)
            self.assertEqual(status, 3, command)
            self.assertIn("check that macsecd runs", err)

    def test_is_told_what_arguments_there_are(self):
        for wrong in (["no-such"], ["rekey"], ["capture", "absent0"], ["trace"], ["trace", "onn"],
                      ["trace", "on", "--level", "10"], ["watch", "--count", "0"]):
            self.assertEqual(self.ask(*wrong)[0], 2, wrong)

    def test_asks_for_an_interface_whose_name_is_no_text(self):
        self.start()
        for command in (["status"], ["explain"], ["watch", "--seconds", "1"]):
            done = subprocess.run([MACSECCTL, "--socket", self.socket, *command, b"\xff"],
                                  capture_output=True, check=False, timeout=30)
            self.assertEqual(done.returncode, 1, command)
            self.assertIn(b"there is no interface", done.stderr)
        done = subprocess.run([MACSECCTL, "--socket", self.socket, "try", b"/no/\xff"],
                              capture_output=True, check=False, timeout=30)
        self.assertEqual(done.returncode, 1)

    def test_is_refused_a_new_key_for_a_port_without_one(self):
        self.start()
        self.assertEqual(self.ask("rekey", "absent0"),
                         (1, "", "no key is in use on absent0; see 'macsecctl explain absent0'\n"))
        status, out, _ = self.ask("--json", "rekey", "absent1")
        self.assertEqual((status, json.loads(out)["remedy"]), (1, "write 'absent0'"))

    def new_file(self, more="delay-protection: true\n"):
        path = self.path("new.yaml")
        with open(path, "w", encoding="utf-8") as file:
            file.write(CONFIGURATION + more)
        os.chmod(path, 0o600)
        return path

    def asked(self, command, **more):
        with socket.socket(socket.AF_UNIX) as control:
            control.connect(self.socket)
            control.sendall(json.dumps({"version": 2, "command": command, **more}).encode() + b"\n")
            return json.loads(control.makefile().readline())["result"]

    def test_tries_a_configuration_that_goes_again(self):
        self.start()
        status, out, err = self.ask("try", self.new_file(), "--timeout", "1")
        self.assertEqual(status, 1)
        self.assertIn("new.yaml is in force for 1 s", out)
        self.assertEqual(err, "Not kept in time: the former configuration is in force again.\n")
        self.assertEqual(self.asked("trial")["state"], "went-back")
        self.assertEqual(self.ask("keep"), (1, "", "no configuration is on trial; try one: "
                                                   "macsecctl try FILE\n"))

    def test_tries_a_configuration_and_keeps_it(self):
        self.start()
        with subprocess.Popen([MACSECCTL, "--socket", self.socket, "try", self.new_file()],
                              stdout=subprocess.PIPE, text=True) as trial:
            self.assertIn("is in force for 120 s", trial.stdout.readline())
            self.assertGreater(self.asked("trial")["seconds"], 100)
            status, out, _ = self.ask("keep")
            self.assertEqual((status, out.splitlines()[0]), (0, "Kept."))
            self.assertIn(f"put {self.path('new.yaml')} in its place", out)
            self.assertIn("Kept.", trial.communicate(timeout=20)[0])
            self.assertEqual(trial.returncode, 0)

    def test_tries_nothing_of_a_file_with_mistakes_or_out_of_reach(self):
        self.start()
        status, _, err = self.ask("try", self.new_file("shutdwon: true\n"))
        self.assertEqual(status, 1)
        self.assertIn("new.yaml:6:1: unknown word 'shutdwon'", err)
        status, _, err = self.ask("try", self.path("none"))
        self.assertEqual(status, 1)
        self.assertIn("put it where macsecd itself can read it", err)
        self.assertEqual(self.asked("trial")["state"], "none")
        for wrong in ([], [self.new_file(), "--timeout", "0"], [self.new_file(), "--timeout", "x"]):
            self.assertEqual(self.ask("try", *wrong)[0], 2, wrong)

    def test_hears_when_the_daemon_ends_while_it_tries(self):
        self.start()
        with subprocess.Popen([MACSECCTL, "--socket", self.socket, "try", self.new_file()],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as trial:
            trial.stdout.readline()
            self.kill()
            self.assertIn("isn't kept", trial.communicate(timeout=20)[1])
            self.assertEqual(trial.returncode, 3)

    def test_watches_until_the_time_is_over_or_a_signal_comes(self):
        self.start()
        self.assertEqual(self.ask("watch", "--seconds", "0.1"), (0, "", ""))
        self.assertEqual(self.ask("watch", "absent7")[0], 1)
        watch = subprocess.Popen([MACSECCTL, "--socket", self.socket, "watch"])
        # It hears signals when it has asked; before that they just end it.
        with open(f"/proc/{watch.pid}/status", encoding="utf-8") as file:
            while int(next(x for x in file if x.startswith("SigBlk:")).split()[1], 16) == 0:
                file.seek(0)
        watch.send_signal(signal.SIGINT)
        self.assertEqual(watch.wait(timeout=20), 0)

    def test_hears_when_the_daemon_ends_while_it_watches(self):
        self.start()
        with subprocess.Popen([MACSECCTL, "--socket", self.socket, "watch", "--seconds", "20"],
                              stderr=subprocess.PIPE, text=True) as watch:
            while self.ask("status")[0] == 0:
                with open(f"/proc/{watch.pid}/status", encoding="utf-8") as file:
                    if "SigBlk:\t0000000000000000" not in file.read():
                        self.kill()
            self.assertEqual(watch.wait(timeout=20), 3)
            self.assertTrue(watch.stderr.read())

    def test_captures_into_a_file_that_is_a_capture_even_when_nothing_comes(self):
        self.start()
        status, out, _ = self.ask("capture", "absent0", self.path("pcap"), "--seconds", "0.1")
        self.assertEqual((status, out), (0, f"0 frames in {self.path('pcap')}\n"))
        with open(self.path("pcap"), "rb") as file:
            self.assertEqual(len(file.read()), 24)
        self.assertEqual(self.ask("capture", "absent0", "/no/such/file")[0], 1)

    def test_reads_the_trace_of_a_daemon_that_was_killed(self):
        self.start()
        self.assertEqual(self.ask("trace", "dump", "--file", self.trace)[0], 1)
        self.assertFalse(os.path.exists(self.trace))
        status, _, err = self.ask("trace", "on", "StreamServr")
        self.assertEqual((status, err), (1, "there is no trace handle 'StreamServr'; "
                                            "write 'StreamServer'\n"))
        self.assertEqual(self.ask("trace", "on", "--level", "3", "StreamServer"), (0, "", ""))
        self.ask("status")
        self.kill()
        status, out, _ = self.ask("trace", "dump", "--file", self.trace)
        self.assertEqual(status, 0)
        self.assertRegex(out.splitlines()[-1],
                         "^[-0-9]+ [0-9:.]+  3  StreamServer  serve/StreamServer.cpp:[0-9]+  void .*")
        status, out, _ = self.ask("--json", "trace", "dump", "--file", self.trace)
        self.assertEqual({json.loads(line)["handle"] for line in out.splitlines()}, {"StreamServer"})
        self.assertEqual(stat.S_IMODE(os.stat(self.trace).st_mode), 0o600)

    def test_keeps_what_was_traced_when_tracing_ends(self):
        self.start()
        self.ask("trace", "on", "StreamServer")
        self.assertEqual(self.ask("trace", "off"), (0, "", ""))
        before = self.ask("trace", "dump", "--file", self.trace)
        self.ask("status")
        self.assertEqual(len(self.ask("trace", "dump", "--file", self.trace)[1].splitlines()),
                         len(before[1].splitlines()))
        self.assertGreater(len(before[1]), 0)

    def test_lets_prometheus_read(self):
        port = free_port()
        self.start("--metrics", f"127.0.0.1:{port}")
        with urllib.request.urlopen(f"http://127.0.0.1:{port}/metrics", timeout=20) as answer:
            self.assertEqual(answer.headers["Content-Type"],
                             "text/plain; version=0.0.4; charset=utf-8")
            self.assertIn('macsecd_port_secured{interface="absent0"} 0', answer.read().decode())
        with self.assertRaises(urllib.error.HTTPError):
            urllib.request.urlopen(f"http://127.0.0.1:{port}/", timeout=20)

    def test_is_refused_metrics_that_others_could_read(self):
        done = subprocess.run(self.command("--metrics", "0.0.0.0:9464"), capture_output=True,
                              text=True, check=False, timeout=30)
        self.assertEqual(done.returncode, 3)
        self.assertIn("name a loopback address", done.stderr)


if __name__ == "__main__":
    unittest.main()
