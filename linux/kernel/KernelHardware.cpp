#include "linux/kernel/KernelHardware.h"

#include <algorithm>

#include "model/Factories.h"
#include "runtime/World.h"

namespace Linux {

using Macsecd::DeviceState;

namespace {

DeviceState deviceStateOf(Link const& link) {
  if (!link.isSetUp) return DeviceState::down;
  return link.isDormant ? DeviceState::dormant : DeviceState::up;
}

Vesk::Ptr<Macsec::MacSecStatus> sliceOf(Macsecd::Host& host) {
  auto slice = Macsec::macSecStatusFactory("kernel");
  host.slices()->entityPtrIs(slice);
  return slice;
}

// Without a port there is no cipher suite yet but that of the profile.
DeviceKind standingOf(Macsecd::ProfileConfig const& profile) {
  bool const is128 = profile.cipherSuite == Macsecd::Suite::gcmAesXpn128;
  return {0, is128 ? kGcmAesXpn128 : kGcmAesXpn256, profile.includeSci};
}

std::optional<uint64_t> nextReceived(SecY const& secY, Macsec::CpStatus const* cpStatus) {
  if (!cpStatus || cpStatus->txSak() == Macsec::Sak()) return {};
  for (HeldRxSc const& sc : secY.rxScs) {
    for (HeldSa const& sa : sc.sas) {
      if (sa.an == cpStatus->txSak().an().value()) return sa.packetNumber;
    }
  }
  return {};
}

}  // namespace

struct KernelHardware::HoldReactor final
    : Vesk::Reactor<Interface::IntfForwardingModelInputDir const, KernelHardware, HoldReactor> {
  using Reactor::Reactor;
  void onForwardingModelInput(Lumo::IntfId const& intfId) override { owner().holdTransmit(intfId); }
};

KernelHardware::KernelHardware(Macsecd::Host& host)
    : host_(host),
      filters_(filterKernel_,
               [this](auto intfId, auto const& fault) { faultIs(intfId, &Faults::filter, fault); }),
      driver_(
          host.status(), sliceOf(host), kernel_,
          {.dormant = true,
           .faultIs = [this](auto intfId,
                             auto const& fault) { faultIs(intfId, &Faults::driver, fault); },
           .masterOf = [this](int device) { return masterOf(device); },
           .history = &host.keyHistory(),
           .keyIsSpent = [&host](auto intfId, auto const& sak) { host.keyIsSpent(intfId, sak); },
           .changed = [&host](auto intfId) { host.hardwareReportChanged(intfId); }}) {
  forwarding_.emplace(
      PortForwarding::Directories{host.forwardingModelInputDir(), host.peerLossInputDir(),
                                  host.transmitHoldInputDir()},
      driver_);
  for (auto const& closed : {host.transmitHoldInputDir(), host.peerLossInputDir()}) {
    holds_.push_back(Vesk::make<HoldReactor>(*this, closed));
    holds_.back()->hasNotificationActiveIs(true);
  }
  host.hardwareReportsFrom([this](Lumo::IntfId intfId) { return report(intfId); });
}

// A dormant device alone would still pass what a program sends that doesn't heed its state.
void KernelHardware::holdTransmit(Lumo::IntfId intfId) {
  driver_.transmitHeldIs(intfId, host_.transmitHoldInputDir()->forwardingModelInput(intfId) ||
                                     host_.peerLossInputDir()->forwardingModelInput(intfId));
}

KernelHardware::~KernelHardware() {
  lookAway();
  host_.hardwareReportsFrom(nullptr);
}

void KernelHardware::configIs(Macsecd::SwitchConfig const& config) {
  std::map<std::string_view, DeviceKind> kinds;
  for (Macsecd::ProfileConfig const& profile : config.profiles) {
    kinds[profile.name] = standingOf(profile);
  }
  wishes_.clear();
  for (Macsecd::InterfaceConfig const& interface : config.interfaces) {
    Wish& wish = wishes_[Lumo::IntfId{Vesk::String8(interface.name)}];
    wish.device = {interface.device, interface.replayWindow, interface.mtu, {}};
    if (auto const kind = kinds.find(interface.profile); kind != kinds.end()) {
      wish.device.standing = kind->second;
    }
    wish.portNumber = interface.portNumber;
    wish.mustBeSecure = interface.policy == Macsecd::SecurePolicy::mustSecure;
    wish.clear = interface.clear;
  }
  auto const oneReading = driver_.round();
  auto const oneListing = filters_.round();
  for (auto const& [intfId, wish] : wishes_) deviceIs(intfId);
  for (auto const& [intfId, parent] : parents_) filter(intfId, parent.index);
}

// The channel of a port is known with the address of its interface.
void KernelHardware::deviceIs(Lumo::IntfId intfId) {
  Wish const& wish = wishes_[intfId];
  auto const parent = parents_.find(intfId);
  DeviceOptions device = wish.device;
  if (parent == parents_.end()) {
    device.standing.reset();
  } else if (device.standing) {
    device.standing->sci = sciNumber(Macsec::Sci(parent->second.addr, wish.portNumber));
  }
  driver_.deviceIs(intfId, device);
}

void KernelHardware::filter(Lumo::IntfId intfId, int index) {
  auto const wish = wishes_.find(intfId);
  if (wish != wishes_.end() && wish->second.mustBeSecure) {
    filters_.interfaceIs(intfId, index, wish->second.clear);
  } else {
    filters_.interfaceDel(intfId);
    faultIs(intfId, &Faults::filter, {});
  }
}

// The filter stands before the device exists.
void KernelHardware::interfaceIs(Lumo::IntfId intfId, int index, Lumo::EthAddr const& addr) {
  parents_[intfId] = {index, addr};
  filter(intfId, index);
  deviceIs(intfId);
  driver_.interfaceIs(intfId, index);
}

void KernelHardware::interfaceMtuIs(Lumo::IntfId intfId, uint32_t mtu) {
  driver_.interfaceMtuIs(intfId, mtu);
}

void KernelHardware::interfaceDel(Lumo::IntfId intfId) {
  driver_.interfaceDel(intfId);
  filters_.interfaceDel(intfId);
  parents_.erase(intfId);
  faults_.erase(intfId);
}

void KernelHardware::linkChanged(LinkChange const& change) {
  Link const& link = change.link;
  if (change.what == LinkChange::What::gone) {
    devices_.erase(link.index);
  } else {
    devices_[link.index] = link;
  }
  driver_.deviceChanged(link.index, change.what != LinkChange::What::gone);
}

// A device that the kernel hasn't told of yet comes up dormant.
DeviceState KernelHardware::stateOf(int device) const {
  auto const found = devices_.find(device);
  return found == devices_.end() ? DeviceState::dormant : deviceStateOf(found->second);
}

Master KernelHardware::masterOf(int device) const {
  auto const member = devices_.find(device);
  if (member == devices_.end()) return {};
  auto const master = devices_.find(member->second.master);
  return master == devices_.end() ? Master() : Master{master->second.name, master->second.kind};
}

void KernelHardware::interfacesAreKnown() {
  filters_.removeOthers();
  driver_.removeOthers();
}

void KernelHardware::inOneTurn(std::function<void()> const& act) {
  auto const oneReading = driver_.round();
  auto const oneListing = filters_.round();
  act();
}

double KernelHardware::nextTime() const {
  return std::min(driver_.nextTime(), filters_.nextTime());
}

void KernelHardware::run() {
  driver_.run();
  if (filters_.nextTime() <= Vesk::now()) filters_.run();
}

void KernelHardware::faultIs(Lumo::IntfId intfId, Macsecd::Fault Faults::*whose,
                             Macsecd::Fault const& fault) {
  Faults& faults = faults_[intfId];
  faults.*whose = fault;
  auto const joined = [](std::string const& a, std::string const& b) {
    return a + (a.empty() || b.empty() ? "" : "; ") + b;
  };
  host_.hardwareFaultIs(intfId, joined(faults.driver.what, faults.filter.what),
                        joined(faults.driver.remedy, faults.filter.remedy));
}

// What the state machines leave behind when they end is no order.
void KernelHardware::lookAway() {
  forwarding_.reset();
  for (auto& hold : holds_) Vesk::retire(hold);
  holds_.clear();
}

void KernelHardware::leave() {
  lookAway();
  driver_.follow(nullptr);
}

void KernelHardware::removeAll() {
  lookAway();
  driver_.removeAll();
  filters_.removeAll();
}

Macsecd::HardwareReport KernelHardware::report(Lumo::IntfId intfId) const {
  KernelPort const* const port = driver_.port(intfId);
  SecY const* const secY = port ? port->held() : nullptr;
  Macsecd::HardwareReport report;
  report.devicesMade = port ? port->devicesMade() : 0;
  report.deviceState = secY ? stateOf(secY->index) : DeviceState::absent;
  if (!secY) return report;
  report.device = port->deviceName();
  report.sends = sends(*secY);
  report.receives = receives(*secY);
  report.txPacketNumber = driver_.packetNumber(intfId);
  report.rxPacketNumber = nextReceived(*secY, host_.status()->cpStatus(intfId).ptr());
  for (HeldRxSc const& sc : secY->rxScs) report.framesNotValid += sc.counters.notValid;
  report.notValidTime = port->notValidTime();
  return report;
}

}  // namespace Linux
