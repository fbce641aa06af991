#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "codec/Dialect.h"
#include "host/ConfigFile.h"
#include "runtime/EthAddr.h"

namespace Lab {

/// A scenario as it was read: plain values, no simulation. All times are seconds of virtual time,
/// from 0. docs/lab.md gives the language.

/// An interface of a switch.
struct PortName {
  std::string switchName;
  std::string interface;
  std::string text() const { return switchName + " " + interface; }
  friend auto operator<=>(PortName const&, PortName const&) = default;
};

struct SwitchSpec {
  std::string name;
  int line = 0;
  Lumo::EthAddr mac;
  double start = 0;
  /// What the engine's random delays are, one after the other; after them the seed decides.
  std::vector<uint32_t> firstDelays;
  Macsecd::SwitchConfig config;
};

/// Ports that hear each other: two, or more for a shared segment.
struct WireSpec {
  int line = 0;
  std::vector<PortName> ends;
  std::optional<double> delay;  ///< the frame delay of the scenario when absent
};

// --- Actions ---------------------------------------------------------------------------------

struct LinkChange {
  PortName port;
  bool up;
};

/// Which frames a fault hits: the next `frames`, or each with a chance of `percent`.
struct Share {
  std::optional<uint32_t> frames;
  double percent = 0;
  friend bool operator==(Share const&, Share const&) = default;
};

enum class FaultKind { lose, duplicate, reorder, corrupt, delay, cut, repair };

/// A fault of what `port` sends or, both ways, of all frames on its wire.
struct WireFault {
  FaultKind kind;
  PortName port;
  bool bothWays;
  Share share;         ///< of lose, duplicate, reorder, corrupt
  double delay = 0;    ///< of delay: seconds in place of the wire's own
  uint32_t octet = 0;  ///< of corrupt: counted from 0 at the destination address; it is inverted
};

struct ProfileName {
  std::string switchName;
  std::string profile;
};

/// A new primary or fallback key, or none.
struct KeyChange {
  ProfileName profile;
  bool fallback;
  std::optional<Macsecd::KeyConfig> key;
};
struct PriorityChange {
  ProfileName profile;
  uint8_t priority;
};
struct RekeyPeriodChange {
  ProfileName profile;
  uint32_t seconds;
};
struct SuiteChange {
  ProfileName profile;
  Macsecd::Suite suite;
};

struct ShutdownChange {
  std::string switchName;
  bool shutdown;
};
/// The state machines end and start again over the trees that they left.
struct Restart {
  std::string switchName;
};

enum class HardwareMood { normal, slow, silent };
struct HardwareChange {
  std::string switchName;
  HardwareMood mood;
  double delay = 0;  ///< of slow: seconds from a request to its answer
};
/// The hardware reports the transmit SA that the port asks for, with this packet number.
struct PacketNumber {
  PortName port;
  uint32_t number;
};
/// Remembers the SAK and the number of rotations of every port under a name.
struct Mark {
  std::string name;
};

struct Action {
  int line = 0;
  double at = 0;
  std::string text;  ///< as it was written, without keys
  std::variant<LinkChange, WireFault, KeyChange, PriorityChange, RekeyPeriodChange, SuiteChange,
               ShutdownChange, Restart, HardwareChange, PacketNumber, Mark>
      what;
};

// --- Expectations ----------------------------------------------------------------------------

enum class Span {
  at,          ///< when all of that instant is done
  by,          ///< at some instant up to `to`
  between,     ///< at some instant from `from` to `to`
  throughout,  ///< at every instant from `from` to `to`
  exactly      ///< at `from` and not before
};

struct When {
  Span span;
  double from;
  double to;
};

enum class PortState { open, closed, absent, notOpen };
struct PortIs {
  PortName port;
  PortState state;
};
/// The principal actor's key; none when there is no principal actor.
struct UsesKey {
  PortName port;
  std::optional<std::string> ckn;
};
/// The key server of the principal actor, or of the actor of `under`; none when there is none.
struct HasKeyServer {
  PortName port;
  std::optional<std::string> switchName;
  std::optional<std::string> under;
};
/// Live peers of the principal actor, or of the actor of `under`: their number or their switches.
struct HasLivePeers {
  PortName port;
  uint32_t count;
  std::vector<std::string> switches;  ///< empty when only the number counts
  std::optional<std::string> under;
};
struct HasForwardingEntry {
  PortName port;
  bool unauthorized;
};
struct HasSakTransmit {
  PortName port;
  bool set;
};
struct HasSak {
  PortName port;
  bool any;
};
/// The SAK for transmit of `port` against that of another port, or its own at a mark.
struct SameSak {
  PortName port;
  bool same;
  std::variant<PortName, Mark> as;
};
/// How often another SAK took over transmit on the port, since the start or a mark.
struct HasRotated {
  PortName port;
  uint32_t times;
  std::optional<Mark> since;
};
/// Syslog lines of a switch. Arguments are compared from the first on; nothing stands for any.
struct Logs {
  std::string switchName;
  std::string name;
  std::vector<std::optional<std::string>> arguments;
  uint32_t min = 1;
  std::optional<uint32_t> max;
};

struct Expectation {
  int line = 0;
  std::string text;  ///< as it was written
  When when;
  std::variant<PortIs, UsesKey, HasKeyServer, HasLivePeers, HasForwardingEntry, HasSakTransmit,
               HasSak, SameSak, HasRotated, Logs>
      what;
};

struct Scenario {
  std::string file;
  std::string title;
  std::optional<uint32_t> seed;
  double frameDelay = 0.001;
  double runUntil = 0;
  /// How frames mark their ICV. Analysers of captures know the form of 16 octets.
  Codec::IcvIndicator icvIndicator = Codec::IcvIndicator::length16;
  std::vector<SwitchSpec> switches;
  std::vector<WireSpec> wires;
  std::vector<Action> actions;            ///< by time, then by line
  std::vector<Expectation> expectations;  ///< in the order of the file
};

}  // namespace Lab
