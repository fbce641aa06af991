"""Two daemons with many links between them: all open, a link costs hardly more processor time and
memory among many than among few, all keys change at once, and a restart loses no frame."""

import contextlib
import time

from machines import UNNOTICED, run, until
import scenario

SUITES = ("gcm-aes-xpn-128",)
SIZES = (16, 64, 256)  # links
SAMPLE = ("eth0", "eth100", "eth255")
RATE = 100  # datagrams a second, direction and link of the sample
LOOK = 20  # seconds
RATIO = 1.3  # of what a link costs among many to what it costs among few


class Cable(scenario.Cable):
    """Two machines with all the links; the daemons are told of some at a time."""

    def lay(self, link="eth0"):
        a, b = self.machines
        for number in range(SIZES[-1]):
            for machine in self.machines:
                place = f"{number >> 8:02x}:{number & 255:02x}"
                machine.macs[f"eth{number}"] = f"02:00:00:{machine.number:02x}:{place}"
        links = [f"eth{number}" for number in range(SIZES[-1])]
        batch(f"{a.folder}/links", "", [
            f"link add {link} address {a.macs[link]} netns {a.name} type veth peer name {link} "
            f"address {b.macs[link]} netns {b.name}" for link in links])
        for machine in self.machines:
            batch(f"{a.folder}/links", f"-n {machine.name}",
                  [f"link set {link} up" for link in links])

    def tell_of(self, size):
        """The daemons are to secure so many of the links."""
        for machine in self.machines:
            machine.interfaces = {f"eth{number}": {"profile": "uplink"} for number in range(size)}
            if machine.daemon:
                machine.reload()
            else:
                machine.start()

    def all_open(self, size):
        for machine in self.machines:
            until(lambda m=machine: opened(m) == size, f"{machine.name} has {size} open ports")


def batch(file, options, lines):
    with open(file, "w", encoding="utf-8") as commands:
        commands.write("\n".join(lines) + "\n")
    run(f"ip {options} -batch {file}")


def opened(machine):
    return sum(port["state"] == "open" for port in machine.ask("status") or [])


def processor_time(machine):
    """Of the daemon, in seconds (clock_getcpuclockid(3))."""
    return time.clock_gettime((~machine.daemon.pid << 3) | 2)


def costs(cable):
    """Milliseconds of processor time a second, and KiB, of both daemons in a time without events."""
    time.sleep(4)
    before = sum(processor_time(machine) for machine in cable.machines)
    began = time.monotonic()
    time.sleep(LOOK)
    spent = sum(processor_time(machine) for machine in cable.machines) - before
    memory = sum(machine.memory() for machine in cable.machines)
    return 1000 * spent / (time.monotonic() - began), memory


def grows(cable):
    """The two costs of so many links, by their number."""
    found = {}
    for size in SIZES:
        began = time.monotonic()
        cable.tell_of(size)
        cable.all_open(size)
        took = time.monotonic() - began
        found[size] = costs(cable)
        cable.say(f"{size} links open after {took:.1f} s, then {found[size][0]:.1f} ms/s and "
                  f"{found[size][1]} KiB in both daemons")
    return found


def demand_steady(cable, found):
    """A kernel that runs as a process counts processor time in ticks of 10 ms, of which few links
    take few: they are counted together."""
    *few, many = SIZES
    demand_most("ms/s a link", found[many][0] / many,
                sum(found[size][0] for size in few) / sum(few), cable)
    first, last = ((found[later][1] - found[size][1]) / (later - size)
                   for size, later in zip(SIZES, SIZES[1:]))
    demand_most("KiB a further link", last, first, cable)


def demand_most(unit, among_many, among_few, cable):
    words = f"{among_many:.2f} {unit} among {SIZES[-1]} links, {among_few:.2f} among fewer"
    cable.say(words)
    assert among_many <= RATIO * among_few, f"{words}: more than {RATIO} times as much"


def all_differ(machine, before):
    ports = machine.ask("status") or []
    return ports and all(port["sak"] != before[port["interface"]] for port in ports)


def rekeys_at_once(cable):
    server = cable.a  # of the lower priority value
    before = {port["interface"]: port["sak"] for port in server.ask("status")}
    for link in before:
        server.ask("rekey", interface=link)
    for machine in cable.machines:
        until(lambda m=machine: all_differ(m, before), f"{machine.name} has a new key on every link")
    cable.all_open(SIZES[-1])


def restarts(cable):
    """Both, one after the other. Whether each was back before its peer could take it for lost: where it
    wasn't, as the machine is too slow, frames may be lost."""
    longest = 0
    for machine in cable.machines:
        began = time.monotonic()
        machine.restart()
        until(lambda m=machine: m.ask("status") is not None, f"{machine.name} answers")
        longest = max(longest, time.monotonic() - began)
        cable.all_open(SIZES[-1])
    cable.say(f"restarted, away for {longest:.1f} s")
    return longest <= UNNOTICED


@contextlib.contextmanager
def traffic(cable):
    """On the sample, while the block runs. Hands out the flows, which know then what was lost."""
    with contextlib.ExitStack() as flows:
        yield [flows.enter_context(cable.flow(RATE, link)) for link in SAMPLE]


def scene(cable):
    found = grows(cable)
    for link in SAMPLE:
        cable.carries(link)
    with traffic(cable) as changed:
        began = time.monotonic()
        rekeys_at_once(cable)
        cable.say(f"all keys changed within {time.monotonic() - began:.1f} s")
    with traffic(cable) as restarted:
        in_time = restarts(cable)
    for flow in changed + (restarted if in_time else []):
        flow.demand_none_lost()
    demand_steady(cable, found)
