#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "runtime/PtrInterface.h"

namespace Vesk {

/// FNV-1a over bytes with a final mix: the hash of every text of the runtime, stable for one build.
uint32_t hashBytes(void const* bytes, size_t size);

/// An immutable, reference-counted byte string with a length. A copy shares the bytes; the empty
/// string has none. The bytes are followed by a NUL that isn't part of the text.
class String8 {
 public:
  String8() = default;
  String8(char const* text) : String8(std::string_view(text)) {}
  String8(std::string const& text) : String8(std::string_view(text)) {}
  String8(std::string_view text) : rep_(newRep(text, false)) {}
  String8(String8 const& o) : rep_(o.rep_) {
    if (rep_) acquire();
  }
  String8(String8&& o) noexcept : rep_(std::exchange(o.rep_, nullptr)) {}
  ~String8() {
    if (rep_) release();
  }
  String8& operator=(String8 o) noexcept {
    std::swap(rep_, o.rep_);
    return *this;
  }

  /// A text whose bytes are wiped when the last copy of it goes: clear keys live in these.
  static String8 secret(std::string_view text);
  /// A string of `size` bytes whose content `fill(char*)` writes before anybody else sees it.
  template <class Fill>
  static String8 filled(size_t size, Fill fill) {
    String8 s;
    s.rep_ = blankRep(size, false, Home::Part::hot);
    if (s.rep_) fill(s.rep_->text);
    return s;
  }
  template <class Fill>
  static String8 secretFilled(size_t size, Fill fill) {
    String8 s;
    s.rep_ = blankRep(size, true);
    if (s.rep_) fill(s.rep_->text);
    return s;
  }

  size_t length() const { return rep_ ? rep_->length : 0; }
  size_t size() const { return length(); }
  bool empty() const { return rep_ == nullptr; }
  char const* charPtr() const { return rep_ ? rep_->text : ""; }
  std::string_view view() const { return {charPtr(), length()}; }
  /// Whether both share their bytes: quicker than `==`, and true for fewer.
  bool isCopyOf(String8 const& o) const { return rep_ == o.rep_; }
  /// Worked out once for all copies.
  uint32_t hash() const { return rep_ && rep_->hash != 0 ? rep_->hash : newHash(); }
  /// The bytes from `from` on; the empty string when there are none.
  String8 from(size_t from) const;

  String8 operator+(String8 const& o) const;
  String8& operator+=(String8 const& o) { return *this = *this + o; }
  friend bool operator==(String8 const& a, String8 const& b) {
    return a.rep_ == b.rep_ || a.hasSameBytes(b);
  }
  friend bool operator==(String8 const& a, char const* b) {
    return a.view() == std::string_view(b);
  }
  friend std::strong_ordering operator<=>(String8 const& a, String8 const& b) {
    return a.view() <=> b.view();
  }

 private:
  struct Rep {
    static constexpr uint32_t kLongest = 0x7fffffff;
    uint32_t references;
    uint32_t hash;  // 0 until it is first asked for
    uint32_t length : 31;
    uint32_t secret : 1;
    char text[1];
  };
  static size_t octetsFor(size_t size);
  static Rep* blankRep(size_t size, bool secret, Home::Part part = Home::Part::cold);
  static Rep* newRep(std::string_view text, bool secret);
  bool hasSameBytes(String8 const& o) const;
  void acquire() const {
    if (VFPtrInterface::enableThreadSafePointers) [[unlikely]] {
      acquireAtomically();
    } else {
      ++rep_->references;
    }
  }
  void release() {
    if (VFPtrInterface::enableThreadSafePointers) [[unlikely]] {
      releaseAtomically();
    } else if (--rep_->references == 0) [[unlikely]] {
      lastCopyGone();
    }
  }
  void acquireAtomically() const;
  void releaseAtomically();
  void lastCopyGone();
  uint32_t newHash() const;

  Rep* rep_ = nullptr;
};

std::ostream& operator<<(std::ostream& out, String8 const& s);

/// The names of entities.
using Name = String8;

}  // namespace Vesk
