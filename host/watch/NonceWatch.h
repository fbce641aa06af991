#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Macsecd {

/// Sees to it that no two frames get one nonce: under one key, a nonce is made of SSCI and packet
/// number (IEEE 802.1AE-2018, 10.5 and 14.7). Told of every transmit SA of all members that are
/// watched, it notes whenever one begins with a packet number that was used before under its key
/// and SSCI, and when two members use one SSCI.
class NonceWatch {
 public:
  struct Sender {
    std::string name;  ///< of the member, for the report
    std::string key;   ///< whatever tells the key from all others
    uint32_t ssci = 0;
  };

  /// A transmit SA is installed that sends from this packet number on.
  void begins(Sender const& sender, uint64_t first) {
    auto& uses = uses_[{sender.key, sender.ssci}];
    for (Use const& use : uses) {
      bool const isOther = use.sender != sender.name;
      if (!isOther && first >= use.next) continue;
      repeats_.push_back(sender.name + " sends under key " + sender.key + " with SSCI " +
                         std::to_string(sender.ssci) + " from packet number " +
                         std::to_string(first) + " on, as " +
                         (isOther ? use.sender + " does" : "it did before"));
    }
    uses.push_back({sender.name, first + 1});
  }
  /// It has sent up to this packet number, which is the next one.
  void reaches(Sender const& sender, uint64_t next) {
    auto const found = uses_.find({sender.key, sender.ssci});
    if (found == uses_.end()) return;
    for (Use& use : found->second) {
      if (use.sender == sender.name && next > use.next) use.next = next;
    }
  }
  /// What was repeated, a line each.
  std::vector<std::string> const& repeats() const { return repeats_; }

 private:
  struct Use {
    std::string sender;
    uint64_t next;
  };

  std::map<std::pair<std::string, uint32_t>, std::vector<Use>> uses_;
  std::vector<std::string> repeats_;
};

}  // namespace Macsecd
