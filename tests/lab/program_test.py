"""The program as a user runs it: shipped scenarios, seeds, exit statuses, and captures that
tshark reads. MACSEC_LAB is the program, EXAMPLES the folder of the scenarios."""

import glob
import json
import os
import re
import shutil
import subprocess
import tempfile
import unittest

LAB = os.environ["MACSEC_LAB"]
EXAMPLES = os.environ["EXAMPLES"]
SCENARIOS = sorted(glob.glob(os.path.join(EXAMPLES, "*.scenario")))
FOUND = sorted(glob.glob(os.path.join(EXAMPLES, "found", "*.scenario")))

FIELDS = ["frame.time_epoch", "frame.len", "eth.src", "mka.actor_mi", "mka.actor_mn",
          "mka.cak_name", "mka.key_server", "mka.sci", "mka.peer_mi", "mka.param_set_type",
          "mka.distributed_an", "mka.key_number", "mka.latest_key_server_mi",
          "mka.latest_key_number", "mka.latest_key_an", "mka.old_key_server_mi",
          "mka.old_key_number", "mka.old_key_an"]
SET_NAMES = {1: "live-peers", 2: "potential-peers", 3: "sak-use", 4: "dist-sak", 5: "dist-cak",
             255: "icv-indicator"}
# Switches whose key from 802.1X is of the type that can't be key server.
SUPPLICANTS = {"dot1x": "B", "dot1x-stale-key": "B"}

# Frames that a scenario makes with a defect: their times, and the defects that tshark sees too.
MADE = re.compile(r"^at (\S+) send a frame with (\w+) to", re.MULTILINE)
# Frames that go by a second time; the first one is the switch's own.
REPLAYED = re.compile(r"^at \S+ replay ", re.MULTILINE)
MALFORMED = {"livePeerListErr", "potentialPeerListErr", "sakUseSetErr", "icvIndicatorErr",
             "unrecognizedSetErr"}


def run(*arguments):
    return subprocess.run([LAB, *arguments], capture_output=True, text=True, check=False)


def read(path):
    with open(path, "rb") as file:
        return file.read()


def tshark(*arguments):
    done = subprocess.run(["tshark", "-n", *arguments], capture_output=True, text=True, check=True)
    return done.stdout.splitlines()


class Folder(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)
        return self.path(name)


class ShippedScenarios(Folder):
    def test_are_at_least_twelve_and_all_hold(self):
        self.assertGreaterEqual(len(SCENARIOS), 12)
        self.assertGreaterEqual(len(FOUND), 1)
        done = run(*SCENARIOS, *FOUND)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        lines = done.stdout.splitlines()
        self.assertEqual(len(lines), len(SCENARIOS) + len(FOUND))
        for line in lines:
            self.assertRegex(line, r"^ok      .*\.scenario \(\d+ expectations\)$")

    def test_hold_with_other_seeds_where_every_first_delay_is_fixed(self):
        fixed = [path for path in SCENARIOS
                 if not os.path.basename(path).startswith(("loss", "three-switches"))]
        for seed in ("2", "77", "4294967295"):
            done = run("--seed", seed, *fixed)
            self.assertEqual(done.returncode, 0, done.stdout)


class Seeds(Folder):
    def play(self, name, *arguments):
        """Everything that one run leaves behind."""
        folder, events = self.path(name), self.path(name + ".events")
        done = run("play", "--show", "--pcap-dir", folder, "--state-dir", folder,
                   "--events", events, *arguments)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        files = {os.path.basename(path): read(path) for path in glob.glob(folder + "/*")}
        self.assertEqual({os.path.splitext(name)[1] for name in files}, {".pcap", ".state"})
        return done.stdout.replace(folder, "DIR"), read(events), files

    def test_give_the_same_bytes_in_two_processes(self):
        for name in ("two-switches", "three-switches", "loss"):
            path = os.path.join(EXAMPLES, name + ".scenario")
            self.assertEqual(self.play(name + "1", path), self.play(name + "2", path))

    def test_given_on_the_command_line_go_before_the_scenarios_own(self):
        path = os.path.join(EXAMPLES, "three-switches.scenario")
        own = self.play("own", path)
        self.assertEqual(own, self.play("three", "--seed", "3", path))
        self.assertNotEqual(own[1], self.play("four", "--seed", "4", path)[1])

    def test_leave_no_trace_of_a_scenario_in_the_next_one(self):
        first, second = (os.path.join(EXAMPLES, name + ".scenario")
                         for name in ("two-switches", "timeline"))
        alone = self.play("alone", second)[1]
        self.assertTrue(self.play("both", first, second)[1].endswith(alone))


