#include "lab/world/MadeFrame.h"

#include <gmock/gmock.h>

#include <sstream>

#include "lab/report/Events.h"
#include "tests/lab/Played.h"

namespace Lab {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

std::string sends(double from = 20.25) {
  std::string lines;
  for (Defect const defect : defects()) {
    std::ostringstream line;
    line << "at " << from++ << " send a frame with " << Vesk::stringValue(defect)
         << " to A Ethernet1\n";
    lines += line.str();
  }
  return lines;
}

/// Everything that a scenario brings about but refused frames: events, and each write to the trees
/// of A.
class Recorded final : public Audience {
 public:
  explicit Recorded(std::string const& text)
      : result_(parseScenario(text, "f")), simulation_(result_.scenario, 1), events_(lines_) {
    auto& sinks = simulation_.switchOf("A").world().sinks;
    sinks.attribute = [this, former = sinks.attribute](Vesk::AttributeWrite const& write) {
      if (std::string_view(write.attribute) == "failure") {
        ++failures;
        return;
      }
      lines_ << simulation_.now() << " " << write.entity.name() << "." << write.attribute << "["
             << write.key << "] = " << write.value << "\n";
      former(write);
    };
    simulation_.audienceIs(*this);
    simulation_.run();
  }
  void happened(Event const& event) override {
    auto const* const frame = std::get_if<FramePassed>(&event.what);
    if (frame && frame->way == FrameWay::in && frame->verdict != "accepted") return;
    events_.happened(event);
  }
  std::string text() const { return lines_.str(); }

  /// Writes to the counter of frames that failed.
  size_t failures = 0;

