#include "host/watch/FrameEvidence.h"

#include <algorithm>
#include <array>

#include "codec/FrameLayout.h"
#include "platform/Hex.h"
#include "runtime/Homes.h"
#include "runtime/World.h"

namespace Macsecd {

using Macsec::Sci;

void FrameEvidence::refused(Codec::Refusal const& refusal, std::span<uint8_t const> frame) {
  noteFrame(frame);
  Vesk::BesideScope const beside(this);
  if (!refused_) refused_ = std::make_unique<Refused>();
  refused_->times[refusal.subType] = Vesk::now();
  bool const isUnknown = refusal.subType == SubType::unrecognizedCkn;
  if (!isUnknown && refusal.subType != SubType::icvValidationErr) return;
  Codec::FrameLayout layout;
  if (checkEapol(frame, layout) || checkBasicSet(layout)) return;
  NameSeen& seen = isUnknown ? refused_->unknown : refused_->wrong;
  seen = {Vesk::now(), std::string(Macsec::hexString(layout.name).view())};
}

void FrameEvidence::accepted(Macsec::MkaMessageInfo const& message,
                             std::span<uint8_t const> frame) {
  noteFrame(frame);
  Macsec::MkaInfo const& info = *message.mkaInfo();
  noteSender(info.baseInfo().sci());
  if (info.sakDistInfo().isDefault()) return;
  suiteAt_ = lastFrame_;
  suite_ = info.sakDistInfo().cipherSuite();
}

// The last of them is the one that sent last.
void FrameEvidence::noteSender(Sci const& sci) {
  if (senders_.empty() || senders_.back().sci != sci) {
    std::erase_if(senders_, [&](Sender const& sender) { return sender.sci == sci; });
    if (senders_.size() == kSenders) senders_.erase(senders_.begin());
    Vesk::BesideScope const beside(this);
    senders_.push_back({sci});
  }
  senders_.back().time = *lastFrame_;
}

void FrameEvidence::noteFrame(std::span<uint8_t const> frame) {
  lastFrame_ = Vesk::now();
  std::array<uint8_t, 6> source;
  if (frame.size() < 2 * source.size()) return;
  std::copy_n(frame.begin() + source.size(), source.size(), source.begin());
  sourceAt_ = lastFrame_;
  source_ = Lumo::EthAddr(source);
}

bool FrameEvidence::isRecent(Time const& time, double seconds) {
  return time && Vesk::now() - *time <= seconds;
}

bool FrameEvidence::anyRefused(SubType subType, double seconds) const {
  if (!refused_) return false;
  auto const found = refused_->times.find(subType);
  return found != refused_->times.end() && isRecent(found->second, seconds);
}

std::optional<std::string> FrameEvidence::unknownName(double seconds) const {
  return refused_ ? refused_->unknown.within(seconds) : std::nullopt;
}

std::optional<std::string> FrameEvidence::wrongName(double seconds) const {
  return refused_ ? refused_->wrong.within(seconds) : std::nullopt;
}

std::optional<std::string> FrameEvidence::NameSeen::within(double seconds) const {
  return isRecent(at, seconds) ? std::optional(name) : std::nullopt;
}

bool FrameEvidence::cameFrom(Lumo::EthAddr const& addr, double seconds) const {
  return isRecent(sourceAt_, seconds) && source_ == addr;
}

std::vector<Sci> FrameEvidence::senders(double seconds) const {
  std::vector<Sci> recent;
  for (Sender const& sender : senders_) {
    if (isRecent(sender.time, seconds)) recent.push_back(sender.sci);
  }
  return recent;
}

std::optional<Macsec::CipherSuite> FrameEvidence::distributedSuite(double seconds) const {
  if (!isRecent(suiteAt_, seconds)) return std::nullopt;
  return suite_;
}

}  // namespace Macsecd