class ExitStatus(Folder):
    def test_is_1_when_an_expectation_fails_and_the_others_are_played_all_the_same(self):
        timeline = os.path.join(EXAMPLES, "timeline.scenario")
        with open(timeline, encoding="utf-8") as file:
            text = file.read()
        bad = self.write("bad.scenario", text + "at 3 expect A Ethernet1 is open\n")
        done = run(bad, timeline)
        self.assertEqual(done.returncode, 1)
        line = len(text.splitlines()) + 1
        self.assertEqual(done.stdout.splitlines(), [
            f"FAILED  {bad} (1 of 12 expectations)",
            f"  {bad}:{line}: at 3.000 on A: expected that A Ethernet1 is open, "
            "but A Ethernet1 is closed",
            f"ok      {timeline} (11 expectations)"])

    def test_is_2_and_nothing_is_played_when_a_file_has_mistakes(self):
        bad = self.write("bad.scenario", "wier\n")
        done = run(bad, os.path.join(EXAMPLES, "timeline.scenario"))
        self.assertEqual(done.returncode, 2)
        self.assertEqual(done.stdout, "")
        self.assertIn(f"{bad}:1:1: there is no beginning of a line 'wier'; write 'wire'",
                      done.stderr)

    def test_is_2_for_a_wrong_command_line(self):
        self.assertEqual(run().returncode, 2)
        self.assertEqual(run("--seed", "x", SCENARIOS[0]).returncode, 2)
        self.assertEqual(run("decode").returncode, 2)

    def test_is_2_when_a_file_cannot_be_written(self):
        done = run("--events", self.path("no/such/folder"), SCENARIOS[0])
        self.assertEqual(done.returncode, 2)
        self.assertIn("no/such/folder; name a file that may be written with --events", done.stderr)
        done = run("--pcap-dir", "/dev/null/x", SCENARIOS[0])
        self.assertEqual(done.returncode, 2)
        self.assertIn("name a folder that may be written with --pcap-dir", done.stderr)
        done = run("--state-dir", "/dev/null/x", SCENARIOS[0])
        self.assertEqual(done.returncode, 2)
        self.assertIn("name a folder that may be written with --state-dir", done.stderr)


class Show(Folder):
    def test_tells_the_timeline_the_status_table_and_the_capture(self):
        done = run("play", "--show", "--pcap-dir", self.folder,
                   os.path.join(EXAMPLES, "timeline.scenario"))
        lines = done.stdout.splitlines()
        self.assertEqual(lines[0], "The first ten seconds of two switches, to the millisecond")
        self.assertIn("     7.001  A   port Ethernet1 is open", lines)
        self.assertIn("     8.001  B   port Ethernet1 is open", lines)
        table = lines.index(next(line for line in lines if line.startswith("Port")))
        self.assertRegex(lines[table], "Port +State +Principal key +Key server +SAK +AN +SSCI +Peers")
        self.assertRegex(lines[table + 1],
                         r"A Ethernet1 +open +c0de0001 +A +[0-9a-f]{8}:1 +0 +00000002 +B")
        self.assertRegex(lines[table + 2],
                         r"B Ethernet1 +open +c0de0001 +A +[0-9a-f]{8}:1 +0 +00000001 +A")
        self.assertIn("Frames of A:", lines)
        self.assertRegex(done.stdout, "Ethernet1 +tx success +[0-9]+ +[0-9]+\n")
        capture = os.path.join(self.folder, "timeline.A-Ethernet1.B-Ethernet1.pcap")
        self.assertIn("Capture: " + capture, lines)
        self.assertTrue(os.path.exists(capture))

    def test_shows_no_key(self):
        path = os.path.join(EXAMPLES, "two-switches.scenario")
        events = self.path("events")
        shown = run("--show", "--events", events, path).stdout + read(events).decode()
        for key in ("0123456789abcdef0123456789abcde", "fedcba98765432"):
            self.assertNotIn(key, shown)


class StoredState(Folder):
    def test_is_a_file_of_sorted_paths_for_each_switch(self):
        done = run("--show", "--state-dir", self.folder,
                   os.path.join(EXAMPLES, "two-switches.scenario"))
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertEqual(sorted(os.listdir(self.folder)),
                         ["two-switches.A.state", "two-switches.B.state"])
        for name in os.listdir(self.folder):
            self.assertIn("Stored state: " + self.path(name), done.stdout.splitlines())
            lines = read(self.path(name)).decode().splitlines()
            paths = [line.split(" ")[0] for line in lines]
            self.assertEqual(paths, sorted(paths))
            self.assertIn("cpStatus/Ethernet1/controlledPortEnabled True", lines)


