#include "host/config/DeviceName.h"

#include <algorithm>
#include <cctype>
#include <cstdint>

namespace Macsecd {

namespace {

constexpr std::string_view kSuffix = "-sec";
constexpr size_t kLongestWhole = maxDeviceName - kSuffix.size();
constexpr size_t kHeadOctets = 4;
constexpr size_t kMarkOctets = 6;

// FNV-1a with 64 bits, written in five bits each.
std::string markOf(std::string_view name) {
  constexpr std::string_view kDigits = "0123456789abcdefghijklmnopqrstuv";
  uint64_t hash = 0xcbf29ce484222325;
  for (char const octet : name) {
    hash = (hash ^ static_cast<unsigned char>(octet)) * 0x100000001b3;
  }
  hash ^= hash >> 32;
  std::string mark;
  for (size_t i = 0; i < kMarkOctets; ++i, hash >>= 5) mark += kDigits[hash % kDigits.size()];
  return mark;
}

// What every program takes for a name.
char plain(char octet) {
  return std::isalnum(static_cast<unsigned char>(octet)) || octet == '-' ? octet : '_';
}

}  // namespace

std::string defaultDeviceName(std::string_view interface) {
  bool const isWhole =
      interface.size() <= kLongestWhole && interface.find('_') == std::string_view::npos;
  std::string name(interface.substr(0, isWhole ? kLongestWhole : kHeadOctets));
  if (isWhole) {
    std::ranges::replace(name, '.', '_');
  } else {
    std::ranges::transform(name, name.begin(), plain);
    name += '-' + markOf(interface);
  }
  return name + std::string(kSuffix);
}

std::string formerDeviceName(std::string_view interface) { return std::string(interface) + ".sec"; }

}  // namespace Macsecd
