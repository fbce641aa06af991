#include "host/watch/FrameEvidence.h"

#include <algorithm>
#include <array>

#include "codec/FrameLayout.h"
#include "platform/Hex.h"
#include "runtime/World.h"

namespace Macsecd {

using Macsec::Sci;

void FrameEvidence::refused(Codec::Refusal const& refusal, std::span<uint8_t const> frame) {
  noteFrame(frame);
  refused_[refusal.subType] = Vesk::now();
  bool const isUnknown = refusal.subType == SubType::unrecognizedCkn;
  if (!isUnknown && refusal.subType != SubType::icvValidationErr) return;
  Codec::FrameLayout layout;
  if (checkEapol(frame, layout) || checkBasicSet(layout)) return;
  NameSeen& seen = isUnknown ? unknown_ : wrong_;
  seen = {Vesk::now(), std::string(Macsec::hexString(layout.name).view())};
}

void FrameEvidence::accepted(Macsec::MkaMessageInfo const& message,
                             std::span<uint8_t const> frame) {
  noteFrame(frame);
  Macsec::MkaInfo const& info = *message.mkaInfo();
  Sci const& sci = info.baseInfo().sci();
  std::erase_if(senders_, [&](Sender const& sender) { return sender.sci == sci; });
  if (senders_.size() == kSenders) senders_.erase(senders_.begin());
  senders_.push_back({sci, Vesk::now()});
  if (info.sakDistInfo() == Macsec::SakDistInfo()) return;
  suiteAt_ = Vesk::now();
  suite_ = info.sakDistInfo().cipherSuite();
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
  auto const found = refused_.find(subType);
  return found != refused_.end() && isRecent(found->second, seconds);
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
