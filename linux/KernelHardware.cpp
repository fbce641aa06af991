#include "linux/KernelHardware.h"

#include "model/Factories.h"

namespace Linux {

namespace {

Vesk::Ptr<Macsec::MacSecStatus> sliceOf(Macsecd::Host& host) {
  auto const slice = Macsec::macSecStatusFactory("kernel");
  host.slices()->entityPtrIs(slice);
  return slice;
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

KernelHardware::KernelHardware(Macsecd::Host& host)
    : host_(host),
      driver_(host.status(), sliceOf(host), kernel_,
              {.dormant = true, .faultIs = [&host](auto intfId, std::string const& fault) {
                 host.hardwareFaultIs(intfId, fault);
               }}) {
  forwarding_.emplace(host.forwardingModelInputDir(), driver_);
  host.hardwareReportsFrom([this](Lumo::IntfId intfId) { return report(intfId); });
}

KernelHardware::~KernelHardware() { host_.hardwareReportsFrom(nullptr); }

void KernelHardware::configIs(Macsecd::SwitchConfig const& config) {
  for (Macsecd::InterfaceConfig const& interface : config.interfaces) {
    driver_.deviceIs(Lumo::IntfId(Vesk::String8(interface.name)),
                     {interface.device, interface.replayWindow});
  }
}

void KernelHardware::interfaceIs(Lumo::IntfId intfId, int index, Lumo::EthAddr const&) {
  driver_.interfaceIs(intfId, index);
}

void KernelHardware::interfaceDel(Lumo::IntfId intfId) { driver_.interfaceDel(intfId); }

void KernelHardware::leave() {
  forwarding_.reset();
  driver_.follow(nullptr);
}

void KernelHardware::removeAll() {
  forwarding_.reset();
  driver_.removeAll();
}

Macsecd::HardwareReport KernelHardware::report(Lumo::IntfId intfId) const {
  KernelPort const* const port = driver_.port(intfId);
  SecY const* const secY = port ? port->held() : nullptr;
  if (!secY) return {};
  Macsecd::HardwareReport report;
  report.device = port->deviceName();
  report.txPacketNumber = driver_.packetNumber(intfId);
  report.rxPacketNumber = nextReceived(*secY, host_.status()->cpStatus(intfId).ptr());
  for (HeldRxSc const& sc : secY->rxScs) report.framesNotValid += sc.counters.notValid;
  report.notValidTime = port->notValidTime();
  return report;
}

}  // namespace Linux
