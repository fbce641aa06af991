"""A cable between two machines, and the traffic on it."""

import json
import signal
import subprocess
import time

from machines import BIN, Machine, run, until

RATE = 1000  # datagrams a second and direction


class Cable:
    """Two machines, a and b, and what lies between."""

    def __init__(self, name, suite):
        self.name, self.suite = f"{name} {suite}", suite
        self.a = Machine(f"{name}-a{suite[-3:]}", suite, 1)
        self.b = Machine(f"{name}-b{suite[-3:]}", suite, 2)
        self.programs = []
        self.began = time.monotonic()
        self.lay()

    @property
    def machines(self):
        return self.a, self.b

    def lay(self, link="eth0"):
        run(f"ip link add {link} address {self.a.macs[link]} netns {self.a.name} type veth "
            f"peer name {link} address {self.b.macs[link]} netns {self.b.name}")
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

    def carries(self, link="eth0"):
        self.a.carry(self.b, link)
        self.b.carry(self.a, link)

    def demand_pings(self, link="eth0"):
        """All pings both ways are answered."""
        assert self.a.pings(self.b, link=link) == 5, f"{self.a.name} can't ping"
        assert self.b.pings(self.a, link=link) == 5, f"{self.b.name} can't ping"

    def flow(self, rate=RATE, link="eth0"):
        return Flow(self, rate, link)

    def clear(self):
        for program in self.programs:
            program.kill()
        for machine in self.machines:
            machine.clear()

    def say(self, *words):
        print(f"{self.name} {time.monotonic() - self.began:5.1f}:", *words, flush=True)

    def faults(self):
        return {machine.name: machine.faults() for machine in self.machines if machine.faults()}


class Flow:
    """Numbered datagrams both ways, while the block runs; then `lost`, `late` and `sent`."""

    def __init__(self, cable, rate, link):
        self.cable, self.rate, self.link = cable, rate, link
        self.lost = self.late = self.sent = None

    def __enter__(self):
        a, b = self.cable.machines[:2]
        self.program = subprocess.Popen(
            [f"{BIN}/kernel_flow", str(self.rate), a.name, a.address(self.link), b.name,
             b.address(self.link)],
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
