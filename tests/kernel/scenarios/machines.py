"""Machines that share a kernel: each is a network namespace with a daemon of its own."""

import ctypes
import json
import os
import shlex
import signal
import socket
import subprocess
import threading
import time

BIN = os.environ["MACSEC_BIN"]  # the folder of the programs under test
LIMIT = 90  # seconds that anything may take that is waited for: machines may be slow
UNNOTICED = 2.5  # seconds that a daemon may be away: a life time, less a period before and one after
DEVICE = "eth0-sec"
KEYS = {"gcm-aes-xpn-128": 32, "gcm-aes-xpn-256": 64}  # digits
FAULTS = ("InPktsLate", "InPktsInvalid", "InPktsNotValid", "InPktsNotUsingSA", "InPktsUnusedSA",
          "InPktsDelayed", "InPktsNoSCI", "InPktsUnknownSCI", "InPktsBadTag", "InPktsOverrun",
          "OutPktsTooLong")


def run(command, check=True):
    """What a command writes. A shell costs as much as the command, and few need one."""
    shell = not set(command).isdisjoint("&|;<>")
    done = subprocess.run(command if shell else shlex.split(command), shell=shell, text=True,
                          check=False, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if check and done.returncode != 0:
        raise RuntimeError(f"{command} ended with {done.returncode}: {done.stdout}")
    return done.stdout


def until(condition, what, seconds=LIMIT):
    """Waits until the condition gives something true, and returns that."""
    end = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"not within {seconds} s: {what}")
        time.sleep(0.1)


def transmit_key(secy):
    """The identifier of the key that a MACsec device, as the kernel tells of it, transmits with."""
    keys = {sa["an"]: sa["key"] for sa in secy.get("sa_list", [])}
    return keys.get(secy.get("encoding_sa"))


def inside(space, call):
    """What `call` gives in a network namespace: a socket, once opened, stays there."""
    libc = ctypes.CDLL(None, use_errno=True)
    with open("/proc/thread-self/ns/net", "rb") as former, open(f"/run/netns/{space}", "rb") as new:
        libc.setns(new.fileno(), 0)
        try:
            return call()
        finally:
            libc.setns(former.fileno(), 0)


