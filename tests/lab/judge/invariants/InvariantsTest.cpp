#include "lab/judge/invariants/Invariants.h"

#include <gmock/gmock.h>

#include <functional>

#include "host/state/SilentWorld.h"
#include "lab/judge/invariants/CountersAddUp.h"
#include "lab/judge/invariants/DataPasses.h"
#include "lab/judge/invariants/EndsAgree.h"
#include "lab/judge/invariants/NoSecretTold.h"
#include "lab/judge/invariants/NoncesOnce.h"
#include "lab/judge/invariants/NothingGrows.h"
#include "lab/judge/invariants/NothingInClear.h"
#include "lab/judge/invariants/OneKeyServer.h"
#include "lab/judge/invariants/SecuredInTheEnd.h"
#include "lab/judge/invariants/StrangersChangeNothing.h"
#include "lab/world/PortView.h"
#include "tests/lab/Played.h"

// Each invariant holds in a run in which nothing is wrong, and can be broken.

namespace Lab {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

Lumo::IntfId const kIntf("Ethernet1");

// Two switches in a run that is held to all invariants; at second 70 somebody meddles with them.
struct Meddled final : Audience {
  using Meddle = std::function<void(Simulation&)>;

  explicit Meddled(Meddle meddle = {}, std::string const& lines = "")
      : Meddled(textWith(lines), std::move(meddle)) {}
  explicit Meddled(std::string const& text, Meddle meddle = {})
      : read(parseScenario(text, "f")),
        simulation(read.scenario, 1),
        invariants(simulation),
        meddle_(std::move(meddle)) {
    EXPECT_TRUE(read.good()) << Macsecd::textOf(read.diagnostics);
    simulation.audienceIs(*this);
    simulation.run();
    for (Breach const& breach : invariants.breaches()) names.insert(breach.invariant);
  }
  static std::string textWith(std::string const& lines) {
    return pair("data every 0.5\n" + lines, "120");
  }
  void instantDone(double time) override {
    if (time >= 70 && meddle_) std::exchange(meddle_, {})(simulation);
  }
  void dataSent(double, DataSent const& sent) override {
    frame.assign(sent.frame.begin(), sent.frame.end());
  }

  ScenarioResult read;
  Simulation simulation;
  Invariants invariants;
  std::set<std::string> names;  // of those that were broken
  Frame frame;                  // of data, sent last

