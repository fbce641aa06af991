#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "host/port/PortEvent.h"
#include "host/text/Diagnostic.h"
#include "host/watch/HostTap.h"
#include "lab/data/SecY.h"
#include "lab/scenario/Actions.h"
#include "lab/scenario/Names.h"

namespace Lab {

// Everything observable of a switch, as docs/lab.md lists it under Events: what a running one tells
// as well (`PortEvent`), and what it doesn't. `interface` is the name of the interface concerned.

using Macsecd::EventKind;
using Macsecd::FrameWay;
using Macsecd::PortEvent;

struct SyslogLine {
  std::string name;
  uint8_t severity;
  std::vector<std::string> arguments;
  std::string text;
};

struct ForwardingChanged {
  std::string interface;
  bool unauthorized;
};

/// A key by its name: member identifier of its key server, and number.
struct KeyName {
  std::string id;
  uint32_t number;
  friend bool operator==(KeyName const&, KeyName const&) = default;
};

struct SaAsked {
  std::string interface;
  bool transmit;
  uint8_t an;
  std::optional<KeyName> key;  ///< none when the request is withdrawn
};

struct SaInstalled {
  std::string interface;
  bool transmit;
  uint8_t an;
  std::optional<KeyName> key;  ///< none when the hardware took it out
  uint32_t packetNumber;
};

struct PeersChanged {
  std::string interface;
  std::string ckn;
  std::vector<std::string> live;
  std::vector<std::string> potential;
};

/// An MKPDU at a switch, with what could be read of it.
struct FramePassed {
  std::string interface;
  FrameWay way;
  std::optional<std::string> ckn;
  std::optional<std::string> memberId;
  std::optional<uint32_t> messageNumber;
  size_t length;
  std::vector<std::string> sets;
  std::optional<std::string> verdict;  ///< of a received one
};

/// The process of the switch has ended itself.
struct ProcessEnded {
  int status;
  double startsAgain;  ///< when the next one starts
};

/// The switch has read its configuration again.
struct Reloaded {
  std::string file;
  bool taken;
  std::vector<Macsecd::Diagnostic> diagnostics;  ///< because of which it wasn't taken
};

struct Event {
  double time;
  std::string const& switchName;
  std::variant<SyslogLine, ForwardingChanged, PortEvent, SaAsked, SaInstalled, PeersChanged,
               FramePassed, ProcessEnded, Reloaded>
      what;
};

/// A frame of the test flow is to leave a port through which traffic may pass.
struct DataSent {
  PortName const& from;
  uint64_t number;                 ///< counted from 1 over the frames of the port
  std::span<uint8_t const> frame;  ///< as it leaves; empty if the hardware has no key to send with
};

/// It comes to another end of the wire.
struct DataArrived {
  PortName const& from;
  PortName const& to;
  uint64_t number;
  double sentAt;
  std::span<uint8_t const> frame;  ///< as it came
  SecY::Verdict verdict;
  bool isOpen;  ///< traffic may pass at `to`
  bool isSame;  ///< it is what its sender gave
};

/// The event of a port, if it is one of this kind; else null.
inline PortEvent const* eventOf(Event const& event, EventKind kind) {
  auto const* const port = std::get_if<PortEvent>(&event.what);
  return port && port->kind == kind ? port : nullptr;
}

/// Somebody who follows a simulation.
class Audience {
 public:
  virtual ~Audience() = default;
  virtual void happened(Event const& event) { static_cast<void>(event); }
  /// A line of the scenario is carried out.
  virtual void acted(double time, std::string const& text) {
    static_cast<void>(time), static_cast<void>(text);
  }
  /// The same, before it is.
  virtual void acts(double time, Action const& action) {
    static_cast<void>(time), static_cast<void>(action);
  }
  /// All faults end now.
  virtual void faultsEnd(double time) { static_cast<void>(time); }
  /// A frame leaves a port for the wire with this number, before any fault of the wire.
  virtual void captured(double time, size_t wire, std::span<uint8_t const> frame) {
    static_cast<void>(time), static_cast<void>(wire), static_cast<void>(frame);
  }
  virtual void dataSent(double time, DataSent const& sent) {
    static_cast<void>(time), static_cast<void>(sent);
  }
  virtual void dataArrived(double time, DataArrived const& arrived) {
    static_cast<void>(time), static_cast<void>(arrived);
  }
  /// All of this instant is done.
  virtual void instantDone(double time) { static_cast<void>(time); }
};

}  // namespace Lab
