#include "lab/scenario/ActionParts.h"

// What a station on the wire does, and interfaces that come and go.

namespace Lab {

namespace {

std::string parseSetName(Words& words) {
  std::vector<std::string> const names = {"live-peers", "potential-peers", "sak-use", "dist-sak",
                                          "dist-cak"};
  for (std::string const& name : names) {
    if (words.take(name)) return name;
  }
  words.unknown("parameter set", names);
}

void parseWhich(Words& words, Replay& replay) {
  if (words.take("first frame")) {
    replay.which = Replay::Which::first;
  } else if (words.take("last frame")) {
    replay.which = Replay::Which::last;
  } else if (words.take("every frame")) {
    replay.which = Replay::Which::every;
  } else if (words.take("frame")) {
    replay.number = words.number("the number of a frame", 1, UINT32_MAX);
  } else {
    words.unknown("frame", {"frame", "first frame", "last frame", "every frame"});
  }
}

}  // namespace

// "first frame with dist-sak under c0de0001 from A Ethernet1 after 3 before 20 to B Ethernet1"
Replay parseReplay(Words& words, Known const& known) {
  Replay replay;
  parseWhich(words, replay);
  if (!replay.number) {
    if (words.take("with")) replay.set = parseSetName(words);
    if (words.take("under")) replay.ckn = words.keyName(known);
    if (words.take("from")) replay.from = words.wiredPort(known);
    if (words.take("after")) replay.after = words.time();
    if (words.take("before")) replay.before = words.time();
  }
  words.need("to");
  replay.to = words.wiredPort(known);
  return replay;
}

InterfaceChange parseInterface(bool isThere, Words& words, Known const& known) {
  InterfaceChange change{words.interfaceOn(known), isThere};
  if (isThere && words.take("with address")) change.mac = words.address();
  return change;
}

}  // namespace Lab
