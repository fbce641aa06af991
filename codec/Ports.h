#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "codec/ActorKeys.h"
#include "codec/Dialect.h"
#include "codec/HeardMembers.h"
#include "model/MkaPamManager.h"
#include "runtime/EthAddr.h"
#include "runtime/IntfId.h"

namespace Codec {

/// What the codec keeps of one interface.
struct Port {
  explicit Port(Lumo::IntfId id) : intfId(id) {}

  Lumo::IntfId intfId;
  /// Source of its frames; none while the platform doesn't know the interface.
  std::optional<Lumo::EthAddr> address;
  Dialect dialect;
  /// Those that hold a key on this interface, in order of their arrival: one, two or three.
  std::vector<ActorKeys*> actors;
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

/// All interfaces, by the index of their identity: finding one costs the same however many there
/// are.
class Ports {
 public:
  Port* find(Lumo::IntfId intfId) const {
    return intfId.index() < ports_.size() ? ports_[intfId.index()].get() : nullptr;
  }
  Port& portIs(Lumo::IntfId intfId) {
    if (ports_.size() <= intfId.index()) ports_.resize(intfId.index() + 1);
    auto& port = ports_[intfId.index()];
    if (!port) port = std::make_unique<Port>(intfId);
    return *port;
  }

 private:
  std::vector<std::unique_ptr<Port>> ports_;
};

}  // namespace Codec
