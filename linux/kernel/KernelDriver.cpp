#include "linux/kernel/KernelDriver.h"

#include <algorithm>

#include "linux/process/Limits.h"
#include "runtime/Assert.h"
#include "runtime/Log.h"
#include "runtime/NestedReactors.h"
#include "runtime/TimerWheel.h"
#include "runtime/World.h"

namespace Linux {

using Macsec::AssociationNumber;
using Macsec::CpStatus;
using Macsec::MkaPortStatus;
using Macsec::Status;

namespace {

Vesk::LogHandle const MACSEC_KERNEL_MISSING(
    "MACSEC_KERNEL_MISSING", Vesk::LogSeverity::error, "Interface %s can't be secured: %s",
    "The kernel of this machine offers no MACsec. It is looked for again, at least every minute.",
    "Install the kernel's module 'macsec' and load it with 'modprobe macsec'.", 3600.0, 0.0);

bool isKey(Macsec::KeyInfo const& info, Macsec::Sak const& sak) {
  return info.keyServerMsgId() == sak.keyMsgId() && info.keyNum() == sak.keyNum();
}

// While the ends of a cable don't agree which key is the old one, the number of one key may stand
// at the place of another; what a peer says of the key itself tells.
bool isToldOfAnotherKey(MkaPortStatus const& portStatus, CpStatus const& cpStatus,
                        AssociationNumber an) {
  auto const* const told = cpStatus.rxLPN(an);
  auto const* const sak = cpStatus.rxSak(an);
  if (!told || !sak) return false;
  for (Macsec::MkaActorStatus& actor : portStatus.actorStatus()) {
    for (Macsec::MkaPeer& peer : actor.livePeer()) {
      Macsec::SakUseInfo const& use = peer.sakUseInfo();
      for (auto const* info : {&use.latestKeyInfo(), &use.oldKeyInfo()}) {
        if (actor.principal() && isKey(*info, *sak)) return info->keyLLPN() != told->lpn();
      }
    }
  }
  return false;
}

}  // namespace

struct KernelDriver::StatusReactor final
    : Vesk::Reactor<Status const, KernelDriver, StatusReactor> {
  StatusReactor(KernelDriver& driver, Vesk::Ptr<Status const> status);
  void onCpStatus(Lumo::IntfId const& intfId) override;
  void onPortStatus(Lumo::IntfId const& intfId) override;
  void onMkpduPeriod() override;
  auto nested() { return std::tie(cpStatus_, portStatus_); }

 private:
  Vesk::NestedReactors<CpStatusReactor, Lumo::IntfId> cpStatus_;
  Vesk::NestedReactors<PortStatusReactor, Lumo::IntfId> portStatus_;
};

struct KernelDriver::CpStatusReactor final
    : Vesk::Reactor<CpStatus const, KernelDriver, CpStatusReactor> {
  using Reactor::Reactor;
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onTxSak() override { owner().workOn(fwkKey()); }
  void onRxSak(AssociationNumber const&) override { owner().workOn(fwkKey()); }
  void onRxSakImmediate() override { owner().workOn(fwkKey()); }
  void onRxLPN(AssociationNumber const& an) override { owner().lowestIs(fwkKey(), an); }
  void onMySsci() override { owner().workOn(fwkKey()); }
  void onPeerSsci() override { owner().workOn(fwkKey()); }
};

struct KernelDriver::PortStatusReactor final
    : Vesk::Reactor<MkaPortStatus const, KernelDriver, PortStatusReactor> {
  using Reactor::Reactor;
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onMySci() override { owner().workOn(fwkKey()); }
};

KernelDriver::StatusReactor::StatusReactor(KernelDriver& driver, Vesk::Ptr<Status const> status)
    : Reactor(driver, std::move(status)) {
  cpStatus_.followAll(owner(), notifier()->cpStatus());
  portStatus_.followAll(owner(), notifier()->portStatus());
}

void KernelDriver::StatusReactor::onCpStatus(Lumo::IntfId const& intfId) {
  cpStatus_.follow(owner(), notifier()->cpStatus(), intfId);
  owner().workOn(intfId);
}

void KernelDriver::StatusReactor::onPortStatus(Lumo::IntfId const& intfId) {
  portStatus_.follow(owner(), notifier()->portStatus(), intfId);
  owner().workOn(intfId);
}

void KernelDriver::StatusReactor::onMkpduPeriod() {
  owner().nextPoll_ = std::min(owner().nextPoll_, Vesk::now() + notifier()->mkpduPeriod());
}

KernelDriver::KernelDriver(Vesk::Ptr<Status const> status, Vesk::Ptr<Macsec::MacSecStatus> slice,
                           MacsecKernel& kernel, KernelDriverOptions options)
    : slice_(std::move(slice)),
      kernel_(kernel),
      reader_(kernel),
      options_(std::move(options)),
      look_(Limits::kFirstRetry, Limits::kLastRetry) {
  follow(std::move(status));
}

KernelDriver::~KernelDriver() { Vesk::retire(status_); }

void KernelDriver::follow(Vesk::Ptr<Status const> status) {
  Vesk::retire(status_);
  if (!status) return;
  status_ = Vesk::make<StatusReactor>(*this, std::move(status));
  status_->hasNotificationActiveIs(true);
  auto const oneReading = round();
  for (auto const& [intfId, port] : ports_) workOn(intfId);
}

void KernelDriver::deviceIs(Lumo::IntfId intfId, DeviceOptions const& device) {
  devices_[intfId] = device;
  auto const port = ports_.find(intfId);
  if (port == ports_.end()) return;
  if (port->second->canStay(device)) return port->second->deviceIs(device);
  int const index = port->second->parent();
  auto mtu = mtus_.extract(intfId);
  interfaceDel(intfId);
  mtus_.insert(std::move(mtu));
  interfaceIs(intfId, index);
}

DeviceOptions KernelDriver::deviceOf(Lumo::IntfId intfId) const {
  auto const found = devices_.find(intfId);
  return found == devices_.end() ? DeviceOptions() : found->second;
}

void KernelDriver::faultIs(Lumo::IntfId intfId, Macsecd::Fault const& fault) const {
  if (options_.faultIs) options_.faultIs(intfId, fault);
}

void KernelDriver::interfaceIs(Lumo::IntfId intfId, int index) {
  auto const known = ports_.find(intfId);
  if (known != ports_.end() && known->second->parent() == index) return;
  if (known != ports_.end()) interfaceDel(intfId);
  if (auto const answer = kernel_.present(); !answer) {
    if (waiting_.empty()) {
      look_.reset();
      nextLook_ = Vesk::now() + look_.next();
    }
    waiting_[intfId] = index;
    ++counts_.refusals;
    Vesk::log(MACSEC_KERNEL_MISSING, intfId, answer.text);
    faultIs(intfId,
            {"the kernel of this machine offers no MACsec: " + answer.text,
             "load its module: 'modprobe macsec'; it is looked for again, at least every minute"});
    return;
  }
  if (waiting_.erase(intfId) > 0) faultIs(intfId, {});
  // The entry makes the engine start a port, which is known when the entry is back.
  auto const entry = slice_->statusIs(intfId);
  auto& history = options_.history ? *options_.history : ownHistory_;
  ports_[intfId] = std::make_unique<KernelPort>(intfId, index, deviceOf(intfId), options_, history,
                                                counts_, holders_, retries_, reader_, entry);
  if (mtus_.contains(intfId)) ports_[intfId]->parentMtuIs(mtus_.at(intfId));
  ports_[intfId]->authorizedIs(!unauthorized_.contains(intfId));
  ports_[intfId]->transmitHeldIs(transmitHeld_.contains(intfId));
  workOn(intfId);
}

void KernelDriver::interfaceMtuIs(Lumo::IntfId intfId, uint32_t mtu) {
  mtus_[intfId] = mtu;
  auto const port = ports_.find(intfId);
  if (port != ports_.end()) port->second->parentMtuIs(mtu);
}

// Its device has gone with it, unless only the name has: then nobody would know it any more.
void KernelDriver::interfaceDel(Lumo::IntfId intfId) {
  waiting_.erase(intfId);
  mtus_.erase(intfId);
  auto port = ports_.extract(intfId);
  if (!port) return;
  if (auto const* const held = port.mapped()->held()) deleteDevice(held->index);
  slice_->statusDel(intfId);
  faultIs(intfId, {});
}

void KernelDriver::deviceChanged(int index, bool isThere) {
  auto const port = holders_.byDevice.find(index);
  if (port == holders_.byDevice.end()) return;
  VESK_ASSERT(port->second->held() && port->second->held()->index == index);
  port->second->deviceChanged(isThere);
}

void KernelDriver::deleteDevice(int index) {
  reader_.expire();
  kernel_.secYDel(index);
}

void KernelDriver::removeOthers() {
  std::vector<MacsecLink> links;
  if (!kernel_.present() || !kernel_.links(links)) return;
  std::set<int> parents;
  for (auto const& [intfId, port] : ports_) parents.insert(port->parent());
  for (MacsecLink const& link : links) {
    if (link.isOurs && !parents.contains(link.parent)) deleteDevice(link.index);
  }
}

void KernelDriver::tellPort(KernelPort& port) {
  if (!status_) return;
  auto const& tree = status_->notifier();
  auto const portStatus = tree->portStatus(port.intfId());
  port.wantedIs(tree->cpStatus(port.intfId()), portStatus ? portStatus->mySci() : Macsec::Sci());
}

// What has no port any more is taken away when all is quiet: another port may be on its way, whose
// device is the same.
void KernelDriver::workOn(Lumo::IntfId intfId) {
  auto const port = ports_.find(intfId);
  if (port == ports_.end() || !status_) return;
  tellPort(*port->second);
  if (port->second->isWanted()) {
    port->second->work();
  } else {
    leftovers_.insert(intfId);
  }
}

void KernelDriver::lowestIs(Lumo::IntfId intfId, AssociationNumber an) {
  auto const key = keyBehind(intfId, an);
  if (!key) return;
  behind_[{intfId, an}] = *key;
  if (nextRaise_ <= Vesk::now()) raiseLowest();
}

std::optional<KeyId> KernelDriver::keyBehind(Lumo::IntfId intfId, AssociationNumber an) const {
  auto const port = ports_.find(intfId);
  auto const cpStatus = status_ ? status_->notifier()->cpStatus(intfId) : nullptr;
  if (port == ports_.end() || !cpStatus) return {};
  auto const portStatus = status_->notifier()->portStatus(intfId);
  if (portStatus && isToldOfAnotherKey(*portStatus, *cpStatus, an)) return {};
  return port->second->keyBehind(an);
}

// The kernel lists all devices or none. Where frames pass, a port only seems to be behind: one
// listing shows it for all that were told meanwhile. One that is behind is looked at once more,
// right before it is raised.
void KernelDriver::raiseLowest() {
  nextRaise_ = Vesk::now() + Limits::kRaisePeriod;
  if (behind_.size() > 1) readThoseBehind();
  for (auto const& [place, key] : std::exchange(behind_, {})) {
    if (keyBehind(place.first, place.second) != key) continue;
    ports_.at(place.first)->raiseLowest(place.second);
  }
}

void KernelDriver::readThoseBehind() {
  SecYTable all;
  if (!all.readFrom(kernel_)) return;
  for (auto const& [place, key] : std::map(behind_)) {
    auto const port = ports_.find(place.first);
    if (port != ports_.end()) port->second->takeListed(all);
  }
}

void KernelDriver::authorizedIs(Lumo::IntfId intfId, bool authorized) {
  if (authorized) {
    unauthorized_.erase(intfId);
  } else {
    unauthorized_.insert(intfId);
  }
  auto const port = ports_.find(intfId);
  if (port != ports_.end()) port->second->authorizedIs(authorized);
}

void KernelDriver::transmitHeldIs(Lumo::IntfId intfId, bool held) {
  if (held) {
    transmitHeld_.insert(intfId);
  } else {
    transmitHeld_.erase(intfId);
  }
  auto const port = ports_.find(intfId);
  if (port != ports_.end()) port->second->transmitHeldIs(held);
}

void KernelDriver::removeAll() {
  follow(nullptr);
  for (auto const& [intfId, port] : ports_) port->remove();
}

// Asked in every turn: no port is looked at for it.
double KernelDriver::nextTime() const {
  double next = leftovers_.empty() ? retries_.nextTime() : Vesk::now();
  if (!waiting_.empty()) next = std::min(next, nextLook_);
  if (holders_.number > 0) next = std::min(next, nextPoll_);
  if (!behind_.empty()) next = std::min(next, nextRaise_);
  return next;
}

void KernelDriver::run() {
  double const now = Vesk::now();
  auto const oneReading = round();
  if (!waiting_.empty() && nextLook_ <= now) {
    nextLook_ = now + look_.next();
    for (auto const& [intfId, index] : std::map(waiting_)) interfaceIs(intfId, index);
  }
  workAgain();
  if (nextPoll_ <= now) poll();
  if (!behind_.empty() && nextRaise_ <= now) raiseLowest();
}

void KernelDriver::workAgain() {
  auto const leftovers = std::exchange(leftovers_, {});
  for (Lumo::IntfId const intfId : retries_.due(Vesk::now())) {
    auto const port = ports_.find(intfId);
    if (port != ports_.end()) port->second->work();
  }
  for (Lumo::IntfId const intfId : leftovers) {
    auto const port = ports_.find(intfId);
    if (port != ports_.end() && !port->second->isWanted()) port->second->work();
  }
}

void KernelDriver::poll() {
  double const period = status_ ? status_->notifier()->mkpduPeriod() : Status::mkpduPeriodDefault;
  nextPoll_ = Vesk::now() + period;
  ++counts_.polls;
  SecYTable all;
  if (!all.readFrom(kernel_)) return;
  for (auto const& [intfId, port] : ports_) port->takeListed(all);
}

KernelPort const* KernelDriver::port(Lumo::IntfId intfId) const {
  auto const found = ports_.find(intfId);
  return found != ports_.end() ? found->second.get() : nullptr;
}

SecY const* KernelDriver::held(Lumo::IntfId intfId) const {
  KernelPort const* const found = port(intfId);
  return found ? found->held() : nullptr;
}

std::optional<uint64_t> KernelDriver::packetNumber(Lumo::IntfId intfId) const {
  SecY const* const secY = held(intfId);
  if (!secY) return {};
  for (HeldSa const& sa : secY->txSas) {
    if (sa.an == secY->encodingSa) return sa.packetNumber;
  }
  return {};
}

}  // namespace Linux
