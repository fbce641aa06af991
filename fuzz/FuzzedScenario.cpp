#include "fuzz/FuzzedScenario.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "lab/scenario/Defect.h"

namespace Fuzz {

namespace {

using Lab::PortName;
using Macsecd::ProfileConfig;

constexpr size_t kMostActions = 24;
constexpr double kLastAction = 25;
constexpr double kLongTail = 70;
constexpr char kInterface[] = "e1";
constexpr std::array kSwitches = {"A", "B"};

Macsecd::KeyConfig keyConfigOf(unsigned number) {
  FuzzedKey const key = keyOf(number);
  return {Vesk::String8(key.ckn), Vesk::String8::secret(key.cak)};
}

// The two switches.
class NetDrawing {
 public:
  NetDrawing(Input& in, Lab::Scenario& to) : in_(in), scenario_(to) {}

  void draw() {
    uint8_t const plan = in_.octet(), setting = in_.octet();
    scenario_.seed = in_.octet();
    scenario_.invariantsHold = true;
    if ((setting & 1) != 0) scenario_.dataEvery = 1;
    scenario_.icvIndicator = static_cast<Codec::IcvIndicator>((setting >> 1 & 3) % 3);
    for (unsigned i = 0; i < kSwitches.size(); ++i) {
      scenario_.switches.push_back(drawnSwitch(i, plan, setting));
    }
    scenario_.wires.push_back({0, {{"A", kInterface}, {"B", kInterface}}, {}});
  }

 private:
  static void giveKeys(unsigned index, uint8_t plan, ProfileConfig& profile) {
    bool const isFirst = index == 0;
    profile.key = keyConfigOf(1);
    switch (plan % 8) {
      case 0:  // each one's primary key is the other's fallback key
        profile.key = keyConfigOf(isFirst ? 1 : 2);
        profile.fallbackKey = keyConfigOf(isFirst ? 2 : 1);
        break;
      case 1:
        profile.key = keyConfigOf(isFirst ? 1 : 3);
        profile.fallbackKey = keyConfigOf(2);
        break;
      case 2:
        profile.fallbackKey = keyConfigOf(2);
        break;
      case 3:
        profile.dot1x = true;
        profile.key.reset();
        profile.fallbackKey = keyConfigOf(2);
        break;
      case 4:  // the same name for two keys
        if (!isFirst) profile.key->cak = keyConfigOf(2).cak;
        break;
      default:
        break;
    }
  }
  ProfileConfig drawnProfile(unsigned index, uint8_t plan, uint8_t setting) {
    ProfileConfig profile;
    profile.name = "p";
    giveKeys(index, plan, profile);
    profile.keyServerPriority = static_cast<uint8_t>(10 + in_.below(3) * 6);
    if ((setting & 8) != 0) profile.rekeyPeriod = 20;
    if ((setting & 16) != 0) profile.cipherSuite = Macsecd::Suite::gcmAesXpn256;
    return profile;
  }
  Lab::SwitchSpec drawnSwitch(unsigned index, uint8_t plan, uint8_t setting) {
    Lab::SwitchSpec spec;
    spec.name = kSwitches[index];
    spec.mac = Lumo::EthAddr({2, 0, 0, 0, 0, static_cast<uint8_t>(index + 1)});
    spec.config.profiles.push_back(drawnProfile(index, plan, setting));
    spec.config.profiles.push_back(spec.config.profiles.front());
    spec.config.profiles.back().name = "q";
    spec.config.profiles.back().key = keyConfigOf(2);
    spec.config.delayProtection = (setting & 32) != 0;
    Macsecd::InterfaceConfig interface { kInterface, "p" };
    if ((setting & 64) != 0) interface.onPeerLoss = Macsecd::OnPeerLoss::close;
    spec.config.interfaces.push_back(interface);
    if ((setting & 128) != 0 && index == 1) spec.start = 2.5;
    return spec;
  }

  Input& in_;
  Lab::Scenario& scenario_;
};

// What happens to them, one thing after the other.
class ActionsDrawing {
 public:
  ActionsDrawing(Input& in, FuzzedScenario& to) : in_(in), to_(to) {}

  // A step of time goes before each: short as a rule, and up to sixteen seconds. Behind the last a
  // run goes on for a few seconds, or until what can be secured has to be.
  void draw() {
    uint8_t const end = in_.octet();
    for (size_t i = 0; i < kMostActions && !in_.isOver() && time_ < kLastAction; ++i) {
      double const step = in_.octet() / 16.0;
      time_ += step * step / 16;
      put();
    }
    bool const isLong = end >= 240;
    if (isLong) to_.scenario.faultsEnd = time_ + 1;
    to_.scenario.runUntil = time_ + (isLong ? kLongTail : 1 + end % 6);
  }

 private:
  static constexpr unsigned kKinds = 32;

  void put() {
    unsigned const kind = in_.below(kKinds);
    if (kind < 8) return putWireFault(kind);
    if (kind < 14) return putPortChange(kind);
    if (kind < 20) return putSwitchChange(kind);
    if (kind < 26) return putProfileChange(kind);
    if (kind < 28) return putFrame(kind);
    putVisit(kind < 31);
  }

  template <class What>
  void add(char const* text, What what) {
    to_.scenario.actions.push_back(
        {0, time_, fmt::format("at {} {}", time_, text), std::move(what)});
  }
  std::string aSwitch() { return kSwitches[in_.below(kSwitches.size())]; }
  PortName aPort() { return {aSwitch(), kInterface}; }

