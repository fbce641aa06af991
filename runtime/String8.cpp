#include "runtime/String8.h"

#include <string.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <ostream>
#include <stdexcept>

namespace Vesk {

namespace {

// Member identifiers and the names of keys are compared with each MKPDU.
constexpr size_t kHotOctets = 48;

}  // namespace

uint32_t hashBytes(void const* bytes, size_t size) {
  auto const* p = static_cast<unsigned char const*>(bytes);
  uint32_t h = 0x811c9dc5;
  for (size_t i = 0; i < size; ++i) h = (h ^ p[i]) * 0x01000193;
  h ^= h >> 16;
  h *= 0x85ebca6b;
  h ^= h >> 13;
  return h;
}

size_t String8::octetsFor(size_t size) { return offsetof(Rep, text) + size + 1; }

// Short texts that are written in place are those of member identifiers, which each MKPDU has.
String8::Rep* String8::blankRep(size_t size, bool secret, Home::Part part) {
  if (size == 0) return nullptr;
  if (size > Rep::kLongest) throw std::length_error("a text of more than 2 GiB");
  size_t const octets = octetsFor(size);
  if (octets > kHotOctets) part = Home::Part::cold;
  auto* rep = static_cast<Rep*>(Home::allocate(octets, part));
  rep->references = 1;
  rep->hash = 0;
  rep->length = size & Rep::kLongest;
  rep->secret = secret;
  rep->text[size] = '\0';
  return rep;
}

String8::Rep* String8::newRep(std::string_view text, bool secret) {
  Rep* rep = blankRep(text.size(), secret);
  if (rep) memcpy(rep->text, text.data(), text.size());
  return rep;
}

// Most texts that differ do so in their first word.
bool String8::hasSameBytes(String8 const& o) const {
  if (!rep_ || !o.rep_ || rep_->length != o.rep_->length) return false;
  char const* a = rep_->text;
  char const* b = o.rep_->text;
  size_t left = rep_->length;
  for (; left >= sizeof(uint64_t); left -= sizeof(uint64_t)) {
    if (memcmp(a, b, sizeof(uint64_t)) != 0) return false;
    a += sizeof(uint64_t);
    b += sizeof(uint64_t);
  }
  return left == 0 || memcmp(a, b, left) == 0;
}

void String8::acquireAtomically() const {
  std::atomic_ref(rep_->references).fetch_add(1, std::memory_order_relaxed);
}

void String8::releaseAtomically() {
  if (std::atomic_ref(rep_->references).fetch_sub(1) == 1) lastCopyGone();
}

void String8::lastCopyGone() {
  if (rep_->secret) explicit_bzero(rep_->text, rep_->length);
  Home::release(rep_, octetsFor(rep_->length));
}

// The hash of a secret isn't kept.
uint32_t String8::newHash() const {
  uint32_t const hash = hashBytes(charPtr(), length());
  if (!rep_ || rep_->secret) return hash;
  std::atomic_ref(rep_->hash).store(hash, std::memory_order_relaxed);
  return hash;
}

String8 String8::secret(std::string_view text) {
  String8 s;
  s.rep_ = newRep(text, true);
  return s;
}

String8 String8::from(size_t from) const {
  if (from >= length()) return String8();
  String8 rest;
  rest.rep_ = newRep(view().substr(from), rep_->secret);
  return rest;
}

String8 String8::operator+(String8 const& o) const {
  if (o.empty()) return *this;
  if (empty()) return o;
  String8 sum;
  sum.rep_ = blankRep(length() + o.length(), rep_->secret || o.rep_->secret);
  memcpy(sum.rep_->text, charPtr(), length());
  memcpy(sum.rep_->text + length(), o.charPtr(), o.length());
  return sum;
}

std::ostream& operator<<(std::ostream& out, String8 const& s) { return out << s.view(); }

}  // namespace Vesk
