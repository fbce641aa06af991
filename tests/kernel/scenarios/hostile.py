"""A hostile station shares the wire: it replays, mutates and forges MKPDUs and MACsec frames, and sends
50,000 frames a second for ten seconds. The session stands, the daemons' memory doesn't grow, and the
counters tell each kind."""

import json
import random
import socket
import subprocess
import threading

from hub import EAPOL, MACSEC, MKA, Cable  # the player looks for the cable here
from machines import BIN, until

RATE, SECONDS = 50000, 10
MOST_GROWTH = 1024  # KiB
ENOUGH = 0.9  # of the flood, that a daemon has to take in if no MKPDU is to be lost
KINDS = ("eapolErr", "basicParamSetErr", "unrecognizedCkn", "icvValidationErr")
CKN = bytes.fromhex("c0de0001")
FLOOD = threading.Lock()


def heard(tap, kind, count):
    """So many frames of others."""
    frames = []
    while len(frames) < count:
        frame, address = tap.recvfrom(2048)
        if address[1] == kind and address[2] != socket.PACKET_OUTGOING:
            frames.append(frame)
    return frames


def mutated(frame, dice):
    octets = bytearray(frame)
    for _ in range(dice.randint(1, 4)):
        octets[dice.randrange(MKA, len(octets))] ^= 1 << dice.randrange(8)
    return bytes(octets)


def attacks(mkpdus, dice):
    """Frames of every kind that somebody without a key can make."""
    frames = list(mkpdus)  # replayed
    for frame in mkpdus:
        name = frame.index(CKN)
        frames += [mutated(frame, dice) for _ in range(20)]
        frames.append(frame[:-16] + dice.randbytes(16))  # forged: the ICV is one of another key
        frames.append(frame[:name] + b"evil" + frame[name + 4:])  # under the name of another key
        frames.append(frame[:MKA] + bytes([0]) + frame[MKA + 1:])  # of a version that isn't
        frames.append(frame[:14] + bytes([200]) + frame[15:])  # EAPOL of another version
        frames.append(frame[:40])  # cut off
        frames.append(frame[:MKA])  # empty
        frames.append(frame[:16] + b"\xff\xff" + frame[MKA:])  # of a false length
        frames.append(frame[:MKA + 2] + b"\x0f\xff" + frame[MKA + 4:])  # its set too long
    return frames


def flood(cable, frames):
    text = "\n".join(frame.hex() for frame in frames)
    done = subprocess.run([f"{BIN}/kernel_flood", cable.stranger, "eth0", str(RATE), str(SECONDS)],
                          input=text, text=True, check=True, stdout=subprocess.PIPE)
    return json.loads(done.stdout)


def session(machine):
    port = machine.port()
    return port["state"], [(key["ckn"], key["principal"], [p["member-id"] for p in key["peers"]])
                           for key in port["keys"]]


def sends_every_kind(cable, frames):
    for frame in frames:
        cable.tap.send(frame)
    for machine in cable.machines:
        until(lambda m=machine: set(KINDS) <= set(m.refused()), f"{machine.name} counts every kind")


def replays_data(cable):
    """What was said behind MACsec, once more."""
    cable.demand_pings()
    for frame in heard(cable.tap, MACSEC, 10):
        cable.tap.send(frame)
    for machine in cable.machines:
        until(lambda m=machine: m.faults().get("InPktsLate"), f"{machine.name} drops what is late")


def sessions(cable):
    return {machine.name: session(machine) for machine in cable.machines}


def stand(before, now):
    """Whether sessions are as before, be it with other members: a port that has lost its peer may have
    to be bound anew. A follower that alone has lost it goes on under the key in use, without a
    principal actor."""
    def without_members(found):
        return {name: (state, [(ckn, len(peers)) for ckn, _, peers in keys])
                for name, (state, keys) in found.items()}
    return without_members(now) == without_members(before)


def refused(machine):
    return sum(machine.refused().values())


def floods(cable, frames):
    """One cable at a time: all machines share this kernel's one processor."""
    before, key = sessions(cable), cable.a.transmit_key()
    had = {machine: (refused(machine), machine.memory()) for machine in cable.machines}
    with FLOOD, cable.flow(100) as flow:
        sent = flood(cable, frames)["sent"]
        taken = {machine: refused(machine) - had[machine][0] for machine in cable.machines}
        after = sessions(cable)
    flow.demand_none_lost()
    for machine in cable.machines:
        growth = machine.memory() - had[machine][1]
        cable.say(f"{sent} frames in {SECONDS} s: {machine.name} refused {taken[machine]} and grew by "
                  f"{growth} KiB")
        assert growth <= MOST_GROWTH
    if min(taken.values()) > ENOUGH * sent:
        assert after == before, (before, after)
        assert cable.a.transmit_key() == cable.b.transmit_key() == key
        return
    cable.say("this machine is too slow to take them in, and may lose MKPDUs with them")
    until(lambda: stand(before, sessions(cable)), "the sessions stand again")


def scene(cable):
    cable.start()
    mkpdus = [frame for frame in heard(cable.tap, EAPOL, 12) if CKN in frame]
    frames = attacks(mkpdus, random.Random(1))
    until(lambda: all(all(peers for _, _, peers in keys) for _, keys in sessions(cable).values()),
          "both keys have their peers")
    sends_every_kind(cable, frames)
    replays_data(cable)
    floods(cable, frames)
    cable.demand_pings()
