"""The kernel has no MACsec, until its module is loaded: the daemon says so, and goes on by itself.
Plays alone, and only where the module can be taken away."""

import subprocess
import threading

from machines import KEYS, LIMIT, run, until

MODPROBE = "modprobe -d /run/work"
ALL_HAVE_TOLD = threading.Barrier(len(KEYS))  # all scenarios of a kernel share its modules


def can_take_it_away():
    return subprocess.run(f"{MODPROBE} -r macsec", shell=True, check=False,
                          capture_output=True).returncode == 0


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
