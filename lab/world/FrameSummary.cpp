#include "lab/world/FrameSummary.h"

#include <fmt/format.h>

#include "model/EapolType.h"
#include "model/MacsecConstants.h"

namespace Lab {

namespace {

using Octets = std::span<uint8_t const>;

//  0 | destination (6) | source (6) | EtherType (2) |
// 14 | version | type | body length (2) |
// 18 | parameter sets, the basic one first: type, flags, flags and body length (2), body |
constexpr size_t kEtherType = 12;
constexpr size_t kEapolType = 15;
constexpr size_t kBodyLength = 16;
constexpr size_t kSets = 18;
// In the basic parameter set, whose first octet is a version and not a type.
constexpr size_t kMemberId = 12;
constexpr size_t kMessageNumber = 24;
constexpr size_t kCkn = 32;

uint32_t number(Octets octets) {
  uint32_t value = 0;
  for (uint8_t const octet : octets) value = value << 8 | octet;
  return value;
}

std::string hex(Octets octets) {
  return fmt::format("{:02x}", fmt::join(octets.begin(), octets.end(), ""));
}

constexpr uint8_t kIcvIndicator = 255;

size_t bodyLength(Octets set) { return number(set.subspan(2, 2)) & 0xfff; }

std::string nameOf(uint8_t type) {
  switch (type) {
    case 1:
      return "live-peers";
    case 2:
      return "potential-peers";
    case 3:
      return "sak-use";
    case 4:
      return "dist-sak";
    case 5:
      return "dist-cak";
    case kIcvIndicator:
      return "icv-indicator";
    default:
      return fmt::format("type-{}", type);
  }
}

void readBasicSet(Octets set, FrameSummary& summary) {
  summary.memberId = hex(set.subspan(kMemberId, 12));
  summary.messageNumber = number(set.subspan(kMessageNumber, 4));
  summary.ckn = hex(set.subspan(kCkn));
}

}  // namespace

FrameSummary summaryOf(Octets frame) {
  FrameSummary summary;
  if (frame.size() < kSets || number(frame.subspan(kEtherType, 2)) != 0x888e ||
      frame[kEapolType] != Macsec::EapolType::eapMka) {
    return summary;
  }
  size_t const length = number(frame.subspan(kBodyLength, 2));
  Octets sets = frame.subspan(kSets, std::min(length, frame.size() - kSets));
  constexpr size_t header = 4, icv = 16, word = 4;
  for (bool first = true; sets.size() >= header + icv; first = false) {
    // Nothing but the ICV follows it, whatever length it names.
    if (!first && sets[0] == kIcvIndicator) {
      summary.sets.push_back(nameOf(sets[0]));
      break;
    }
    size_t const body = bodyLength(sets);
    if (header + body + icv > sets.size()) break;
    if (first && header + body < kCkn) break;
    if (first) {
      readBasicSet(sets.first(header + body), summary);
    } else {
      summary.sets.push_back(nameOf(sets[0]));
    }
    size_t const padded = (header + body + word - 1) / word * word;
    sets = sets.subspan(std::min(padded, sets.size()));
  }
  return summary;
}

}  // namespace Lab
