#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <span>

#include "platform/AesCmac.h"

namespace Macsec {

/// The ciphers of a switch whose interfaces share keys: one for each key, which lives as long as
/// somebody holds it. With thousands of interfaces of one profile, what the cipher keeps of the key
/// is at hand for each of them.
class SharedCmacs {
 public:
  /// That of the current world; outside of any, nobody shares it. Never null; a key of a wrong size
  /// gives one without a key.
  static std::shared_ptr<AesCmac> cmac(std::span<uint8_t const> key);

  /// How many there are.
  size_t members() const;
  /// How many it keeps a place for, of those that have gone too.
  size_t remembered() const { return cmacs_.size(); }

 private:
  // What stands for a key: the MAC of nothing under it, which tells nothing of the key.
  using Mark = std::array<uint8_t, AesCmac::kSize>;

  std::shared_ptr<AesCmac> shared(std::shared_ptr<AesCmac> made);
  void sweep();

  std::map<Mark, std::weak_ptr<AesCmac>> cmacs_;
  size_t afterSweep_ = 8;  // how many there were
};

}  // namespace Macsec
