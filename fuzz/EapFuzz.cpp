#include <algorithm>
#include <string>
#include <vector>

#include "fuzz/FuzzWorld.h"
#include "fuzz/Require.h"
#include "host/eap/EapKeyLine.h"
#include "platform/WardcodeLib.h"

// Any octets as a line of an 802.1X module: what is no line of the two forms is told without a key
// in it, and the line is wiped whatever it held.

namespace {

using Fuzz::require;

// A word of so many hexadecimal digits may be much of a key.
bool holdsKey(std::string_view text) {
  size_t digits = 0;
  for (char const c : text) {
    bool const isDigit = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    digits = isDigit ? digits + 1 : 0;
    if (digits == 16) return true;
  }
  return false;
}

void look(Macsecd::EapKeyNews const& news) {
  require(!news.intfId.stringValue().empty(), "news are of no interface");
  if (!news.key) return;
  auto const clear = WardcodeLib::doDecodeKey(news.key->masterSessionKey());
  bool const fits = clear.size() >= 32 && clear.size() <= 2 * Macsecd::kMaxMskOctets;
  require(fits, "a key is of no length that is taken");
  require(news.key->type() != 2, "a key says that it is configured");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* octets, size_t size) {
  Fuzz::FuzzWorld world;
  Vesk::WorldScope const scope(world);
  std::vector<uint8_t> line(octets, octets + size);
  auto const news = Macsecd::readEapKeyLine(line);
  require(std::ranges::all_of(line, [](uint8_t octet) { return octet == 0; }),
          "a line isn't wiped");
  if (news) {
    look(*news);
  } else {
    require(!news.fault().what.empty(), "a fault says nothing");
    require(!holdsKey(news.fault().text()), "a fault holds a key");
  }
  return 0;
}
