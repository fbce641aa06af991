#include "lab/judge/invariants/NothingInClear.h"

#include <cstring>

#include "lab/data/SecTag.h"

namespace Lab {

namespace {

bool isProtected(std::span<uint8_t const> frame) {
  SecTag tag;
  if (frame.size() < sizeof tag) return false;
  std::memcpy(&tag, frame.data(), sizeof tag);
  return tag.etherType.value() == SecTag::kEtherType &&
         (tag.tciAndAn & SecTag::kTci) == SecTag::kTci;
}

}  // namespace

void NothingInClear::dataSent(double, DataSent const& sent) {
  if (sent.frame.empty() || isProtected(sent.frame)) return;
  breaks("a frame leaves " + sent.from.text() + " in clear");
}

void NothingInClear::dataArrived(double, DataArrived const& arrived) {
  if (arrived.verdict != SecY::Verdict::valid || isProtected(arrived.frame)) return;
  breaks("a frame is taken in clear at " + arrived.to.text());
}

}  // namespace Lab
