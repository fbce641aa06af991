#include "platform/SameKey.h"

#include "platform/SecretOctets.h"
#include "platform/WardcodeLib.h"

namespace Macsec {

namespace {

std::span<uint8_t const> octetsOf(Vesk::String8 const& text) {
  return {reinterpret_cast<uint8_t const*>(text.charPtr()), text.size()};
}

}  // namespace

// Clear texts are wiped when the last copy goes.
bool isSameKey(Vesk::String8 const& stored, Vesk::String8 const& other) {
  Vesk::String8 const one = WardcodeLib::doDecodeKey(stored);
  Vesk::String8 const two = WardcodeLib::doDecodeKey(other);
  if (one.empty() || two.empty()) return stored == other;
  return equalInConstantTime(octetsOf(one), octetsOf(two));
}

}  // namespace Macsec
