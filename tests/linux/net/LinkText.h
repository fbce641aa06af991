#pragma once

#include <string>

#include "linux/net/LinkTable.h"

namespace Linux {

inline Link link(int index, std::string const& name, uint8_t addr, bool up) {
  return {index, name, Lumo::EthAddr({2, 0, 0, 0, 0, addr}), up};
}

inline Link linkOfMtu(int index, std::string const& name, uint32_t mtu) {
  Link link = Linux::link(index, name, 1, false);
  link.mtu = mtu;
  return link;
}

/// "eth0(3) came", "wan(3) renamed from eth0".
inline std::string textOf(LinkChange const& change) {
  static constexpr char const* words[] = {"came", "gone", "renamed", "address",
                                          "up",   "down", "mtu",     "state"};
  std::string text = change.link.name + "(" + std::to_string(change.link.index) + ") " +
                     words[static_cast<size_t>(change.what)];
  if (!change.formerName.empty()) text += " from " + change.formerName;
  return text;
}

}  // namespace Linux
