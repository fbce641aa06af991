#include "host/journal/PortJournal.h"

#include "host/port/PortSummary.h"
#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

bool isOfLife(std::string const& name) {
  for (char const* const begin : {"MACSECD_PORT_OPEN", "MACSECD_PORT_CLOSED", "MACSECD_PORT_UNS",
                                  "MACSECD_LINK", "MACSECD_INTERFACE", "MACSECD_DEVICE"}) {
    if (name.starts_with(begin)) return true;
  }
  return false;
}

class PortJournalTest : public ::testing::Test {
 protected:
  void bringUp() {
    for (Switch* one : {&a, &b}) {
      one->bringUp();
    }
    talk(a, b, 20);
  }
  /// What the journal of a tells since the last time.
  std::vector<std::string> told() {
    a.host.timerWheel()->runDue();
    std::vector<std::string> texts;
    for (; looked_ < a.world.logs.size(); ++looked_) {
      if (isOfLife(a.world.logs[looked_].name)) texts.push_back(a.world.logs[looked_].text);
    }
    return texts;
  }
  std::string opens() const {
    return "Interface Ethernet1 is open with SAK " + summaryOf(a.host, kIntf).sak;
  }
  Vesk::LogSeverity severityOf(std::string const& name) const {
    for (Vesk::LogHandle const* handle : a.world.handles) {
      if (handle->name() == name) return handle->severity();
    }
    ADD_FAILURE() << name << " wasn't logged";
    return Vesk::LogSeverity::debug;
  }
  void flap(double until) {
    for (; a.world.time < until; a.world.time += 0.5) {
      a.host.linkIs(kIntf, !isUp_);
      isUp_ = !isUp_;
      a.host.timerWheel()->runDue();
    }
  }

  Switch b{2}, a{1, {.companion = PortJournal::of}};
  size_t looked_ = 0;
  bool isUp_ = true;
};

TEST_F(PortJournalTest, TellsThatAPortOpensAndThatItClosesWithTheCauseOfExplain) {
  bringUp();
  EXPECT_THAT(told(), ElementsAre("Interface Ethernet1: the link is up", opens()));
  a.host.linkIs(kIntf, false);
  EXPECT_THAT(told(), ElementsAre("Interface Ethernet1: the link is down",
                                  "Interface Ethernet1 is closed: no-link: the link is down"));
  a.host.interfaceDel(kIntf);
  EXPECT_THAT(told(), ElementsAre("Interface Ethernet1 has gone"));
}

TEST_F(PortJournalTest, HasLevelsThatANightShiftCanFilter) {
  bringUp();
  a.host.linkIs(kIntf, false);
  told();
  EXPECT_EQ(severityOf("MACSECD_PORT_OPEN"), Vesk::LogSeverity::notice);
  EXPECT_EQ(severityOf("MACSECD_LINK_DOWN"), Vesk::LogSeverity::notice);
  EXPECT_EQ(severityOf("MACSECD_PORT_CLOSED"), Vesk::LogSeverity::warning);
}

TEST_F(PortJournalTest, TellsNothingOfWhatPassesWithinAMoment) {
  bringUp();
  told();
  a.host.linkIs(kIntf, false);
  a.host.linkIs(kIntf, true);
  EXPECT_THAT(told(), ElementsAre(::testing::StartsWith("Interface Ethernet1 is closed: ")));
  talk(a, b, 40);
  EXPECT_THAT(told(), ElementsAre(opens()));
  talk(a, b, 60);
  EXPECT_THAT(told(), IsEmpty());
}

TEST_F(PortJournalTest, LosesNoStateToItsRate) {
  bringUp();
  told();
  flap(57.5);
  auto const lines = told();
  EXPECT_LE(lines.size(), TellingRate::kMost + 1);
  EXPECT_EQ(a.world.logged("MACSECD_PORT_UNSTEADY"), 1u);
  ASSERT_FALSE(isUp_);
  a.world.time += 2 * TellingRate::kPeriod;
  a.host.timerWheel()->runDue();
  std::string lastLink;
  for (auto const& line : a.world.logs) {
    if (line.name.starts_with("MACSECD_LINK")) lastLink = line.name;
  }
  EXPECT_EQ(lastLink, "MACSECD_LINK_DOWN");
  EXPECT_EQ(a.world.logged("MACSECD_PORT_CLOSED"), 1u);
}

TEST_F(PortJournalTest, TellsOfADeviceThatIsMadeAndMadeAnewAndGone) {
  HardwareReport report;
  report.deviceState = DeviceState::absent;
  a.host.hardwareReportsFrom([&](Lumo::IntfId) { return report; });
  auto const deviceIs = [&](std::string const& name, uint32_t made) {
    report.device = name;
    report.devicesMade = made;
    report.deviceState = name.empty() ? DeviceState::absent : DeviceState::up;
    a.host.hardwareReportChanged(kIntf);
  };
  bringUp();
  EXPECT_THAT(told(), ElementsAre("Interface Ethernet1: the link is up"));
  deviceIs("sec1", 1);
  EXPECT_THAT(told(), ElementsAre("Interface Ethernet1: the MACsec device sec1 is made", opens()));
  deviceIs("sec1", 2);
  EXPECT_THAT(told(), ElementsAre("Interface Ethernet1: the MACsec device sec1 is made anew"));
  deviceIs("", 2);
  EXPECT_THAT(told(),
              ElementsAre("Interface Ethernet1: the MACsec device sec1 has gone",
                          ::testing::StartsWith("Interface Ethernet1 is closed: device-gone: ")));
}

TEST_F(PortJournalTest, SaysSetDownOfADeviceThatSomebodyHasSetDown) {
  HardwareReport report;
  a.host.hardwareReportsFrom([&](Lumo::IntfId) { return report; });
  report.device = "sec1";
  bringUp();
  told();
  report.deviceState = DeviceState::down;
  a.host.hardwareReportChanged(kIntf);
  EXPECT_THAT(told(), ElementsAre("Interface Ethernet1 is closed: device-down: the MACsec device "
                                  "sec1 is set down"));
}

TEST_F(PortJournalTest, BeginsWithThePortsThatAreOpenAndThoseThatAreNoMore) {
  bringUp();
  told();
  a.host.restart();
  EXPECT_THAT(told(), ElementsAre("Interface Ethernet1: the link is up", opens()));
  a.host.die();
  HardwareReport lost;
  lost.device = "sec1";
  lost.deviceState = DeviceState::down;
  a.host.hardwareReportsFrom([&](Lumo::IntfId) { return lost; });
  a.host.start();
  EXPECT_THAT(told(), ElementsAre("Interface Ethernet1: the link is up",
                                  "Interface Ethernet1 is closed: device-down: the MACsec device "
                                  "sec1 is set down"));
}

TEST_F(PortJournalTest, TellsNothingOfAPortThatWasNeverOpen) {
  a.bringUp();
  EXPECT_THAT(told(), ElementsAre("Interface Ethernet1: the link is up"));
  a.world.time = 60;
  EXPECT_THAT(told(), IsEmpty());
}

}  // namespace
}  // namespace Macsecd
