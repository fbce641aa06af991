#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/config/ConfigFile.h"
#include "lab/scenario/Names.h"
#include "platform/MessageCounterTypes.h"
#include "runtime/EthAddr.h"

namespace Lab {

// What a scenario does to its switches and wires.

struct LinkChange {
  PortName port;
  bool up;
};

/// Somebody sets the MACsec device on an interface down, or up again.
struct DeviceChange {
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

/// The interface goes over to another profile.
struct ProfileChange {
  PortName port;
  std::string profile;
};

/// A key as an 802.1X authentication leaves it on both ends of a link.
struct Dot1xKey {
  Lumo::EthAddr firstAddr;
  Lumo::EthAddr secondAddr;
  std::string sessionId;           ///< hexadecimal digits
  Vesk::String8 masterSessionKey;  ///< hexadecimal digits in clear, wiped with the last copy
};
/// A port whose 802.1X module publishes a key, and the type of the key there: 0 for who may act as
/// key server, 1 for who may not, never 2.
struct Dot1xEnd {
  PortName port;
  uint8_t type;
};
/// The 802.1X module of each end publishes the key, or withdraws what it has published.
struct Dot1xKeyChange {
  std::vector<Dot1xEnd> ends;
  std::optional<Dot1xKey> key;
};

struct ShutdownChange {
  std::string switchName;
  bool shutdown;
};
struct DelayProtectionChange {
  std::string switchName;
  bool on;
};
struct FipsChange {
  std::string switchName;
  bool on;
};
/// Whether the machine of the switch has what FIPS mode needs.
struct FipsProviderChange {
  std::string switchName;
  bool isThere;
};
/// The operator asks for the message counters to be cleared.
struct CountersCleared {
  std::string switchName;
};
/// The switch reads its configuration again. Mistakes in it belong to what happens.
struct Reload {
  std::string switchName;
  std::string file;  ///< as the scenario names it
  Macsecd::ConfigResult read;
};
/// The state machines end and start again over the trees that they left.
struct Restart {
  std::string switchName;
  double deadFor = 0;      ///< seconds between the processes
  bool keepsState = true;  ///< otherwise the next one finds an empty store
};
/// The process dies in the middle of what it does: at this commit to its store, counted from 1 on.
struct Kill {
  std::string switchName;
  size_t commit = 1;
  bool isTaken = true;  ///< whether the store has this commit
  double deadFor = 0;   ///< seconds between the processes
};
/// The process isn't given the processor: frames wait for it, and its timers are late.
struct Standstill {
  std::string switchName;
  double seconds = 0;
};
/// How fast the clock of the switch runs.
struct ClockRate {
  std::string switchName;
  double rate = 1;  ///< its seconds in each
};
/// Whether the store of the switch takes anything.
struct StoreChange {
  std::string switchName;
  bool refuses;
};

enum class HardwareMood { normal, slow, silent };
struct HardwareChange {
  std::string switchName;
  HardwareMood mood;
  double delay = 0;  ///< of slow: seconds from a request to its answer
};
/// The hardware reports the transmit SA that the port asks for, now or next, with this packet
/// number.
struct PacketNumber {
  PortName port;
  uint32_t number;
  bool ofNextKey;
};

/// The hardware says that it can't send with the key in use without the danger of a nonce used
/// twice.
struct KeySpent {
  PortName port;
};

/// The hardware has lost the key that it sends with, and is given it again at once.
struct KeyLost {
  PortName port;
};

/// A frame with this defect, and no other, arrives at the port; no other port hears it.
struct SendFrame {
  PortName port;
  Macsec::MessageCounterFailureSubType defect;
};

/// A station on the wire sends frames of its past again, to this port alone: those that it has
/// recorded as they left their ports.
struct Replay {
  enum class Which : uint8_t { first, last, every };
  PortName to;
  std::optional<uint32_t> number = {};  ///< counted from 1 over the frames of the wire; else:
  Which which = Which::first;           ///< of those that are meant
  std::optional<std::string> set = {};  ///< that has this parameter set
  std::optional<std::string> ckn = {};  ///< that is under this key name
  std::optional<PortName> from = {};
  double after = 0;
  double before = std::numeric_limits<double>::infinity();
};

/// An interface goes from its switch, or is made again.
struct InterfaceChange {
  PortName port;
  bool isThere;
  std::optional<Lumo::EthAddr> mac = {};  ///< of a new one; the switch's own if absent
};

struct Action {
  int line = 0;
  double at = 0;
  std::string text;  ///< as it was written, without keys
  std::variant<LinkChange, DeviceChange, WireFault, KeyChange, PriorityChange, RekeyPeriodChange,
               SuiteChange, ProfileChange, Dot1xKeyChange, ShutdownChange, DelayProtectionChange,
               FipsChange, FipsProviderChange, CountersCleared, Reload, Restart, Kill, Standstill,
               ClockRate, StoreChange, HardwareChange, PacketNumber, KeySpent, KeyLost, SendFrame,
               Replay, InterfaceChange, Mark>
      what;
};

}  // namespace Lab
