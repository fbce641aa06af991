#include <algorithm>

#include "host/config/DeviceName.h"
#include "linux/kernel/KernelPort.h"
#include "runtime/Log.h"
#include "runtime/World.h"

// What a port knows of the kernel, and how it came to know it.

namespace Linux {

namespace {

Vesk::LogHandle const MACSEC_DEVICE_OF_FORMER_NAME(
    "MACSEC_DEVICE_OF_FORMER_NAME", Vesk::LogSeverity::warning,
    "The device of interface %s still has its former name, %s; it will be %s when it is made anew",
    "Devices had another default name in former versions. One that is there stays in use.",
    "Give what stands on the device the new name, or write the former one as 'device' of the "
    "interface.",
    0.0, 0.0);

struct FoundDevice {
  MacsecLink const* link;
  SecY const* secY;
};

// The device of this name among those on an interface; nothing if there is none.
std::optional<FoundDevice> deviceOf(std::string const& name, std::vector<MacsecLink> const& links,
                                    SecYTable const& all) {
  auto const link = std::ranges::find(links, name, &MacsecLink::name);
  SecY const* const secY = link == links.end() ? nullptr : all.of(link->index);
  if (!secY) return {};
  return FoundDevice{&*link, secY};
}

uint64_t notValidFrames(SecY const& secY) {
  uint64_t frames = 0;
  for (HeldRxSc const& sc : secY.rxScs) frames += sc.counters.notValid;
  return frames;
}

}  // namespace

bool KernelPort::readKernel() {
  if (known_) return true;
  auto const* const reading =
      reader_.read([this](auto const& answer, char const* what) { return did(answer, what); });
  if (!reading) return false;
  takeFrom(reading->links.on(parent_), reading->secYs);
  known_ = true;
  return true;
}

// A device can't be renamed while it is up, and what stands on it would go if it went down: one of
// the former name stays.
void KernelPort::takeFrom(std::vector<MacsecLink> const& links, SecYTable const& all) {
  std::string const wanted = nameOf(intfId_, device_);
  std::string const former = Macsecd::formerDeviceName(intfId_.stringValue().view());
  auto const kind = wantedKind();
  auto found = deviceOf(wanted, links, all);
  if (!found && device_.name.empty() && kind) {
    found = deviceOf(former, links, all);
    if (found && found->secY->sci != kind->sci) found.reset();
  }
  std::string const before = std::exchange(name_, found ? found->link->name : wanted);
  if (name_ == former && before != former && wanted != former) {
    Vesk::log(MACSEC_DEVICE_OF_FORMER_NAME, intfId_, former, wanted);
  }
  upWanted_ = found && !found->link->up;
  removeOthers(links, found ? found->link->index : 0);
  mtu_ = 0;
  take(found ? found->secY : nullptr);
  if (!held_) return;
  for (HeldRxSc const& sc : held_->rxScs) {
    for (HeldSa const& sa : sc.sas) formerKeys_.isFound(AssociationNumber(sa.an));
  }
}

KernelAnswer KernelPort::deleteDevice(int index) {
  reader_.expire();
  return kernel_.secYDel(index);
}

// A former process has made them, under another name: the kernel has one device for one SCI.
void KernelPort::removeOthers(std::vector<MacsecLink> const& links, int index) {
  for (MacsecLink const& link : links) {
    if (!link.isOurs || link.index == index) continue;
    if (did(deleteDevice(link.index), "remove a former device")) ++counts_.devicesRemoved;
  }
}

// Another port's device may have the index of one that is gone.
void KernelPort::hold(SecY const* secY) {
  if (held_) {
    auto const known = holders_.byDevice.find(held_->index);
    if (known != holders_.byDevice.end() && known->second == this) holders_.byDevice.erase(known);
    --holders_.number;
  }
  held_.reset();
  if (!secY) return;
  held_ = *secY;
  holders_.byDevice[held_->index] = this;
  ++holders_.number;
}

void KernelPort::take(SecY const* secY) {
  hold(secY);
  if (!held_) return;
  for (HeldSa const& sa : held_->txSas) {
    history_.noteSent(intfId_, sakIdOf(sa.keyId), sa.ssci, sa.packetNumber);
    if (reserved_ && reserved_->first == sa.keyId) reserved_.reset();
  }
  for (HeldRxSc const& sc : held_->rxScs) {
    for (HeldSa const& sa : sc.sas) {
      history_.noteReceived(intfId_, sakIdOf(sa.keyId), sc.sci, sa.packetNumber);
    }
  }
}

// Nothing else has changed, so that the kernel isn't asked for all there is.
bool KernelPort::readMade() {
  MacsecLink link;
  SecY secY;
  if (!did(kernel_.device(name_, link, secY), "read its device")) return false;
  upWanted_ = !link.up;
  mtu_ = 0;
  take(&secY);
  known_ = true;
  return true;
}

void KernelPort::takeListed(SecYTable const& all) {
  if (!known_ || working_) return;
  if (held_) {
    SecY const* const found = all.of(held_->index);
    if (found) lookForNotValid(*found);
    take(found);
  }
  if (!retry_.isRunning()) work();
  reportNumbers();
}

// A channel that was made anew counts from nothing again.
void KernelPort::lookForNotValid(SecY const& now) {
  if (notValidFrames(now) > notValidFrames(*held_)) notValidTime_ = Vesk::now();
}

}  // namespace Linux
