"""A stranger without a key records all that is said, and says it again later: MKPDUs that have
distributed former keys, and frames under these keys. It does so after changes of the key, after the
kill of a member, and after a member's interface was made again. The key in use stays, nothing is lost,
no old frame is taken, and no nonce is used twice."""

import threading
import time

from hub import Cable, Recorder, demand_no_nonce_twice, distributed  # the player looks for the cable
from machines import UNNOTICED, run, transmit_key, until

RATE = 100  # datagrams a second and direction
HOLD = 8  # seconds, longer than a life time
TRIES = 6
RUSH = threading.RLock()  # all cables share one processor: who floods it lets others start meanwhile
ENOUGH = 40  # frames
LIFE_TIME = 6  # seconds
KINDS = {"replayErr": "MACSECD_MKPDU_REPLAYED", "livenessErr": "MACSECD_KEY_WITHOUT_PROOF"}
LOG_INTERVAL = 60  # seconds, in which a process says the same but once


def key_in_use(cable):
    """That with which both machines send and receive, if there is no other any more."""
    found = set()
    for machine in cable.machines:
        secy = machine.macsec()
        found.add(transmit_key(secy))
        for place in [secy] + secy.get("rx_sc", []):
            found |= {sa["key"] for sa in place.get("sa_list", [])}
    return found.pop() if len(found) == 1 else None


def settled(cable):
    return until(lambda: key_in_use(cable), "both use one key, and no other")


def rekeyed(cable):
    former = settled(cable)
    until(lambda: "new SAK" in cable.a.ctl("rekey eth0", check=False), "a new key is made, or will be")
    until(lambda: key_in_use(cable) not in (None, former), "both have gone over to the new key")


def under_this_key(recorder):
    """Some frames of the traffic that flows now."""
    begin = len(recorder.data)
    until(lambda: len(recorder.data) >= begin + ENOUGH, "frames are recorded")
    return [frame for _, frame in recorder.data[begin:]]


def old_mkpdus(recorder, key):
    """All MKPDUs so far; those that distribute another key than this come first."""
    all_of_them = [frame for _, frame in list(recorder.mkpdus)]
    earlier = [frame for frame in all_of_them if distributed(frame) not in (None, key)]
    assert earlier, "former keys were recorded"
    return earlier + all_of_them


def replay(cable, frames):
    with RUSH:
        for frame in frames:
            cable.tap.send(frame)


def replayed(machine):
    """How many MKPDUs its process has refused because they were recorded ones."""
    refused = machine.refused()
    return sum(refused.get(kind, 0) for kind in KINDS)


def replays_under_traffic(cable, recorder):
    """The key in use stays, at each moment, and no datagram is lost."""
    key = settled(cable)
    with cable.flow(RATE) as flow:
        keeps_its_key(cable, recorder, key)
    flow.demand_none_lost()
    assert settled(cable) == key


def keeps_its_key(cable, recorder, key):
    mkpdus, end = old_mkpdus(recorder, key), time.monotonic() + HOLD
    while time.monotonic() < end:
        replay(cable, mkpdus)
        for machine in cable.machines:
            assert machine.transmit_key() == key, f"{machine.name} has gone back to a former key"
        time.sleep(1)
    for machine in cable.machines:
        assert replayed(machine) > 0, f"{machine.name} has counted no recorded MKPDU"


def taken(machine):
    return sum(channel["InPktsOK"] for channel in machine.macsec()["rx_sc"])


def takes_no_old_frame(cable, recorder, data):
    """Nothing else is on the wire, so that each frame counts."""
    had = {machine: (taken(machine), sum(machine.faults().values()), replayed(machine))
           for machine in cable.machines}
    replay(cable, old_mkpdus(recorder, settled(cable)))
    replay(cable, data)
    for machine, (had_taken, had_refused, had_replayed) in had.items():
        until(lambda m=machine, had=had_refused: sum(m.faults().values()) >= had + len(data),
              f"{machine.name} refuses {len(data)} frames of a former key")
        assert taken(machine) == had_taken, f"{machine.name} takes frames of a former key"
        until(lambda m=machine, had=had_replayed: replayed(m) > had,
              f"{machine.name} counts recorded MKPDUs")


def after_changes_of_the_key(cable, recorder):
    with cable.flow(RATE) as flow:
        settled(cable)
        data = under_this_key(recorder)
        rekeyed(cable)
        rekeyed(cable)
    flow.demand_none_lost()
    replays_under_traffic(cable, recorder)
    takes_no_old_frame(cable, recorder, data)
    cable.say("replayed after changes of the key")
    return data


