#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "lab/Scenario.h"

namespace Lab {

/// What the lines read so far have named: what later lines may speak of.
struct Known {
  std::map<std::string, SwitchSpec const*> switches;
  /// Switches whose configuration has mistakes: their ports and profiles are not known for sure.
  std::set<std::string> unsure;
  std::set<PortName> ports;
  std::set<PortName> wired;
  std::set<std::string> keyNames;
  std::map<std::string, double> marks;

  std::vector<std::string> switchNames() const;
  std::vector<std::string> interfacesOf(std::string const& switchName) const;
  std::vector<std::string> profilesOf(std::string const& switchName) const;
  std::vector<std::string> markNames() const;

  /// Takes up a switch with its ports and keys. The switch has to stay where it is.
  void add(SwitchSpec const& spec, bool sure);
};

}  // namespace Lab
