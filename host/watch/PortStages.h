#pragma once

#include <map>
#include <optional>
#include <utility>

#include "controlled_port/KeyStage.h"
#include "engine/Stages.h"
#include "model/Status.h"

namespace Macsecd {

/// Where a port stands in the drawings above its state machines.
struct PortStages {
  /// The name of a key, and the identifier of a member that is heard under it.
  using Member = std::pair<Vesk::String8, Vesk::String8>;

  /// Of the newest SAK; nothing without a controlled port.
  std::optional<Macsec::KeyStage> key;
  /// Of the guard on new SAKs; nothing where no key is in use.
  std::optional<Macsec::GuardStage> guard;
  /// One that isn't there is unknown.
  std::map<Member, Macsec::PeerStage> members;

  friend bool operator==(PortStages const&, PortStages const&) = default;
};

/// `keyServer` is what decides on new SAKs for the key in use; null when no key is in use.
PortStages stagesOf(Macsec::Status const& status, Lumo::IntfId intfId,
                    Macsec::MkaKeyServerSm const* keyServer);

}  // namespace Macsecd

// As they are told outwards; the traces have the names of the drawings.

template <>
struct Vesk::EnumNames<Macsec::KeyStage> {
  using Stage = Macsec::KeyStage;
  static constexpr std::pair<Stage, char const*> names[] = {
      {Stage::empty, "empty"}, {Stage::rxProgrammed, "rx-programmed"},
      {Stage::rxUp, "rx-up"},  {Stage::txProgrammed, "tx-programmed"},
      {Stage::txUp, "tx-up"},  {Stage::old, "old"},
  };
};

template <>
struct Vesk::EnumNames<Macsec::PeerStage> {
  using Stage = Macsec::PeerStage;
  static constexpr std::pair<Stage, char const*> names[] = {
      {Stage::unknown, "unknown"},
      {Stage::potential, "potential"},
      {Stage::live, "live"},
  };
};

template <>
struct Vesk::EnumNames<Macsec::GuardStage> {
  using Stage = Macsec::GuardStage;
  static constexpr std::pair<Stage, char const*> names[] = {
      {Stage::disarmed, "disarmed"},
      {Stage::armed, "armed"},
      {Stage::armedNewSak, "armed-new-sak"},
  };
};
