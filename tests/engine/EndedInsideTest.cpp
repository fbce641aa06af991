#include <gtest/gtest.h>

#include <map>
#include <set>

#include "tests/support/Told.h"

// Whatever an agent ends inside whatever notification: the engine doesn't crash, what it leaves is
// what the tree asks for, and the port opens again when all that it needs is back.

namespace Macsec {
namespace {

using Support::Switch;

constexpr char const* kPrimary = "6162";
constexpr char const* kFallback = "6364";
constexpr char const* kThird = "6566";

Cak primary() { return Support::key(kPrimary); }
Cak fallback() { return Support::key(kFallback, Support::kOtherCak); }

void linkIs(Switch& s, uint8_t link) {
  if (auto intf = s.ethDir->intfStatus(s.intfId)) intf->linkStatusIs(link);
}
void keyIs(Switch& s, Cak const& key) {
  if (auto intf = s.intfStatus()) intf->keyIs(key);
}
void defaultKeyIs(Switch& s, Cak const& key) {
  if (auto intf = s.intfStatus()) intf->defaultKeyIs(key);
}
void configure(Switch& s) {
  auto intf = s.status->intfStatusIs(s.intfId, MacsecParams());
  intf->keyServerPriorityIs(10);
  if (intf->key().ckn() != kPrimary || intf->key().cak() == Cak().cak()) intf->keyIs(primary());
  if (intf->defaultKey() == Cak()) intf->defaultKeyIs(fallback());
}

using Deed = void (*)(Switch&);

std::map<std::string, Deed> const deeds = {
    {"LinkDown", [](Switch& s) { linkIs(s, 0); }},
    {"LinkDownAndUp",
     [](Switch& s) {
       linkIs(s, 0);
       linkIs(s, Interface::linkUp);
     }},
    {"LinkUp", [](Switch& s) { linkIs(s, Interface::linkUp); }},
    {"KeyDeleted", [](Switch& s) { keyIs(s, Cak()); }},
    {"KeyDeletedAndSetAgain",
     [](Switch& s) {
       keyIs(s, Cak());
       keyIs(s, primary());
     }},
    {"KeyOfAnotherName", [](Switch& s) { keyIs(s, Support::key(kThird)); }},
    {"OtherKeyOfTheName", [](Switch& s) { keyIs(s, Support::key(kPrimary, Support::kOtherCak)); }},
    {"FallbackTakesTheName", [](Switch& s) { defaultKeyIs(s, primary()); }},
    {"FallbackDeleted", [](Switch& s) { defaultKeyIs(s, Cak()); }},
    {"BothKeysDeleted",
     [](Switch& s) {
       keyIs(s, Cak());
       defaultKeyIs(s, Cak());
     }},
    {"MacsecOff", [](Switch& s) { s.status->macsecEnabledIs(false); }},
    {"MacsecOffAndOn",
     [](Switch& s) {
       s.status->macsecEnabledIs(false);
       s.status->macsecEnabledIs(true);
     }},
    {"MacsecOn", [](Switch& s) { s.status->macsecEnabledIs(true); }},
    {"Configured", [](Switch& s) { configure(s); }},
    {"Unconfigured", [](Switch& s) { s.status->intfStatusDel(s.intfId); }},
    {"ConfiguredAnew",
     [](Switch& s) {
       s.status->intfStatusDel(s.intfId);
       configure(s);
     }},
    {"HardwareGone", [](Switch& s) { s.slice->statusDel(s.intfId); }},
    {"InterfaceGone", [](Switch& s) { s.ethDir->intfStatusDel(s.intfId); }},
    {"EngineDropped", [](Switch& s) { s.root = nullptr; }},
    {"PeersDeleted",
     [](Switch& s) {
       for (char const* ckn : {kPrimary, kFallback}) {
         if (auto actor = s.actor(ckn)) {
           actor->livePeerDelAll();
           actor->potentialPeerDelAll();
         }
       }
     }},
};

/// A life of two switches: a key, a second one that exhaustion asks for, a primary key that goes
/// and comes back, and so do the link, MACsec and the configuration. One notification in it runs a
/// deed.
class Life {
 public:
  Life() {
    a.world.delays = {0, 0};
    b.world.delays = {1, 1};
    told.then = [this](char const* what) {
      if (!a.status->macsecEnabled() && kinds.empty()) return;
      kinds.push_back(what);
      if (kinds.size() == at) deed(a);
    };
  }

  void play() {
    a.start(primary(), fallback(), 10);
    b.start(primary(), fallback(), 20);
    segment.runUntil(14);
    a.in([&] {
      if (auto actor = a.actor(kPrimary)) actor->llpnExhaustionInc(1);
    });
    segment.runUntil(18);
    a.in([&] { keyIs(a, Cak()); });
    segment.runUntil(20);
    a.in([&] { keyIs(a, primary()); });
    segment.runUntil(24);
    a.in([&] { linkIs(a, 0); });
    segment.runUntil(25);
    a.in([&] { linkIs(a, Interface::linkUp); });
    segment.runUntil(36);
    a.in([&] { a.status->macsecEnabledIs(false); });
    segment.runUntil(37);
    a.in([&] { a.status->macsecEnabledIs(true); });
    segment.runUntil(48);
    a.in([&] { a.status->intfStatusDel(a.intfId); });
    segment.runUntil(49);
    a.in([&] { configure(a); });
    segment.runUntil(60);
    at = 0;
  }
  void repair() {
    a.in([&] {
      a.ethDir->intfStatusIs(a.intfId, Lumo::EthAddr({2, 0, 0, 0, 0, 1}), 1);
      a.slice->statusIs(a.intfId);
      configure(a);
      if (a.status->intfStatus(a.intfId)->defaultKey().ckn() != kFallback)
        defaultKeyIs(a, fallback());
      if (a.intfStatus()->key().cak() != Cak().cak()) keyIs(a, primary());
      a.status->macsecEnabledIs(true);
      if (!a.root) a.startEngine();
      linkIs(a, 0);
      linkIs(a, Interface::linkUp);
    });
    segment.runUntil(segment.now() + 60);
  }

