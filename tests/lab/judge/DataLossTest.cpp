#include "lab/judge/DataLoss.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/lab/Played.h"

namespace Lab {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// A pair between whose ports frames of data go all the time.
struct Flow {
  explicit Flow(std::string const& lines, std::string const& until = "40")
      : read(parseScenario(pair("data every 0.05\n" + lines, until), "f")),
        simulation(read.scenario, 1),
        loss(simulation) {
    EXPECT_TRUE(read.good()) << Macsecd::textOf(read.diagnostics);
    simulation.audienceIs(loss);
    simulation.run();
  }
  std::vector<std::string> lost() const {
    std::vector<std::string> lines;
    for (auto const& one : loss.lost()) lines.push_back(one.text());
    return lines;
  }

  ScenarioResult read;
  Simulation simulation;
  DataLoss loss;
};

TEST(TheTestFlow, PassesFromTheMomentThatBothPortsAreOpen) {
  Flow const flow("");
  EXPECT_THAT(flow.lost(), IsEmpty());
  // Both ends send twenty frames a second from 8.05 on, when B is open too.
  EXPECT_NEAR(static_cast<double>(flow.loss.passed()), 2 * 20 * (40 - 8.05), 3);
}

TEST(TheTestFlow, LosesNothingOverTimedRekeys) {
  Flow const flow("at 10 set rekey period of profile core on A to 20\n", "150");
  EXPECT_EQ(flow.simulation.sakHistory().rotations({"A", "Ethernet1"}), 6u);
  EXPECT_THAT(flow.lost(), IsEmpty());
  EXPECT_GT(flow.loss.passed(), 1200u);
}

TEST(TheTestFlow, LosesNothingOverARestartOfEitherEnd) {
  Flow const flow("at 12 restart A after 2\nat 40 restart B after 2\n", "60");
  EXPECT_THAT(flow.lost(), IsEmpty());
  EXPECT_GT(flow.loss.passed(), 1200u);
}

TEST(TheTestFlow, LosesNothingOverAnotherCipherSuiteOnBothEnds) {
  Flow const flow(
      "at 12 set cipher suite of profile core on A to gcm-aes-xpn-256\n"
      "at 12 set cipher suite of profile core on B to gcm-aes-xpn-256\n",
      "80");
  EXPECT_THAT(flow.lost(), IsEmpty());
  EXPECT_GT(flow.loss.passed(), 1200u);
}

TEST(TheTestFlow, CountsNothingThatAWireLost) {
  Flow const flow("at 12 cut from A Ethernet1\nat 13 repair from A Ethernet1\n");
  EXPECT_THAT(flow.lost(), IsEmpty());
  EXPECT_NEAR(static_cast<double>(flow.loss.passed()), 2 * 20 * (40 - 8.05) - 20, 3);
}

TEST(TheTestFlow, TellsOfAnOpenPortThatHasNoKeyToSendWith) {
  Flow flow("");
  DataLoss loss(flow.simulation);
  PortName const from{"A", "Ethernet1"}, to{"B", "Ethernet1"};
  loss.dataSent(39, {from, 7, {}});
  ASSERT_THAT(loss.lost(), SizeIs(1));
  EXPECT_THAT(loss.lost()[0].text(), HasSubstr("has no key to send with"));
}

TEST(TheTestFlow, TellsOfAFrameThatAnOpenPortDoesNotTake) {
  Flow flow("");
  DataLoss loss(flow.simulation);
  PortName const from{"A", "Ethernet1"}, to{"B", "Ethernet1"};
  Frame const frame(64);
  auto const arrive = [&](uint64_t number, SecY::Verdict verdict, bool isOpen, bool isSame) {
    loss.dataSent(39, {from, number, frame});
    loss.dataArrived(39.001, {from, to, number, 39, frame, verdict, isOpen, isSame});
  };
  arrive(1, SecY::Verdict::valid, true, true);
  arrive(2, SecY::Verdict::invalid, false, false);
  EXPECT_THAT(loss.lost(), IsEmpty());
  arrive(3, SecY::Verdict::invalid, true, false);
  arrive(4, SecY::Verdict::noSa, true, false);
  arrive(5, SecY::Verdict::late, true, false);
  arrive(6, SecY::Verdict::valid, true, false);
  std::vector<std::string> why;
  for (auto const& lost : loss.lost()) why.push_back(lost.why);
  EXPECT_THAT(why,
              ElementsAre("it came under another key", "it came under no key that is installed",
                          "it came with a packet number that has come before",
                          "it came valid, and not what was sent"));
  EXPECT_THAT(loss.lost()[0].text(),
              HasSubstr("frame 3 from A Ethernet1 to B Ethernet1, sent at 39.000, is lost"));
  EXPECT_EQ(loss.passed(), 1u);
}

}  // namespace
}  // namespace Lab
