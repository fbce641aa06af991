#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "lab/scenario/Scenario.h"

namespace Lab {

/// What the lines read so far have named: what later lines may speak of.
struct Known {
  /// The scenario: files that it names lie beside it.
  std::string file;
  std::map<std::string, SwitchSpec const*> switches;
  /// Switches whose configuration has mistakes: their ports and profiles are not known for sure.
  std::set<std::string> unsure;
  std::set<PortName> ports;
  /// The ports on wires, each with the other ports of its wire.
  std::map<PortName, std::vector<PortName>> wired;
  std::set<std::string> keyNames;
  /// Keys of 802.1X are published: their names come from derivation.
  bool derivesKeys = false;
  std::map<std::string, double> marks;

  std::vector<std::string> switchNames() const;
  std::vector<std::string> interfacesOf(std::string const& switchName) const;
  std::vector<std::string> profilesOf(std::string const& switchName) const;
  std::vector<std::string> markNames() const;

  /// Takes up a switch with its ports and keys. The switch has to stay where it is.
  void add(SwitchSpec const& spec, bool sure);
  /// Takes up what a configuration names that the switch reads later.
  void add(std::string const& switchName, Macsecd::SwitchConfig const& config);
  /// Whether a key may have this name.
  bool hasKeyName(std::string const& name) const;

 private:
  std::map<std::string, std::set<std::string>> profiles_;
};

}  // namespace Lab
