#include "host/config/ClearTypes.h"

#include <fmt/format.h>
#include <yaml-cpp/yaml.h>

#include <charconv>

namespace Macsecd {

namespace {

struct Protocol {
  char const* name;
  uint16_t type;
};

// IEEE 802.1AB, IEEE 802.1AX (the slow protocols of IEEE 802.3), IEEE 1588 over Ethernet.
constexpr Protocol kProtocols[] = {{"lldp", 0x88cc}, {"lacp", 0x8809}, {"ptp", 0x88f7}};
constexpr uint16_t kLowest = 0x600;  // below that it is a length
constexpr uint16_t kMacsec = 0x88e5, kEapol = 0x888e, kVlan = 0x8100, kServiceVlan = 0x88a8;

std::optional<uint32_t> numberOf(std::string_view word) {
  if (!word.starts_with("0x") && !word.starts_with("0X")) return {};
  uint32_t number = 0;
  char const* const last = word.data() + word.size();
  auto const [end, error] = std::from_chars(word.data() + 2, last, number, 16);
  if (error == std::errc::result_out_of_range) return UINT32_MAX;
  return error == std::errc() && end == last ? std::optional(number) : std::nullopt;
}

Fault unknown(std::string_view word) {
  std::vector<std::string> names;
  for (Protocol const& protocol : kProtocols) names.push_back(protocol.name);
  return {fmt::format("'clear' knows no protocol {}", quotedWord(word)),
          remedyForUnknown(word, names) + ", or an EtherType as 0x88cc"};
}

}  // namespace

Result<uint16_t> clearTypeOf(std::string_view word) {
  for (Protocol const& protocol : kProtocols) {
    if (word == protocol.name) return protocol.type;
  }
  auto const number = numberOf(word);
  if (!number) return unknown(word);
  if (*number < kLowest || *number > UINT16_MAX) {
    return Fault{fmt::format("{} is no EtherType", quotedWord(word)),
                 "write one from 0x0600 to 0xffff"};
  }
  if (*number == kMacsec || *number == kEapol) {
    return Fault{fmt::format("{} passes in any case: it is that of {}", quotedWord(word),
                             *number == kMacsec ? "MACsec" : "key agreement"),
                 "leave it out"};
  }
  if (*number == kVlan || *number == kServiceVlan) {
    return Fault{
        fmt::format("{} is the tag of a VLAN, whose frames never pass in clear", quotedWord(word)),
        "leave it out"};
  }
  return static_cast<uint16_t>(*number);
}

void readClearTypes(YamlReader& yaml, YAML::Node const& node, EtherTypes& types) {
  if (!node.IsSequence()) {
    if (!node.IsNull())
      yaml.diagnose(node.Mark(), "'clear' has to be a list", "write [lldp, lacp]");
    return;
  }
  for (YAML::Node const& item : node) {
    auto const word = yaml.text(item, "clear");
    if (!word) continue;
    auto const type = clearTypeOf(word->view());
    if (!type) {
      yaml.diagnose(item.Mark(), type.fault());
    } else if (!types.insert(*type).second) {
      yaml.diagnose(
          item.Mark(),
          fmt::format("{} (0x{:04x}) stands twice in 'clear'", quotedWord(word->view()), *type),
          "remove it here");
    } else if (types.size() == maxClearTypes + 1) {
      yaml.diagnose(item.Mark(), fmt::format("'clear' has more than {} entries", maxClearTypes),
                    "leave some out");
    }
  }
}

}  // namespace Macsecd
