#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <string_view>

#include "model/Config.h"
#include "model/Status.h"
#include "platform/Hex.h"
#include "platform/WardcodeLib.h"

namespace Support {

/// Keys that may stand nowhere, by what they are.
class Poison {
 public:
  /// A key as hexadecimal digits.
  void add(std::string const& what, std::string_view digits) {
    if (!digits.empty()) keys_.emplace(lower(digits), what);
  }
  void addEncoded(std::string const& what, Vesk::String8 const& encoded) {
    add(what, WardcodeLib::doDecodeKey(encoded).view());
  }
  /// All keys that the tree of a switch holds at this moment.
  void addFrom(Macsec::Status const& status) {
    for (auto& intf : status.intfStatus()) {
      addEncoded("CAK", intf.key().cak());
      addEncoded("fallback CAK", intf.defaultKey().cak());
    }
    for (auto& port : status.portStatus()) {
      for (auto& actor : port.actorStatus()) {
        addEncoded("CAK", actor.cak());
        addEncoded("ICK", actor.ick());
        addEncoded("KEK", actor.kek());
        addEncoded("SAK", actor.distSak().key());
      }
    }
    for (auto& port : status.cpStatus()) addEncoded("SAK", port.txSak().key());
  }

  /// What of it stands in the text, as octets or as hexadecimal of either case; empty if nothing.
  std::string foundIn(std::string_view text) const {
    std::string const digits = lower(text);
    for (auto const& [key, what] : keys_) {
      std::string octets(key.size() / 2, '\0');
      static_cast<void>(
          Macsec::hexDecode(key, {reinterpret_cast<uint8_t*>(octets.data()), octets.size()}));
      if (digits.find(key) != std::string::npos) return what + " in digits";
      if (text.find(octets) != std::string_view::npos) return what + " in octets";
    }
    return "";
  }
  /// How many keys of a kind there are.
  size_t count(std::string const& what) const {
    return static_cast<size_t>(std::count_if(
        keys_.begin(), keys_.end(), [&](auto const& entry) { return entry.second == what; }));
  }

 private:
  static std::string lower(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
      if (c >= 'A' && c <= 'F') c = static_cast<char>(c - 'A' + 'a');
    }
    return result;
  }

  std::map<std::string, std::string> keys_;
};

}  // namespace Support
