
#include <gmock/gmock.h>

#include <filesystem>

#include "host/explain/Explain.h"
#include "host/port/PortSummary.h"
#include "tests/lab/Played.h"

// What a switch says of a port against what becomes of a frame there, at every instant.

namespace Lab {
namespace {

using Macsecd::stateOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Whether a protected frame can go out of this port and another one come in, by what forwarding
/// and the hardware have, and not by what the state machines say of it.
bool passesFrames(Switch const& owner, Lumo::IntfId intfId) {
  Macsecd::Host const& host = owner.host();
  for (auto const& input :
       {host.forwardingModelInputDir(), host.peerLossInputDir(), host.transmitHoldInputDir()}) {
    if (input->forwardingModelInput(intfId)) return false;
  }
  auto const installed = owner.hardware().slice()->status(intfId);
  bool const hasSas = installed && installed->txSaStatus() && !installed->rxSaStatus().empty();
  return host.status()->cpStatus(intfId) && owner.isUp(intfId) && hasSas &&
         !owner.hardware().isDeviceDown(intfId);
}

/// Compares at every instant.
class Comparison final : public Audience {
 public:
  explicit Comparison(Simulation& simulation) : simulation_(simulation) {
    simulation.audienceIs(*this);
  }

  void instantDone(double time) override {
    for (auto const& one : simulation_.switches()) {
      Vesk::WorldScope const scope(one->world());
      if (!one->host().running()) continue;
      for (Lumo::IntfId const intfId : interfacesOf(one->host())) compare(time, *one, intfId);
    }
  }
  size_t opened() const { return opened_; }

 private:
  void compare(double time, Switch const& owner, Lumo::IntfId intfId) {
    std::string const where =
        owner.name() + " " + intfId.stringValue().charPtr() + " at " + std::to_string(time);
    bool const passes = passesFrames(owner, intfId);
    opened_ += passes;
    EXPECT_EQ(owner.host().isOpen(intfId), passes) << where;
    EXPECT_EQ(summaryOf(owner.host(), intfId).state == "open", passes) << where;
    auto const explanation = explain(owner.host(), intfId);
    EXPECT_EQ(explanation.secured, passes) << where;
    EXPECT_TRUE(passes || !explanation.causes.empty()) << where << ": closed without a cause";
  }

  Simulation& simulation_;
  size_t opened_ = 0;
};

class ShippedScenario : public testing::TestWithParam<std::string> {};

TEST_P(ShippedScenario, SaysOpenAtEachInstantAtWhichAFramePassesAndAtNoOther) {
  auto const result = readScenario(std::string(EXAMPLES "/") + GetParam() + ".scenario");
  ASSERT_TRUE(result.good()) << textOf(result.diagnostics);
  Simulation simulation(result.scenario, result.scenario.seed.value_or(1));
  Comparison const comparison(simulation);
  simulation.run();
  EXPECT_GT(comparison.opened(), 0u);
}

std::vector<std::string> shippedScenarios() {
  std::vector<std::string> names;
  for (auto const& entry : std::filesystem::directory_iterator(EXAMPLES)) {
    if (entry.path().extension() == ".scenario") names.push_back(entry.path().stem());
  }
  std::ranges::sort(names);
  return names;
}

INSTANTIATE_TEST_SUITE_P(, ShippedScenario, testing::ValuesIn(shippedScenarios()),
                         [](auto const& test) {
                           std::string name = test.param;
                           std::ranges::replace(name, '-', '_');
                           return name;
                         });

TEST(Passage, EndsWithADeviceThatSomebodySetsDownAndComesBackWithIt) {
  Played played(
      pair("at 20 device down on A Ethernet1\n"
           "from 15 to 19.999 expect A Ethernet1 is open\n"
           "from 20 to 29.999 expect A Ethernet1 is closed\n"
           "from 20 to 29.999 expect A Ethernet1 explains device-down\n"
           "from 20 to 40 expect B Ethernet1 is open\n"
           "at 30 device up on A Ethernet1\n"
           "from 30 to 40 expect A Ethernet1 is open\n",
           "40"));
  EXPECT_THAT(played.failures(), IsEmpty());
}

TEST(Passage, IsSaidRightThroughoutTheTroublesOfADevice) {
  auto const result =
      parseScenario(pair("at 3 device down on A Ethernet1\nat 15 device up on A Ethernet1\n"
                         "at 20 device down on B Ethernet1\nat 21 restart B\nat 22 delete "
                         "interface Ethernet1 on B\n"
                         "at 30 make interface Ethernet1 on B\n",
                         "60"),
                    "f");
  ASSERT_TRUE(result.good()) << textOf(result.diagnostics);
  Simulation simulation(result.scenario, 1);
  Comparison const comparison(simulation);
  simulation.run();
  EXPECT_GT(comparison.opened(), 0u);
}

std::string closing(std::string scene) {
  for (size_t at = 0; (at = scene.find("{profile: core}", at)) != std::string::npos; ++at) {
    scene.replace(at, 15, "{profile: core, on-peer-loss: close}");
  }
  return scene;
}

TEST(Passage, EndsWithTheLossOfAllPeersWhereThatClosesThePort) {
  Played played(
      closing(pair("at 20 cut both ways at A Ethernet1\n"
                   "at 30 expect A Ethernet1 is closed\n"
                   "at 30 expect A Ethernet1 has no forwarding entry\n"
                   "at 30 expect A Ethernet1 explains peers-lost, no-frames\n"
                   "at 40 repair both ways at A Ethernet1\n"
                   "at 60 expect A Ethernet1 is open\n",
                   "60")));
  EXPECT_THAT(played.failures(), IsEmpty());
}

TEST(Passage, GoesOnWithoutPeersElsewhere) {
  Played played(
      pair("at 20 cut both ways at A Ethernet1\n"
           "from 20 to 40 expect A Ethernet1 is open\n",
           "40"));
  EXPECT_THAT(played.failures(), IsEmpty());
}

}  // namespace
}  // namespace Lab
