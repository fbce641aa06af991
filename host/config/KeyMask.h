#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/String8.h"

namespace Macsecd {

/// A text that may hold keys, for a library that keeps copies of what it reads and wipes none.
/// Whatever looks like a key stands masked in it: the same number of octets, in the same place,
/// that say nothing but which of the words of the text was there. Equal words have equal masks.
///
///     KeyMask const mask(text);
///     auto const tree = parse(mask.masked());
///     Vesk::String8 const word = mask.clear(tree.word());   // wiped with its last copy
///
/// The text has to outlive this, and to be free of the octets that masks are made of: control
/// characters, which no text of an operator needs (`controlCharacter`).
class KeyMask {
 public:
  explicit KeyMask(std::string_view text);

  std::string const& masked() const { return masked_; }
  /// What stands behind a piece of the masked text, after whatever a library did to it.
  Vesk::String8 clear(std::string_view masked) const;
  /// Whether all of a piece is masked, so that nobody has seen any of it.
  bool hides(std::string_view masked) const;

  /// Where a text has a character that isn't allowed; its end if there is none.
  static size_t controlCharacter(std::string_view text);

 private:
  void maskStretch(size_t begin, size_t end);
  void mask(size_t begin, size_t end);
  std::string_view behind(std::string_view mask) const;

  std::string_view const text_;
  std::string masked_;
  std::vector<std::string_view> words_;
  std::map<std::string_view, size_t> numbers_;
};

}  // namespace Macsecd