def killed(cable, recorder, key):
    """The member ends at once and is started again, with its state, while all is replayed. Hands
    back for how many seconds it was away."""
    with RUSH:
        began = time.monotonic()
        cable.b.kill()
        cable.b.start()
        replay(cable, old_mkpdus(recorder, key))
        until(lambda: cable.b.ask("status") is not None, "the member answers")
        return time.monotonic() - began


def comes_back(cable, recorder, data):
    """Kills the member under traffic. Hands back the frames recorded so far, and whether the machine
    was fast enough to show that the key stays; where it wasn't, the peer may take it for lost."""
    key = settled(cable)
    with cable.flow(RATE) as flow:
        data = data + under_this_key(recorder)
        away = killed(cable, recorder, key)
        if away > UNNOTICED:
            cable.say(f"the killed daemon was away for {away:.1f} s: once more")
            return data, False
        keeps_its_key(cable, recorder, key)
    flow.demand_none_lost()
    assert settled(cable) == key
    return data, True


def after_a_kill(cable, recorder, data):
    for _ in range(TRIES):
        data, in_time = comes_back(cable, recorder, data)
        if in_time:
            break
        time.sleep(HOLD)
    else:
        cable.say(f"this machine is too slow: no killed daemon was back within {UNNOTICED} s")
    takes_no_old_frame(cable, recorder, data)
    cable.say("replayed after a kill")
    return data


def made_again(cable, frames):
    """The member's interface goes and is made again; in which time both have a new key, while these
    frames are replayed all the time."""
    b, former = cable.b, settled(cable)
    b.ip("link del eth0")
    until(lambda: not b.has("eth0-sec"), "the device has gone with it")
    cable.plug(b.number, b.name, b.macs["eth0"])
    began = last = time.monotonic()

    def is_back():
        nonlocal last
        if time.monotonic() >= last + 1:
            replay(cable, frames)
            last = time.monotonic()
        return key_in_use(cable) not in (None, former) and all(m.is_open() for m in cable.machines)

    until(is_back, "the port is open with a new key")
    took = time.monotonic() - began
    cable.carries()
    cable.demand_pings()
    return took


def after_a_new_interface(cable, recorder, data, patience):
    used = {distributed(frame) for _, frame in list(recorder.mkpdus)}
    alone = made_again(cable, [])
    replayed_took = made_again(cable, old_mkpdus(recorder, settled(cable)))
    cable.say(f"a new interface is secured after {alone:.1f} s, and after {replayed_took:.1f} s under "
              "replay")
    assert replayed_took <= alone + patience, "replayed MKPDUs keep the port closed"
    assert settled(cable) not in used, "a former key came back"
    replays_under_traffic(cable, recorder)
    takes_no_old_frame(cable, recorder, data)
    cable.say("replayed after a new interface")


def says_so(cable, machine):
    """The log tells of recorded MKPDUs, and isn't filled with it."""
    starts = sum(note.endswith(" started") for note in machine.notes)
    most = starts * (1 + int(time.monotonic() - cable.began) // LOG_INTERVAL)
    lines = {kind: machine.log().count(told) for kind, told in KINDS.items()}
    assert sum(lines.values()) > 0 and max(lines.values()) <= most, (lines, most)
    cable.say(f"{machine.name} refused {replayed(machine)} recorded MKPDUs, in so many lines: {lines}")


def begin(cable):
    """The recorder of a wire on which the kernel says nothing of its own."""
    for machine in cable.machines:
        run(f"nsenter --net=/run/netns/{machine.name} sysctl -q -w "
            "net.ipv6.conf.all.disable_ipv6=1 net.ipv6.conf.default.disable_ipv6=1")
    recorder = Recorder(cable)
    cable.start()
    return recorder


def replays_all(cable, recorder, patience=LIFE_TIME):
    data = after_changes_of_the_key(cable, recorder)
    data = after_a_kill(cable, recorder, data)
    after_a_new_interface(cable, recorder, data, patience)
    return data


def end(cable, recorder):
    for machine in cable.machines:
        says_so(cable, machine)
    recorder.end()
    demand_no_nonce_twice(cable, recorder)


def scene(cable):
    recorder = begin(cable)
    replays_all(cable, recorder)
    end(cable, recorder)
