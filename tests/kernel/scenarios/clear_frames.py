"""Frames in clear don't get past an interface that must be secure, not even while its daemon is dead;
they do when the policy allows them, and when the interface is none of the daemon's any more."""

import socket

from machines import inside, run, until

LLDP, PTP = 0x88CC, 0x88F7


def clear_pings(cable):
    """How many are answered between the links themselves, beside MACsec."""
    a = cable.a
    return int(run(f"nsenter --net=/run/netns/{a.name} ping -q -c 3 -i 0.1 -W 1 10.8.8.2",
                   check=False).split(" received")[0].split()[-1])


def passes(sender, receiver, kind):
    """Whether an untagged frame of this EtherType gets from one link to the other."""
    def opened(machine):
        return inside(machine.name, lambda: socket.socket(
            socket.AF_PACKET, socket.SOCK_RAW, socket.htons(kind)))
    with opened(sender) as out, opened(receiver) as into:
        out.bind(("eth0", kind))
        into.bind(("eth0", kind))
        into.settimeout(0.5)
        for _ in range(3):
            try:
                out.send(b"\x01\x80\xc2\x00\x00\x0e" + b"\x02\x00\x00\x00\x00\x55" +
                         kind.to_bytes(2, "big") + bytes(46))
                into.recv(2000)
                return True
            except (TimeoutError, socket.timeout, OSError):
                continue
    return False


def lldp_may_pass(cable):
    """What the configuration names passes in clear both ways, and nothing else does."""
    a, b = cable.machines
    ways = (a, b), (b, a)
    assert not any(passes(*way, LLDP) for way in ways)
    for machine in cable.machines:
        machine.interfaces["eth0"]["clear"] = ["lldp"]
        machine.reload()
    assert all(passes(*way, LLDP) for way in ways)
    assert not any(passes(*way, PTP) for way in ways) and clear_pings(cable) == 0
    a.restart()
    assert passes(a, b, LLDP) and not passes(a, b, PTP)
    until(lambda: a.ask("status"), "a answers again")
    for machine in cable.machines:
        del machine.interfaces["eth0"]["clear"]
        machine.reload()
    assert not any(passes(*way, LLDP) for way in ways)
    for machine in cable.machines:
        assert "was changed by somebody" not in machine.log()
    cable.opens()


def policy(machine, word):
    machine.interfaces["eth0"]["policy"] = word
    machine.reload()


def open_to_all(cable):
    until(lambda: clear_pings(cable) == 3, "frames in clear pass")
    for machine in cable.machines:
        assert not machine.is_filtered()


def goes_back_from_a_trial(cable):
    """What cuts the interface off goes again when nobody keeps it."""
    a = cable.a
    a.interfaces["eth0"] = {"profile": "uplink"}
    a.configure()
    assert a.ask("try", file=f"{a.folder}/macsecd.yaml", timeout=5)["taken"]
    assert a.is_filtered() and clear_pings(cable) == 0
    until(lambda: clear_pings(cable) == 3, "frames in clear pass again")
    assert not a.is_filtered() and not a.has("eth0-sec")
    a.kill()
    a.start()
    until(lambda: a.ask("status") == [], "a start doesn't take what wasn't kept")


def scene(cable):
    a, b = cable.machines
    for machine in cable.machines:
        machine.ip(f"addr add 10.8.8.{machine.number}/24 dev eth0")
    assert clear_pings(cable) == 3, "the cable itself carries frames"
    cable.start()
    assert clear_pings(cable) == 0
    assert f"interface eth0 has the address 10.8.8.{a.number}/24, and nothing but" in a.log()
    cable.demand_pings()
    lldp_may_pass(cable)
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
    goes_back_from_a_trial(cable)
