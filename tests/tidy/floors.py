"""The floors of the house: which room may include which, and which libraries it may know."""

import re

ENGINE_FLOORS = ("runtime", "platform", "model", "controlled_port", "config", "hardware", "codec",
                 "engine")
MODEL_AND_BELOW = ("runtime", "platform", "model")

# Room -> the rooms below it that it may include. A room may always include itself.
ROOMS = {
    "runtime": (),
    "platform": ("runtime",),
    "model": ("runtime", "platform"),
    "controlled_port": MODEL_AND_BELOW,
    "config": MODEL_AND_BELOW,
    "hardware": MODEL_AND_BELOW,
    "codec": MODEL_AND_BELOW,
    "engine": MODEL_AND_BELOW + ("controlled_port",),
    "host": ENGINE_FLOORS,
    "linux": ENGINE_FLOORS + ("host",),
    "lab": ENGINE_FLOORS + ("host",),
    "apps": ENGINE_FLOORS + ("host", "linux", "lab"),
}
# Room -> its shelves, from the lowest up; "" is the room itself. A shelf may include those below it.
SHELVES = {
    "host": ("text", "config", "state", "watch", "", "port", "explain", "journal", "control", "client",
             "eap"),
    "linux": ("process", "net", "kernel", "trace", "keep", "serve", "client", ""),
    "lab": ("scenario", "data", "world", "judge", "judge/invariants", "verdict", "report", "random",
            "swarm", "exhaust", ""),
}
# Shelves for who only asks a daemon: what they may include beside themselves. No engine, no cryptography.
CLIENTS = {
    "host/client": ("host/text", "platform", "runtime"),
    "linux/client": ("linux/process", "linux/trace", "host/client", "host/text", "platform", "runtime"),
}
# Folders beside the house, that may include everything.
OUTSIDE = ("tests", "bench", "fuzz", "examples")

OPENSSL_ROOMS = ("platform", "codec", "config")
LIBRARY = re.compile(r"^(yaml-cpp|CLI|nlohmann|fmt|openssl|gtest|gmock|benchmark)/")
STANDARD = re.compile(
    r"^([a-z_0-9]+"
    r"|(assert|ctype|errno|float|inttypes|limits|math|stddef|stdint|stdio|stdlib|string)\.h)$")
FILES = ("fstream", "filesystem")
# Where the objects of the engine get their memory: what these files may ask the system for.
MEMORY = {
    "runtime/HomeBlocks.cpp": ("sys/mman.h",),
    "runtime/Sanitizer.h": ("sanitizer/asan_interface.h", "sanitizer/lsan_interface.h"),
}


def check(source):
    """Findings of the rule `floors`."""
    if not source.is_cpp or source.room in OUTSIDE:
        return
    if source.room not in ROOMS:
        yield source.finding(1, "floors", f"'{source.room}/' is no room of the house",
                             "move the file into a room, or give the room a row in "
                             "tests/tidy/floors.py")
        return
    shelf = shelf_of(source.path)
    if shelf not in SHELVES.get(source.room, ("",)):
        yield source.finding(1, "floors", f"'{source.room}/{shelf}/' is no shelf of the room",
                             "move the file onto a shelf, or give the shelf a place in "
                             "tests/tidy/floors.py")
        return
    for include in source.includes:
        if include.name in MEMORY.get(source.path, ()):
            continue
        problem = (check_include(source.room, include) or check_shelf(source.room, shelf, include)
                   or check_client(f"{source.room}/{shelf}", include))
        if problem:
            yield source.finding(include.line, "floors", *problem)


def shelf_of(path):
    """The folder within the room, "" for the room itself."""
    return "/".join(path.split("/")[1:-1])


def check_client(here, include):
    """What is wrong with an include on a shelf of clients; None if nothing is."""
    target = include.name.rpartition("/")[0]
    if here not in CLIENTS or not include.quoted or target in CLIENTS[here] + (here,):
        return None
    return (f"{here}/ includes {target}/", f"{here}/ stands on {', '.join(CLIENTS[here])}, so that "
            "macsecctl stays small; ask for it over the control socket")


def check_shelf(room, shelf, include):
    """What is wrong with an include between the shelves of a room; None if nothing is."""
    if not include.quoted or not include.name.startswith(f"{room}/") or room not in SHELVES:
        return None
    order, target = SHELVES[room], shelf_of(include.name)
    if target in order and order.index(target) <= order.index(shelf):
        return None
    here, there = (f"{room}/{name}".rstrip("/") + "/" for name in (shelf, target))
    return (f"{here} includes {there}", "includes between the shelves of a room run one way; hand "
            "the thing in from above, or move it down")


def check_include(room, include):
    """What is wrong with an include in a room, and the remedy; None if nothing is."""
    target = include.name.split("/")[0]
    if target in ROOMS and include.quoted:
        return check_room(room, target)
    if LIBRARY.match(include.name) or not include.quoted:
        return check_library(room, include.name)
    return (f'"{include.name}" names no room', 'write #include "room/File.h"')


def check_room(room, target):
    if target == room or target in ROOMS[room]:
        return None
    if {room, target} == {"linux", "lab"}:
        return (f"{room}/ includes {target}/", "linux/ and lab/ never meet; put what both need "
                "into host/")
    below = ", ".join(f"{name}/" for name in ROOMS[room]) or "the standard library alone"
    return (f"{room}/ includes {target}/", f"{room}/ stands on {below}; hand the thing in from "
            "above, or move it down")


def check_library(room, name):
    if name.startswith("openssl/"):
        return None if room in OPENSSL_ROOMS else (
            f"<{name}> in {room}/", "call the functions of platform/ instead")
    if room not in ENGINE_FLOORS:
        return None
    if name in FILES or not STANDARD.match(name):
        return (f"<{name}> in {room}/", "below host/ only the standard library without files and "
                "sockets; move the use to host/ or above and hand the result in")
    return None
