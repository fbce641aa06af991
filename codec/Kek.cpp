#include "codec/Kek.h"

#include <algorithm>

#include "platform/Hex.h"
#include "platform/WardcodeLib.h"
#include "runtime/Assert.h"

namespace Codec {

void Kek::keyIs(std::span<uint8_t const> clear) {
  wrap_ = Macsec::KeyWrap(clear);
  wrappedSize_ = 0;
  stored_ = Vesk::String8();
}

bool Kek::hasStored(std::span<uint8_t const> wrapped) const {
  return std::ranges::equal(wrapped, std::span(wrapped_).first(wrappedSize_));
}

Vesk::String8 Kek::storedKey(std::span<uint8_t const> wrapped, std::span<uint8_t const> clear) {
  if (!hasStored(wrapped)) {
    VESK_ASSERT(wrapped.size() <= wrapped_.size());
    stored_ = WardcodeLib::doEncodeKey(Macsec::secretHexString(clear));
    std::ranges::copy(wrapped, wrapped_.begin());
    wrappedSize_ = wrapped.size();
  }
  return stored_;
}

}  // namespace Codec
