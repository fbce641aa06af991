#include <gmock/gmock.h>

#include <fstream>

#include "host/state/StateKeeper.h"
#include "host/state/StateTree.h"
#include "model/Factories.h"
#include "runtime/EntityCopy.h"
#include "tests/host/KeptState.h"
#include "tests/support/TestWorld.h"

namespace Macsecd {
namespace {

// The content of a store that a former version has written: each line a path, a space, the value.
StateValues formerState() {
  StateValues values;
  std::ifstream in(FORMER_STATE);
  for (std::string line; std::getline(in, line);) {
    size_t const space = line.find(' ');
    values[line.substr(0, space)] = line.substr(space + 1);
  }
  return values;
}

struct FormerState : testing::Test {
  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  StateValues const values = formerState();
};

TEST_F(FormerState, IsTakenUpWithoutLoss) {
  ASSERT_EQ(values.size(), 279u);
  auto const rebuilt = rebuiltStatus("switch/status", values);
  EXPECT_THAT(rebuilt.dropped, testing::IsEmpty());
  EXPECT_TRUE(rebuilt.repair.empty());
}

TEST_F(FormerState, IsStoredAgainToTheOctet) {
  auto const rebuilt = rebuiltStatus("switch/status", values);
  KeptState store;
  auto const copy = Macsec::statusFactory("switch/status");
  StateKeeper keeper(copy, store);
  Vesk::copyEntity(*rebuilt.status, *copy);
  keeper.commit();
  EXPECT_EQ(store.values, values);
}

}  // namespace
}  // namespace Macsecd
