#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstdlib>

#include "host/explain/Explain.h"
#include "host/text/KeyText.h"
#include "model/Factories.h"
#include "platform/WardcodeLib.h"
#include "tests/host/ConfigPair.h"
#include "tests/host/HostFixture.h"
#include "tests/host/KeptState.h"

// A switch is what its file says: whatever it was before, a reload and a restart end where a fresh
// start begins. Random pairs of files are applied one after the other with sessions up, and
// compared with a start on the second one.
//
//     MACSECD_CONFIG_PAIRS=20000 host_test --gtest_filter="ConfigPairs.*"

namespace Macsecd::Test {
namespace {

constexpr char const* kInterfaces[] = {"e0", "e1"};
constexpr double kStep = 0.25;
/// A fallback key waits for half a minute at each end, and what is displaced goes after that.
constexpr double kSettled = 200;

struct Frames final : Codec::FrameSink {
  void send(Lumo::IntfId intfId, std::span<uint8_t const> frame) override {
    sent.emplace_back(intfId, std::vector<uint8_t>(frame.begin(), frame.end()));
  }
  std::vector<std::pair<Lumo::IntfId, std::vector<uint8_t>>> sent;
};

/// A machine with two interfaces, on which one process follows the other.
class Machine {
 public:
  explicit Machine(uint8_t number) : number_(number), world(number) {}

  void start(SwitchConfig const& config) {
    Vesk::WorldScope const scope(world);
    host.emplace(world, "switch", frames, HostOptions{.store = &kept});
    host->configIs(config);
    for (uint8_t i = 0; i < std::size(kInterfaces); ++i) {
      Lumo::IntfId const intfId{Vesk::String8(kInterfaces[i])};
      auto const* const named = config.interface(kInterfaces[i]);
      host->interfaceIs(intfId, Lumo::EthAddr({2, 0, 0, 0, i, number_}),
                        named ? named->portNumber : 1);
      host->linkIs(intfId, true);
      if (eapKeys[i].type() != Dot1x::EapKey().type())
        host->eapKeyStatus()->keyIs(intfId, eapKeys[i]);
    }
    host->start();
  }
  /// Ends as a process does that is killed.
  void end() {
    host->commit();
    host->die();
    host.reset();
  }
  void run(double time) {
    world.time = time;
    host->timerWheel()->runDue();
    host->commit();
  }
  void receive(Frames& from) {
    for (auto const& [intfId, frame] : from.sent) host->receive(intfId, frame);
    from.sent.clear();
    host->commit();
  }

 private:
  uint8_t const number_;

