#include "platform/CknOctets.h"

#include <algorithm>

#include "platform/Hex.h"

namespace Macsec {

bool CknOctets::standsForOctets(std::string_view text) {
  return text.size() <= 2 * kMaxSize && isHexOctets(text);
}

CknOctets::CknOctets(std::string_view text) {
  if (standsForOctets(text)) {
    size_ = text.size() / 2;
    static_cast<void>(hexDecode(text, std::span(octets_).first(size_)));
    return;
  }
  size_ = std::min(text.size(), kMaxSize);
  std::copy_n(text.begin(), size_, octets_.begin());
}

}  // namespace Macsec
