#include <fmt/format.h>

#include <algorithm>

#include "lab/scenario/ActionParts.h"

// Keys of 802.1X.

namespace Lab {

namespace {

constexpr uint8_t kServerType = 0, kOtherType = 1, kConfiguredType = 2;

bool isOctets(std::string_view digits) {
  auto isHex = [](unsigned char c) { return std::isxdigit(c) != 0; };
  return !digits.empty() && digits.size() % 2 == 0 &&
         std::all_of(digits.begin(), digits.end(), isHex);
}

constexpr char const* kOctetsRemedy = "write an even number of hexadecimal digits";

// "PORT", or "both ends at PORT".
std::vector<Dot1xEnd> parseEnds(Words& words, Known const& known) {
  if (!words.take("both ends at")) return {{words.port(known), kServerType}};
  int column = words.column();
  PortName const port = words.wiredPort(known);
  auto const& others = known.wired.at(port);
  if (others.size() == 1) return {{port, kServerType}, {others[0], kOtherType}};
  Words::failAt(column, "a segment of several ports has no two ends",
                "name one port after the other: on A Ethernet1");
}

// Those of both ends of the wire, unless given.
void parseAddresses(PortName const& port, int column, Words& words, Known const& known,
                    Dot1xKey& key) {
  if (words.take("between")) {
    key.firstAddr = words.address();
    words.need("and");
    key.secondAddr = words.address();
    return;
  }
  auto const others = known.wired.find(port);
  if (others == known.wired.end() || others->second.size() != 1) {
    Words::failAt(column, fmt::format("{} has no other end of a wire", port.text()),
                  "name both ends of the link: between 02:00:00:00:00:01 and 02:00:00:00:00:02");
  }
  key.firstAddr = known.switches.at(port.switchName)->mac;
  key.secondAddr = known.switches.at(others->second[0].switchName)->mac;
}

uint8_t parseType(Words& words) {
  int column = words.column();
  uint32_t type = words.number("a type", 0, 255);
  if (type != kConfiguredType) return static_cast<uint8_t>(type);
  Words::failAt(column, "type 2 stands for a configured key", "write another type, such as 1");
}

std::string parseSession(Words& words) {
  words.need("of session");
  int column = words.column();
  auto session = words.any("the identifier of the session");
  if (isOctets(session)) return session;
  Words::failAt(column, "this isn't the identifier of a session", kOctetsRemedy);
}

Vesk::String8 parseMasterKey(Words& words) {
  int column = words.column();
  auto text = words.any("the master session key");
  auto secret = Vesk::String8::secret(text);
  bool good = isOctets(text);
  Macsecd::wipe(text);
  if (good) return secret;
  Words::failAt(column, "this isn't a master session key", kOctetsRemedy);
}

}  // namespace

Dot1xKeyChange parsePublish(Words& words, Known& known) {
  words.need("802.1X key on");
  int column = words.column();
  Dot1xKeyChange change{parseEnds(words, known), Dot1xKey()};
  if (words.take("of type")) {
    uint8_t const type = parseType(words);
    for (Dot1xEnd& end : change.ends) end.type = type;
  }
  parseAddresses(change.ends[0].port, column, words, known, *change.key);
  change.key->sessionId = parseSession(words);
  words.need("and master key");
  change.key->masterSessionKey = parseMasterKey(words);
  known.derivesKeys = true;
  return change;
}

Dot1xKeyChange parseWithdraw(Words& words, Known const& known) {
  words.need("802.1X key on");
  return {parseEnds(words, known), std::nullopt};
}

}  // namespace Lab
