#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/explain/Explain.h"
#include "lab/scenario/Names.h"
#include "platform/MessageCounterTypes.h"

namespace Lab {

// What a scenario expects, and when.

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
/// The principal actor's key comes from 802.1X.
struct UsesDerivedKey {
  PortName port;
};
/// The interface has a primary key to run on, configured or derived.
struct HasPrimaryKey {
  PortName port;
  bool any;
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
/// The lowest acceptable packet number that the port has taken over from its peer, for one
/// association number or that of its newest key.
struct HasPeerPacketNumber {
  PortName port;
  uint32_t number;
  std::optional<uint8_t> an;
};
/// How often the process of a switch has ended itself, with this status or any.
struct HasExited {
  std::string switchName;
  uint32_t times;
  std::optional<int> status;
  std::optional<Mark> since;
};
/// Whether the switch has a process.
struct IsRunning {
  std::string switchName;
  bool running;
};
enum class FipsMode { on, off, unset };
struct HasFipsMode {
  std::string switchName;
  FipsMode mode;
};
struct HasDelayProtection {
  std::string switchName;
  bool on;
};
/// Seconds from one MKPDU of an actor to the next.
struct HasMkpduPeriod {
  std::string switchName;
  double seconds;
};
struct HasMkpduThreshold {
  std::string switchName;
  uint32_t threshold;
};
/// No attribute of the switch, or of its configuration alone, has been written since the mark.
struct HasWrittenNothing {
  std::string switchName;
  bool configuration;
  Mark since;
};
/// The number of mistakes in what the switch last reloaded.
struct HasReloadDiagnostics {
  std::string switchName;
  uint32_t count;
};
/// One of these mistakes: its place, and words of what it says.
struct HasReloadDiagnostic {
  std::string switchName;
  int line;
  int column;
  std::string says;  ///< anything when empty
};
/// Syslog lines of a switch. Arguments are compared from the first on; nothing stands for any.
struct Logs {
  std::string switchName;
  std::string name;
  std::vector<std::optional<std::string>> arguments;
  uint32_t min = 1;
  std::optional<uint32_t> max;
};

/// How many frames the switch has counted on the port, of one kind of failure or of all.
struct HasCounted {
  PortName port;
  uint32_t frames;
  bool atLeast;
  bool sinceClear;  ///< not in all
  Macsec::MessageCounterDirection direction;
  Macsec::MessageCounterType type;
  std::optional<Macsec::MessageCounterFailureSubType> defect;
};

/// What is said of why the port isn't secured: all of it, in its order.
struct Explains {
  PortName port;
  std::vector<Macsecd::CauseKind> kinds;
};

struct Expectation {
  int line = 0;
  std::string text;  ///< as it was written
  When when;
  std::variant<PortIs, UsesKey, UsesDerivedKey, HasPrimaryKey, HasKeyServer, HasLivePeers,
               HasForwardingEntry, HasSakTransmit, HasSak, SameSak, HasRotated, HasPeerPacketNumber,
               HasCounted, Explains, HasExited, IsRunning, HasFipsMode, HasDelayProtection,
               HasMkpduPeriod, HasMkpduThreshold, HasWrittenNothing, HasReloadDiagnostics,
               HasReloadDiagnostic, Logs>
      what;
};

}  // namespace Lab
