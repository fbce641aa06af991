#pragma once

#include <string>
#include <vector>

#include "host/Host.h"
#include "host/watch/PortStages.h"

namespace Macsecd {

/// Why a port isn't secured, in the order in which the causes come into play: nothing behind the
/// first one that holds can come right before that one does. `tooManyMembers` is told first of all
/// while it closes the port.
enum class CauseKind : uint8_t {
  notConfigured,
  shutDown,
  fips,
  noKey,
  sameAddress,
  waitingForKey,
  noInterface,
  interfaceDown,
  noLink,
  unknownToHardware,
  hardwareRefuses,
  deviceGone,
  deviceDown,
  deviceDormant,
  peersLost,
  noFrames,
  duplicateSci,
  unknownName,
  wrongCak,
  malformedFrames,
  replayedFrames,
  oneWay,
  noKeyServer,
  tooManyMembers,
  cipherMismatch,
  notPrincipal,
  noSak,
  otherPeer,
  spentKey,
  sakNotInstalled,
  peerNotReceiving,
  waitingToSend,
  framesNotValid,
  fallbackInUse,
  formerConfiguration,
};

struct Cause {
  CauseKind kind;
  std::string what;
  std::string remedy;
};

struct Explanation {
  Lumo::IntfId intfId;
  /// Traffic may pass. What is listed below is then no cause, but worth knowing.
  bool secured = false;
  std::vector<Cause> causes;
  /// How far the state machines of the port are.
  PortStages stages;

  bool has(CauseKind kind) const;
};

/// Looks at the trees of a switch and at the frames of the last life time. Changes nothing.
Explanation explain(Host const& host, Lumo::IntfId intfId);

}  // namespace Macsecd

template <>
struct Vesk::EnumNames<Macsecd::CauseKind> {
  using Kind = Macsecd::CauseKind;
  static constexpr std::pair<Kind, char const*> names[] = {
      {Kind::notConfigured, "not-configured"},
      {Kind::shutDown, "shut-down"},
      {Kind::fips, "fips"},
      {Kind::noKey, "no-key"},
      {Kind::sameAddress, "same-address"},
      {Kind::waitingForKey, "waiting-for-802.1x"},
      {Kind::noInterface, "no-interface"},
      {Kind::interfaceDown, "interface-down"},
      {Kind::noLink, "no-link"},
      {Kind::unknownToHardware, "unknown-to-hardware"},
      {Kind::hardwareRefuses, "hardware-refuses"},
      {Kind::deviceGone, "device-gone"},
      {Kind::deviceDown, "device-down"},
      {Kind::deviceDormant, "device-dormant"},
      {Kind::peersLost, "peers-lost"},
      {Kind::noFrames, "no-frames"},
      {Kind::duplicateSci, "duplicate-sci"},
      {Kind::unknownName, "unknown-ckn"},
      {Kind::wrongCak, "wrong-cak"},
      {Kind::malformedFrames, "malformed-frames"},
      {Kind::replayedFrames, "replayed-frames"},
      {Kind::oneWay, "one-way"},
      {Kind::noKeyServer, "no-key-server"},
      {Kind::tooManyMembers, "too-many-members"},
      {Kind::cipherMismatch, "cipher-mismatch"},
      {Kind::notPrincipal, "not-principal"},
      {Kind::noSak, "no-sak"},
      {Kind::otherPeer, "other-peer"},
      {Kind::spentKey, "spent-key"},
      {Kind::sakNotInstalled, "sak-not-installed"},
      {Kind::peerNotReceiving, "peer-not-receiving"},
      {Kind::waitingToSend, "waiting-to-send"},
      {Kind::framesNotValid, "frames-not-valid"},
      {Kind::fallbackInUse, "fallback-in-use"},
      {Kind::formerConfiguration, "former-configuration"},
  };
};
