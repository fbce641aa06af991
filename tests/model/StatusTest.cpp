#include <gtest/gtest.h>

#include "model/Factories.h"
#include "runtime/Exceptions.h"

namespace Macsec {
namespace {

Lumo::IntfId const kPortIntf("Ethernet1");

template <class F>
std::string thrownBy(F run) {
  try {
    run();
  } catch (Vesk::NameInUseException const& e) {
    return e.what();
  } catch (Vesk::RangeException const& e) {
    return e.what();
  }
  return "nothing";
}

struct Count final : Vesk::Reactor<Status const, int, Count> {
  using Reactor::Reactor;
  void onIntfStatus(Lumo::IntfId const&) override { ++owner(); }
  void onCpStatus(Lumo::IntfId const&) override { ++owner(); }
  void onPortStatus(Lumo::IntfId const&) override { ++owner(); }
};

TEST(StatusTree, AFreshOneHasThePeriodsOfTheProtocol) {
  auto status = statusFactory("status");
  EXPECT_EQ(status->mkpduPeriod(), 2.0);
  EXPECT_EQ(Status::mkpduPeriodBounded, 0.5);
  EXPECT_EQ(status->mkpduThreshold(), 2);
  EXPECT_EQ(status->mkaLifeTime(), 6);
  EXPECT_EQ(status->defaultKeyActivationPeriod(), 30);
  EXPECT_EQ(status->actorDelPeriod(), 8);
  EXPECT_EQ(status->oldKeyRetirementPeriod(), 3);
  EXPECT_EQ(status->latestKeyEnablePeriod(), 180);
  EXPECT_FALSE(status->macsecEnabled() || status->delayProtection());
  EXPECT_EQ(status->fipsStatus(), FipsStatus());
  EXPECT_TRUE(status->intfStatus().empty() && status->cpStatus().empty());
  EXPECT_TRUE(status->portStatus().empty());
}

TEST(StatusTree, TheDefaultsHaveNames) {
  EXPECT_EQ(Status::mkpduPeriodDefault, 2.0);
  EXPECT_EQ(Status::mkpduThresholdDefault, 2);
  EXPECT_EQ(Status::mkaLifeTimeDefault, 6);
  EXPECT_EQ(Status::defaultKeyActivationPeriodDefault, 30);
  EXPECT_EQ(Status::actorDelPeriodDefault, 8);
  EXPECT_EQ(Status::oldKeyRetirementPeriodDefault, 3);
  EXPECT_EQ(Status::latestKeyEnablePeriodDefault, 180);
  EXPECT_FALSE(Status::macsecEnabledDefault || Status::delayProtectionDefault);
  EXPECT_EQ(IntfStatus::dot1xTypeDefault, 2);
  EXPECT_EQ(MkaActorStatus::msgNumDefault, 0u);
  EXPECT_TRUE(MkaActorStatus::macsecDesiredDefault);
  EXPECT_FALSE(CpStatus::controlledPortEnabledDefault);
}

TEST(StatusTree, AFreshInterfaceHasItsDefaults) {
  auto intf = statusFactory("status")->intfStatusIs(kPortIntf, MacsecParams());
  EXPECT_EQ(intf->key(), Cak());
  EXPECT_EQ(intf->defaultKey(), Cak());
  EXPECT_EQ(intf->keyServerPriority(), 0);
  EXPECT_EQ(intf->reKeyPeriod(), 0.0);
  EXPECT_EQ(intf->dot1xType(), 2);
  EXPECT_EQ(intf->groupCakLifetime(), 0u);
  EXPECT_EQ(intf->profileName(), "");
  EXPECT_EQ(intf->cipher(), CipherSuite::gcmAesXpn128);
  EXPECT_FALSE(intf->includeSci());
}

TEST(StatusTree, AFreshActorHasItsDefaults) {
  auto port = statusFactory("status")->portStatusIs(kPortIntf);
  EXPECT_EQ(port->mySci(), Sci());
  EXPECT_EQ(port->anOfNextKey(), AssociationNumber(0));
  auto actor = port->actorStatusIs("6162");
  for (Vesk::String8 const& text : {actor->cak(), actor->msgId(), actor->ick(), actor->kek()}) {
    EXPECT_EQ(text, "");
  }
  EXPECT_EQ(actor->ckn(), "6162");
  EXPECT_EQ(actor->msgNum(), 0u);
  EXPECT_EQ(actor->keyNum(), 0u);
  EXPECT_EQ(actor->llpnExhaustion(), 0u);
  EXPECT_EQ(actor->distSak(), Sak());
  EXPECT_EQ(actor->distCak(), Cak());
  EXPECT_EQ(actor->keyServer(), Sci());
  EXPECT_EQ(actor->keysLPN(), KeysLPN());
  EXPECT_TRUE(actor->macsecDesired());
  EXPECT_FALSE(actor->chgdServer() || actor->electedSelf() || actor->newSak() ||
               actor->principal() || actor->sakTransmit() || actor->success() ||
               actor->defaultActor());
  EXPECT_TRUE(actor->livePeer().empty() && actor->potentialPeer().empty());
  auto peer = actor->livePeerIs("b1");
  EXPECT_EQ(peer->baseInfo(), BasicInfo());
  EXPECT_EQ(peer->sakUseInfo(), SakUseInfo());
  EXPECT_EQ(peer->timeStamp(), 0.0);
}

TEST(StatusTree, AFreshControlledPortHasItsDefaults) {
  auto cp = statusFactory("status")->cpStatusIs(kPortIntf, MacsecParams());
  EXPECT_FALSE(cp->protectFrames() || cp->validateFrames() || cp->portValid());
  EXPECT_FALSE(cp->controlledPortEnabled());
  EXPECT_EQ(cp->replayProtect(), 0u);
  EXPECT_EQ(cp->confidentialityOffset(), 0);
  EXPECT_EQ(cp->oldSakContext(), SakContext());
  EXPECT_EQ(cp->latestSakContext(), SakContext());
  EXPECT_EQ(cp->txSak(), Sak());
  EXPECT_TRUE(cp->rxSak().empty() && cp->rxLPN().empty());
  EXPECT_EQ(cp->mySsci(), Ssci());
  EXPECT_EQ(cp->peerSsci(), Ssci());
}

TEST(StatusTree, CreatesOrReturnsAnEntryAndTellsOnce) {
  auto status = statusFactory("status");
  int told = 0;
  auto count = Vesk::make<Count>(told, status);
  MacsecParams const params(CipherSuite::gcmAesXpn256, true);
  auto const entry = status->intfStatusIs(kPortIntf, params);
  EXPECT_EQ(status->intfStatusIs(kPortIntf, params), entry);
  EXPECT_EQ(told, 1);
  EXPECT_EQ(status->portStatusIs(kPortIntf), status->portStatusIs(kPortIntf));
  EXPECT_EQ(told, 2);
  EXPECT_FALSE(status->intfStatus(Lumo::IntfId("Ethernet2")));
  EXPECT_FALSE(status->intfStatusDel(Lumo::IntfId("Ethernet2")));
  EXPECT_EQ(told, 2);
  EXPECT_EQ(status->intfStatusDel(kPortIntf), entry);
  EXPECT_EQ(told, 3);
  Vesk::retire(count);
}

TEST(StatusTree, OtherParametersForALiveEntryThrow) {
  auto status = statusFactory("status");
  auto const entry = status->intfStatusIs(kPortIntf, MacsecParams());
  status->cpStatusIs(kPortIntf, MacsecParams());
  MacsecParams const other(CipherSuite::gcmAesXpn256, false);
  std::string const text =
      "Reinstantiating the entity with name Ethernet1 where constructor parameter attribute "
      "_macsecParams has a different value of " +
      Vesk::valueToStrep(other) + " than the current value of " +
      Vesk::valueToStrep(MacsecParams()) + " not allowed";
  EXPECT_EQ(thrownBy([&] { status->intfStatusIs(kPortIntf, other); }), text);
  EXPECT_EQ(thrownBy([&] { status->cpStatusIs(kPortIntf, other); }), text);
  EXPECT_EQ(status->intfStatus(kPortIntf), entry);
  status->intfStatusDel(kPortIntf);
  EXPECT_EQ(status->intfStatusIs(kPortIntf, other)->macsecParams(), other);
}

TEST(StatusTree, CountersWrapAroundAndZeroIsSilent) {
  struct Writes final : Vesk::Reactor<MkaActorStatus const, int, Writes> {
    using Reactor::Reactor;
    void onMsgNum() override { ++owner(); }
    void onLlpnExhaustion() override { ++owner(); }
  };
  auto actor = MkaActorStatus::MkaActorStatusIs("6162");
  int told = 0;
  auto writes = Vesk::make<Writes>(told, actor);
  actor->msgNumIs(0xFFFFFFFF);
  EXPECT_EQ(actor->msgNumInc(2), 1u);
  EXPECT_EQ(actor->msgNumInc(0), 1u);
  EXPECT_EQ(told, 2);
  actor->llpnExhaustionIs(0xFFFFFFFF);
  EXPECT_EQ(actor->llpnExhaustionInc(1), 0u);
  EXPECT_EQ(actor->llpnExhaustionInc(0), 0u);
  EXPECT_EQ(told, 4);
  Vesk::retire(writes);
}

TEST(StatusTree, AnEqualKeyForAnAssociationNumberIsSilent) {
  struct Writes final : Vesk::Reactor<CpStatus const, int, Writes> {
    using Reactor::Reactor;
    void onRxSak(AssociationNumber const& an) override { owner() += 10 + an.value(); }
    void onRxLPN(AssociationNumber const&) override { owner() += 1000; }
  };
  auto cp = CpStatus::CpStatusIs(kPortIntf, MacsecParams());
  int told = 0;
  auto writes = Vesk::make<Writes>(told, cp);
  Sak sak{AssociationNumber(2)};
  cp->rxSakIs(sak);
  cp->rxSakIs(sak);
  EXPECT_EQ(told, 12);
  sak.keyNumIs(9);
  cp->rxSakIs(sak);
  EXPECT_EQ(told, 24);
  EXPECT_EQ(cp->rxSak().members(), 1u);
  cp->rxSakDel(AssociationNumber(3));
  EXPECT_EQ(told, 24);
  cp->rxSakDelAll();
  EXPECT_EQ(told, 36);
  cp->rxLPNIs(RxLPN(0, AssociationNumber(0)));
  cp->rxLPNIs(RxLPN(0, AssociationNumber(0)));
  EXPECT_EQ(told, 1036);
  Vesk::retire(writes);
}

// The hardware side.

TEST(HardwareStatus, AFreshOneHasItsDefaults) {
  auto hw = MacSecIntfStatus::MacSecIntfStatusIs(kPortIntf);
  EXPECT_EQ(hw->secHdrSize(), 24u);
  EXPECT_FALSE(hw->configured());
  EXPECT_FALSE(hw->txSaStatus());
  EXPECT_TRUE(hw->rxSaStatus().empty());
}

TEST(HardwareStatus, TheTransmitSlotIsReplacedWheneverTheKeyChanges) {
  struct Writes final : Vesk::Reactor<MacSecIntfStatus const, int, Writes> {
    using Reactor::Reactor;
    void onTxSaStatus() override { ++owner(); }
  };
  auto hw = MacSecIntfStatus::MacSecIntfStatusIs(kPortIntf);
  int told = 0;
  auto writes = Vesk::make<Writes>(told, hw);
  auto const first = hw->txSaStatusIs(AssociationNumber(1), "id", 7);
  first->lpnIs(99);
  EXPECT_EQ(hw->txSaStatusIs(AssociationNumber(1), "id", 7), first);
  EXPECT_EQ(told, 1);
  auto const second = hw->txSaStatusIs(AssociationNumber(1), "id", 8);
  EXPECT_NE(second, first);
  EXPECT_EQ(second->lpn(), 0u);
  EXPECT_NE(hw->txSaStatusIs(AssociationNumber(2), "id", 8), second);
  EXPECT_NE(hw->txSaStatusIs(AssociationNumber(2), "other", 8), second);
  EXPECT_EQ(told, 4);
  hw->txSaStatusDel();
  EXPECT_FALSE(hw->txSaStatus());
  EXPECT_EQ(told, 5);
  Vesk::retire(writes);
}

TEST(HardwareStatus, AReceiveEntryMustGoBeforeItsNumberServesAnotherKey) {
  auto hw = MacSecIntfStatus::MacSecIntfStatusIs(kPortIntf);
  AssociationNumber const an(1);
  auto const first = hw->rxSaStatusIs(an, "id", 7);
  EXPECT_EQ(hw->rxSaStatusIs(an, "id", 7), first);
  std::string const start =
      "Reinstantiating the entity with name 1 where constructor parameter attribute ";
  EXPECT_EQ(thrownBy([&] { hw->rxSaStatusIs(an, "other", 7); }),
            start +
                "_keyId has a different value of 'other' than the current value of 'id' not "
                "allowed");
  EXPECT_EQ(thrownBy([&] { hw->rxSaStatusIs(an, "id", 8); }),
            start + "_keyNum has a different value of 8 than the current value of 7 not allowed");
  EXPECT_EQ(hw->rxSaStatus(an), first);
  hw->rxSaStatusDel(an);
  EXPECT_EQ(hw->rxSaStatusIs(an, "other", 8)->keyNum(), 8u);
}

TEST(HardwareStatus, TheDirectoryOnlyPointsAtItsEntries) {
  auto slice = macSecStatusFactory("slice");
  auto dir = macSecIntfStatusPtrDirFactory("dir");
  auto const hw = slice->statusIs(kPortIntf);
  dir->statusIs(hw);
  slice->statusDel(kPortIntf);
  EXPECT_EQ(dir->status(kPortIntf), hw);
  dir->statusDel(kPortIntf);
  EXPECT_FALSE(dir->status(kPortIntf));
}

TEST(HardwareStatus, TheDirectoryReplacesAPointerAndTellsUnlessItIsTheSame) {
  struct Writes final : Vesk::Reactor<MacSecIntfStatusPtrDir const, int, Writes> {
    using Reactor::Reactor;
    void onStatus(Lumo::IntfId const&) override { ++owner(); }
  };
  auto dir = macSecIntfStatusPtrDirFactory("dir");
  int told = 0;
  auto writes = Vesk::make<Writes>(told, dir);
  auto const first = MacSecIntfStatus::MacSecIntfStatusIs(kPortIntf);
  auto const second = MacSecIntfStatus::MacSecIntfStatusIs(kPortIntf);
  dir->statusIs(first);
  dir->statusIs(first);
  EXPECT_EQ(told, 1);
  dir->statusIs(second);
  EXPECT_EQ(told, 2);
  EXPECT_EQ(dir->status(kPortIntf), second);
  Vesk::retire(writes);
}

TEST(HardwareStatus, TheDirectoryLetsGoWhatAnIteratorStandsOn) {
  auto dir = macSecIntfStatusPtrDirFactory("dir");
  auto const hw = MacSecIntfStatus::MacSecIntfStatusIs(kPortIntf);
  dir->statusIs(hw);
  for (auto i = dir->status().iterator(); i; ++i) EXPECT_EQ(dir->statusDel(i), hw);
  EXPECT_TRUE(dir->status().empty());
}

TEST(HardwareStatus, ANullPointerThrowsWithItsClosingQuote) {
  auto dir = macSecIntfStatusPtrDirFactory("dir");
  EXPECT_EQ(thrownBy([&] { dir->statusIs(nullptr); }),
            "null _status parameter to mutator for Macsec::MacSecIntfStatusPtrDir::status not "
            "allowed\"");
}

}  // namespace
}  // namespace Macsec
