"""What a machine says of its port is what becomes of a ping: while it is open, with the device set
down, with the other end lost, with the cable pulled, and over a reload."""

from machines import until


def demand(machine, other, is_open):
    """The port comes to be open or closed, and pings pass or don't, accordingly."""
    until(lambda: machine.is_open() == is_open, f"{machine.name} is {'open' if is_open else 'closed'}")
    explained = machine.ask("explain")[0]
    assert explained["secured"] == is_open, explained
    assert is_open or explained["causes"], "closed without a cause"
    answered = machine.pings(other)
    assert answered == (5 if is_open else 0), f"{machine.name} is {machine.port()}: {answered} pings"
    assert machine.is_open() == is_open, f"{machine.name} has changed under the pings"


def demand_log(machine, words):
    until(lambda: words in machine.log(), f"the log of {machine.name} says '{words}'")


def device_set_down(cable):
    a, b = cable.machines
    a.ip("link set eth0-sec down")
    demand(a, b, False)
    assert "device-down" in a.causes(), a.causes()
    demand_log(a, "is closed: device-down")
    a.ip("link set eth0-sec up")
    until(a.is_open, "a is open with its device up")
    cable.carries()
    demand(a, b, True)


def peer_lost(cable):
    a, b = cable.machines
    a.interfaces["eth0"]["on-peer-loss"] = "close"
    a.reload()
    demand(a, b, True)
    b.kill()  # its device stays, with its keys
    demand(a, b, False)
    assert "peers-lost" in a.causes(), a.causes()
    demand_log(a, "is closed: peers-lost")
    b.start()
    cable.opens()
    cable.carries()
    demand(a, b, True)


def cable_pulled(cable):
    a, b = cable.machines
    b.ip("link set eth0 down")
    until(lambda: not a.is_open(), "a is closed without a link")
    assert "no-link" in a.causes(), a.causes()
    demand_log(a, "the link is down")
    demand_log(a, "is closed: no-link")
    assert a.pings(b) == 0
    b.ip("link set eth0 up")
    cable.opens()
    cable.carries()
    demand(a, b, True)


def reloaded(cable):
    a, b = cable.machines
    for machine in cable.machines:
        machine.reload()
        demand(a, b, True)


def device_deleted(cable):
    a, b = cable.machines
    a.ip("link del eth0-sec")
    demand_log(a, "is made anew")
    cable.opens()
    cable.carries()
    demand(a, b, True)


def scene(cable):
    cable.start()
    demand(cable.a, cable.b, True)
    device_set_down(cable)
    peer_lost(cable)
    cable_pulled(cable)
    reloaded(cable)
    device_deleted(cable)
