#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "runtime/String8.h"

namespace Codec {

/// A CAK with its name, as an operator gives them: hexadecimal text of 16 or 32 octets, and the
/// name's text.
struct KeyPair {
  Vesk::String8 ckn;
  Vesk::String8 cak;
};

/// What a frame turned out to be.
enum class Verdict : uint8_t {
  /// Whole, and its ICV is right under a key given.
  authentic,
  /// Whole as far as one can tell without its key.
  unknownKey,
  /// Its name is that of a key given, and its ICV is wrong: changed on its way, or made by somebody
  /// who doesn't hold the key.
  forged,
  /// Against the format.
  damaged,
};

/// Writes frames out as text, set by set, under the keys that it was given. It needs no status
/// tree: KEK and ICK are derived from the CAKs, and go with it.
class FrameDump {
 public:
  /// SAKs and CAKs that frames carry are written out in clear if `showKeys`.
  FrameDump(std::span<KeyPair const> keys, bool showKeys);
  ~FrameDump();

  /// Writes an MKPDU: a heading and the fields of each set, whether the ICV is right, and which
  /// octet is wrong, counted from 0 at the destination address. What can be read of a damaged frame
  /// is written too.
  Verdict dump(std::span<uint8_t const> frame, std::ostream& out) const;

 private:
  struct Key;
  class Printer;

  std::vector<std::unique_ptr<Key>> keys_;
  bool showKeys_;
};

}  // namespace Codec
