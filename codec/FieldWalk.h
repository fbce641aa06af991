#pragma once

#include <cstdint>
#include <optional>

#include "codec/MemberTexts.h"
#include "model/BasicParameterSet.h"
#include "model/CipherSuite.h"
#include "model/MacsecConstants.h"
#include "model/Sci.h"
#include "runtime/NetValues.h"

namespace Codec {

// Each parameter set has one description, a function `fields(walk)` that names its fields in order:
//
//   walk("message number", &Set::messageNumber, &Set::messageNumberIs,   // in the frame
//                          &Info::msgNum, &Info::msgNumIs);              // in the message
//   walk.fixed("version", &Set::version, &Set::versionIs, value);        // in the frame alone
//
// `ToFrame` walks it to write a set, `FromFrame` to read one, and the dump to print one.

/// The values of the fields as they lie in a frame, and back.
class FieldValues {
 public:
  explicit FieldValues(MemberTexts& texts) : texts_(texts) {}

  /// False once a value had no form in a frame.
  bool fits() const { return fits_; }

  uint8_t toFrame(uint8_t v) { return v; }
  uint8_t toFrame(bool v) { return v; }
  Lumo::NetU32 toFrame(uint32_t v) { return v; }
  Macsec::MemberIdentifier toFrame(Vesk::String8 const& v) {
    auto const identifier = texts_.identifier(v);
    fits_ = fits_ && identifier;
    return identifier.value_or(Macsec::MemberIdentifier());
  }
  Macsec::SciParameterSet toFrame(Macsec::Sci const& v) {
    Macsec::SciParameterSet sci;
    sci.addrIs(v.addr());
    sci.portIdIs(v.portNum());
    return sci;
  }
  Lumo::NetU64 toFrame(Macsec::CipherSuite v) {
    if (v == Macsec::CipherSuite::gcmAesXpn128) return Constants::xpn128CipherSuiteRefNo;
    if (v == Macsec::CipherSuite::gcmAesXpn256) return Constants::xpn256CipherSuiteRefNo;
    return Constants::nullCipherSuiteRefNo;
  }

  uint8_t fromFrame(uint8_t v) { return v; }
  uint32_t fromFrame(Lumo::NetU32 v) { return v.value(); }
  Vesk::String8 fromFrame(Macsec::MemberIdentifier const& v) { return texts_.text(v); }
  Macsec::Sci fromFrame(Macsec::SciParameterSet const& v) {
    return Macsec::Sci(v.addr(), v.portId().value());
  }
  /// A suite that isn't ours is `None`.
  static Macsec::CipherSuite fromFrame(Lumo::NetU64 v) {
    if (v.value() == Constants::xpn128CipherSuiteRefNo) return Macsec::CipherSuite::gcmAesXpn128;
    if (v.value() == Constants::xpn256CipherSuiteRefNo) return Macsec::CipherSuite::gcmAesXpn256;
    return Macsec::CipherSuite::None;
  }

 private:
  using Constants = Macsec::MacsecConstants;

  MemberTexts& texts_;
  bool fits_ = true;
};

/// Writes a set from a message.
template <class Set, class Info>
struct ToFrame {
  Set& set;
  Info const& info;
  FieldValues& values;

  template <class Get, class SetIs, class InfoGet, class InfoIs>
  void operator()(char const*, Get, SetIs setIs, InfoGet infoGet, InfoIs) {
    (set.*setIs)(values.toFrame((info.*infoGet)()));
  }
  template <class Get, class SetIs, class Value>
  void fixed(char const*, Get, SetIs setIs, Value value) {
    (set.*setIs)(value);
  }
};

/// Reads a set into a message.
template <class Set, class Info>
struct FromFrame {
  Set const& set;
  Info& info;
  FieldValues& values;

  template <class Get, class SetIs, class InfoGet, class InfoIs>
  void operator()(char const*, Get get, SetIs, InfoGet, InfoIs infoIs) {
    (info.*infoIs)(values.fromFrame((set.*get)()));
  }
  template <class Get, class SetIs, class Value>
  void fixed(char const*, Get, SetIs, Value) {}
};

}  // namespace Codec
