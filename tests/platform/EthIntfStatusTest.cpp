#include "platform/EthIntfStatus.h"

#include <gtest/gtest.h>

#include "runtime/Exceptions.h"

namespace Interface {
namespace {

TEST(EthIntfStatusDir, AnotherAddressOrPortNumberForAnInterfaceThatIsThereThrows) {
  Lumo::IntfId const intfId("Ethernet1");
  Lumo::EthAddr const addr({2, 0, 0, 0, 0, 1});
  auto dir = EthIntfStatusDir::EthIntfStatusDirIs("interfaces");
  auto const made = dir->intfStatusIs(intfId, addr, 1);
  EXPECT_EQ(dir->intfStatusIs(intfId, addr, 1), made);
  EXPECT_THROW(dir->intfStatusIs(intfId, Lumo::EthAddr({2, 0, 0, 0, 0, 2}), 1),
               Vesk::NameInUseException);
  EXPECT_THROW(dir->intfStatusIs(intfId, addr, 2), Vesk::NameInUseException);
  EXPECT_EQ(dir->intfStatus(intfId), made);
}

}  // namespace
}  // namespace Interface
