#pragma once

#include <string>
#include <vector>

#include "fuzz/FrameForge.h"
#include "lab/scenario/Scenario.h"

namespace Fuzz {

/// Keys of switches, by a number that names them.
struct FuzzedKey {
  std::string ckn, cak;
};
FuzzedKey keyOf(unsigned number);

/// A frame of somebody on the wire, made when its time comes: a mark of this name stands for it.
struct Visit {
  bool isForged;  ///< with a right ICV; otherwise these are its octets
  size_t to;      ///< index of the switch
  unsigned key;   ///< number of the key under which it is forged
  Frame octets;
};

/// Two switches with one wire, and what happens to them.
struct FuzzedScenario {
  Lab::Scenario scenario;
  std::vector<Visit> visits;
  /// The switches tell what they do, as a trace.
  bool isTraced = false;
  /// Somebody who holds a key sends what no member would.
  bool hasInsider() const;
};

/// The scenario that an input stands for; each input stands for one.
FuzzedScenario fuzzedScenario(Input& in);

}  // namespace Fuzz
