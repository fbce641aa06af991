#include "host/config/KeyMask.h"

#include <algorithm>
#include <cctype>

#include "host/text/Diagnostic.h"

namespace Macsecd {

namespace {

/// A mask is this, eleven digits of the word's number, and more digits up to the word's length. No
/// word that may be a key is shorter than its number.
constexpr char kStart = '\x05';
constexpr char kDigits[] = "\x01\x02\x03\x04";
constexpr size_t kNumberDigits = 11;
static_assert(shortestKeyWord > kNumberDigits);

bool isWord(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; }
/// What people put between the octets of a key.
bool isSeparator(char c) { return std::string_view(":-._ ").find(c) != std::string_view::npos; }

/// Behind the escape of a quoted text that begins here with a backslash.
size_t behindEscape(std::string_view text, size_t at) {
  if (at + 1 >= text.size()) return text.size();
  size_t const digits = text[at + 1] == 'x' ? 2 : text[at + 1] == 'u' ? 4 : 0;
  return std::min(text.size(), at + 2 + (text[at + 1] == 'U' ? 8 : digits));
}

/// Behind the words that begin here, with single separators between them. An anchor, an alias and a
/// tag end with a blank.
size_t behindStretch(std::string_view text, size_t at) {
  bool const isProperty = at > 0 && std::string_view("&*!").find(text[at - 1]) < 3;
  while (at < text.size() && isWord(text[at])) {
    while (at < text.size() && isWord(text[at])) ++at;
    bool const goesOn = at + 1 < text.size() && isSeparator(text[at]) && isWord(text[at + 1]);
    if (goesOn && !(isProperty && text[at] == ' ')) ++at;
  }
  return at;
}

}  // namespace

KeyMask::KeyMask(std::string_view text) : text_(text), masked_(text.size(), ' ') {
  for (size_t at = 0; at < text.size();) {
    size_t end = at + 1;
    if (text[at] == '\\') end = behindEscape(text, at);
    if (isWord(text[at])) {
      end = behindStretch(text, at);
      maskStretch(at, end);
    } else {
      text.copy(masked_.data() + at, end - at, at);
    }
    at = end;
  }
}

// A stretch of words is a key in parts, or has keys among its words, or none.
void KeyMask::maskStretch(size_t begin, size_t end) {
  if (mayBeKey(text_.substr(begin, end - begin))) return mask(begin, end);
  for (size_t at = begin; at < end;) {
    size_t word = at;
    while (word < end && isWord(text_[word])) ++word;
    if (mayBeKey(text_.substr(at, word - at))) {
      mask(at, word);
    } else {
      text_.copy(masked_.data() + at, word - at, at);
    }
    if (word < end) masked_[word] = text_[word];
    at = word + 1;
  }
}

void KeyMask::mask(size_t begin, size_t end) {
  std::string_view const word = text_.substr(begin, end - begin);
  auto const [place, isNew] = numbers_.emplace(word, words_.size());
  if (isNew) words_.push_back(word);
  size_t number = place->second;
  masked_[begin] = kStart;
  for (size_t at = begin + 1; at < end; ++at, number /= 4) masked_[at] = kDigits[number % 4];
}

// The word of a mask that a text begins with; none if it doesn't, or if the mask isn't whole.
std::string_view KeyMask::behind(std::string_view text) const {
  if (text.size() <= kNumberDigits || text[0] != kStart) return {};
  size_t number = 0;
  for (size_t at = kNumberDigits; at > 0; --at) {
    number = 4 * number + static_cast<size_t>(text[at] - kDigits[0]);
  }
  if (number >= words_.size() || words_[number].size() > text.size()) return {};
  return words_[number];
}

Vesk::String8 KeyMask::clear(std::string_view masked) const {
  return Vesk::String8::secretFilled(masked.size(), [&](char* text) {
    for (size_t at = 0; at < masked.size();) {
      std::string_view const word = behind(masked.substr(at));
      std::string_view const piece = word.empty() ? masked.substr(at, 1) : word;
      std::ranges::copy(piece, text + at);
      at += piece.size();
    }
  });
}

bool KeyMask::hides(std::string_view masked) const {
  for (size_t at = 0; at < masked.size();) {
    std::string_view const word = behind(masked.substr(at));
    if (word.empty()) return false;
    at += word.size();
  }
  return true;
}

size_t KeyMask::controlCharacter(std::string_view text) {
  auto const found = std::ranges::find_if(text, [](char c) {
    return std::iscntrl(static_cast<unsigned char>(c)) != 0 && c != '\t' && c != '\n' && c != '\r';
  });
  return static_cast<size_t>(found - text.begin());
}

}  // namespace Macsecd
