#pragma once

#include "model/Status.h"
#include "runtime/Reactor.h"

namespace Support {

/// An agent who makes a port anew inside the notification of its removal, with an actor in it. Who
/// is told after him finds another port in the place of the former one, and the actor already
/// there.
class PortMadeAnew {
 public:
  PortMadeAnew(Vesk::Ptr<Macsec::Status> status, Vesk::String8 const& ckn)
      : ckn_(ckn), status_(Vesk::make<StatusReactor>(*this, std::move(status))) {}
  ~PortMadeAnew() { Vesk::retire(status_); }

 private:
  struct StatusReactor final : Vesk::Reactor<Macsec::Status, PortMadeAnew, StatusReactor> {
    using Reactor::Reactor;
    void onPortStatus(Lumo::IntfId const& intfId) override {
      if (auto const port = notifier()->portStatus(intfId)) {
        port->actorStatusIs(owner().ckn_);
      } else {
        notifier()->portStatusIs(intfId);
      }
    }
  };

  Vesk::String8 const ckn_;
  Vesk::Ptr<StatusReactor> status_;
};

}  // namespace Support
