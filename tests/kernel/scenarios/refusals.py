"""The kernel refuses: the daemon says what and why, and goes on by itself when the cause has gone."""

from machines import run, until

PEER_SCI = "0200000000020001"


def refusal(machine, *words):
    """Waits until `explain` names the refusal with all these words."""
    until(lambda: all(word in machine.causes().get("hardware-refuses", "") for word in words),
          f"{machine.name} tells of: {', '.join(words)}")
    until(lambda: all(word in machine.log() for word in words), "the log tells it too")


def name_is_taken(cable):
    a = cable.a
    a.ip("link add eth0-sec type dummy")
    for machine in cable.machines:
        machine.start()
    refusal(a, "make the device", "File exists")
    a.ip("link del eth0-sec")
    cable.opens()
    cable.carries()
    cable.demand_pings()


def channel_is_taken(cable):
    """Another device on eth0 receives from the peer: the kernel gives that channel away once."""
    a = cable.a
    a.stop()
    a.ip("link add link eth0 other type macsec port 9")
    a.ip(f"macsec add other rx sci {PEER_SCI} on")
    a.start()
    refusal(a, "add the receive channel", "File exists")
    a.ip("link del other")
    cable.opens()
    cable.carries()
    until(lambda: a.pings(cable.b) == 5, "pings are answered when the channel is free")


def places_are_taken(cable):
    """Somebody fills all places for keys: the next key gets one all the same."""
    a = cable.a
    in_use = a.macsec()["encoding_sa"]
    for an in set(range(4)) - {in_use}:
        key = f"xpn 1 ssci 7 salt 000000000000000000000000 key 77 {'7' * a.digits}"
        a.ip(f"macsec add eth0-sec tx sa {an} {key}")
        a.ip(f"macsec add eth0-sec rx sci {PEER_SCI} sa {an} {key}")
    with cable.flow(200) as flow:
        first = a.transmit_key()
        a.restart()  # and a new key comes
        until(lambda: a.transmit_key() == cable.b.transmit_key() != first, "a new key is in use")
        cable.opens()
    flow.demand_none_lost()
    keys = {sa["key"] for sa in a.macsec()["sa_list"] + a.macsec()["rx_sc"][0]["sa_list"]}
    assert not any(key.startswith("77") for key in keys), keys


def filter_place_is_taken(cable):
    """Another program's filter has the place of the one that keeps clear frames out."""
    a = cable.a
    a.stop()
    run(f"tc -n {a.name} qdisc add dev eth0 clsact && tc -n {a.name} filter add dev eth0 ingress "
        "pref 3 protocol ip bpf bytecode '1,6 0 0 0'")
    a.start()
    refusal(a, "set the filter", "preference 3")
    run(f"tc -n {a.name} filter del dev eth0 ingress pref 3")
    until(a.is_filtered, "clear frames are kept out")
    until(lambda: "hardware-refuses" not in a.causes(), "nothing is refused any more")


def scene(cable):
    name_is_taken(cable)
    cable.say("name was taken")
    channel_is_taken(cable)
    cable.say("channel was taken")
    places_are_taken(cable)
    cable.say("places were taken")
    filter_place_is_taken(cable)
