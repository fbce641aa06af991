#include "linux/kernel/PortForwarding.h"

namespace Linux {

struct PortForwarding::DirectoryReactor final
    : Vesk::Reactor<Directory const, PortForwarding, DirectoryReactor> {
  using Reactor::Reactor;
  void onForwardingModelInput(Lumo::IntfId const& intfId) override { owner().show(intfId); }
  void onForwardingModelInputImmediate() override {
    for (auto& entry : notifier()->forwardingModelInput()) owner().show(entry.fwkKey());
  }
};

PortForwarding::PortForwarding(Directories const& directories, KernelDriver& driver)
    : driver_(driver) {
  for (auto const& directory : directories) {
    directories_.push_back(Vesk::make<DirectoryReactor>(*this, directory));
  }
  for (auto const& reactor : directories_) {
    reactor->hasNotificationActiveIs(true);
    reactor->onForwardingModelInputImmediate();
  }
}

PortForwarding::~PortForwarding() {
  for (auto& reactor : directories_) Vesk::retire(reactor);
}

// A port that isn't there any more isn't opened either: its device is about to go.
void PortForwarding::show(Lumo::IntfId intfId) {
  bool isAuthorized = true;
  for (auto const& reactor : directories_) {
    auto const* const model = reactor->notifier()->forwardingModelInput(intfId);
    if (model && *model == Interface::intfForwardingModelUnauthorized()) isAuthorized = false;
  }
  KernelPort const* const port = driver_.port(intfId);
  if (isAuthorized && port && !port->isWanted()) return;
  driver_.authorizedIs(intfId, isAuthorized);
}

}  // namespace Linux
