#include "host/text/PortText.h"

#include <fmt/format.h>

#include <algorithm>

namespace Macsecd {

std::string sciText(Macsec::Sci const& sci) {
  return fmt::format("{}/{}", sci.addr().stringValue().view(), sci.portNum());
}

bool isNone(Macsec::Sak const& sak) { return sak.keyMsgId().empty(); }

std::string sakText(Macsec::Sak const& sak) {
  if (isNone(sak)) return {};
  std::string_view const id = sak.keyMsgId().view();
  return fmt::format("{}:{}", id.substr(std::min<size_t>(16, id.size())), sak.keyNum());
}

std::string keyText(Macsec::Sak const& sak) {
  return isNone(sak) ? "the next key" : "key " + sakText(sak);
}

}  // namespace Macsecd
