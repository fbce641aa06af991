"""The kernel has no MACsec, until its module is loaded: the daemon says so, and goes on by itself.
Plays alone, and only where the module can be taken away."""

import subprocess
import threading

from machines import KEYS, LIMIT, run, until

MODPROBE = "modprobe -d /run/boot"
# All scenarios of a kernel share its modules: one of them takes it away, for all.
ALL_HAVE_TOLD = threading.Barrier(len(KEYS))
TAKING = threading.Lock()
taken_away = []


def can_take_it_away():
    with TAKING:
        if not taken_away:
            done = subprocess.run(f"{MODPROBE} -r macsec", shell=True, check=False,
                                  capture_output=True)
            taken_away.append(done.returncode == 0)
        return taken_away[0]


def scene(cable):
    if not can_take_it_away():
        cable.say("left out: the module macsec can't be removed here")
        return
    for machine in cable.machines:
        machine.start()
    for machine in cable.machines:
        until(lambda m=machine: "no MACsec" in m.causes().get("hardware-refuses", ""),
              f"{machine.name} tells that the kernel has no MACsec")
    ALL_HAVE_TOLD.wait(LIMIT)
    run(f"{MODPROBE} macsec")
    cable.opens()
    cable.carries()
    cable.demand_pings()
