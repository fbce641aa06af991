#include <fmt/format.h>

#include <algorithm>

#include "linux/kernel/KernelPort.h"
#include "runtime/Log.h"

namespace Linux {

namespace {

Vesk::LogHandle const MACSEC_KERNEL_REFUSED(
    "MACSEC_KERNEL_REFUSED", Vesk::LogSeverity::error,
    "The kernel refuses to %s on interface %s (%s): %s; %s",
    "A request that the installation of a MACsec key needs was answered with an error. The port "
    "stays as it is, and the request is made again in a while.",
    "Do what the message says.", 0.0, 0.0);

Vesk::LogHandle const MACSEC_KEY_REFUSED(
    "MACSEC_KEY_REFUSED", Vesk::LogSeverity::error, "Interface %s (%s) can't %s: %s; %s",
    "A key or a device can't or mustn't be handed to the kernel. The port goes on as it was.",
    "Do what the message says.", 0.0, 0.0);

Vesk::LogHandle const MACSEC_MTU_TOO_LARGE(
    "MACSEC_MTU_TOO_LARGE", Vesk::LogSeverity::warning,
    "The device %s can't have the MTU %s, for interface %s has %s; it has %s",
    "MACsec takes 32 octets of what the interface below leaves.",
    "Raise the MTU of the interface, or lower or leave out 'mtu' in the configuration.", 0.0, 0.0);

}  // namespace

void KernelPort::reportNothing() {
  report_->txSaStatusDel();
  report_->rxSaStatusDelAll();
  report_->configuredIs(false);
}

// First what goes, then what comes: a report of what came may change what is asked for.
void KernelPort::reportReceive() {
  std::vector<Sak> came;
  for (uint8_t an = 0; an <= AssociationNumber::max; ++an) {
    AssociationNumber const number(an);
    bool isThere = false;
    for (HeldRxSc const& sc : held_->rxScs) {
      for (HeldSa const& sa : sc.sas) isThere = isThere || (sa.an == an && isHeldAsWanted(sa));
    }
    auto const former = report_->rxSaStatus(number);
    Sak const* const sak = isThere ? cpStatus_->rxSak(number) : nullptr;
    if (former && sak && former->keyId() == sak->keyMsgId() && former->keyNum() == sak->keyNum()) {
      continue;
    }
    if (former) report_->rxSaStatusDel(number);
    if (sak) came.push_back(*sak);
  }
  for (Sak const& sak : came) {
    if (!again_) report_->rxSaStatusIs(sak.an(), sak.keyMsgId(), sak.keyNum());
  }
}

// Behind receive under the same key: the engine asks no more for a receive key once it has heard
// that the transmit key is there.
void KernelPort::reportTransmit() {
  Sak const sak = cpStatus_->txSak();
  auto const keyId = keyIdOf(sak);
  HeldSa const* const sa = sak != Sak() && keyId ? txSa(*keyId) : nullptr;
  bool const isReceived = !cpStatus_->rxSak(sak.an()) || report_->rxSaStatus(sak.an());
  if (sa && sa->on && sa->an == sak.an().value() && held_->encodingSa == sa->an && isReceived) {
    report_->txSaStatusIs(sak.an(), sak.keyMsgId(), sak.keyNum());
  } else if (report_->txSaStatus()) {
    report_->txSaStatusDel();
  }
}

// The tree has room for the lower half of a packet number.
void KernelPort::reportNumbers() {
  if (!held_) return;
  if (auto const tx = report_->txSaStatus()) {
    for (HeldSa const& sa : held_->txSas) {
      if (sa.an == tx->associationNumber().value())
        tx->lpnIs(static_cast<uint32_t>(sa.packetNumber));
    }
  }
  for (HeldRxSc const& sc : held_->rxScs) {
    for (HeldSa const& sa : sc.sas) {
      auto const rx = report_->rxSaStatus(AssociationNumber(sa.an));
      if (rx) rx->lpnIs(static_cast<uint32_t>(sa.packetNumber));
    }
  }
}

bool KernelPort::did(KernelAnswer const& answer, char const* what) {
  if (answer) return true;
  known_ = false;
  reader_.expire();
  ++counts_.refusals;
  RefusedRequest const request{std::string(intfId_.stringValue().view()), name_,
                               std::string_view(what) == kMakeDevice,
                               options_.masterOf ? options_.masterOf(parent_) : Master()};
  tell(what, {answer.text, remedyOf(answer, request)}, true);
  return false;
}

void KernelPort::refuse(char const* what, Macsecd::Fault const& why) { tell(what, why, false); }

void KernelPort::refuseMtu() {
  std::string const problem =
      fmt::format("have the MTU {}: interface {} has {}, and MACsec takes 32 octets of it",
                  device_.mtu, intfId_.stringValue().view(), parentMtu_);
  if (!isNews(problem, "raise the MTU of the interface, or lower or leave out 'mtu'")) return;
  Vesk::log(MACSEC_MTU_TOO_LARGE, name_, device_.mtu, intfId_, parentMtu_, parentMtu_ - 32);
}

void KernelPort::showProblems() {
  if (options_.faultIs && told_ != problems_) {
    Macsecd::Fault all;
    for (auto const& [problem, cure] : problems_) {
      all.what += (all.what.empty() ? "" : "; ") + name_ + ": can't " + problem;
      if (all.remedy.find(cure) != std::string::npos) continue;
      all.remedy += (all.remedy.empty() ? "" : "; ") + cure;
    }
    options_.faultIs(intfId_, all);
  }
  told_ = std::move(problems_);
  problems_.clear();
}

// Once, until it is over or something else is wrong.
bool KernelPort::isNews(std::string const& problem, std::string const& remedy) {
  return problems_.emplace(problem, remedy).second && !told_.contains(problem);
}

void KernelPort::tell(std::string const& what, Macsecd::Fault const& why, bool byKernel) {
  if (!isNews(what + ": " + why.what, why.remedy)) return;
  if (byKernel) {
    Vesk::log(MACSEC_KERNEL_REFUSED, what, intfId_, name_, why.what, why.remedy);
  } else {
    ++counts_.keysRefused;
    Vesk::log(MACSEC_KEY_REFUSED, intfId_, name_, what, why.what, why.remedy);
  }
}

}  // namespace Linux
