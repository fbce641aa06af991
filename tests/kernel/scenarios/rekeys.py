"""Ten timed rekeys under traffic both ways: not one frame is lost, late or invalid."""

from machines import until

REKEYS = 10
PERIOD = 10  # seconds: within it a key is agreed on, taken over, and the former one has gone


def number(machine):
    return int((machine.port()["sak"] or "0:0").split(":")[1])


def scene(cable):
    for machine in cable.machines:
        machine.profile["rekey-period"] = PERIOD
    cable.start()
    first = number(cable.b)
    with cable.flow() as flow:
        until(lambda: number(cable.b) >= first + REKEYS, f"{REKEYS} rekeys", 3 * REKEYS * PERIOD)
    flow.demand_none_lost()
    assert not cable.faults(), cable.faults()
    for machine in cable.machines:
        refusals = machine.log().count("MACSEC_KERNEL_REFUSED")
        assert refusals == 0, machine.log()
