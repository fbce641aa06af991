#include "host/PortText.h"

#include <fmt/format.h>

#include <algorithm>

namespace Macsecd {

std::string sciText(Macsec::Sci const& sci) {
  return fmt::format("{}/{}", sci.addr().stringValue().view(), sci.portNum());
}

std::string sakText(Macsec::Sak const& sak) {
  std::string_view const id = sak.keyMsgId().view();
  return fmt::format("{}:{}", id.substr(std::min<size_t>(16, id.size())), sak.keyNum());
}

}  // namespace Macsecd
