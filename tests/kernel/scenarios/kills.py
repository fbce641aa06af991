"""Daemons are restarted, upgraded and killed at random instants under traffic: not one frame is lost,
unless a kill hits a change of the key, and the other end doesn't notice. The keys change meanwhile: one life time after it started, a key
server makes a new one."""

import os
import random
import shutil
import time

from machines import BIN, until
from scenario import RATE

KILLS = 20
SEED = int(os.environ.get("MACSEC_SEED", "1"))
LONGEST = 7  # seconds between two kills: longer than a life time, after which keys change
DEAD = 0.5  # seconds at most
MOST_LOST = 3  # seconds of traffic, where a kill hits a change of the key


def answers(machine):
    until(lambda: machine.ask("status") is not None, f"{machine.name} answers")


def members(machine):
    """Who its peers are, by key."""
    return {key["ckn"]: [peer["member-id"] for peer in key["peers"]]
            for key in machine.port().get("keys", [])}


def all_transmit_with_one_key(cable):
    keys = {machine.transmit_key() for machine in cable.machines}
    return len(keys) == 1 and None not in keys


def restarts_and_upgrades(cable):
    upgrade = shutil.copy(f"{BIN}/macsecd", f"{cable.a.folder}/macsecd")
    for machine in cable.machines:
        machine.restart()
        answers(machine)
        machine.restart(upgrade)
        answers(machine)


def kills(cable, dice):
    """How many new keys came into use, and how many kills hit a change from one to the next: between
    the two ends' going over to it."""
    keys, hits = {cable.a.transmit_key()}, 0
    for _ in range(KILLS):
        until(lambda: all_transmit_with_one_key(cable), "both transmit with one key")
        keys.add(cable.a.transmit_key())
        time.sleep(dice.uniform(0, LONGEST))
        machine = dice.choice(cable.machines)
        changed = not all_transmit_with_one_key(cable)
        machine.kill()
        time.sleep(dice.uniform(0, DEAD))
        hits += changed or not all_transmit_with_one_key(cable)
        machine.start()
        answers(machine)
    return len(keys) - 1, hits


def scene(cable):
    dice = random.Random(f"{SEED} {cable.name}")
    cable.start()
    until(lambda: all(len(members(m)) == 2 and all(members(m).values()) for m in cable.machines),
          "both keys have their peers")
    before = {machine.name: members(machine) for machine in cable.machines}
    with cable.flow() as flow:
        restarts_and_upgrades(cable)
        cable.say("restarted and upgraded")
        changes, hits = kills(cable, dice)
        cable.opens()
    cable.say(f"{KILLS} kills with seed {SEED}, {changes} changes of the key, {hits} of them hit")
    assert {machine.name: members(machine) for machine in cable.machines} == before
    if hits == 0:
        flow.demand_none_lost()
        assert not cable.faults(), cable.faults()
    # Who misses the MKPDU that says so goes over later than the other end gives up the former key.
    assert flow.lost <= hits * MOST_LOST * RATE and flow.late == 0, flow.ways
