#include "tests/linux/kernel/KernelBench.h"

// A receive key that is withdrawn stays in the kernel while the peer may still send with it.

namespace Linux::Test {
namespace {

using Macsec::AssociationNumber;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class AFormerReceiveKey : public KernelBench {
 protected:
  AFormerReceiveKey() {
    secured();
    cp->rxSakIs(sak(1, 2));
    cp->txSakIs(sak(1, 2));
    kernel.asked.clear();
  }
  void withdraw() { cp->rxSakDel(AssociationNumber(0)); }
};

TEST_F(AFormerReceiveKey, StaysForALifeTimeAndIsNotReported) {
  runAt(10);
  withdraw();
  EXPECT_FALSE(rx(0));
  runAt(15.9);
  EXPECT_THAT(kernel.takeAsked(), IsEmpty());
  EXPECT_THAT(rxSas(), SizeIs(2));
  EXPECT_EQ(driver->nextTime(), 16);
  runAt(16);
  EXPECT_THAT(kernel.takeAsked(), ElementsAre("off rx 0", "remove rx 0"));
  EXPECT_FALSE(rx(0));
  EXPECT_TRUE(rx(1));
}

TEST_F(AFormerReceiveKey, StaysForTwoSecondsUnderDelayProtection) {
  cp->rxLPNIs({5, AssociationNumber(0)});
  runAt(10);
  kernel.asked.clear();
  withdraw();
  EXPECT_THAT(kernel.takeAsked(), IsEmpty());
  runAt(12);
  EXPECT_THAT(kernel.takeAsked(), ElementsAre("off rx 0", "remove rx 0"));
}

TEST_F(AFormerReceiveKey, GoesAtOnceWhenAnotherKeyTakesItsAssociationNumber) {
  withdraw();
  cp->rxSakIs(sak(0, 5));
  EXPECT_THAT(kernel.takeAsked(), ElementsAre("off rx 0", "remove rx 0", "add rx 0"));
  EXPECT_EQ(rx(0)->keyNum(), 5u);
  runAt(30);
  EXPECT_THAT(rxSas(), SizeIs(2));
}

TEST_F(AFormerReceiveKey, GoesOnWhereItStoodWhenItIsAskedForAgain) {
  withdraw();
  rxSas()[0].packetNumber = 77;
  cp->rxSakIs(sak(0, 1));
  EXPECT_THAT(kernel.takeAsked(), IsEmpty());
  EXPECT_EQ(rx(0)->keyNum(), 1u);
  runAt(30);
  EXPECT_THAT(kernel.takeAsked(), IsEmpty());
  EXPECT_EQ(rxSas()[0].packetNumber, 77u);
}

TEST_F(AFormerReceiveKey, GoesWithTheLastKeyThatIsAskedFor) {
  withdraw();
  cp->rxSakDel(AssociationNumber(1));
  EXPECT_THAT(rxSas(), IsEmpty());
}

TEST_F(AFormerReceiveKey, GoesWhenThePeerIsAnother) {
  withdraw();
  cp->peerSsciIs({sci(12), "00000001"});
  ASSERT_THAT(device().secY.rxScs, SizeIs(1));
  EXPECT_THAT(device().secY.rxScs[0].sas, SizeIs(1));
}

TEST_F(AFormerReceiveKey, StaysForAsLongAgainInTheNextProcess) {
  withdraw();
  runAt(4);
  restart();
  EXPECT_THAT(kernel.takeAsked(), IsEmpty());
  runAt(9.9);
  EXPECT_THAT(rxSas(), SizeIs(2));
  runAt(10);
  EXPECT_THAT(kernel.takeAsked(), ElementsAre("off rx 0", "remove rx 0"));
}

}  // namespace
}  // namespace Linux::Test
