#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "platform/KeyWrap.h"
#include "runtime/AtHome.h"
#include "runtime/String8.h"

namespace Codec {

/// The key encrypting key of one actor, and the key that came wrapped under it last.
class Kek : public Vesk::AtHome<Vesk::Home::Part::cold> {
 public:
  /// Forgets what came under the former one.
  void keyIs(std::span<uint8_t const> clear);
  Macsec::KeyWrap const& wrap() const { return wrap_; }

  /// True for a wrapped key that is stored already: it needn't be unwrapped again.
  bool hasStored(std::span<uint8_t const> wrapped) const;
  /// The stored form of a key that arrived wrapped. One that is repeated keeps the stored form that
  /// it got first, and `clear` isn't looked at.
  Vesk::String8 storedKey(std::span<uint8_t const> wrapped, std::span<uint8_t const> clear);

 private:
  static constexpr size_t kMaxWrapped = 40;

  Macsec::KeyWrap wrap_{{}};
  std::array<uint8_t, kMaxWrapped> wrapped_{};
  size_t wrappedSize_ = 0;
  Vesk::String8 stored_;
};

}  // namespace Codec
