#include "linux/kernel/KernelPort.h"

#include <algorithm>
#include <cerrno>

#include "host/config/DeviceName.h"
#include "linux/process/Limits.h"
#include "runtime/Assert.h"
#include "runtime/World.h"

namespace Linux {

using Macsec::CipherSuite;

namespace {

constexpr uint32_t kMacsecOctets = 32;  // of the SecTAG with SCI, and the ICV

uint64_t cipherOf(CipherSuite suite) {
  switch (suite) {
    case CipherSuite::gcmAesXpn128:
      return kGcmAesXpn128;
    case CipherSuite::gcmAesXpn256:
      return kGcmAesXpn256;
    default:
      return 0;
  }
}

}  // namespace

std::string KernelPort::nameOf(Lumo::IntfId intfId, DeviceOptions const& device) {
  if (!device.name.empty()) return device.name;
  return Macsecd::defaultDeviceName(intfId.stringValue().view());
}

KernelPort::KernelPort(Lumo::IntfId intfId, int parent, DeviceOptions device,
                       KernelDriverOptions const& options, Macsecd::KeyHistory& history,
                       KernelCounts& counts, Holders& holders, Retries& retries,
                       KernelReader& reader, Vesk::Ptr<Macsec::MacSecIntfStatus> report)
    : intfId_(intfId),
      parent_(parent),
      options_(options),
      history_(history),
      counts_(counts),
      holders_(holders),
      retries_(retries),
      reader_(reader),
      kernel_(reader.kernel()),
      report_(std::move(report)),
      device_(std::move(device)),
      name_(nameOf(intfId, device_)),
      retry_(Limits::kFirstRetry, Limits::kLastRetry) {}

KernelPort::~KernelPort() {
  hold(nullptr);
  retries_.del(intfId_);
  VESK_DEBUG_ASSERT(std::ranges::none_of(holders_.byDevice,
                                         [this](auto const& one) { return one.second == this; }));
}

void KernelPort::wantedIs(Vesk::Ptr<Macsec::CpStatus const> cpStatus, Macsec::Sci const& mySci) {
  cpStatus_ = std::move(cpStatus);
  SciNumber const former = std::exchange(mySci_, sciNumber(mySci));
  if (former != mySci_ && !held_) known_ = false;
}

// A report may make the engine ask for the next thing at once: that is done in another pass.
void KernelPort::work() {
  again_ = true;
  if (working_) return;
  working_ = true;
  bool isDone = true;
  while (again_) {
    again_ = false;
    problems_.clear();
    isDone = pass();
  }
  working_ = false;
  showProblems();
  tellIfChanged();
  if (!isDone) return tryAgainLater();
  retry_.reset();
  retryTimeIs(formerKeys_.nextTime());
}

// Each step ends with its reports: what stands behind them in a pass may have changed by then.
bool KernelPort::pass() {
  if (!readKernel()) return false;
  if (!cpStatus_) return device_.standing ? keepStanding() : removeDevice();
  if (mySci_ == 0) return true;
  if (!setUpDevice()) return false;
  if (again_ || !cpStatus_) return true;
  bool const isReceived = setUpReceive();
  if (again_) return true;
  return setUpTransmit() && isReceived;
}

// A change of what is asked for is tried at once, and puts off nothing.
void KernelPort::tryAgainLater() {
  if (retry_.isRunning() && Vesk::now() < retryTime_) return;
  retryTimeIs(Vesk::now() + retry_.next());
}

void KernelPort::retryTimeIs(double time) {
  if (std::exchange(retryTime_, time) != time) retries_.timeIs(intfId_, time);
}

std::optional<DeviceKind> KernelPort::wantedKind() const {
  if (!cpStatus_) return device_.standing;
  return DeviceKind{mySci_, cipherOf(cpStatus_->cipher()), cpStatus_->includeSci()};
}

bool KernelPort::removeDevice() {
  if (!held_) {
    reportNothing();
    return true;
  }
  auto const answer = deleteDevice(held_->index);
  if (answer.error != ENODEV && !did(answer, "remove the device")) return false;
  ++counts_.devicesRemoved;
  hold(nullptr);
  reportNothing();
  return true;
}

// Whatever is attached to the device stays while there is no port.
bool KernelPort::keepStanding() {
  if (!setUpDevice()) return false;
  if (cpStatus_) return true;
  bool const isBare = dropOtherChannels(0) && dropOtherTransmitSas(nullptr);
  reportNothing();
  return isBare;
}

bool KernelPort::setUpDevice() {
  auto const wanted = wantedKind();
  if (wanted->cipher == 0) {
    refuse(kMakeDevice, {"the cipher suite is none", "give its profile a 'cipher-suite'"});
    return false;
  }
  bool const isAdopted = held_ && DeviceKind{held_->sci, held_->cipher, held_->sendSci} == wanted;
  if (held_ && !isAdopted && !removeDevice()) return false;
  if (wantedKind() != wanted) return true;
  if (!held_ && (!make(*wanted) || !held_)) {
    reportNothing();
    return false;
  }
  if (!setSettings()) return false;
  setMtu();
  if (isAdopted && cpStatus_ && !report_->configured()) ++counts_.devicesAdopted;
  upIfItCan();
  showAuthorized();
  if (!cpStatus_) return true;
  report_->secHdrSizeIs(wanted->sendSci ? Macsec::Constants::secHdrSizeWithSci
                                        : Macsec::Constants::secHdrSize);
  report_->configuredIs(true);
  return true;
}

bool KernelPort::make(DeviceKind const& kind) {
  name_ = nameOf(intfId_, device_);
  if (name_.size() > Macsecd::maxDeviceName) {
    refuse(kMakeDevice, {"the name has more than 15 characters",
                         "give the interface a shorter 'device' in the configuration"});
    return false;
  }
  NewSecY wanted;
  wanted.name = name_;
  wanted.parent = parent_;
  wanted.sci = kind.sci;
  wanted.cipher = kind.cipher;
  wanted.sendSci = kind.sendSci;
  wanted.dormant = options_.dormant;
  wanted.settings.window = device_.replayWindow;
  if (!did(kernel_.secYAdd(wanted), kMakeDevice)) return false;
  ++counts_.devicesMade;
  ++devicesMade_;
  shown_.reset();
  known_ = false;
  return readMade();
}

bool KernelPort::setSettings() {
  VESK_ASSERT(held_);
  SecYSettings wanted;
  wanted.window = device_.replayWindow;
  if (held_->settings == wanted) return true;
  if (!did(kernel_.settingsIs(held_->index, wanted), "set up the device")) return false;
  held_->settings = wanted;
  return true;
}

// The kernel lowers the device's with the interface's, and never raises it. In between it is the
// operator's: nobody sets it back.
void KernelPort::setMtu() {
  if (parentMtu_ <= kMacsecOctets) return;
  uint32_t const most = parentMtu_ - kMacsecOctets;
  if (device_.mtu > most) refuseMtu();
  uint32_t const wanted = device_.mtu == 0 ? most : std::min(device_.mtu, most);
  if (mtu_ == wanted || !did(kernel_.mtuIs(held_->index, wanted), "set the MTU of the device")) {
    return;
  }
  mtu_ = wanted;
}

void KernelPort::parentMtuIs(uint32_t mtu) {
  if (std::exchange(parentMtu_, mtu) == mtu) return;
  mtu_ = 0;
  work();
}

// A device can't be up while its parent is down: later, then.
void KernelPort::upIfItCan() {
  if (!held_ || !upWanted_) return;
  auto const answer = kernel_.linkUp(held_->index);
  if (answer.error == ENETDOWN || !did(answer, "bring up the device")) return;
  upWanted_ = false;
}

void KernelPort::authorizedIs(bool authorized) {
  authorized_ = authorized;
  showAuthorized();
}

void KernelPort::showAuthorized() {
  bool const isShown = authorized_ && cpStatus_;
  if (!held_ || upWanted_ || !options_.dormant || shown_ == isShown) return;
  if (did(kernel_.authorizedIs(held_->index, isShown), "set the state of the device")) {
    shown_ = isShown;
  }
}

void KernelPort::tellIfChanged() {
  std::tuple<int, bool, bool> now = {0, false, false};
  if (held_) now = {held_->index, sends(*held_), receives(*held_)};
  if (std::exchange(toldOf_, now) != now && options_.changed) options_.changed(intfId_);
}

// The kernel forgets what it was told when a device goes down, and makes it dormant again. One that
// has gone is made anew when all of this turn has been heard: its parent may be going too.
void KernelPort::deviceChanged(bool isThere) {
  shown_.reset();
  if (isThere) {
    showAuthorized();
    if (options_.changed) options_.changed(intfId_);
    return;
  }
  take(nullptr);
  known_ = false;
  reader_.expire();
  retryTimeIs(Vesk::now());
  tellIfChanged();
}

void KernelPort::transmitHeldIs(bool held) {
  if (std::exchange(transmitHeld_, held) != held) work();
}

void KernelPort::deviceIs(DeviceOptions const& device) {
  if (std::exchange(device_, device) == device) return;
  if (!held_) known_ = false;
  work();
}

bool KernelPort::canStay(DeviceOptions const& device) const {
  return device.name == device_.name || nameOf(intfId_, device) == name_;
}

void KernelPort::remove() {
  cpStatus_ = nullptr;
  device_.standing.reset();
  work();
}

}  // namespace Linux
