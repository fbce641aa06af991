#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>

#include "runtime/EthAddr.h"

namespace Linux {

/// A network interface as the kernel tells of it.
struct Link {
  int index = 0;  ///< its number in the kernel: another one is another interface
  std::string name;
  Lumo::EthAddr addr;
  bool up = false;         ///< set up, and with a carrier
  bool isSetUp = false;    ///< whatever the carrier
  bool isDormant = false;  ///< shows that it passes no traffic yet (RFC 2863, ifOperStatus)
  int master = 0;          ///< the index of the bridge or bond that it is a member of; 0 for none
  std::string kind = {};   ///< as the kernel calls it: "bridge", "macsec"; empty for hardware
  uint32_t mtu = 0;        ///< 0 if it wasn't told
  friend bool operator==(Link const&, Link const&) = default;
};

/// One difference between what was known of an interface and what is.
struct LinkChange {
  enum class What : uint8_t { came, gone, renamed, address, up, down, mtu, state };

  What what;
  Link link;               ///< as it is now; as it was last if it has gone
  std::string formerName;  ///< if it is renamed
  friend bool operator==(LinkChange const&, LinkChange const&) = default;
};

/// What is known of the machine's interfaces: takes what the kernel says of them, in any order and
/// as often as it likes, and tells the differences.
///
/// An interface comes down and is up after that; one that goes is down before that, and so is one
/// that changes its name or address. A change of `isSetUp`, `isDormant` or `master` is told as that
/// of the state, after the others. No two interfaces have one name at any moment.
class LinkTable {
 public:
  using Told = std::function<void(LinkChange const&)>;

  explicit LinkTable(Told told) : told_(std::move(told)) {}

  /// The interface is there, and so.
  void linkIs(Link const& link);
  /// It is there no more.
  void linkDel(int index);

  /// From here on all interfaces are told, ...
  void resyncBegins();
  /// ... and now all have been: those of which nothing was said have gone.
  void resyncEnds();

  std::map<int, Link> const& links() const { return links_; }
  Link const* linkNamed(std::string const& name) const;

 private:
  void come(Link const& link);
  void change(Link& known, Link const& link);
  void upIs(Link& known, bool up);
  void stateIs(Link& known, Link const& link);
  void giveWay(Link const& link);
  void nameIs(Link& known, std::string const& name);

  Told const told_;
  std::map<int, Link> links_;
  std::unordered_map<std::string, int> indices_;  ///< of the links, by their names
  /// Those of which nothing was said yet in a resynchronisation; none outside of one.
  std::set<int> unheard_;
};

}  // namespace Linux
