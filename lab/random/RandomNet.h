#pragma once

#include <string>
#include <vector>

#include "lab/random/Dice.h"

namespace Lab {

/// What the faults of a random scenario may hit.
struct RandomNet {
  /// A wire between two switches; each end has an interface of this name, with profile "p" and this
  /// number.
  struct Link {
    uint32_t number;
    char a, b;  ///< the switches, by their letters
    bool dot1x = false;
    bool hasThird = false;  ///< Z is on it too
    std::string interface() const { return "e" + std::to_string(number); }
    std::string profile() const { return "p" + std::to_string(number); }
    std::string end(bool first) const { return {first ? a : b}; }
  };
  std::vector<Link> links;
  std::vector<char> switches;  ///< but Z
  bool hasThird = false;       ///< on the first link
};

/// How large a net may be.
struct NetSize {
  uint32_t switches = 2, links = 3;
};

/// A name of a key and a key that goes with it: the first is right for the second. Keys of one
/// number are equal wherever they stand.
std::string keyName(uint32_t number);
std::string keyText(uint32_t number);

/// Draws the switches, their keys and their wires, and writes them.
RandomNet drawNet(Dice& dice, NetSize const& most, std::string& text);

}  // namespace Lab