 private:
  Meddle meddle_;
};

// Whatever `work` writes to the trees of a switch, it writes in its world.
Meddled::Meddle at(std::string const& name, std::function<void(Switch&)> work) {
  return [=](Simulation& simulation) {
    Switch& owner = simulation.switchOf(name);
    Vesk::WorldScope const scope(owner.world());
    work(owner);
  };
}

Vesk::Ptr<Macsec::CpStatus> cpStatusOf(Switch const& owner) {
  return owner.host().status()->cpStatus(kIntf);
}

TEST(TheInvariants, HoldWhereNothingIsWrong) {
  Meddled const run;
  EXPECT_THAT(run.names, IsEmpty());
  EXPECT_EQ(run.invariants.all().size(), 13u);
}

TEST(TheInvariants, EachHaveANameAndASentence) {
  Meddled const run;
  std::set<std::string> names;
  for (auto const& invariant : run.invariants.all()) {
    EXPECT_TRUE(names.insert(invariant->name()).second) << invariant->name();
    EXPECT_TRUE(invariant->sentence().ends_with('.')) << invariant->sentence();
  }
}

TEST(TheInvariants, SayWhichOneWasBrokenAndWhen) {
  Breach const breach{"ends-agree", 12.5, "they don't"};
  EXPECT_EQ(breach.text(), "ends-agree: at 12.500: they don't");
}

TEST(NoncesOnce, IsBrokenByAFrameThatLeavesASecondTime) {
  Meddled run;
  NoncesOnce nonces(run.simulation);
  PortName const from{"B", "Ethernet1"};
  nonces.dataSent(120, {from, 1, run.frame});
  EXPECT_THAT(nonces.breaches(), IsEmpty());
  nonces.dataSent(120, {from, 2, run.frame});
  EXPECT_EQ(nonces.breaches().size(), 1u);
}

TEST(NothingInClear, IsBrokenByAFrameWithoutASecTag) {
  Meddled run;
  PortName const a{"A", "Ethernet1"}, b{"B", "Ethernet1"};
  Frame const clear(64);
  NothingInClear sent(run.simulation), taken(run.simulation), refused(run.simulation);
  sent.dataSent(120, {a, 1, run.frame});
  EXPECT_THAT(sent.breaches(), IsEmpty());
  sent.dataSent(120, {a, 1, clear});
  EXPECT_EQ(sent.breaches().size(), 1u);
  taken.dataArrived(120, {a, b, 1, 119, clear, SecY::Verdict::valid, true, true});
  EXPECT_EQ(taken.breaches().size(), 1u);
  refused.dataArrived(120, {a, b, 1, 119, clear, SecY::Verdict::untagged, true, false});
  EXPECT_THAT(refused.breaches(), IsEmpty());
}

// It is told of each instant, and of no frame.
struct HearsNoFrames final : Audience {
  explicit HearsNoFrames(Simulation const& simulation)
      : calm(simulation), heard(simulation, calm) {}
  void instantDone(double time) override {
    calm.instantDone(time);
    heard.instantDone(time);
  }
  Calm calm;
  DataPasses heard;
};

TEST(DataPasses, IsBrokenByALinkThroughWhichNothingComes) {
  auto const read = parseScenario(pair("data every 0.5\n", "40"), "f");
  Simulation simulation(read.scenario, 1);
  HearsNoFrames deaf(simulation);
  simulation.audienceIs(deaf);
  simulation.run();
  ASSERT_FALSE(deaf.heard.breaches().empty());
  // Both are open from 8.001 on.
  EXPECT_NEAR(deaf.heard.breaches()[0].time, 8 + DataPasses::kLongest, 2);
}

TEST(DataPasses, IsBrokenByAnOpenPortWithoutAKeyToSendWith) {
  Meddled run;
  Calm const calm(run.simulation);
  DataPasses passes(run.simulation, calm);
  PortName const from{"A", "Ethernet1"};
  passes.dataSent(120, {from, 1, run.frame});
  EXPECT_THAT(passes.breaches(), IsEmpty());
  passes.dataSent(120, {from, 2, {}});
  EXPECT_EQ(passes.breaches().size(), 1u);
}

TEST(NothingLost, IsBrokenByAReceiveKeyThatHardwareHasLost) {
  Meddled const run(at("B", [](Switch& b) {
    for (uint8_t an = 0; an < SecY::kAssociationNumbers; ++an) b.secY(kIntf)->rxSaDel(an);
  }));
  EXPECT_THAT(run.names, Contains("nothing-lost"));
}

TEST(NothingLost, LetsFramesBeLostWhileALinkIsDisturbed) {
  Meddled const run({}, "at 80 link down on B Ethernet1\nat 85 link up on B Ethernet1\n");
  EXPECT_THAT(run.names, IsEmpty());
}

TEST(EndsAgree, IsBrokenByAnEndThatExpectsAnotherSsci) {
  Meddled const run(at("A", [](Switch& a) { cpStatusOf(a)->peerSsciIs(Macsec::Ssci()); }));
  EXPECT_THAT(run.names, Contains("ends-agree"));
}

// Both are told to send with a key already.
TEST(EndsAgree, IsBrokenSoonByAnEndThatGoesOnWithItsFormerKey) {
  Meddled run(at("A", [](Switch& a) {
    Macsec::Sak former = cpStatusOf(a)->txSak();
    former.keyNumIs(former.keyNum() + 1);
    cpStatusOf(a)->txSakIs(former);
  }));
  auto const breaches = run.invariants.breaches();
  auto const found = std::ranges::find(breaches, "ends-agree", &Breach::invariant);
  ASSERT_NE(found, breaches.end());
  EXPECT_LT(found->time, 70 + EndsAgree::kChange);
}

TEST(OneKeyServer, IsBrokenByAnEndThatHasElectedTheOther) {
  Meddled const run(at("B", [](Switch& b) {
    PortView(*b.host().status(), kIntf)
        .principal()
        ->keyServerIs(b.host().status()->portStatus(kIntf)->mySci());
  }));
  EXPECT_THAT(run.names, Contains("one-key-server"));
}

TEST(OneKeyServer, IsBrokenByAnotherKeyServerOfTheKeyInUseAlone) {
  Meddled run;
  Calm const calm(run.simulation);
  OneKeyServer one(run.simulation, calm);
  Macsecd::PortEvent other{EventKind::keyServer, "Ethernet1", 120};
  other.key = "0badc0de";
  one.happened({120, "A", other});
  EXPECT_THAT(one.breaches(), IsEmpty());
  other.key =
      PortView(*run.simulation.switchOf("A").host().status(), kIntf).principal()->ckn().charPtr();
  one.happened({120, "A", other});
  EXPECT_EQ(one.breaches().size(), 1u);
}

TEST(StrangersChangeNothing, IsBrokenByAMessageThatIsTakenTwice) {
  Meddled run;
  StrangersChangeNothing strangers(run.simulation);
  std::string const name = "A";
  FramePassed frame{"Ethernet1", FrameWay::in, "ab", "0102", 7, 100, {}, "accepted"};
  strangers.happened({119, name, frame});
  EXPECT_THAT(strangers.breaches(), IsEmpty());
  strangers.happened({120, name, frame});
  EXPECT_EQ(strangers.breaches().size(), 1u);
}

TEST(NothingGrows, IsBrokenByASwitchThatKeepsMoreThanItsPortsNeed) {
  Meddled run;
  NothingGrows values(run.simulation, {.values = {10, 0, 0, 0, 0}});
  NothingGrows timers(run.simulation, {.timers = {1, 0, 0, 0, 0}});
  values.instantDone(120);
  timers.instantDone(120);
  EXPECT_THAT(values.breaches(), ElementsAre(testing::Field(&Breach::what, HasSubstr("values")),
                                             testing::Field(&Breach::what, HasSubstr("values"))));
  EXPECT_FALSE(timers.breaches().empty());
}

// But for the key servers that are remembered.
TEST(NothingGrows, HoldsASwitchToWhatItHadAtTheStartWhenItsInterfacesHaveGone) {
  Meddled const run({}, "at 75 delete interface Ethernet1 on A\n");
  EXPECT_THAT(run.names, IsEmpty());
  Switch const& a = *run.simulation.switches()[0];
  EXPECT_TRUE(a.host().status()->portStatus().empty());
  EXPECT_LE(a.store().values().size(), 8u + 6u + 1u);
  EXPECT_LE(a.host().timerWheel()->armed(), 5u);
}

TEST(StoreHoldsTree, IsBrokenByAWriteThatTheStoreHasNotSeen) {
  Meddled const run(at("A", [](Switch& a) {
    Macsecd::SilentWorld unheard(a.world());
    Vesk::WorldScope const scope(unheard);
    a.host().status()->latestKeyEnablePeriodIs(77);
  }));
  EXPECT_THAT(run.names, Contains("store-holds-tree"));
}

TEST(StoreHoldsTree, WaitsForAProcessThatStandsStillWhileItsStoreIsWellAgain) {
  Meddled const run({},
                    "at 60 store of A refuses\nat 70 stop A for 14\nat 71 store of A is well\n");
  EXPECT_THAT(run.names, Not(Contains("store-holds-tree")));
}

TEST(ExplainNamesCauses, IsBrokenByACauseThatIsNamedOfALinkThatIsWell) {
  Frame const junk(64, 0x88);
  Meddled const run([&](Simulation& simulation) {
    Frame frame = junk;
    frame[12] = 0x88, frame[13] = 0x8e;
    simulation.switchOf("A").receive(kIntf, frame);
  });
  EXPECT_THAT(run.names, ElementsAre("explain-names-causes"));
}

TEST(NoSecretTold, IsBrokenByALogLineWithAKey) {
  Meddled run;
  NoSecretTold secrets(run.simulation);
  std::string const name = "A";
  secrets.happened({120, name, SyslogLine{"X", 6, {}, "nothing"}});
  EXPECT_THAT(secrets.breaches(), IsEmpty());
  secrets.happened({120, name, SyslogLine{"X", 6, {}, "the key is " + key128 + "!"}});
  EXPECT_EQ(secrets.breaches().size(), 1u);
}

TEST(CountersAddUp, IsBrokenByAFrameThatNoCounterHas) {
  Meddled run;
  CountersAddUp counters(run.simulation);
  std::string const name = "A";
  counters.happened({120, name, FramePassed{"Ethernet1", FrameWay::out, {}, {}, {}, 100, {}, {}}});
  counters.ended();
  EXPECT_FALSE(counters.breaches().empty());
}

TEST(SecuredInTheEnd, IsBrokenByALinkThatStaysClosed) {
  Meddled const run(at("A", [](Switch& a) { a.host().config()->profile("core")->intfDel(kIntf); }));
  EXPECT_THAT(run.names, Contains("secured-in-the-end"));
}

TEST(SecuredInTheEnd, AsksForNoPrimaryKeyThatIsConfiguredBeside8021X) {
  std::string text = Meddled::textWith("");
  text.replace(text.find("key: {ckn"), 0, "dot1x: true, ");
  Meddled const run(text);
  EXPECT_FALSE(run.simulation.switchOf("B").passes(kIntf));
  EXPECT_THAT(run.names, IsEmpty());
}

TEST(SecuredInTheEnd, AsksNothingOfTwoEndsWithOneSci) {
  Meddled const run({},
                    "at 20 delete interface Ethernet1 on B\n"
                    "at 20.5 make interface Ethernet1 on B with address 02:00:00:00:00:01\n");
  EXPECT_FALSE(run.simulation.switchOf("B").passes(kIntf));
  EXPECT_THAT(run.names, IsEmpty());
}

}  // namespace
}  // namespace Lab
