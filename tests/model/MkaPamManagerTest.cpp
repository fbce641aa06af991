#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/Factories.h"
#include "tests/support/TestWorld.h"

namespace Macsec {
namespace {

Lumo::IntfId const kPamIntf("Ethernet1");

class Exchange : public ::testing::Test {
 protected:
  Exchange() { Vesk::TraceHandle::streamLevelsIs("Macsec", Vesk::kAllTraceLevels); }
  ~Exchange() override { Vesk::TraceHandle::streamLevelsIs("", 0); }

  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  Vesk::Ptr<MkaPamManager> manager =
      mkaPamManagerFactory(Interface::EthDevPamCollection::EthDevPamCollectionIs("pam"));
};

TEST_F(Exchange, AFreshManagerHasBothMessagesAndNothingInThem) {
  for (auto const& message : {manager->rxMessageInfo(), manager->txMessageInfo()}) {
    ASSERT_TRUE(message);
    EXPECT_EQ(message->count(), 0u);
    EXPECT_FALSE(message->mkaInfo());
    EXPECT_EQ(message->intfId(), Lumo::IntfId());
    EXPECT_TRUE(message->livePeer().empty() && message->potentialPeer().empty());
  }
  EXPECT_NE(manager->rxMessageInfo(), manager->txMessageInfo());
  EXPECT_TRUE(manager->mkaIntf().empty());
}

TEST_F(Exchange, TracesTheMakingOfEachMessageTheReceivedOneFirst) {
  manager = nullptr;
  world.traces.clear();
  manager = mkaPamManagerFactory(nullptr);
  EXPECT_THAT(world.traces,
              ::testing::ElementsAre("void Macsec::MkaPamManager::handleRxMessageInfoInit()",
                                     "void Macsec::MkaPamManager::handleTxMessageInfoInit()"));
}

TEST_F(Exchange, AMessageIsMadeOnceAndRemoved) {
  auto const first = manager->rxMessageInfo();
  EXPECT_EQ(manager->rxMessageInfoIs(), first);
  manager->rxMessageInfoDel();
  EXPECT_FALSE(manager->rxMessageInfo());
  EXPECT_NE(manager->rxMessageInfoIs(), first);
  auto const info = first->mkaInfoIs();
  EXPECT_EQ(first->mkaInfoIs(), info);
  first->mkaInfoDel();
  EXPECT_FALSE(first->mkaInfo());
}

TEST_F(Exchange, AFreshMkaInfoLacksEverySet) {
  auto const info = MkaInfo::MkaInfoIs();
  EXPECT_EQ(info->baseInfo(), BasicInfo());
  EXPECT_EQ(info->sakUseInfo(), SakUseInfo());
  EXPECT_EQ(info->sakDistInfo().cipherSuite(), CipherSuite::gcmAesXpn128);
  EXPECT_EQ(info->sakDistInfo(), SakDistInfo());
  EXPECT_EQ(info->cakDistInfo(), CakDistInfo());
  EXPECT_EQ(info->icvIndicatorInfo().icvLength(), 0);
}

TEST_F(Exchange, TheCountIsTheEventAndAnEqualOneIsNone) {
  struct Counts final : Vesk::Reactor<MkaMessageInfo const, int, Counts> {
    using Reactor::Reactor;
    void onCount() override { ++owner(); }
  };
  int told = 0;
  auto counts = Vesk::make<Counts>(told, manager->txMessageInfo());
  auto const tx = manager->txMessageInfo();
  EXPECT_EQ(tx->countInc(1), 1u);
  EXPECT_EQ(tx->countInc(0), 1u);
  tx->countIs(1);
  EXPECT_EQ(told, 1);
  tx->countIs(0xFFFFFFFF);
  EXPECT_EQ(tx->countInc(1), 0u);
  EXPECT_EQ(told, 3);
  Vesk::retire(counts);
}

TEST_F(Exchange, CountersOfPacketsWrapAround) {
  auto const tx = manager->txPamCounterIs(kPamIntf);
  EXPECT_EQ(manager->txPamCounterIs(kPamIntf), tx);
  EXPECT_EQ(tx->success(), 0u);
  EXPECT_EQ(tx->failure(), 0u);
  tx->successIs(0xFFFFFFFF);
  EXPECT_EQ(tx->successInc(2), 1u);
  EXPECT_EQ(tx->failureInc(3), 3u);
  EXPECT_EQ(manager->rxPamCounterIs(kPamIntf)->intfId(), kPamIntf);
  EXPECT_EQ(manager->mkaIntfIs(kPamIntf), manager->mkaIntfIs(kPamIntf));
  manager->mkaIntfDelAll();
  EXPECT_TRUE(manager->mkaIntf().empty());
}

}  // namespace
}  // namespace Macsec