class Machine:
    """A namespace, its link eth0, and the daemon on it."""

    def __init__(self, name, suite, number):
        self.name = name
        self.number = number
        self.digits = KEYS[suite]
        self.macs = {link: f"02:00:00:00:{at:02x}:{number:02x}"
                     for at, link in enumerate(("eth0", "eth1"))}
        self.folder = f"/run/machines/{name}"
        self.daemon = None
        self.notes = []  # what the daemon has written, and what was done to it
        self.profile = {"key": self.key("c0de0001", "1", suite),
                        "fallback-key": self.key("c0defa11", "f", suite),
                        "key-server-priority": 10 * number, "cipher-suite": suite}
        self.interfaces = {"eth0": {"profile": "uplink"}}
        os.makedirs(self.folder)
        run(f"ip netns add {name} && ip -n {name} link set lo up")

    @staticmethod
    def key(ckn, digit, suite):
        return {"ckn": ckn, "cak": digit * KEYS[suite]}

    # Links and addresses.

    def ip(self, arguments):
        return run(f"ip -n {self.name} {arguments}")

    def link_up(self, link="eth0"):
        self.ip(f"link set {link} up")

    def address(self, link="eth0"):
        """That of the MACsec device above the link."""
        return f"10.9.{link[3:]}.{self.number}"

    def carry(self, other, link="eth0"):
        """The MACsec device above the link gets its address, and knows its neighbour's."""
        device = f"{link}-sec"
        until(lambda: self.has(device), f"{self.name} has {device}")
        self.ip(f"addr replace {self.address(link)}/24 dev {device}")
        self.ip(f"neigh replace {other.address(link)} lladdr {other.macs[link]} dev {device} "
                "nud permanent")

    def has(self, device):
        return subprocess.run(["ip", "-n", self.name, "link", "show", device], check=False,
                              capture_output=True).returncode == 0

    def pings(self, other, count=5, options="", link="eth0"):
        """How many pings of so many are answered; none where there is no way to the other."""
        text = run(f"nsenter --net=/run/netns/{self.name} ping -q -c {count} -i 0.1 -W 1 {options} "
                   f"{other.address(link)}", check=False)
        return int(text.split(" received")[0].split()[-1]) if " received" in text else 0

    # The daemon.

    def configure(self):
        """Writes its configuration."""
        text = json.dumps({"profiles": {"uplink": self.profile}, "interfaces": self.interfaces})
        path = f"{self.folder}/new.yaml"
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(path, 0o600)
        os.replace(path, f"{self.folder}/macsecd.yaml")

    def start(self, program=None):
        self.configure()
        self.note("started")
        self.daemon = subprocess.Popen(
            ["nsenter", f"--net=/run/netns/{self.name}", program or f"{BIN}/macsecd",
             "--config", f"{self.folder}/macsecd.yaml", "--state", f"{self.folder}/state",
             "--control", f"{self.folder}/control", "--counters", ""],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        threading.Thread(target=self.listen, args=(self.daemon.stdout,), daemon=True).start()

    def listen(self, pipe):
        """Notes what the daemon writes, until it ends."""
        with pipe:
            for line in pipe:
                self.note(line.rstrip())

    def note(self, text):
        self.notes.append(f"{time.monotonic():.3f} {text}")

    def end(self, number):
        """Sends the daemon a signal that ends it, and hands back how it ended."""
        self.note(signal.Signals(number).name)
        self.daemon.send_signal(number)
        return self.daemon.wait(timeout=LIMIT)

    def stop(self):
        assert self.end(signal.SIGTERM) == 0, "the daemon didn't stop cleanly"

    def restart(self, program=None):
        """As the service manager restarts it: the ports stay."""
        assert self.end(signal.SIGUSR1) == 0, "the daemon didn't end cleanly"
        self.start(program)

    def kill(self):
        self.end(signal.SIGKILL)

    def ask(self, command, **more):
        """The answer of the daemon, or None while it gives none."""
        request = json.dumps({"version": 2, "command": command, **more})
        try:
            with socket.socket(socket.AF_UNIX) as control:
                control.settimeout(LIMIT)
                control.connect(f"{self.folder}/control")
                control.sendall(request.encode() + b"\n")
                answer = json.loads(control.makefile().readline())
        except (OSError, ValueError):
            return None
        assert answer["ok"], answer
        return answer["result"]

    def ctl(self, arguments, check=True):
        """What macsecctl writes."""
        return run(f"{BIN}/macsecctl --socket {self.folder}/control {arguments}", check)

    def reload(self):
        self.configure()
        assert self.ask("reload")["taken"]

    def port(self, interface="eth0"):
        """What `macsecctl status` says of a port; nothing while it says nothing."""
        for port in self.ask("status") or []:
            if port["interface"] == interface:
                return port
        return {}

    def principal(self, interface="eth0"):
        """The name of the key that the port is open on, None if it isn't open."""
        port = self.port(interface)
        names = [key["ckn"] for key in port.get("keys", []) if key["principal"]]
        return names[0] if names and port["state"] == "open" else None

    def causes(self, interface="eth0"):
        """Why the port isn't secured, the first cause first: texts by word."""
        for port in self.ask("explain") or []:
            if port["interface"] == interface:
                return {cause["cause"]: cause["what"] for cause in port["causes"]}
        return {}

    def refused(self):
        """MKPDUs that came in and failed, by kind, as `macsecctl counters` tells them."""
        frames = json.loads(self.ctl("--json counters"))["result"][0]["counters"]
        return {entry["frames"].split()[-1]: entry["total"] for entry in frames
                if entry["frames"].startswith("rx failure")}

    def is_open(self, interface="eth0"):
        return self.port(interface).get("state") == "open"

    def memory(self):
        """What the daemon holds of the machine's memory, in KiB."""
        with open(f"/proc/{self.daemon.pid}/status", encoding="utf-8") as status:
            return int(dict(line.split(":", 1) for line in status)["VmRSS"].split()[0])

    def log(self):
        return "\n".join(self.notes)

    # The kernel.

    def macsec(self, device=DEVICE):
        """What the kernel says of a MACsec device; packet numbers are cut to 32 bits."""
        for found in until(self.devices, "ip lists the MACsec devices undisturbed"):
            if found.get("ifname") == device:
                return found
        return {}

    def devices(self):
        """All MACsec devices, and an empty one; None if they changed while they were listed, which
        `ip` says in a line before the list."""
        text = self.ip("-s -j macsec show")
        return None if text.startswith("Dump was interrupted") else [{}] + json.loads(text or "[]")

    def transmit_key(self, device=DEVICE):
        """The identifier of the key that the kernel transmits with; None without one."""
        return transmit_key(self.macsec(device))

    def faults(self, device=DEVICE):
        """The kernel's counters of frames that it didn't take, those that aren't 0."""
        secy = self.macsec(device)
        places = [secy] + secy.get("rx_sc", [])
        sums = {name: sum(place.get(name, 0) for place in places) for name in FAULTS}
        return {name: count for name, count in sums.items() if count}

    def is_filtered(self):
        """Whether clear frames are kept from eth0, both ways."""
        return all("action drop" in run(f"tc -n {self.name} filter show dev eth0 {side}")
                   for side in ("ingress", "egress"))

    def tell(self):
        """All that helps to understand a failure."""
        print(f"--- {self.name}: log", self.log(), sep="\n")
        alive = self.daemon and self.daemon.poll() is None
        print(f"--- {self.name}: status", self.ctl("status", False) if alive else "(dead)",
              self.ctl("explain", False) if alive else "", sep="\n")
        print(run(f"ip -n {self.name} -br link && ip -n {self.name} -s macsec show", check=False))

    def clear(self):
        if self.daemon and self.daemon.poll() is None:
            self.kill()