  Switch a{1};
  Switch b{2};
  Support::Told told{a};
  Support::Segment segment{{&a, &b}};
  // What it was told of, in order.
  std::vector<std::string> kinds;
  size_t at = 0;
  Deed deed = nullptr;
};

// What there is follows from what the tree asks for; else a word on what doesn't.
std::string disorderOfActors(Switch& s) {
  size_t principals = 0;
  for (MkaActorStatus& actor : s.portStatus()->actorStatus()) {
    auto const sm = s.actorSm(actor.ckn());
    if (!sm) return "an actor without its state machine";
    if (static_cast<bool>(sm->cpSm()) != actor.principal()) return "the controlled port";
    if (static_cast<bool>(sm->keyServerSm()) != actor.principal()) return "the key server";
    if (actor.principal() && s.portSm()->principalActorCkn() != actor.ckn()) return "the principal";
    principals += actor.principal();
  }
  if (principals > 1) return "two principals";
  if (principals == 0 && !s.portSm()->principalActorCkn().empty()) return "a principal that went";
  for (MkaActorSm& sm : s.portSm()->mkaActorSm()) {
    if (!s.actor(sm.ckn())) return "an actor's state machine without its status";
  }
  for (Cak const& key : {s.intfStatus()->key(), s.intfStatus()->defaultKey()}) {
    if (key != Cak() && !s.actor(key.ckn())) return "a key without an actor";
  }
  return "";
}

std::string disorder(Switch& s) {
  bool const isOn = s.root && s.status->macsecEnabled();
  if (s.root && static_cast<bool>(s.root->mkaSm()) != isOn) return "MkaSm";
  auto const eth = s.ethDir->intfStatus(s.intfId);
  bool const isUp = eth && eth->linkStatus() == Interface::linkUp;
  bool const hasHardware = static_cast<bool>(s.hwStatus->status(s.intfId));
  bool runs = isOn && s.intfStatus() && isUp;
  if (runs && !hasHardware) runs = static_cast<bool>(s.portSm());
  if (isOn && static_cast<bool>(s.portSm()) != runs) return "MkaPortSm";
  if (runs) return disorderOfActors(s);
  if (s.portStatus() && !s.portStatus()->actorStatus().empty()) return "actors without a port";
  if (!s.cpStatus()) return "";
  if (s.cpStatus()->controlledPortEnabled()) return "open without a port";
  return s.cpStatus()->rxSak().empty() ? "" : "keys without a port";
}

// The first two and the last notification of each kind, and some of all the others.
std::set<size_t> placesIn(std::vector<std::string> const& kinds) {
  constexpr size_t kEvery = 11;
  std::map<std::string, std::vector<size_t>> byKind;
  std::set<size_t> places;
  for (size_t at = 1; at <= kinds.size(); ++at) {
    auto& sameKind = byKind[kinds[at - 1]];
    sameKind.push_back(at);
    if (sameKind.size() <= 2 || at % kEvery == 0) places.insert(at);
  }
  for (auto const& [kind, all] : byKind) places.insert(all.back());
  return places;
}

class EndedInside : public ::testing::TestWithParam<std::string> {};

TEST_P(EndedInside, ANotificationOfAnyKindTheEngineGoesOn) {
  Life undisturbed;
  undisturbed.play();
  ASSERT_EQ(disorder(undisturbed.a), "");
  ASSERT_TRUE(undisturbed.a.cpStatus()->controlledPortEnabled());
  for (size_t at : placesIn(undisturbed.kinds)) {
    Life life;
    life.deed = deeds.at(GetParam());
    life.at = at;
    life.play();
    SCOPED_TRACE(GetParam() + " inside notification " + std::to_string(at) + ", of " +
                 undisturbed.kinds[at - 1]);
    EXPECT_EQ(disorder(life.a), "");
    life.repair();
    EXPECT_EQ(disorder(life.a), "");
    ASSERT_TRUE(life.a.cpStatus() && life.a.cpStatus()->controlledPortEnabled());
    EXPECT_TRUE(life.b.cpStatus()->controlledPortEnabled());
  }
}

std::vector<std::string> namesOfDeeds() {
  std::vector<std::string> names;
  for (auto const& [name, deed] : deeds) names.push_back(name);
  return names;
}

INSTANTIATE_TEST_SUITE_P(Of, EndedInside, ::testing::ValuesIn(namesOfDeeds()),
                         [](auto const& test) { return test.param; });

}  // namespace
}  // namespace Macsec
