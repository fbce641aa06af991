#pragma once

#include <optional>
#include <span>
#include <vector>

#include "codec/ActorKeys.h"
#include "codec/Dialect.h"
#include "codec/HeardMembers.h"
#include "codec/MemberTexts.h"
#include "model/MkaPamManager.h"
#include "runtime/AtHome.h"
#include "runtime/EthAddr.h"
#include "runtime/InterfaceTable.h"

namespace Codec {

/// What the codec keeps of one interface.
struct Port : Vesk::AtHome<Vesk::Home::Part::hot> {
  explicit Port(Lumo::IntfId id) : intfId(id) {}

  Lumo::IntfId intfId;
  /// Source of its frames; none while the platform doesn't know the interface.
  std::optional<Lumo::EthAddr> address;
  Dialect dialect;
  /// Those that hold a key on this interface, in order of their arrival: one, two or three.
  std::vector<ActorKeys*, Vesk::HomeAllocator<ActorKeys*>> actors;
  MemberTexts members;
  HeardMembers heard;
  Vesk::Ptr<Macsec::MkaPamCounter> txCounter;
  Vesk::Ptr<Macsec::MkaPamCounter> rxCounter;

  ActorKeys* actor(Vesk::String8 const& ckn) const {
    for (ActorKeys* actor : actors) {
      if (actor->ckn() == ckn) return actor;
    }
    return nullptr;
  }
};

using Ports = Vesk::InterfaceTable<Port>;

}  // namespace Codec
