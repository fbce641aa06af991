#pragma once

#include <cstdint>
#include <iosfwd>

#include "codec/FrameLayout.h"
#include "model/BasicParameterSet.h"
#include "model/MemberIdentifier.h"
#include "runtime/NetValues.h"

namespace Codec {

// One field of a set as a line of text.
void printField(std::ostream& out, char const* label, uint8_t v);
void printField(std::ostream& out, char const* label, Lumo::NetU32 v);
void printField(std::ostream& out, char const* label, Lumo::NetU64 cipherSuite);
void printField(std::ostream& out, char const* label, Macsec::MemberIdentifier const& v);
void printField(std::ostream& out, char const* label, Macsec::SciParameterSet const& v);
void printField(std::ostream& out, char const* label, char const* v);
void printOctets(std::ostream& out, char const* label, Octets v);
/// A name with its characters behind its octets, if they can all be printed.
void printName(std::ostream& out, char const* label, Octets v);

/// Walks the description of a set to print it.
template <class Set>
struct Print {
  Set const& set;
  std::ostream& out;

  template <class Get, class SetIs, class InfoGet, class InfoIs>
  void operator()(char const* label, Get get, SetIs, InfoGet, InfoIs) {
    printField(out, label, (set.*get)());
  }
  template <class Get, class SetIs, class Value>
  void fixed(char const* label, Get get, SetIs, Value) {
    printField(out, label, (set.*get)());
  }
};

}  // namespace Codec
