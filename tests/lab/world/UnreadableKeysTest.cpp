#include "platform/WardcodeLib.h"
#include "tests/lab/Played.h"

namespace Lab {
namespace {

/// Replaces the host's key at a time, as the loss of its file does.
class LosesHostKey final : public Audience {
 public:
  explicit LosesHostKey(double at) : at_(at) {}
  void happened(Happening const& happening) override {
    if (auto const* const line = std::get_if<SyslogLine>(&happening.what)) {
      if (line->name == "MACSECD_KEY_UNREADABLE") {
        told.push_back(happening.switchName + ": " + line->arguments[0]);
      }
    }
  }
  void instantDone(double time) override {
    if (time < at_ || std::exchange(isLost_, true)) return;
    WardcodeLib::hostKeyIs(std::array<uint8_t, WardcodeLib::kHostKeySize>{9});
  }
  std::vector<std::string> told;

 private:
  double const at_;
  bool isLost_ = false;
};

TEST(UnreadableKeys, AreToldByTheSwitchOfTheLabThatComesAcrossThem) {
  auto const result = parseScenario(scene("at 31 link down on B Ethernet1\n"
                                          "at 33 link up on B Ethernet1"),
                                    "f");
  ASSERT_TRUE(result.good()) << Macsecd::textOf(result.mistakes);
  for (int round = 0; round < 2; ++round) {
    Simulation simulation(result.scenario, 1);
    LosesHostKey loses(30);
    simulation.audienceIs(loses);
    simulation.run();
    ASSERT_EQ(loses.told.size(), 1u) << "in each simulation";
    EXPECT_NE(loses.told[0].find(": key ab of Ethernet1"), std::string::npos) << loses.told[0];
  }
}

}  // namespace
}  // namespace Lab
