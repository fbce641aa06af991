"""Links go down and come back, interfaces vanish and are made again, take another address, and there
are two of them: each port opens again by itself, and the other one never notices."""

from machines import run, until

OTHER_ADDRESS = "02:00:00:00:00:77"


def goes_down_and_up(cable):
    a, b = cable.machines
    b.ip("link set eth0 down")
    until(lambda: "no-link" in a.causes(), "a tells that its link is down")
    until(lambda: "interface-down" in b.causes(), "b tells that somebody has set its end down")
    b.ip("link set eth0 up")
    cable.opens()
    cable.carries()
    until(lambda: a.pings(b) == 5, "pings are answered after the link came back")


def vanishes_and_is_made_again(cable):
    a, b = cable.machines
    a.ip("link del eth0")
    for machine in cable.machines:
        until(lambda m=machine: "no-interface" in m.causes(), f"{machine.name} misses eth0")
    assert not a.has("eth0-sec") and not b.has("eth0-sec")
    cable.lay()
    cable.opens()
    cable.carries()
    cable.demand_pings()


def takes_another_address(cable):
    a, b = cable.machines
    a.ip(f"link set eth0 address {OTHER_ADDRESS}")
    a.macs["eth0"] = OTHER_ADDRESS
    sci = int(OTHER_ADDRESS.replace(":", "") + "0001", 16)
    until(lambda: [int(sc["sci"], 16) for sc in b.macsec().get("rx_sc", [])] == [sci],
          "b receives from the new address")
    cable.opens()
    cable.carries()
    until(lambda: a.pings(b) == 5, "pings are answered with the new address")
    assert int(a.macsec()["sci"], 16) == sci


def has_two(cable):
    cable.lay("eth1")
    for machine in cable.machines:
        machine.interfaces["eth1"] = {"profile": "uplink"}
        machine.reload()
    cable.opens("eth1")
    cable.carries("eth1")
    cable.demand_pings("eth0")
    cable.demand_pings("eth1")
    keys = [cable.a.macsec(f"{link}-sec")["sa_list"][0]["key"] for link in ("eth0", "eth1")]
    assert keys[0] != keys[1], "each link has a key of its own"
    cable.b.ip("link set eth1 down")
    until(lambda: "no-link" in cable.a.causes("eth1"), "a tells that eth1 is down")
    cable.demand_pings("eth0")


def scene(cable):
    cable.start()
    goes_down_and_up(cable)
    vanishes_and_is_made_again(cable)
    takes_another_address(cable)
    has_two(cable)
    for machine in cable.machines:
        machine.stop()
        assert "macsec" not in run(f"ip -n {machine.name} -d link show type macsec")
