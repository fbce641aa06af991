#include <gmock/gmock.h>

#include "platform/WardcodeLib.h"
#include "tests/lab/Played.h"

namespace Lab {
namespace {

using ::testing::ElementsAre;

/// Replaces the keys of the hosts at a time, as the loss of their files does.
class LosesHostKey final : public Audience {
 public:
  LosesHostKey(Simulation& simulation, double at) : simulation_(simulation), at_(at) {}
  void happened(Event const& event) override {
    if (auto const* const line = std::get_if<SyslogLine>(&event.what)) {
      if (line->name == "MACSECD_KEY_UNREADABLE") {
        told.push_back(event.switchName + ": " + line->arguments[0]);
      }
    }
  }
  void instantDone(double time) override {
    if (time < at_ || std::exchange(isLost_, true)) return;
    for (auto const& one : simulation_.switches()) {
      Vesk::WorldScope const scope(one->world());
      WardcodeLib::hostKeyIs(std::array<uint8_t, WardcodeLib::kHostKeySize>{9});
    }
  }
  std::vector<std::string> told;

 private:
  Simulation& simulation_;
  double const at_;
  bool isLost_ = false;
};

TEST(UnreadableKeys, AreToldByTheSwitchOfTheLabThatComesAcrossThem) {
  auto const result = parseScenario(scene("at 31 link down on B Ethernet1\n"
                                          "at 33 link up on B Ethernet1"),
                                    "f");
  ASSERT_TRUE(result.good()) << Macsecd::textOf(result.diagnostics);
  for (int round = 0; round < 2; ++round) {
    Simulation simulation(result.scenario, 1);
    LosesHostKey loses(simulation, 30);
    simulation.audienceIs(loses);
    simulation.run();
    EXPECT_THAT(loses.told, ElementsAre("B: key ab of Ethernet1")) << "once, in each simulation";
  }
}

}  // namespace
}  // namespace Lab