@unittest.skipUnless(shutil.which("tshark"), "tshark is not installed")
class Captures(Folder):
    """Every frame that a scenario sends, as tshark reads it, against what the switches held."""

    def test_of_every_scenario_have_nothing_malformed_but_what_is_made_so_and_agree(self):
        for path in SCENARIOS:
            with self.subTest(scenario=os.path.basename(path)):
                self.check(path)

    def check(self, path):
        name = os.path.splitext(os.path.basename(path))[0]
        events_file = self.path(name + ".events")
        run("--pcap-dir", self.path(name), "--events", events_file, path)
        with open(events_file, encoding="utf-8") as file:
            events = [json.loads(line) for line in file]
        with open(path, encoding="utf-8") as file:
            text = file.read()
        made = [(float(time), defect) for time, defect in MADE.findall(text)]
        frames, malformed = [], []
        for capture in sorted(glob.glob(self.path(name) + "/*.pcap")):
            malformed += tshark("-r", capture, "-Y", "_ws.malformed || _ws.expert", "-T", "fields",
                                "-e", "frame.time_epoch")
            arguments = [word for field in FIELDS for word in ("-e", field)]
            frames += [dict(zip(FIELDS, row.split("\t"))) for row in
                       tshark("-r", capture, "-Y", "mka", "-T", "fields", *arguments)]
        self.assertEqual([float(time) for time in malformed],
                         [time for time, defect in made if defect in MALFORMED])
        times = {time for time, _ in made}
        sent = [frame for frame in frames if float(frame["frame.time_epoch"]) not in times]
        self.assertEqual(len(frames) - len(sent), len(made))
        self.assertTrue(sent)
        if REPLAYED.search(text):
            sent = list({(frame["mka.actor_mi"], frame["mka.actor_mn"]): frame
                         for frame in reversed(sent)}.values())
        self.compare(sent, events, SUPPLICANTS.get(name))

    def compare(self, frames, events, supplicant):
        sent = {(event["member-id"], event["message-number"]): number
                for number, event in enumerate(events)
                if event["event"] == "frame" and event["way"] == "out"}
        for frame in frames:
            key = frame["mka.actor_mi"], int(frame["mka.actor_mn"], 16)
            self.assertIn(key, sent)
            event = events[sent[key]]
            self.assertAlmostEqual(float(frame["frame.time_epoch"]), event["monotonic"], places=5)
            self.assertEqual(int(frame["frame.len"]), event["length"])
            self.assertEqual(frame["mka.cak_name"], event["ckn"])
            sets = [SET_NAMES[int(kind)] for kind in frame["mka.param_set_type"].split(",") if kind]
            self.assertEqual(sets, event["sets"])
            self.compare_state(frame, State(events[:sent[key]], event, supplicant))

    def compare_state(self, frame, state):
        peers = [peer for peer in frame["mka.peer_mi"].split(",") if peer]
        self.assertEqual(sorted(peers), state.peers)
        self.assertEqual(frame["mka.key_server"] in ("1", "True"), state.key_server)
        self.assertEqual(frame["mka.sci"][:12], frame["eth.src"].replace(":", ""))
        nothing = "0" * 24
        for age in ("latest", "old"):
            server = frame[f"mka.{age}_key_server_mi"]
            if server in ("", nothing):
                continue
            used = (int(frame[f"mka.{age}_key_an"]), server, int(frame[f"mka.{age}_key_number"], 16))
            self.assertIn(used, state.asked)
        if frame["mka.distributed_an"]:
            given = (int(frame["mka.distributed_an"]), frame["mka.actor_mi"],
                     int(frame["mka.key_number"], 16))
            self.assertIn(given, state.asked)


class State:
    """What the trees of a switch held as it sent a frame, from the events before it."""

    def __init__(self, events, sent, supplicant):
        # Who may be key server and knows of none offers itself.
        offers = sent["switch"] != supplicant
        self.peers, self.key_server, self.asked = [], offers, set()
        for event in events:
            if (event["switch"], event.get("interface")) != (sent["switch"], sent["interface"]):
                continue
            if event["event"] == "sa-asked" and event["key-id"]:
                self.asked.add((event["an"], event["key-id"], event["key-number"]))
            if event.get("ckn") != sent["ckn"]:
                continue
            if event["event"] == "peers":
                self.peers = sorted(event["live"] + event["potential"])
            elif event["event"] == "key-server":
                self.key_server = event["is-key-server"] or (offers and event["sci"] is None)


if __name__ == "__main__":
    unittest.main()
