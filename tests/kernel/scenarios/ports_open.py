"""Ports open; traffic goes through the MACsec devices; the wire shows MKA and MACsec alone, and
nothing of what is said; the kernel and macsecctl agree."""

import subprocess

from machines import run, until

PATTERN = "deadbeefcafef00d"


def capture(machine, file):
    program = subprocess.Popen(
        ["nsenter", f"--net=/run/netns/{machine.name}", "tcpdump", "-Z", "root", "-U", "-n", "-i",
         "eth0", "-w", file], stderr=subprocess.PIPE, text=True)
    assert "listening" in program.stderr.readline()
    return program


def frames(file, expression):
    return len(run(f"tcpdump -n -r {file} '{expression}' 2>/dev/null").splitlines())


def hidden(file):
    with open(file, "rb") as capture_file:
        return bytes.fromhex(PATTERN) not in capture_file.read()


def agrees(machine):
    """The kernel holds what macsecctl says: the key by its identifier and number, and its place."""
    port, secy = machine.port(), machine.macsec()
    keys = {sa["an"]: sa["key"] for sa in secy["sa_list"]}
    ssci = {int(sa["ssci"], 16) for sa in secy["sa_list"]}
    member, number = port["sak"].split(":")
    assert secy["cipher_suite"][-3:] == port["cipher-suite"][-3:], (secy, port)
    assert secy["encoding_sa"] == port["an"], (secy, port)
    assert keys[port["an"]].endswith(f"{member}{int(number):08x}"), (keys, port)
    assert ssci == {int(port["ssci"], 16)}, (secy, port)


def scene(cable):
    a, b = cable.machines
    file = f"{a.folder}/wire.pcap"
    for machine in cable.machines:
        machine.start()
    for machine in cable.machines:
        until(machine.is_filtered, f"{machine.name} is filtered")
    tcpdump = capture(a, file)
    cable.programs.append(tcpdump)
    cable.opens()
    cable.carries()
    assert a.pings(b, 10, f"-p {PATTERN}") == 10
    assert b.pings(a, 10, f"-p {PATTERN}") == 10
    for machine in cable.machines:
        agrees(machine)
        assert machine.macsec()["rx_sc"][0]["InPktsOK"] >= 20
        assert "open" in machine.ctl("status"), machine.ctl("status")
    assert not cable.faults(), cable.faults()
    tcpdump.terminate()
    tcpdump.wait()
    assert frames(file, "ether proto 0x88e5") >= 40
    assert frames(file, "ether proto 0x888e") >= 4
    assert frames(file, "not ether proto 0x88e5 and not ether proto 0x888e") == 0, run(
        f"tcpdump -n -e -r {file} 'not ether proto 0x88e5 and not ether proto 0x888e'")
    assert hidden(file)
    for machine in cable.machines:
        machine.stop()
        assert not machine.has("eth0-sec")
        assert not machine.is_filtered()
