"""VLANs above the MACsec device, below it, and beside it: tagged traffic passes behind MACsec, and a
frame routed from a VLAN too; tagged frames in clear pass neither in nor out."""

import json

from machines import run, until

BELOW = "eth1.100"
BELOW_DEVICE = "eth1_100-sec"


def answered(space, address):
    """How many pings of three are answered."""
    text = run(f"nsenter --net=/run/netns/{space} ping -q -c 3 -i 0.1 -W 1 {address}", check=False)
    return int(text.split(" received")[0].split()[-1]) if " received" in text else 0


def vlan(machine, link, tag, subnet):
    """A VLAN on a link, with an address of this subnet."""
    name = f"{link}.{tag}"
    machine.ip(f"link add link {link} name {name} type vlan id {tag}")
    machine.ip(f"addr add 10.{subnet}.0.{machine.number}/24 dev {name}")
    machine.link_up(name)


def all_answered(cable, subnet):
    """Pings both ways between the addresses of a subnet."""
    for machine, other in (cable.machines, cable.machines[::-1]):
        count = answered(machine.name, f"10.{subnet}.0.{other.number}")
        assert count == 3, f"{machine.name}: {count} of 3 pings in 10.{subnet}.0.0/24"


def above_the_device(cable):
    for machine in cable.machines:
        vlan(machine, "eth0-sec", 5, 5)
    all_answered(cable, 5)


def routed_through_the_device(cable):
    """From a host in a VLAN behind a, through a's MACsec device, to b and back."""
    a, b = cable.machines
    host = f"{a.name}-host"
    run(f"ip netns add {host} && ip -n {host} link set lo up")
    run(f"ip link add lan netns {host} type veth peer name lan netns {a.name}")
    a.link_up("lan")
    vlan(a, "lan", 7, 7)
    run(f"ip -n {host} link set lan up && ip -n {host} link add link lan name lan.7 type vlan id 7 && "
        f"ip -n {host} addr add 10.7.0.9/24 dev lan.7 && ip -n {host} link set lan.7 up && "
        f"ip -n {host} route add default via 10.7.0.1")
    run(f"nsenter --net=/run/netns/{a.name} sysctl -q -w net.ipv4.ip_forward=1")
    b.ip(f"route add 10.7.0.0/24 via {a.address()}")
    count = answered(host, b.address())
    assert count == 3, f"{count} of 3 pings from the VLAN through a"


def below_the_device(cable):
    """A VLAN is the interface that is secured."""
    cable.lay("eth1")
    for machine in cable.machines:
        vlan(machine, "eth1", 100, 8)
        machine.interfaces[BELOW] = {"profile": "uplink"}
        machine.reload()
    cable.opens(BELOW)
    for machine in cable.machines:
        until(lambda m=machine: m.has(BELOW_DEVICE), f"{machine.name} has {BELOW_DEVICE}")
        machine.ip(f"addr add 10.9.8.{machine.number}/24 dev {BELOW_DEVICE}")
    for machine, other in (cable.machines, cable.machines[::-1]):
        count = answered(machine.name, f"10.9.8.{other.number}")
        assert count == 3, f"{machine.name}: {count} of 3 pings behind MACsec in the VLAN"
        assert answered(machine.name, f"10.8.0.{other.number}") == 0, "clear in the secured VLAN"


def came_in(machine, device):
    link = json.loads(machine.ip(f"-s -j link show {device}"))[0]
    return link["stats64"]["rx"]["packets"]


def clear_ones_pass_no_way(cable):
    """Only a keeps them out, once b's daemon has stopped: so each way is seen by itself."""
    a, b = cable.machines
    assert answered(a.name, "10.6.0.2") == 0
    b.stop()
    assert a.is_filtered() and not b.is_filtered()
    for sender, receiver in ((a, b), (b, a)):
        before = came_in(receiver, "eth0.6")
        answered(sender.name, f"10.6.0.{receiver.number}")
        came = came_in(receiver, "eth0.6") - before
        assert came == 0, f"{came} tagged frames in clear from {sender.name} to {receiver.name}"


def scene(cable):
    a, b = cable.machines
    for machine, other in ((a, b), (b, a)):
        vlan(machine, "eth0", 6, 6)
        machine.ip(f"neigh add 10.6.0.{other.number} lladdr {other.macs['eth0']} dev eth0.6")
    all_answered(cable, 6)
    cable.start()
    cable.demand_pings()
    above_the_device(cable)
    cable.say("above the device")
    routed_through_the_device(cable)
    cable.say("routed through the device")
    below_the_device(cable)
    cable.say("below the device")
    clear_ones_pass_no_way(cable)
