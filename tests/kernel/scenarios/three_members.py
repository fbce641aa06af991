"""A third member comes to a link of two. With extended packet numbers there is no room for it: two of
three would have one SSCI, and use nonces twice. All ports close and say why, and nothing is sent under
MACsec; when it has gone, the two make a new key and go on by themselves."""

import time

import hub
from machines import Machine, until

RATE = 100  # datagrams a second and direction
CAUSE = "too-many-members"
HOLD = 8  # seconds, longer than a life time


class Cable(hub.Cable):
    """Three machines, of which the third one has no daemon at first."""

    def __init__(self, name, suite):
        self.c = Machine(f"{name}-c{suite[-3:]}", suite, 3)
        super().__init__(name, suite)

    @property
    def machines(self):
        return self.a, self.b, self.c

    @property
    def two(self):
        return self.a, self.b


def two_are_open(cable):
    for machine in cable.two:
        until(machine.is_open, f"{machine.name} is open")
    until(lambda: cable.a.transmit_key() == cable.b.transmit_key(), "both transmit with one key")


def speaks(machine, other):
    """Says something to another one, behind MACsec if there is a way."""
    if machine.has("eth0-sec"):
        machine.carry(other)
        machine.pings(other)


def demand_closed(machine):
    """That it is closed is told by `status`, and why, before all else, by `explain`."""
    state, causes = machine.port().get("state"), list(machine.causes())
    assert state == "closed" and causes[:1] == [CAUSE], (machine.name, state, causes)
    assert CAUSE in machine.ctl("explain").splitlines()[1]


def is_silent(recorder):
    """Whether no more frames come: the recorder may lag behind what was sent before a port closed."""
    before = len(recorder.data)
    time.sleep(0.5)
    return len(recorder.data) == before


def a_third_one_closes_all(cable, recorder):
    """From the moment on in which all know of it, none sends anything under MACsec."""
    cable.c.start()
    for machine in cable.machines:
        until(lambda m=machine: CAUSE in m.causes() and not m.is_open(),
              f"{machine.name} is closed because of {CAUSE}")
    until(lambda: is_silent(recorder), "no frames come under MACsec")
    begin, end = len(recorder.data), time.monotonic() + HOLD
    speaks(cable.c, cable.a)
    while time.monotonic() < end:
        for machine in cable.machines:
            demand_closed(machine)
        time.sleep(0.5)
    sent = len(recorder.data) - begin
    assert sent == 0, f"{sent} frames under MACsec while there are three members"


def goes_on_without_it(cable, former):
    cable.c.stop()
    two_are_open(cable)
    key = cable.a.transmit_key()
    assert key not in former, "a key is used that three had"
    for machine in cable.two:
        until(lambda m=machine: CAUSE not in m.causes(), f"{machine.name} has two members again")
        assert "MACSECD_PORT_BOUND_ANEW" not in machine.log(), "the port doctor had to help"
    cable.demand_pings()
    return key


def scene(cable):
    recorder = hub.Recorder(cable)
    for machine in cable.two:
        machine.start()
    two_are_open(cable)
    cable.carries()
    cable.demand_pings()
    former = {cable.a.transmit_key()}
    for _ in range(2):  # it may come again
        with cable.flow(RATE):
            a_third_one_closes_all(cable, recorder)
            cable.say("closed with three")
        former.add(goes_on_without_it(cable, former))
        cable.say("open with two")
    recorder.end()
    hub.demand_no_nonce_twice(cable, recorder)
