#pragma once

#include <netlink/attr.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Linux {

/// The attributes of one nest, by their type; what isn't there reads as 0.
template <uint16_t Most>
class NetlinkAttributes {
 public:
  explicit NetlinkAttributes(nlattr* nest) {
    if (!nest || nla_parse_nested(found_, Most, nest, nullptr) < 0) *this = NetlinkAttributes();
  }
  nlattr* operator[](int type) const { return found_[type]; }
  /// A number in the machine's order, of as many octets as there are.
  uint64_t number(int type) const {
    uint64_t number = 0;
    if (found_[type]) {
      size_t const size = static_cast<size_t>(nla_len(found_[type]));
      std::memcpy(&number, nla_data(found_[type]), std::min(size, sizeof number));
    }
    return number;
  }
  template <class Take>
  void each(int type, Take take) const {
    if (!found_[type]) return;
    int rest = nla_len(found_[type]);
    for (auto* one = static_cast<nlattr*>(nla_data(found_[type])); nla_ok(one, rest);
         one = nla_next(one, &rest)) {
      take(one);
    }
  }

 private:
  NetlinkAttributes() = default;
  nlattr* found_[Most + 1] = {};
};

}  // namespace Linux
