#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "codec/Dialect.h"
#include "host/config/ConfigFile.h"
#include "host/watch/PortTrouble.h"
#include "lab/scenario/Actions.h"
#include "lab/scenario/Expected.h"
#include "runtime/EthAddr.h"

namespace Lab {

/// A scenario as it was read: plain values, no simulation. All times are seconds of virtual time,
/// from 0. docs/lab.md gives the language.

struct SwitchSpec {
  std::string name;
  int line = 0;
  Lumo::EthAddr mac;
  double start = 0;
  /// What the engine's random delays are, one after the other; after them the seed decides.
  std::vector<uint32_t> firstDelays;
  Macsecd::SwitchConfig config;
  /// Interfaces that only a configuration names which is read later.
  std::vector<Macsecd::InterfaceConfig> laterInterfaces;
  /// Whether its machine could run in FIPS mode.
  bool hasFipsProvider = true;
};

/// Ports that hear each other: two, or more for a shared segment.
struct WireSpec {
  int line = 0;
  std::vector<PortName> ends;
  std::optional<double> delay;  ///< the frame delay of the scenario when absent
};

struct Scenario {
  std::string file;
  std::string title;
  std::optional<uint32_t> seed;
  uint32_t seedOrDefault() const { return seed.value_or(1); }
  double frameDelay = 0.001;
  /// Each port through which traffic may pass sends a frame of data so often, if this is given.
  std::optional<double> dataEvery;
  double runUntil = 0;
  /// Then all faults of wires, links, devices, interfaces and hardware end, if this is given.
  std::optional<double> faultsEnd;
  /// The run is held to what must be so whatever happens (lab/judge/invariants).
  bool invariantsHold = false;
  /// How frames mark their ICV. Analysers of captures know the form of 16 octets.
  Codec::IcvIndicator icvIndicator = Codec::IcvIndicator::length16;
  /// Whether recorded MKPDUs are kept away from the engine.
  bool replayGuard = true;
  /// What the port doctors of the switches act on.
  Macsecd::PortTroubles treatedTroubles = Macsecd::allPortTroubles();
  std::vector<SwitchSpec> switches;
  std::vector<WireSpec> wires;
  std::vector<Action> actions;            ///< by time, then by line
  std::vector<Expectation> expectations;  ///< in the order of the file
};

}  // namespace Lab
