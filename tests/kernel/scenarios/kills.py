"""Daemons are restarted, upgraded and killed at random instants under traffic: not one frame is lost,
and the other end doesn't notice. The keys change meanwhile: one life time after it started, a key
server makes a new one."""

import os
import random
import shutil
import time

from machines import BIN, until

KILLS = 20
SEED = int(os.environ.get("MACSEC_SEED", "1"))
LONGEST = 7  # seconds between two kills: longer than a life time, after which keys change
DEAD = 0.5  # seconds at most


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
    """How many new keys came into use."""
    keys = {cable.a.transmit_key()}
    for _ in range(KILLS):
        until(lambda: all_transmit_with_one_key(cable), "both transmit with one key")
        keys.add(cable.a.transmit_key())
        time.sleep(dice.uniform(0, LONGEST))
        machine = dice.choice(cable.machines)
        machine.kill()
        time.sleep(dice.uniform(0, DEAD))
        machine.start()
        answers(machine)
    return len(keys) - 1


def scene(cable):
    dice = random.Random(f"{SEED} {cable.name}")
    cable.start()
    until(lambda: all(len(members(m)) == 2 and all(members(m).values()) for m in cable.machines),
          "both keys have their peers")
    before = {machine.name: members(machine) for machine in cable.machines}
    with cable.flow() as flow:
        restarts_and_upgrades(cable)
        cable.say("restarted and upgraded")
        changes = kills(cable, dice)
        cable.opens()
    cable.say(f"{KILLS} kills with seed {SEED}, {changes} changes of the key")
    assert {machine.name: members(machine) for machine in cable.machines} == before
    flow.demand_none_lost()
    assert not cable.faults(), cable.faults()
