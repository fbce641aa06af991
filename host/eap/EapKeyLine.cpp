#include "host/eap/EapKeyLine.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "host/text/Diagnostic.h"
#include "host/text/JsonMembers.h"
#include "host/text/Limits.h"
#include "platform/Hex.h"
#include "platform/SecretOctets.h"
#include "platform/WardcodeLib.h"

namespace Macsecd {

namespace {

constexpr size_t kMinMskDigits = 32;
constexpr Dot1x::Dot1xType kConfigured = 2;

std::vector<std::string> const kKeyMembers = {"interface",  "type",       "msk",
                                              "session-id", "first-addr", "second-addr"};
std::vector<std::string> const kWithdrawalMembers = {"interface", "withdrawn"};

/// The line is one of the two forms by its members; throws `Fault` when it is neither. A value that
/// nobody asks for is never looked at.
class Line {
 public:
  explicit Line(std::vector<JsonMember> members) : members_(std::move(members)) {
    auto const& expected = isWithdrawal() ? kWithdrawalMembers : kKeyMembers;
    for (JsonMember const& member : members_) checkName(member.name, expected);
    for (std::string const& name : expected) {
      if (!find(name)) throw Fault{fmt::format("'{}' is missing", name), "add it"};
    }
  }

  bool isWithdrawal() const { return find("withdrawn") != nullptr; }
  /// The value as it is written.
  std::string_view raw(std::string_view name) const { return find(name)->value; }
  nlohmann::json value(std::string_view name) const {
    auto value = nlohmann::json::parse(raw(name), nullptr, false);
    if (value.is_discarded()) {
      throw Fault{fmt::format("the value of '{}' is no JSON", name), "write it as JSON wants it"};
    }
    return value;
  }
  std::string text(std::string_view name) const {
    nlohmann::json const v = value(name);
    if (!v.is_string()) {
      throw Fault{fmt::format("'{}' is no text", name), "put it into double quotes"};
    }
    return v.get<std::string>();
  }

 private:
  JsonMember const* find(std::string_view name) const {
    auto const found = std::ranges::find(members_, name, &JsonMember::name);
    return found == members_.end() ? nullptr : &*found;
  }
  void checkName(std::string_view name, std::vector<std::string> const& expected) const {
    if (std::ranges::find(expected, name) == expected.end()) {
      // A long name could be a key in the wrong place.
      throw Fault{fmt::format("{} is no member of a {}",
                              name.size() < kMinMskDigits ? quotedWord(name) : "a long name",
                              isWithdrawal() ? "withdrawal" : "key"),
                  remedyForUnknown(name, expected)};
    }
    if (std::ranges::count(members_, name, &JsonMember::name) > 1) {
      throw Fault{fmt::format("'{}' stands twice", name), "say it once"};
    }
  }

  std::vector<JsonMember> const members_;
};

Lumo::IntfId intfIdOf(Line const& line) {
  std::string const name = line.text("interface");
  bool const isPlain = std::ranges::none_of(
      name, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; });
  if (name.empty() || name.size() > Limits::kInterfaceName || !isPlain) {
    throw Fault{
        "'interface' is no name of an interface",
        fmt::format("give 1 to {} octets without control characters", Limits::kInterfaceName)};
  }
  return Lumo::IntfId(Vesk::String8(name));
}

Dot1x::Dot1xType typeOf(Line const& line) {
  nlohmann::json const type = line.value("type");
  if (!type.is_number_unsigned() || type.get<uint64_t>() > 255) {
    throw Fault{"'type' is no number from 0 to 255", "give 0 (may be key server) or 1 (may not)"};
  }
  if (type.get<uint64_t>() == kConfigured) {
    throw Fault{"'type' 2 stands for a key that is configured",
                "give 0 (may be key server) or 1 (may not)"};
  }
  return type.get<Dot1x::Dot1xType>();
}

// The digits go from the line into the encoding, and nowhere else.
Vesk::String8 mskOf(Line const& line) {
  std::string_view const raw = line.raw("msk");
  if (!raw.starts_with('"')) throw Fault{"'msk' is no text", "put it into double quotes"};
  std::string_view const digits = raw.substr(1, raw.size() - 2);
  if (!Macsec::isHexOctets(digits)) {
    throw Fault{"'msk' is no even number of hexadecimal digits", "give two digits for each octet"};
  }
  if (digits.size() < kMinMskDigits || digits.size() > 2 * kMaxMskOctets) {
    throw Fault{fmt::format("'msk' has {} digits", digits.size()),
                fmt::format("give {} to {}; EAP makes 128", kMinMskDigits, 2 * kMaxMskOctets)};
  }
  return WardcodeLib::doEncodeKey(Vesk::String8::secret(digits));
}

Vesk::String8 sessionIdOf(Line const& line) {
  std::string const digits = line.text("session-id");
  if (digits.empty() || !Macsec::isHexOctets(digits)) {
    throw Fault{"'session-id' is no even number of hexadecimal digits",
                "give two digits for each octet, and one octet at least"};
  }
  return Vesk::String8(digits);
}

Lumo::EthAddr addrOf(Line const& line, std::string_view name) {
  auto const addr = Lumo::EthAddr::parsed(line.text(name));
  if (addr) return *addr;
  throw Fault{fmt::format("'{}' is no MAC address", name), "write it as 02:00:00:00:00:01"};
}

Dot1x::EapKey keyOf(Line const& line) {
  Lumo::EthAddr const first = addrOf(line, "first-addr");
  Lumo::EthAddr const second = addrOf(line, "second-addr");
  if (first == second) {
    throw Fault{"'first-addr' and 'second-addr' are the same",
                "give the addresses of the two ends of the link, in either order"};
  }
  Dot1x::Dot1xType const type = typeOf(line);
  Vesk::String8 const sessionId = sessionIdOf(line);
  return Dot1x::EapKey(type, mskOf(line), sessionId, first, second);
}

EapKeyNews newsOf(Line const& line) {
  Lumo::IntfId const intfId = intfIdOf(line);
  if (!line.isWithdrawal()) return {intfId, keyOf(line)};
  if (line.raw("withdrawn") == "true") return {intfId, std::nullopt};
  throw Fault{"'withdrawn' isn't true", "leave it out when you publish a key"};
}

Result<EapKeyNews> read(std::string_view text) {
  auto members = jsonMembers(text);
  if (!members) return members.fault();
  try {
    return newsOf(Line(*std::move(members)));
  } catch (Fault& fault) {
    return std::move(fault);
  }
}

}  // namespace

Result<EapKeyNews> readEapKeyLine(std::span<uint8_t> line) {
  struct Wipe {
    ~Wipe() { Macsec::wipe(line); }
    std::span<uint8_t> const line;
  } const wipe{line};
  return read({reinterpret_cast<char const*>(line.data()), line.size()});
}

}  // namespace Macsecd
