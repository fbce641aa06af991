"""The primary key is wrong on one side: the fallback key opens the port. It is put right: both are
back on the primary key, and no frame is lost on the way back."""

from machines import until

PRIMARY, FALLBACK = "c0de0001", "c0defa11"


def wait_for(cable, ckn):
    for machine in cable.machines:
        until(lambda m=machine: m.principal() == ckn, f"{machine.name} is open on {ckn}")


def scene(cable):
    b = cable.b
    right = b.profile["key"]
    b.profile["key"] = {**right, "cak": right["cak"].replace("1", "2")}
    cable.start()
    wait_for(cable, FALLBACK)
    for machine in cable.machines:
        causes = until(machine.causes, f"{machine.name} tells of the fallback key")
        assert "fallback-in-use" in causes or "wrong-cak" in causes, causes
    with cable.flow() as flow:
        b.profile["key"] = right
        b.reload()
        wait_for(cable, PRIMARY)
        until(lambda: b.macsec()["sa_list"][0]["key"] == cable.a.macsec()["sa_list"][0]["key"]
              and len(b.macsec()["rx_sc"][0]["sa_list"]) == 1, "the former key has gone")
    flow.demand_none_lost()
    assert not cable.faults(), cable.faults()
