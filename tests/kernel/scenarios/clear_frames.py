"""Frames in clear don't get past an interface that must be secure, not even while its daemon is dead;
they do when the policy allows them, and when the interface is none of the daemon's any more."""

from machines import run, until


def clear_pings(cable):
    """How many are answered between the links themselves, beside MACsec."""
    a = cable.a
    return int(run(f"nsenter --net=/run/netns/{a.name} ping -q -c 3 -i 0.1 -W 1 10.8.8.2",
                   check=False).split(" received")[0].split()[-1])


def policy(machine, word):
    machine.interfaces["eth0"]["policy"] = word
    machine.reload()


def open_to_all(cable):
    until(lambda: clear_pings(cable) == 3, "frames in clear pass")
    for machine in cable.machines:
        assert not machine.is_filtered()


def scene(cable):
    a, b = cable.machines
    for machine in cable.machines:
        machine.ip(f"addr add 10.8.8.{machine.number}/24 dev eth0")
    assert clear_pings(cable) == 3, "the cable itself carries frames"
    cable.start()
    assert clear_pings(cable) == 0
    cable.demand_pings()
    a.kill()
    b.kill()
    assert a.is_filtered() and b.is_filtered() and clear_pings(cable) == 0
    a.start()
    b.start()
    cable.opens()
    for machine in cable.machines:
        policy(machine, "should-secure")
    open_to_all(cable)
    cable.demand_pings()
    for machine in cable.machines:
        policy(machine, "must-secure")
    assert a.is_filtered() and b.is_filtered() and clear_pings(cable) == 0
    del a.interfaces["eth0"]
    a.reload()
    b.kill()
    del b.interfaces["eth0"]
    b.start()
    open_to_all(cable)
