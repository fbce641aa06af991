#pragma once

#include <string>
#include <vector>

#include "lab/random/Dice.h"

namespace Lab {

/// What the faults of a random scenario may hit.
struct RandomNet {
  /// A wire from A to B; each end has an interface of this name, with profile "p" and this number.
  struct Link {
    uint32_t number;
    bool dot1x;
    bool hasThird;  ///< C is on it too
    std::string interface() const { return "e" + std::to_string(number); }
    std::string profile() const { return "p" + std::to_string(number); }
  };
  std::vector<Link> links;
  bool hasThird = false;
};

/// A name of a key and a key that goes with it: the first is right for the second. Keys of one
/// number are equal wherever they stand.
std::string keyName(uint32_t number);
std::string keyText(uint32_t number);

/// Draws the switches, their keys and their wires, and writes them.
RandomNet drawNet(Dice& dice, std::string& text);

}  // namespace Lab
