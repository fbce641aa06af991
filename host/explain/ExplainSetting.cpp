#include <fmt/format.h>

#include "host/explain/Explainer.h"

// What the switch itself lacks: configuration, a key, a link, hardware.

namespace Macsecd {

using Macsec::Cak;

bool Explainer::configuration() {
  auto const& config = *host_.config();
  auto const intfConfig = config.intfConfig(intfId_);
  if (!intfConfig || !config.profile(intfConfig->profileName())) {
    note(CauseKind::notConfigured, "no profile is bound to the interface",
         "name it under 'interfaces' in the configuration, with a profile");
    return false;
  }
  if (config.shutdown()) {
    note(CauseKind::shutDown, "MACsec is off on the whole switch",
         "take 'shutdown' out of the configuration");
    return false;
  }
  auto const& mode = host_.status()->fipsStatus();
  bool const isAsConfigured = mode.fipsRestrictions() == config.fipsRestrictions() &&
                              (mode.fipsModeSuccess() || !config.fipsRestrictions());
  if (host_.running() && isAsConfigured) return true;
  note(CauseKind::fips,
       fmt::format("the process doesn't run in the configured FIPS mode ({})",
                   config.fipsRestrictions() ? "on" : "off"),
       config.fipsRestrictions() ? "install OpenSSL's FIPS provider, or take 'fips' out of the "
                                   "configuration; then start the process again"
                                 : "start the process again");
  return false;
}

// An interface without an `IntfStatus` has neither a key nor 802.1X.
bool Explainer::key() {
  auto const profile = host_.config()->profile(host_.config()->intfConfig(intfId_)->profileName());
  if (!intfStatus_) {
    note(CauseKind::noKey, fmt::format("profile {} has no key", profile->name().view()),
         "give it a 'key', or 'dot1x: true'");
    return false;
  }
  if (profile->dot1xEnabled() && intfStatus_->key() == Cak()) noteDerivedKey(*profile);
  return intfStatus_->key() != Cak() || intfStatus_->defaultKey() != Cak();
}

void Explainer::noteDerivedKey(Macsec::Profile const& profile) {
  auto const* published = host_.eapKeyStatus()->key(intfId_);
  if (published && published->firstAddr() == published->secondAddr()) {
    note(CauseKind::sameAddress,
         fmt::format("the 802.1X key is between {} and itself, so no key can be derived",
                     published->firstAddr().stringValue().view()),
         "make the authentication give the addresses of the two ends");
    return;
  }
  note(CauseKind::waitingForKey, "802.1X hasn't given a key yet",
       "check that the authentication on this interface completes and hands its key over");
}

bool Explainer::link() {
  if (!ethIntf_) {
    note(CauseKind::noInterface, "there is no Ethernet interface of this name",
         "check its name, or wait until it is there; others, such as 'lo', can't have MACsec");
    return false;
  }
  if (ethIntf_->linkStatus() == Interface::linkUp) return true;
  if (host_.isSetDown(intfId_)) {
    note(CauseKind::interfaceDown, "somebody has set the interface down",
         fmt::format("set it up: 'ip link set {} up'", intfId_.stringValue().view()));
    return false;
  }
  note(CauseKind::noLink, "the link is down", "check the cable, the optics and the other end");
  return false;
}

bool Explainer::hardware() {
  std::string const fault = host_.hardwareFault(intfId_);
  if (!fault.empty()) {
    std::string const remedy = host_.hardwareRemedy(intfId_);
    note(CauseKind::hardwareRefuses, fault,
         remedy.empty() ? "remove the obstacle; it is tried again by itself" : remedy);
  }
  if (port_ && cp_) {
    noteDevice();
    return true;
  }
  if (fault.empty()) {
    note(CauseKind::unknownToHardware, "the hardware doesn't offer MACsec on the interface",
         "choose an interface whose hardware offers it, or load its driver");
  }
  return false;
}

// Key agreement goes on without the device; traffic doesn't. A device that is dormant because the
// port is closed is no cause.
void Explainer::noteDevice() {
  HardwareReport const report = host_.hardwareReport(intfId_);
  std::string const name = report.device.empty() ? "" : " " + report.device;
  if (report.deviceState == DeviceState::absent && host_.hardwareFault(intfId_).empty()) {
    note(CauseKind::deviceGone, "the MACsec device of the interface isn't there",
         "wait: it is made anew within seconds; if not, see the messages in the log");
  } else if (report.deviceState == DeviceState::down) {
    note(CauseKind::deviceDown, fmt::format("the MACsec device{} is set down", name),
         fmt::format("bring it up: 'ip link set{} up'", name.empty() ? " DEVICE" : name));
  } else if (passage_ == Passage::deviceDormant) {
    note(CauseKind::deviceDormant,
         fmt::format("the MACsec device{} is dormant, although traffic may pass", name),
         "wait: it is set right within seconds; if not, find out what sets it dormant");
  }
}

// It stands in no way by itself; what stands in the way may be put right in the file already.
void Explainer::noteConfiguration() {
  if (host_.configFault().empty()) return;
  note(CauseKind::formerConfiguration, host_.configFault() + "; the former configuration is",
       "see what 'macsecd --check' says of it, and have it read: macsecctl reload");
}

}  // namespace Macsecd
