"""Scenarios on a real kernel with real daemons: two machines and a cable between them. Each is played
with both cipher suites at once, and ends with 0 if both went as the scenario demands."""

import json
import signal
import subprocess
import sys
import threading
import time
import traceback

from machines import BIN, KEYS, Machine, run, until

RATE = 1000  # datagrams a second and direction


class Cable:
    """Two machines, a and b, and what lies between."""

    def __init__(self, suite):
        self.suite = suite
        self.short = suite[-3:]
        self.a = Machine(f"a{self.short}", suite, 1)
        self.b = Machine(f"b{self.short}", suite, 2)
        self.programs = []
        self.lay()

    @property
    def machines(self):
        return self.a, self.b

    def lay(self, link="eth0"):
        run(f"ip link add {link} address {self.a.mac} netns {self.a.name} type veth "
            f"peer name {link} address {self.b.mac} netns {self.b.name}")
        for machine in self.machines:
            machine.link_up(link)

    def start(self):
        """The daemons start, the ports open, and traffic may flow."""
        for machine in self.machines:
            machine.start()
        self.opens()
        self.carries()

    def opens(self, interface="eth0"):
        for machine in self.machines:
            until(lambda m=machine: m.is_open(interface), f"{machine.name} {interface} is open")

    def carries(self):
        self.a.carry(self.b)
        self.b.carry(self.a)

    def flow(self, rate=RATE):
        return Flow(self, rate)

    def clear(self):
        for program in self.programs:
            program.kill()
        for machine in self.machines:
            machine.clear()

    def say(self, *words):
        print(f"{self.suite}:", *words, flush=True)

    def faults(self):
        return {machine.name: machine.faults() for machine in self.machines if machine.faults()}


class Flow:
    """Numbered datagrams both ways, while the block runs; then `lost`, `late` and `sent`."""

    def __init__(self, cable, rate):
        self.cable, self.rate = cable, rate
        self.lost = self.late = self.sent = None

    def __enter__(self):
        a, b = self.cable.machines
        self.program = subprocess.Popen(
            [f"{BIN}/kernel_flow", str(self.rate), a.name, a.address, b.name, b.address],
            stdout=subprocess.PIPE, text=True)
        self.cable.programs.append(self.program)
        return self

    def __exit__(self, kind, error, trace):
        self.program.send_signal(signal.SIGTERM)
        lines = self.program.communicate()[0].splitlines()
        assert len(lines) == 2, "the flow ended before its time"
        self.ways = [json.loads(line) for line in lines]
        self.sent, self.lost, self.late = (sum(way[name] for way in self.ways)
                                           for name in ("sent", "lost", "late"))
        seconds = max(way["seconds"] for way in self.ways)
        self.cable.say(f"{self.sent} datagrams in {seconds:.0f} s, {self.lost} lost, "
                       f"{self.late} late")
        if self.lost or self.late:
            self.cable.say(self.ways)

    def demand_none_lost(self):
        assert self.sent > 0 and self.lost == 0 and self.late == 0, self.ways


def play(scene, suites=tuple(KEYS), cable=Cable):
    """Plays the scene with each suite at the same time, and ends the program."""
    failures = []

    def play_one(suite):
        began = time.monotonic()
        laid = None
        try:
            laid = cable(suite)
            scene(laid)
            laid.say(f"well, in {time.monotonic() - began:.1f} s")
        except BaseException:  # pylint: disable=broad-except
            failures.append((suite, laid, traceback.format_exc()))

    threads = [threading.Thread(target=play_one, args=(suite,)) for suite in suites]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for suite, laid, text in failures:
        print(f"FAILED with {suite}: {text}")
        for machine in laid.machines if laid else ():
            machine.tell()
        if laid:
            laid.clear()
    sys.stdout.flush()
    sys.exit(1 if failures else 0)
