"""A wire that others share, and what can be said of all that was sent on it."""

import json
import re
import socket
import struct
import subprocess
import threading
import time

import scenario
from machines import BIN, inside, run

ALL, EAPOL, MACSEC = 0x0003, 0x888E, 0x88E5
MKA = 18  # where an MKPDU begins in its frame
DISTRIBUTED_SAK = 4  # the type of this parameter set
SOL_PACKET, PACKET_STATISTICS, PACKET_IGNORE_OUTGOING, SO_RCVBUFFORCE = 263, 6, 23, 33
ROOM = 16 << 20


class Cable(scenario.Cable):
    """The wire is a hub with one more port, for a stranger: it learns no addresses, since some may be
    false."""

    def lay(self, link="eth0"):
        self.wire, self.stranger = (f"{self.a.name}-{name}" for name in ("wire", "stranger"))
        run(f"ip netns add {self.wire} && ip netns add {self.stranger}")
        run(f"ip -n {self.wire} link add bridge up type bridge group_fwd_mask 8 mcast_snooping 0")
        for machine in self.machines:
            self.plug(machine.number, machine.name, machine.macs[link])
        last = len(self.machines) + 1
        self.plug(last, self.stranger, f"02:00:00:00:00:{last:02x}")
        self.tap = inside(self.stranger, open_tap)

    def plug(self, number, space, mac):
        """The link eth0 of a namespace comes into being."""
        run(f"ip link add port{number} netns {self.wire} type veth peer name eth0 address {mac} "
            f"netns {space}")
        run(f"ip -n {self.wire} link set port{number} master bridge up")
        run(f"ip -n {self.wire} link set port{number} type bridge_slave learning off")
        run(f"ip -n {space} link set eth0 up")


def open_tap():
    tap = socket.socket(socket.AF_PACKET, socket.SOCK_RAW, socket.htons(ALL))
    tap.bind(("eth0", ALL))
    return tap


class Recorder:
    """All MKPDUs and MACsec frames that the machines on a hub send, from now on; none of those that
    the stranger sends."""

    def __init__(self, cable):
        self.mkpdus, self.data = [], []
        self.tap = inside(cable.stranger, open_tap)
        self.tap.setsockopt(socket.SOL_SOCKET, SO_RCVBUFFORCE, ROOM)
        self.tap.setsockopt(SOL_PACKET, PACKET_IGNORE_OUTGOING, 1)
        self.tap.settimeout(0.1)
        self.is_over = False
        self.thread = threading.Thread(target=self.listen, daemon=True)
        self.thread.start()

    def listen(self):
        lists = {EAPOL: self.mkpdus, MACSEC: self.data}
        while not self.is_over:
            try:
                frame, address = self.tap.recvfrom(2048)
            except TimeoutError:
                continue
            if address[1] in lists:
                lists[address[1]].append((time.monotonic(), frame))

    def end(self):
        """No frame may have been left out."""
        self.is_over = True
        self.thread.join()
        lost = struct.unpack("II", self.tap.getsockopt(SOL_PACKET, PACKET_STATISTICS, 8))[1]
        assert lost == 0, f"the recorder has lost {lost} frames"


def parameter_sets(frame):
    """The types, third octets and bodies of the sets of an MKPDU; of the basic set its first."""
    at, first = MKA, True
    while at + 4 <= len(frame) - 16:
        length = struct.unpack(">H", frame[at + 2:at + 4])[0] & 0xFFF
        yield 0 if first else frame[at], frame[at + 4:at + 4 + length]
        at, first = at + 4 + (length + 3) // 4 * 4, False


def distributed(frame):
    """The identifier of the SAK that an MKPDU distributes, as the kernel shows it; None without."""
    sets = dict(parameter_sets(frame))
    if DISTRIBUTED_SAK not in sets:
        return None
    member = sets[0][8:20]  # behind the SCI
    return (member + sets[DISTRIBUTED_SAK][:4]).hex()


def saks(cable, mkpdus):
    """The SAKs that recorded MKPDUs distribute: lines of key, member identifier and number."""
    file = f"{cable.a.folder}/mkpdus.pcap"
    with open(file, "wb") as pcap:
        pcap.write(struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, 1))
        for _, frame in mkpdus:
            pcap.write(struct.pack("<IIII", 0, 0, len(frame), len(frame)) + frame)
    keys = [cable.a.profile[role] for role in ("key", "fallback-key")]
    names = " ".join(f"--key {key['ckn']}:{key['cak']}" for key in keys)
    text = run(f"{BIN}/macsec-lab decode {file} --show-keys {names}", check=False)  # some are refused
    found = set()
    for frame in text.split("\nframe "):
        sak = re.search(r"^ +SAK: +([0-9a-f]+)$", frame, re.M)
        if sak:
            member = re.search(r"^ +member identifier: +([0-9a-f]+)$", frame, re.M)
            number = re.search(r"^ +key number: +(\d+)$", frame, re.M)
            found.add(f"{sak[1]} {member[1]} {int(number[1]):x}")
    return sorted(found)


def demand_no_nonce_twice(cable, recorder):
    """No two frames that the machines have sent were made with one key, SSCI and packet number. Each
    frame is opened for that with the SAKs that the wire has seen."""
    keys = saks(cable, recorder.mkpdus)
    file = f"{cable.a.folder}/data"
    with open(file, "w", encoding="utf-8") as frames:
        frames.writelines(frame.hex() + "\n" for _, frame in recorder.data)
    done = subprocess.run([f"{BIN}/kernel_nonces", file], input="\n".join(keys), text=True,
                          check=True, stdout=subprocess.PIPE)
    found = json.loads(done.stdout)
    cable.say(f"{found['frames']} frames under {len(keys)} keys, {found['repeated']} with a nonce of "
              "another")
    assert found["frames"] > 0 and found["unopened"] == 0 and found["repeated"] == 0, (found, keys)
