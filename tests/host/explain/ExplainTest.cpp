#include "host/explain/Explain.h"

#include "platform/WardcodeLib.h"
#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<CauseKind> kinds(Host const& host, Lumo::IntfId intfId) {
  std::vector<CauseKind> kinds;
  for (Cause const& cause : explain(host, intfId).causes) kinds.push_back(cause.kind);
  return kinds;
}

/// Has a switch give its keys for the longer suite under a key of the shorter one, as equipment may
/// that derives its keys otherwise. Hears each message before the codec does.
class LongKeys {
 public:
  explicit LongKeys(Switch& owner)
      : reactor_(Vesk::make<Reactor>(*this, owner.host.pamManager()->txMessageInfo())) {}
  ~LongKeys() { Vesk::retire(reactor_); }

 private:
  struct Reactor final : Vesk::Reactor<Macsec::MkaMessageInfo, LongKeys, Reactor> {
    using Vesk::Reactor<Macsec::MkaMessageInfo, LongKeys, Reactor>::Reactor;
    void onCount() override {
      Macsec::SakDistInfo dist = notifier()->mkaInfo()->sakDistInfo();
      if (dist == Macsec::SakDistInfo()) return;
      dist.cipherSuiteIs(Macsec::CipherSuite::gcmAesXpn256);
      dist.sakIs(WardcodeLib::doEncodeKey(Vesk::String8(std::string(64, '7'))));
      notifier()->mkaInfo()->sakDistInfoIs(dist);
    }
  };
  Vesk::Ptr<Reactor> reactor_;
};

TEST(ExplainSuite, NamesAKeyServerThatGivesKeysForAnotherOne) {
  Switch b(2), a(1);
  LongKeys const foreign(a);
  for (Switch* one : {&a, &b}) {
    one->bringUp();
  }
  talk(a, b, 12);
  Vesk::WorldScope const scope(b.world);
  EXPECT_THAT(kinds(b.host, kIntf),
              ElementsAre(CauseKind::cipherMismatch, CauseKind::notPrincipal));
  EXPECT_EQ(
      explain(b.host, kIntf).causes[0].what,
      "the key server gives keys for gcm-aes-xpn-256, and this end is set to gcm-aes-xpn-128");
  EXPECT_THAT(kinds(a.host, kIntf), ElementsAre(CauseKind::peerNotReceiving));
}

class ExplainHost : public ::testing::Test {
 protected:
  ExplainHost() {
    for (Switch* one : {&a, &b}) {
      one->bringUp();
    }
    talk(a, b, 20);
  }
  Switch b{2}, a{1};
};

TEST_F(ExplainHost, NamesWhatTheHardwareSaysUntilItSaysNothing) {
  a.host.hardwareFaultIs(kIntf, "Ethernet1-sec: the name is taken");
  auto const told = explain(a.host, kIntf);
  EXPECT_TRUE(told.secured);
  ASSERT_EQ(told.causes.size(), 1u);
  EXPECT_EQ(told.causes[0].kind, CauseKind::hardwareRefuses);
  EXPECT_EQ(told.causes[0].what, "Ethernet1-sec: the name is taken");
  a.host.hardwareFaultIs(kIntf, "");
  EXPECT_THAT(kinds(a.host, kIntf), IsEmpty());
}

TEST(ExplainAlways, NamesACauseAtEveryMomentInWhichAPortIsntSecured) {
  Switch b(2), a(1);
  for (Switch* one : {&a, &b}) {
    one->bringUp();
  }
  for (double time = 0; time < 20; time += 0.25) {
    talk(a, b, time);
    for (Switch* one : {&a, &b}) {
      auto const told = explain(one->host, kIntf);
      EXPECT_TRUE(told.secured || !told.causes.empty())
          << "switch " << one->number << " at " << time;
    }
  }
}

TEST_F(ExplainHost, NamesAKeyThatTheKeyServerDoesntSendWithYet) {
  Vesk::WorldScope const scope(b.world);
  auto const cp = b.host.status()->cpStatus(kIntf);
  cp->controlledPortEnabledIs(false);
  EXPECT_THAT(kinds(b.host, kIntf), ElementsAre(CauseKind::waitingToSend));
}

TEST_F(ExplainHost, NamesFramesThatArentValidUnderTheKeyForALifeTime) {
  HardwareReport report;
  report.framesNotValid = 7;
  report.notValidTime = a.world.time;
  a.host.hardwareReportsFrom([&](Lumo::IntfId) { return report; });
  auto const told = explain(a.host, kIntf);
  ASSERT_EQ(told.causes.size(), 1u);
  EXPECT_EQ(told.causes[0].kind, CauseKind::framesNotValid);
  EXPECT_THAT(told.causes[0].what, ::testing::HasSubstr("(7 so far, InPktsNotValid)"));
  a.world.time += 7;
  EXPECT_THAT(kinds(a.host, kIntf), IsEmpty());
}

TEST_F(ExplainHost, NamesWhatIsNotThere) {
  Vesk::WorldScope const scope(a.world);
  EXPECT_THAT(kinds(a.host, Lumo::IntfId("Ethernet9")), ElementsAre(CauseKind::notConfigured));
  a.host.slices()->entityPtrDelAll();
  EXPECT_THAT(kinds(a.host, kIntf), ElementsAre(CauseKind::unknownToHardware));
}

TEST_F(ExplainHost, NamesAnInterfaceThatHasGone) {
  a.host.interfaceDel(kIntf);
  EXPECT_THAT(kinds(a.host, kIntf), ElementsAre(CauseKind::noInterface));
}

}  // namespace
}  // namespace Macsecd
