#include "linux/PortForwarding.h"

namespace Linux {

struct PortForwarding::DirectoryReactor final
    : Vesk::Reactor<Directory const, PortForwarding, DirectoryReactor> {
  using Reactor::Reactor;
  void onForwardingModelInput(Lumo::IntfId const& intfId) override { owner().show(intfId); }
  void onForwardingModelInputImmediate() override {
    for (auto& entry : notifier()->forwardingModelInput()) owner().show(entry.fwkKey());
  }
};

PortForwarding::PortForwarding(Vesk::Ptr<Directory const> directory, KernelDriver& driver)
    : driver_(driver), directory_(Vesk::make<DirectoryReactor>(*this, std::move(directory))) {
  directory_->hasNotificationActiveIs(true);
  directory_->onForwardingModelInputImmediate();
}

PortForwarding::~PortForwarding() { Vesk::retire(directory_); }

void PortForwarding::show(Lumo::IntfId intfId) {
  auto const* const model = directory_->notifier()->forwardingModelInput(intfId);
  driver_.authorizedIs(intfId, !model || *model != Interface::intfForwardingModelUnauthorized());
}

}  // namespace Linux