  void putWireFault(unsigned kind) {
    using Lab::FaultKind;
    static constexpr std::array kFaults = {
        FaultKind::lose,  FaultKind::lose, FaultKind::duplicate, FaultKind::reorder,
        FaultKind::delay, FaultKind::cut,  FaultKind::corrupt,   FaultKind::repair};
    PortName const port = aPort();
    uint8_t const how = in_.octet();
    Lab::WireFault fault{kFaults[kind], port, (how & 1) != 0, {1u + (how >> 1 & 7), 0}};
    if (fault.kind == FaultKind::delay) fault.delay = (1 + (how >> 1)) / 32.0;
    if (fault.kind == FaultKind::corrupt) fault.octet = in_.octet();
    add("fault of the wire", fault);
  }

  void putPortChange(unsigned kind) {
    PortName const port = aPort();
    bool const on = in_.chance(50);
    if (kind == 8) return add("link", Lab::LinkChange{port, on});
    if (kind == 9) return add("device", Lab::DeviceChange{port, on});
    if (kind == 10) return add("spent key", Lab::KeySpent{port});
    if (kind == 11) return add("packet number", Lab::PacketNumber{port, 0xc0000001, on});
    if (kind == 12) return add("profile", Lab::ProfileChange{port, on ? "p" : "q"});
    Lab::InterfaceChange change{port, on, {}};
    uint8_t const address = in_.octet();
    if (address != 0) change.mac = Lumo::EthAddr({2, 0, 0, 0, 1, address});
    add("interface", change);
  }

  void putSwitchChange(unsigned kind) {
    std::string const name = aSwitch();
    uint8_t const how = in_.octet();
    bool const on = (how & 1) != 0;
    if (kind == 14) return add("restart", Lab::Restart{name, on ? how / 32.0 : 0});
    if (kind == 15) return add("shutdown", Lab::ShutdownChange{name, on});
    if (kind == 16) return add("delay protection", Lab::DelayProtectionChange{name, on});
    if (kind == 17) return add("clear counters", Lab::CountersCleared{name});
    if (kind == 18) {
      if (how < 128) return add("FIPS", Lab::FipsChange{name, on});
      return add("FIPS provider", Lab::FipsProviderChange{name, on});
    }
    auto const mood = static_cast<Lab::HardwareMood>(how % 3);
    add("hardware", Lab::HardwareChange{name, mood, (how >> 2) / 16.0});
  }

  void putProfileChange(unsigned kind) {
    Lab::ProfileName const profile{aSwitch(), "p"};
    uint8_t const how = in_.octet();
    if (kind < 22) {
      unsigned const key = how % 5;
      Lab::KeyChange change{profile, (how & 128) != 0, {}};
      if (key != 0) change.key = keyConfigOf(key);
      return add("key", std::move(change));
    }
    if (kind == 22) return add("priority", Lab::PriorityChange{profile, how});
    if (kind == 23) {
      return add("rekey period", Lab::RekeyPeriodChange{profile, how < 64 ? 0 : 20 + how % 16u});
    }
    if (kind == 24) {
      auto const suite =
          (how & 1) != 0 ? Macsecd::Suite::gcmAesXpn256 : Macsecd::Suite::gcmAesXpn128;
      return add("suite", Lab::SuiteChange{profile, suite});
    }
    putDot1xKey(profile.switchName, how);
  }

  // At one end or both.
  void putDot1xKey(std::string const& name, uint8_t how) {
    if (to_.scenario.switches[0].config.profiles[0].key) return;
    Lab::Dot1xKeyChange change;
    for (std::string const& one : kSwitches) {
      bool const isMeant = (how & 1) == 0 || one == name;
      uint8_t const type = one == "B" ? how >> 1 & 1 : 0;
      if (isMeant) change.ends.push_back({{one, kInterface}, type});
    }
    if (how < 0xe0) {
      change.key = {Lumo::EthAddr({2, 0, 0, 0, 0, 1}), Lumo::EthAddr({2, 0, 0, 0, 0, 2}),
                    fmt::format("{:04x}", how >> 2),
                    Vesk::String8::secret(fmt::format("{:04x}{:0124x}", how >> 2, 1))};
    }
    add("802.1X key", std::move(change));
  }

  void putFrame(unsigned kind) {
    PortName const port = aPort();
    if (kind == 26) {
      auto const& defects = Lab::defects();
      return add("defect",
                 Lab::SendFrame{port, defects[in_.below(static_cast<unsigned>(defects.size()))]});
    }
    Lab::Replay replay{port};
    uint8_t const which = in_.octet();
    if (which < 128) replay.number = which;
    replay.which = static_cast<Lab::Replay::Which>(which % 3);
    if (which >= 192) replay.set = "dist-sak";
    add("replay", replay);
  }

  void putVisit(bool isForged) {
    size_t const to = in_.below(kSwitches.size());
    unsigned const key = 1 + in_.below(2);
    Octets const octets = in_.take(in_.octet());
    add("visit", Lab::Mark{std::to_string(to_.visits.size())});
    to_.visits.push_back({isForged, to, key, Frame(octets.begin(), octets.end())});
  }

  Input& in_;
  FuzzedScenario& to_;
  double time_ = 0;
};

}  // namespace

FuzzedKey keyOf(unsigned number) {
  return {fmt::format("c0de{:04x}", number), fmt::format("{:032x}", 0x1234567800000000 + number)};
}

bool FuzzedScenario::hasInsider() const { return std::ranges::any_of(visits, &Visit::isForged); }

FuzzedScenario fuzzedScenario(Input& in) {
  FuzzedScenario fuzzed;
  NetDrawing(in, fuzzed.scenario).draw();
  fuzzed.isTraced = fuzzed.scenario.seed >= 0xf0;
  ActionsDrawing(in, fuzzed).draw();
  return fuzzed;
}

}  // namespace Fuzz
