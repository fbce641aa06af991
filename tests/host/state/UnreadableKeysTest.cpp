#include "host/state/UnreadableKeys.h"

#include "platform/WardcodeLib.h"
#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class UnreadableKeys : public ::testing::Test {
 protected:
  UnreadableKeys() { hostKeyIs(1); }
  ~UnreadableKeys() override {
    WardcodeLib::hostKeyDel();
    WardcodeLib::decodeFailuresDel();
  }
  void hostKeyIs(uint8_t octet) {
    std::array<uint8_t, WardcodeLib::kHostKeySize> key;
    key.fill(octet);
    WardcodeLib::hostKeyIs(key);
  }
  std::vector<std::string> told() const {
    std::vector<std::string> texts;
    for (auto const& log : a.world.logs) {
      if (log.name == "MACSECD_KEY_UNREADABLE") texts.push_back(log.text);
    }
    return texts;
  }

  Switch a{1};
  Vesk::WorldScope const scope{a.world};
  UnreadableKeyTeller const teller{[this] { return a.host.status(); }};
};

TEST_F(UnreadableKeys, AreToldOnceWithPortNameAndRemedy) {
  a.bringUp();
  hostKeyIs(2);
  for (bool up : {false, true, false, true}) a.host.linkIs(kIntf, up);
  a.world.time += 100;
  a.host.timerWheel()->runDue();
  ASSERT_EQ(told().size(), 1u);
  EXPECT_THAT(told()[0], AllOf(StartsWith("key 6162 of Ethernet1: "),
                               HasSubstr("restore the host key file"), Not(HasSubstr(kCak))));
  EXPECT_GT(WardcodeLib::decodeFailures(), 1u);
}

TEST_F(UnreadableKeys, ThatStandInNoPortAreToldAllTheSame) {
  a.bringUp();
  static_cast<void>(WardcodeLib::doDecodeKey("nonsense"));
  ASSERT_EQ(told().size(), 1u);
  EXPECT_THAT(told()[0], StartsWith("A key that stands in no port: "));
}

TEST_F(UnreadableKeys, AreNamedAllThatThereAre) {
  a.bringUp();
  EXPECT_EQ(unreadableKeys(*a.host.status()), "");
  auto const cpStatus = a.host.status()->cpStatus(kIntf);
  ASSERT_TRUE(cpStatus);
  hostKeyIs(2);
  EXPECT_EQ(unreadableKeys(*a.host.status()), "key 6162 of Ethernet1");
}

}  // namespace
}  // namespace Macsecd
