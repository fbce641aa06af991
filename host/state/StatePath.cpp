#include "host/state/StatePath.h"

#include <fmt/format.h>

#include <cctype>

namespace Macsecd {

namespace {

bool isPlain(char c) { return c > ' ' && c < '\x7f' && c != '/' && c != '%'; }

char unescaped(std::string_view digits) {
  auto const digit = [](char c) {
    return std::isdigit(static_cast<unsigned char>(c)) ? c - '0' : c - 'a' + 10;
  };
  if (digits.size() != 2 || digits.find_first_not_of("0123456789abcdef") != digits.npos) {
    Vesk::throwParseException("a path with a '%' that two digits don't follow");
  }
  return static_cast<char>(digit(digits[0]) * 16 + digit(digits[1]));
}

}  // namespace

std::string statePath(std::string_view path, std::string_view name) {
  std::string out(path);
  if (!out.empty()) out += '/';
  for (char const c : name) {
    if (isPlain(c)) {
      out += c;
    } else {
      out += fmt::format("%{:02x}", static_cast<unsigned char>(c));
    }
  }
  return out;
}

std::vector<std::string> statePathNames(std::string_view path) {
  std::vector<std::string> names(1);
  for (size_t at = 0; at < path.size(); ++at) {
    if (path[at] == '/') {
      names.emplace_back();
    } else if (path[at] == '%') {
      names.back() += unescaped(path.substr(at + 1, 2));
      at += 2;
    } else {
      names.back() += path[at];
    }
  }
  return names;
}

std::optional<std::string> statePathOf(Vesk::Entity const& entity, Vesk::Entity const& root) {
  if (&entity == &root) return std::string();
  Vesk::Entity const* const parent = entity.parent();
  auto const above = parent ? statePathOf(*parent, root) : std::nullopt;
  auto const place = above ? parent->placeOf(entity) : std::nullopt;
  if (!place) return std::nullopt;
  return statePath(statePath(*above, place->collection), place->key);
}

}  // namespace Macsecd