 public:
  Support::TestWorld world;
  KeptState kept;
  Frames frames;
  Dot1x::EapKey eapKeys[2];
  std::optional<Host> host;
};

// However it is spelled.
std::string nameOf(Vesk::String8 const& ckn) {
  Vesk::String8 const octets = keyNameOctets(ckn.view());
  std::string text;
  for (char const octet : octets.view()) text += fmt::format("{:02x}", uint8_t(octet));
  return text;
}

std::string textOf(Macsec::Cak const& cak) {
  if (cak == Macsec::Cak()) return "none";
  return nameOf(cak.ckn()) + "/" +
         std::string(WardcodeLib::doDecodeKey(cak.cak()).view().substr(0, 8));
}

std::string textOf(Macsec::Profile const& profile) {
  std::string text = "profile " + std::string(profile.name().view());
  text += " key=" + textOf(profile.key()) + " fallback=" + textOf(profile.defaultKey());
  text += " suite=" + std::to_string(static_cast<int>(profile.cipherSuite()));
  text += " sci=" + std::to_string(profile.includeSci());
  text += " priority=" + std::to_string(profile.keyServerPriority());
  text += " rekey=" + std::to_string(profile.sessionReKeyPeriod());
  text += " dot1x=" + std::to_string(profile.dot1xEnabled());
  text += " group=" + std::to_string(profile.groupCak().enabled());
  for (char const* const name : kInterfaces) {
    bool const* const bound = profile.intf(Lumo::IntfId(Vesk::String8(name)));
    if (bound && *bound) text += std::string(" ") + name;
  }
  return text + "\n";
}

std::string textOf(Macsec::IntfStatus const& intf) {
  return " profile=" + std::string(intf.profileName().view()) + " key=" + textOf(intf.key()) +
         " fallback=" + textOf(intf.defaultKey()) +
         " suite=" + std::to_string(static_cast<int>(intf.cipher())) +
         " sci=" + std::to_string(intf.includeSci()) +
         " priority=" + std::to_string(intf.keyServerPriority()) +
         " rekey=" + std::to_string(intf.reKeyPeriod()) +
         " group=" + std::to_string(intf.groupCakLifetime()) +
         " type=" + std::to_string(intf.dot1xType()) + "\n";
}

bool isConfigured(Macsec::MkaActorStatus const& actor, Macsec::IntfStatus const& intf) {
  return actor.ckn() == (actor.defaultActor() ? intf.defaultKey() : intf.key()).ckn();
}

// A former key goes on until the new one has agreed with the peer: that is how keys are changed
// without a gap. It is left out here.
std::string textOf(Macsec::MkaPortStatus const& port, Macsec::IntfStatus const& intf) {
  std::map<std::string, std::string> actors;
  for (Macsec::MkaActorStatus const& actor : port.actorStatus()) {
    if (!isConfigured(actor, intf)) continue;
    actors[nameOf(actor.ckn())] = actor.defaultActor() ? " fallback\n" : " primary\n";
  }
  std::string text =
      fmt::format(" sci={}/{}\n", port.mySci().addr().stringValue().view(), port.mySci().portNum());
  for (auto const& [name, actor] : actors) text += "  actor " + name + actor;
  return text;
}

constexpr char const* kSecured = "secured";

// What is meant to differ after a start, which finds no port open and no peer:
//  - A port that was open stays open with its SAK without a peer, unless 'on-peer-loss' closes it,
//    and over a restart that takes its key away, until another key has agreed. Not so where 802.1X
//    takes the place of its key.
//  - A former key goes on until the new one has agreed with the peer: so keys are changed without a
//    gap. A port that is secured by it may be without a common key after a start.
//  - Of two keys that both agree the one that agreed first may stay in use.
std::string stateOf(Host const& host, Lumo::IntfId intfId) {
  auto const port = host.status()->portStatus(intfId);
  if (!host.isOpen(intfId)) return "without a peer";
  if (!port || port->actorStatus().empty()) return "open without a key";
  for (Macsec::MkaActorStatus const& actor : port->actorStatus()) {
    if (actor.principal() && !actor.livePeer().empty()) return kSecured;
  }
  auto const intf = host.status()->intfStatus(intfId);
  auto const profile = intf ? host.config()->profile(intf->profileName()) : nullptr;
  return profile && !profile->dot1xEnabled() ? kSecured : "without a peer";
}

/// What an operator has of a switch, without what is made by chance.
std::string textOf(Host const& host) {
  auto const& status = *host.status();
  std::map<std::string, std::string> profiles;
  for (Macsec::Profile const& profile : host.config()->profile()) {
    profiles[std::string(profile.name().view())] = textOf(profile);
  }
  std::string text = "enabled=" + std::to_string(status.macsecEnabled()) +
                     " period=" + std::to_string(status.mkpduPeriod()) + "\n";
  for (auto const& [name, profile] : profiles) text += profile;
  for (char const* const name : kInterfaces) {
    Lumo::IntfId const intfId{Vesk::String8(name)};
    text += name;
    text += ":\n";
    auto const intf = status.intfStatus(intfId);
    auto const port = status.portStatus(intfId);
    if (intf) text += textOf(*intf);
    if (intf && port) text += textOf(*port, *intf);
    text +=
        fmt::format(" port={} control={}\n", port != nullptr, status.cpStatus(intfId) != nullptr);
  }
  return text;
}

/// How a switch stands at the end.
struct End {
  explicit End(Host const& host) : settings(textOf(host)) {
    for (char const* const name : kInterfaces) {
      Lumo::IntfId const intfId{Vesk::String8(name)};
      states.push_back(stateOf(host, intfId));
      for (Cause const& cause : explain(host, intfId).causes) {
        explanations += fmt::format("{}: {}\n", name, cause.what);
      }
    }
  }
  bool isAs(End const& fresh) const {
    for (size_t i = 0; i < states.size(); ++i) {
      if (states[i] != kSecured && states[i] != fresh.states[i]) return false;
    }
    return settings == fresh.settings;
  }
  std::string text() const {
    return fmt::format("{}{}\n{}", settings, fmt::join(states, ", "), explanations);
  }

