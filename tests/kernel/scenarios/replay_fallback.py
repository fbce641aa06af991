"""The same as in `replay` on the fallback key, while the primary key is wrong on one side; and all of it
once more on the primary key, when it has been put right."""

from hub import Cable  # the player looks for the cable  # pylint: disable=unused-import
from machines import until
from replay import LIFE_TIME, begin, end, replays_all, replays_under_traffic, takes_no_old_frame

PRIMARY, FALLBACK = "c0de0001", "c0defa11"
ACTIVATION = 30  # seconds, for which the primary key is waited for again if the peer was gone


def on(cable, ckn):
    for machine in cable.machines:
        until(lambda m=machine: m.principal() == ckn, f"{machine.name} is open on {ckn}")


def scene(cable):
    b = cable.b
    right = b.profile["key"]
    b.profile["key"] = {**right, "cak": right["cak"].replace("1", "2")}
    recorder = begin(cable)
    on(cable, FALLBACK)
    data = replays_all(cable, recorder, LIFE_TIME + ACTIVATION)
    b.profile["key"] = right
    b.reload()
    on(cable, PRIMARY)
    replays_under_traffic(cable, recorder)
    takes_no_old_frame(cable, recorder, data)
    end(cable, recorder)
