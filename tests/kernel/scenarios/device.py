"""The device above an interface: it is there before the link, stays without it, comes back when somebody
deletes it, and its MTU follows that of the interface."""

import json

from machines import DEVICE, run, until


def device(machine):
    """What the kernel says of it; nothing while it isn't there."""
    return next(iter(json.loads(run(f"ip -n {machine.name} -j -d addr show dev {DEVICE}",
                                    check=False) or "[{}]")), {}) if machine.has(DEVICE) else {}


def addresses(machine):
    return [address["local"] for address in device(machine).get("addr_info", [])
            if address["family"] == "inet"]


def is_there_before_the_link(cable):
    a, b = cable.machines
    a.ip("link set eth0 down")
    for machine in cable.machines:
        machine.start()
    until(lambda: a.has(DEVICE) and b.has(DEVICE), "both have the device")
    a.ip(f"addr add {a.address()}/24 dev {DEVICE}")
    b.ip(f"addr add {b.address()}/24 dev {DEVICE}")
    assert device(a)["operstate"] != "UP" and not a.macsec().get("sa_list")
    a.ip("link set eth0 up")
    until(lambda: device(a)["operstate"] == "DORMANT" or a.is_open(), "it is dormant, or open")
    cable.opens()
    until(lambda: device(a)["operstate"] == "UP", "it is up")
    until(lambda: a.pings(b) == 5, "pings are answered by the addresses of before")


def stays_without_the_link(cable):
    a, b = cable.machines
    index = device(a)["ifindex"]
    b.ip("link set eth0 down")
    until(lambda: "no-link" in a.causes(), "a tells that its link is down")
    until(lambda: not a.macsec().get("sa_list"), "its keys have gone")
    assert device(a)["ifindex"] == index and addresses(a) == [a.address()]
    b.ip("link set eth0 up")
    cable.opens()
    until(lambda: a.pings(b) == 5, "pings are answered after the link came back")
    assert device(a)["ifindex"] == index


def comes_back(cable):
    a = cable.a
    a.ip(f"link del {DEVICE}")
    until(lambda: a.has(DEVICE), "it is made anew")
    until(lambda: "is made anew" in a.log(), "that is logged")
    cable.opens()
    cable.carries()
    until(lambda: a.pings(cable.b) == 5, "pings are answered with another device")


def has_the_mtu(machine, mtu):
    until(lambda: device(machine).get("mtu") == mtu, f"{DEVICE} has the MTU {mtu}")


def follows_the_mtu(cable):
    a = cable.a
    has_the_mtu(a, 1468)
    for machine in cable.machines:
        machine.ip("link set eth0 mtu 1532")
        has_the_mtu(machine, 1500)
    assert a.pings(cable.b, options="-M do -s 1472") == 5, "packets of 1500 octets pass"
    a.ip("link set eth0 mtu 1400")
    has_the_mtu(a, 1368)
    a.ip("link set eth0 mtu 1532")
    has_the_mtu(a, 1500)
    a.interfaces["eth0"]["mtu"] = 9000
    a.reload()
    until(lambda: "have the MTU 9000" in a.causes().get("hardware-refuses", ""), "explain tells it")
    has_the_mtu(a, 1500)
    assert a.is_open(), "the port goes on"
    a.interfaces["eth0"]["mtu"] = 1300
    a.reload()
    has_the_mtu(a, 1300)
    until(lambda: "hardware-refuses" not in a.causes(), "nothing is refused")


def goes_over_a_restart(cable):
    a = cable.a
    a.interfaces["eth0"]["device"] = "uplink"
    a.restart()
    until(lambda: a.has("uplink") and not a.has(DEVICE), "the device has its new name alone")
    cable.opens()
    former, a.interfaces = a.interfaces, {}
    a.restart()
    until(lambda: not a.has("uplink"), "an interface that isn't named has no device")
    a.interfaces = former
    del a.interfaces["eth0"]["device"]
    a.restart()
    cable.opens()


def scene(cable):
    is_there_before_the_link(cable)
    cable.say("is there before the link")
    stays_without_the_link(cable)
    cable.say("stays without it")
    follows_the_mtu(cable)
    cable.say("follows the MTU")
    comes_back(cable)
    cable.say("comes back")
    goes_over_a_restart(cable)
    for machine in cable.machines:
        machine.stop()
        assert not machine.has(DEVICE)