 private:
  ScenarioResult result_;
  Simulation simulation_;
  std::ostringstream lines_;
  Events events_;
};

/// Hears what the scenario's lines did.
struct Acted final : Audience {
  explicit Acted(std::string const& text) : result(parseScenario(text, "f")) {
    Simulation simulation(result.scenario, 1);
    simulation.audienceIs(*this);
    simulation.run();
  }
  void acted(double, std::string const& text) override { texts.push_back(text); }
  void captured(double time, size_t, std::span<uint8_t const> frame) override {
    if (time == 20.25) made.emplace_back(frame.begin(), frame.end());
  }
  ScenarioResult result;
  std::vector<std::string> texts;
  std::vector<Frame> made;
};

TEST(MadeFrame, EachDefectIsRefusedUnderItsNameInEveryFormOfTheIcvIndicator) {
  for (std::string const form : {"of 4", "of 16", "left out"}) {
    Played played(pair("icv indicator " + form + "\n" + sends(), "40"));
    for (Defect const defect : defects()) {
      EXPECT_EQ(played.received("A", Vesk::stringValue(defect)), 1u)
          << form << " " << Vesk::stringValue(defect);
    }
  }
  EXPECT_THAT(defects(), SizeIs(11));
}

TEST(MadeFrame, NothingButItsCounterChanges) {
  std::string const undisturbed = Recorded(pair("", "40")).text();
  EXPECT_NE(undisturbed.find("Ethernet1.rxSak[0]"), std::string::npos);
  Recorded const disturbed(pair(sends(), "40"));
  EXPECT_TRUE(disturbed.text() == undisturbed);
  EXPECT_EQ(disturbed.failures, defects().size());
}

TEST(MadeFrame, LiesInTheCaptureAsItArrives) {
  Acted const played(pair("at 20.25 send a frame with sakUseSetErr to B Ethernet1", "21"));
  ASSERT_THAT(played.made, SizeIs(1));
  EXPECT_THAT(std::vector(played.made[0].begin() + 6, played.made[0].begin() + 12),
              ElementsAre(2, 0, 0, 0, 0, 1));
}

TEST(MadeFrame, TheOtherEndOfTheWireDoesNotHearIt) {
  Played played(pair("at 20.25 send a frame with icvValidationErr to A Ethernet1", "21"));
  EXPECT_EQ(played.received("A", "icvValidationErr"), 1u);
  EXPECT_EQ(played.received("B", "icvValidationErr"), 0u);
}

TEST(MadeFrame, WithoutAFrameThatThePortHasAcceptedNoneIsMade) {
  for (char const* const before : {"at 0.1 cut both ways at A Ethernet1\n",
                                   "at 15 link down on A Ethernet1\n", "at 15 shutdown A\n"}) {
    Acted const played(
        pair(std::string(before) + "at 20.25 send a frame with eapolErr to A Ethernet1", "21"));
    EXPECT_EQ(played.texts.back(), "no frame is made: A Ethernet1 is down or has accepted none");
    EXPECT_THAT(played.made, IsEmpty()) << before;
  }
}

TEST(MadeFrame, ADefectOrAPortThatIsNotKnownIsRefused) {
  EXPECT_THAT(complaintsIn("at 5 send a frame with icvErr to A Ethernet1"),
              ElementsAre(HasSubstr("f:19:24: there is no defect of a frame 'icvErr'; ")));
  EXPECT_THAT(complaintsIn("at 5 send a frame with invalid to A Ethernet1"), SizeIs(1));
  EXPECT_THAT(complaintsIn("at 5 send a frame with eapolErr to A Ethernet2"),
              ElementsAre(HasSubstr("write 'Ethernet1'")));
  EXPECT_THAT(complaintsIn("at 5 send a frame with eapolErr"), SizeIs(1));
}

TEST(Counts, AreExpectedByKindAndInAll) {
  EXPECT_THAT(Played(pair("at 20.25 send a frame with icvValidationErr to A Ethernet1\n"
                          "at 20.75 send a frame with eapolErr to A Ethernet1\n"
                          "exactly at 20.25 expect A Ethernet1 counts 1 rx failure\n"
                          "at 21 expect A Ethernet1 counts 2 rx failure\n"
                          "at 21 expect A Ethernet1 counts 1 rx failure icvValidationErr\n"
                          "at 21 expect A Ethernet1 counts at least 2 rx failure\n"
                          "at 21 expect A Ethernet1 counts 0 rx failure invalid\n"
                          "at 20.5 expect A Ethernet1 counts 11 tx success\n"
                          "at 20.5 expect A Ethernet1 counts 10 rx success\n"))
                  .failures(),
              IsEmpty());
}

TEST(Counts, AreExpectedFromTheLastClearing) {
  EXPECT_THAT(
      Played(pair("at 20.25 send a frame with icvValidationErr to A Ethernet1\n"
                  "at 20.4 expect A Ethernet1 counts 1 rx failure since clear\n"
                  "at 20.5 clear counters of A\n"
                  "at 20.75 send a frame with eapolErr to A Ethernet1\n"
                  "at 21 expect A Ethernet1 counts 2 rx failure\n"
                  "at 21 expect A Ethernet1 counts 1 rx failure since clear\n"
                  "at 21 expect A Ethernet1 counts 0 rx failure icvValidationErr since clear\n"
                  "at 21 expect A Ethernet1 counts 0 tx success since clear\n"
                  "at 21 expect A Ethernet1 counts at least 11 tx success\n"))
          .failures(),
      IsEmpty());
}

TEST(Counts, ThatDifferAreToldWithTheirKind) {
  auto const failureOf = [](std::string const& line) {
    return Played(pair("at 20.25 send a frame with icvValidationErr to A Ethernet1\n" + line))
        .failures();
  };
  EXPECT_THAT(failureOf("at 21 expect A Ethernet1 counts 2 rx failure icvValidationErr"),
              ElementsAre("f:20: at 21.000 on A: expected that A Ethernet1 counts 2 rx failure "
                          "icvValidationErr, but A Ethernet1 counts 1 rx failure "
                          "icvValidationErr"));
  EXPECT_THAT(failureOf("at 21 expect A Ethernet1 counts at least 2 rx failure"),
              ElementsAre(HasSubstr("but A Ethernet1 counts 1 rx failure")));
  EXPECT_THAT(failureOf("at 20.5 expect A Ethernet1 counts 0 tx success"),
              ElementsAre(HasSubstr("but A Ethernet1 counts 11 tx success")));
  EXPECT_THAT(failureOf("at 20.5 expect A Ethernet1 counts 0 rx failure"), SizeIs(1));
  EXPECT_THAT(failureOf("at 21 expect A Ethernet1 counts 2 rx failure since clear"),
              ElementsAre(HasSubstr("but A Ethernet1 counts 1 rx failure since clear")));
}

TEST(Counts, OfNoKindThatThereIsAreRefused) {
  EXPECT_THAT(complaintsIn("at 5 expect A Ethernet1 counts 1 failure"),
              ElementsAre(HasSubstr("there is no direction 'failure'; ")));
  EXPECT_THAT(complaintsIn("at 5 expect A Ethernet1 counts 1 rx frames"),
              ElementsAre(HasSubstr("there is no type of counter 'frames'; ")));
  EXPECT_THAT(complaintsIn("at 5 expect A Ethernet1 counts 1 rx failure icvErr"),
              ElementsAre(HasSubstr("there is no kind of failure 'icvErr'; ")));
  EXPECT_THAT(complaintsIn("at 5 expect A Ethernet1 counts 1 rx failure since noon"),
              ElementsAre(HasSubstr("there is no kind of failure 'since'; ")));
  EXPECT_THAT(complaintsIn("at 5 expect A Ethernet1 counts many rx success"), SizeIs(1));
}

}  // namespace
}  // namespace Lab