  std::string settings;
  std::vector<std::string> states;
  std::string explanations;  ///< the switch's own
};

enum class Way { fresh, reload, restart };

/// Two files one after the other, and what the other end of both links says meanwhile.
struct Pair {
  explicit Pair(uint64_t seed) : chance(seed) {
    first = chance.config();
    second = chance.chance(60) ? chance.changed(first) : chance.config();
    farFirst = chance.chance(70) ? first : chance.changed(first);
    farSecond = chance.chance(70) ? second : chance.changed(second);
    farChanges = chance.chance(60);
    for (bool& has : hasEapKey) has = chance.chance(60);
    changeTime = 5 + chance.below(60);
  }

  End after(Way way) const {
    Machine near(1), far(2);
    for (Machine* const machine : {&near, &far}) {
      Vesk::WorldScope const scope(machine->world);
      for (uint8_t i = 0; i < 2; ++i) {
        if (hasEapKey[i]) machine->eapKeys[i] = eapKey(i);
      }
    }
    near.start(first);
    far.start(farFirst);
    talk(near, far, 0, changeTime);
    if (farChanges) reload(far, farSecond);
    change(near, way);
    talk(near, far, changeTime, changeTime + kSettled);
    Vesk::WorldScope const scope(near.world);
    return End(*near.host);
  }

  ConfigChance chance;
  SwitchConfig first, second, farFirst, farSecond;
  bool farChanges = false;
  bool hasEapKey[2] = {};
  double changeTime = 0;

 private:
  static Dot1x::EapKey eapKey(uint8_t i) {
    return Dot1x::EapKey(Dot1x::Dot1xType(1), WardcodeLib::doEncodeKey(std::string(128, 'b')),
                         "0102", Lumo::EthAddr({2, 0, 0, 0, i, 1}),
                         Lumo::EthAddr({2, 0, 0, 0, i, 2}));
  }
  static void reload(Machine& machine, SwitchConfig const& config) {
    machine.host->configIs(config);
    machine.host->commit();
  }
  void change(Machine& near, Way way) const {
    if (way == Way::reload) return reload(near, second);
    near.end();
    if (way == Way::fresh) near.kept.values.clear();
    near.start(second);
  }
  static void talk(Machine& near, Machine& far, double from, double until) {
    for (double time = from; time < until; time += kStep) {
      near.run(time);
      far.run(time);
      far.receive(near.frames);
      near.receive(far.frames);
    }
  }
};

#ifdef __SANITIZE_ADDRESS__
constexpr uint64_t kPairs = 20;  // each costs ten times as much there
#else
constexpr uint64_t kPairs = 400;
#endif

uint64_t numberOf(char const* variable, uint64_t otherwise) {
  char const* const wanted = std::getenv(variable);
  return wanted ? std::strtoull(wanted, nullptr, 10) : otherwise;
}

void compare(Way way) {
  size_t different = 0;
  uint64_t const first = numberOf("MACSECD_FIRST_CONFIG_PAIR", 1);
  uint64_t const end = first + numberOf("MACSECD_CONFIG_PAIRS", kPairs);
  for (uint64_t seed = first; seed < end && different < 5; ++seed) {
    Pair const pair(seed);
    End const fresh = pair.after(Way::fresh), other = pair.after(way);
    EXPECT_TRUE(other.isAs(fresh)) << "pair " << seed << "\nfresh:\n"
                                   << fresh.text() << "\nother:\n"
                                   << other.text();
    different += !other.isAs(fresh);
  }
}

TEST(ConfigPairs, AReloadEndsWhereAFreshStartBegins) { compare(Way::reload); }

TEST(ConfigPairs, ARestartEndsWhereAFreshStartBegins) { compare(Way::restart); }

// The letters of a key's name change, which an interface has on the wire as characters and another
// one of the same profile as octets; and the other end gets another port number.
TEST(ConfigPairs, ANameThatIsSpelledOtherwiseIsNoFormerKeyForThePortDoctor) {
  Pair const pair(7382);
  End const fresh = pair.after(Way::fresh), reloaded = pair.after(Way::reload);
  EXPECT_EQ(reloaded.states, fresh.states);
}

}  // namespace
}  // namespace Macsecd::Test
