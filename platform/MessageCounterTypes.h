#pragma once

#include <cstdint>
#include <utility>

#include "runtime/Text.h"

namespace Macsec {

enum class MessageCounterDirection : uint8_t { tx = 0, rx = 1 };

enum class MessageCounterType : uint8_t { success = 0, failure = 1 };

/// Which part of a frame failed.
enum class MessageCounterFailureSubType : uint8_t {
  none = 0,
  invalid = 1,
  eapolErr = 2,
  basicParamSetErr = 3,
  unrecognizedCkn = 4,
  icvValidationErr = 5,
  livePeerListErr = 6,
  potentialPeerListErr = 7,
  sakUseSetErr = 8,
  distSakSetErr = 9,
  distCakSetErr = 10,
  icvIndicatorErr = 11,
  unrecognizedSetErr = 12,
};

}  // namespace Macsec

template <>
struct Vesk::EnumNames<Macsec::MessageCounterDirection> {
  static constexpr std::pair<Macsec::MessageCounterDirection, char const*> names[] = {
      {Macsec::MessageCounterDirection::tx, "tx"},
      {Macsec::MessageCounterDirection::rx, "rx"},
  };
};

template <>
struct Vesk::EnumNames<Macsec::MessageCounterType> {
  static constexpr std::pair<Macsec::MessageCounterType, char const*> names[] = {
      {Macsec::MessageCounterType::success, "success"},
      {Macsec::MessageCounterType::failure, "failure"},
  };
};

template <>
struct Vesk::EnumNames<Macsec::MessageCounterFailureSubType> {
  static constexpr std::pair<Macsec::MessageCounterFailureSubType, char const*> names[] = {
      {Macsec::MessageCounterFailureSubType::none, "none"},
      {Macsec::MessageCounterFailureSubType::invalid, "invalid"},
      {Macsec::MessageCounterFailureSubType::eapolErr, "eapolErr"},
      {Macsec::MessageCounterFailureSubType::basicParamSetErr, "basicParamSetErr"},
      {Macsec::MessageCounterFailureSubType::unrecognizedCkn, "unrecognizedCkn"},
      {Macsec::MessageCounterFailureSubType::icvValidationErr, "icvValidationErr"},
      {Macsec::MessageCounterFailureSubType::livePeerListErr, "livePeerListErr"},
      {Macsec::MessageCounterFailureSubType::potentialPeerListErr, "potentialPeerListErr"},
      {Macsec::MessageCounterFailureSubType::sakUseSetErr, "sakUseSetErr"},
      {Macsec::MessageCounterFailureSubType::distSakSetErr, "distSakSetErr"},
      {Macsec::MessageCounterFailureSubType::distCakSetErr, "distCakSetErr"},
      {Macsec::MessageCounterFailureSubType::icvIndicatorErr, "icvIndicatorErr"},
      {Macsec::MessageCounterFailureSubType::unrecognizedSetErr, "unrecognizedSetErr"},
  };
};

namespace Macsec {

inline std::ostream& operator<<(std::ostream& out, MessageCounterDirection e) {
  return Vesk::writeText(out, Vesk::valueToStrep(e));
}
inline std::ostream& operator<<(std::ostream& out, MessageCounterType e) {
  return Vesk::writeText(out, Vesk::valueToStrep(e));
}
inline std::ostream& operator<<(std::ostream& out, MessageCounterFailureSubType e) {
  return Vesk::writeText(out, Vesk::valueToStrep(e));
}

}  // namespace Macsec
