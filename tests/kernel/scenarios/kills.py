"""Daemons are restarted, upgraded and killed at random instants under traffic: not one frame is lost,
unless a kill hits a change of the key or the machine is too slow to have the daemon back in time, and
the other end doesn't notice. The keys change meanwhile: one life time after it started, a key server
makes a new one."""

import os
import random
import shutil
import time

from machines import BIN, UNNOTICED, until
from scenario import RATE

KILLS = 20
SEED = int(os.environ.get("MACSEC_SEED", "1"))
LONGEST = 7  # seconds between two kills: longer than a life time, after which keys change
DEAD = 0.5  # seconds at most
MOST_LOST = 3  # seconds of traffic, where a kill hits a change of the key or a daemon is away for too long


def members(machine):
    """Who its peers are, by key."""
    return {key["ckn"]: [peer["member-id"] for peer in key["peers"]]
            for key in machine.port().get("keys", [])}


def key_of_both(cable):
    """The key with which both ends transmit, None while they don't with the same."""
    keys = {machine.transmit_key() for machine in cable.machines}
    return keys.pop() if len(keys) == 1 else None


def is_late(machine, go):
    """Makes the daemon go and come back. Whether it was away for so long that the other end may notice."""
    began = time.monotonic()
    go()
    until(lambda: machine.ask("status") is not None, f"{machine.name} answers")
    return time.monotonic() - began > UNNOTICED


def restarts_and_upgrades(cable):
    """How many machines were away for too long in all. One MKPDU between the two is all that may be heard."""
    upgrade = shutil.copy(f"{BIN}/macsecd", f"{cable.a.folder}/macsecd")

    def both(machine):
        for program in (None, upgrade):
            machine.restart(program)
            until(lambda: machine.ask("status") is not None, f"{machine.name} answers")

    return sum(is_late(machine, lambda m=machine: both(m)) for machine in cable.machines)


def kill(machine, dead):
    machine.kill()
    time.sleep(dead)
    machine.start()


def kills(cable, dice):
    """How many new keys came into use, how many kills hit a change from one to the next, between the
    two ends' going over to it, and how many of the others came back late."""
    keys, hits, late = {key_of_both(cable)}, 0, 0
    for _ in range(KILLS):
        keys.add(until(lambda: key_of_both(cable), "both transmit with one key"))
        time.sleep(dice.uniform(0, LONGEST))
        machine, dead = dice.choice(cable.machines), dice.uniform(0, DEAD)
        key = key_of_both(cable)
        was_late = is_late(machine, lambda m=machine, d=dead: kill(m, d))
        hit = key is None or key_of_both(cable) != key
        hits += hit
        late += was_late and not hit
    return len(keys) - 1, hits, late


def scene(cable):
    dice = random.Random(f"{SEED} {cable.name}")
    cable.start()
    until(lambda: all(len(members(m)) == 2 and all(members(m).values()) for m in cable.machines),
          "both keys have their peers")
    before = {machine.name: members(machine) for machine in cable.machines}
    with cable.flow() as flow:
        late_restarts = restarts_and_upgrades(cable)
        cable.say(f"restarted and upgraded, {late_restarts} of them late")
        changes, hits, late = kills(cable, dice)
        cable.opens()
    cable.say(f"{KILLS} kills with seed {SEED}, {changes} changes of the key, {hits} of them hit; "
              f"{late} daemons back late")
    assert {machine.name: members(machine) for machine in cable.machines} == before
    noticed = hits + late + late_restarts
    if noticed == 0:
        flow.demand_none_lost()
        assert not cable.faults(), cable.faults()
    # Who misses the MKPDU that says so goes over later than the other end gives up the former key.
    assert flow.lost <= noticed * MOST_LOST * RATE and flow.late == 0, flow.ways
