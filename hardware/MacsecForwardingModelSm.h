#pragma once

#include "model/Status.h"
#include "platform/IntfForwardingModel.h"
#include "runtime/NestedReactors.h"
#include "runtime/Reactor.h"

namespace Macsec {

/// Tells forwarding which ports may not carry traffic: an entry for each port whose controlled port
/// is closed, none for the others.
class MacsecForwardingModelSm final : public Vesk::StateMachine {
 public:
  MacsecForwardingModelSm(
      Vesk::Ptr<Status const> status,
      Vesk::Ptr<Interface::IntfForwardingModelInputDir> forwardingModelInputDir);
  ~MacsecForwardingModelSm() override;
  static Vesk::Ptr<MacsecForwardingModelSm> MacsecForwardingModelSmIs(
      Vesk::Ptr<Status const> status,
      Vesk::Ptr<Interface::IntfForwardingModelInputDir> forwardingModelInputDir);
  void hasNotificationActiveIs(bool active) override;

  Vesk::Ptr<Status const> const& status() const;
  Vesk::Ptr<Interface::IntfForwardingModelInputDir> const& forwardingModelInputDir() const {
    return forwardingModelInputDir_;
  }
  bool initialized() const { return initialized_; }

  void handleInitialized();
  void handleControlledPortStatus();
  void handleControlledPortStatus(Lumo::IntfId intfId);
  void updateForwardingModel(Lumo::IntfId intfId);

 protected:
  void end() override;

 private:
  struct StatusReactor;
  struct CpStatusReactor;

  void releaseLeftovers();

  Vesk::Ptr<StatusReactor> status_;
  Vesk::Ptr<Interface::IntfForwardingModelInputDir> forwardingModelInputDir_;
  Vesk::NestedReactors<CpStatusReactor, Lumo::IntfId> cpStatus_;
  bool initialized_ = false;
};

/// Builds the state machine with its notification on.
Vesk::Ptr<MacsecForwardingModelSm> macsecForwardingModelSmFactory(
    Vesk::Ptr<Status const> status,
    Vesk::Ptr<Interface::IntfForwardingModelInputDir> forwardingModelInputDir);

}  // namespace Macsec
