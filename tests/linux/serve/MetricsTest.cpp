#include "linux/serve/Metrics.h"

#include "tests/host/HostFixture.h"
#include "tests/support/Poison.h"

namespace Linux {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;

class MetricsTest : public ::testing::Test {
 protected:
  MetricsTest() {
    metrics.emplace(a.host, delay, control, eapKeys);
    for (Macsecd::Switch* one : {&a, &b}) {
      one->bringUp();
    }
  }
  ~MetricsTest() override { metrics.reset(); }
  std::string text() { return metrics->text(); }
  /// "name{labels} value" for what is told of a name; one to a line.
  std::string linesOf(std::string const& name) {
    std::istringstream all(text());
    std::string found;
    for (std::string line; std::getline(all, line);) {
      if (line.starts_with(name)) found += line + "\n";
    }
    return found;
  }

  Macsecd::Switch b{2}, a{1};
  LoopDelay delay;
  StreamServer::Counts control, eapKeys;
  std::optional<Metrics> metrics;
};

TEST_F(MetricsTest, TellOfAPortThatIsNotSecured) {
  EXPECT_EQ(linesOf("macsecd_port_"),
            "macsecd_port_secured{interface=\"Ethernet1\"} 0\n"
            "macsecd_port_is_key_server{interface=\"Ethernet1\"} 0\n"
            "macsecd_port_live_peers{interface=\"Ethernet1\"} 0\n"
            "macsecd_port_rekeys_total{interface=\"Ethernet1\"} 0\n"
            "macsecd_port_openings_total{interface=\"Ethernet1\"} 0\n"
            "macsecd_port_hardware_faulty{interface=\"Ethernet1\"} 0\n"
            "macsecd_port_frames_not_valid_total{interface=\"Ethernet1\"} 0\n");
}

TEST_F(MetricsTest, TellOfASecuredPort) {
  talk(a, b, 20);
  std::string const told = text();
  for (char const* const line :
       {"macsecd_port_secured{interface=\"Ethernet1\"} 1\n",
        "macsecd_port_key_in_use_info{interface=\"Ethernet1\",ckn=\"6162\",role=\"primary\"} 1\n",
        "macsecd_port_is_key_server{interface=\"Ethernet1\"} 1\n",
        "macsecd_port_live_peers{interface=\"Ethernet1\"} 1\n",
        "macsecd_port_openings_total{interface=\"Ethernet1\"} 1\n",
        "macsecd_port_sak_age_seconds{interface=\"Ethernet1\"} ",
        "macsecd_port_time_to_secure_seconds{interface=\"Ethernet1\"} "}) {
    EXPECT_THAT(told, HasSubstr(line));
  }
}

TEST_F(MetricsTest, TellWhatTheHardwareReports) {
  a.host.hardwareReportsFrom([](Lumo::IntfId) {
    Macsecd::HardwareReport report;
    report.txPacketNumber = 5'000'000'000;
    report.framesNotValid = 7;
    return report;
  });
  a.host.hardwareFaultIs(Macsecd::kIntf, "no room");
  std::string const told = text();
  EXPECT_THAT(told,
              HasSubstr("macsecd_port_next_packet_number{interface=\"Ethernet1\"} 5000000000"));
  EXPECT_THAT(told, HasSubstr("macsecd_port_frames_not_valid_total{interface=\"Ethernet1\"} 7\n"));
  EXPECT_THAT(told, HasSubstr("macsecd_doctor_bound_anew_total 0\n"));
  EXPECT_THAT(told, HasSubstr("macsecd_port_hardware_faulty{interface=\"Ethernet1\"} 1\n"));
}

TEST_F(MetricsTest, CountMkpdusByWhatBecameOfThem) {
  talk(a, b, 10);
  a.host.receive(Macsecd::kIntf, std::vector<uint8_t>(60, 0));
  std::string const counted = linesOf("macsecd_mkpdus_total");
  EXPECT_THAT(counted, HasSubstr("{interface=\"Ethernet1\",direction=\"tx\",result=\"success\","
                                 "reason=\"\"} "));
  EXPECT_THAT(counted, HasSubstr("{interface=\"Ethernet1\",direction=\"rx\",result=\"failure\","
                                 "reason=\"eapolErr\"} 1\n"));
}

TEST_F(MetricsTest, TellTheDelayOfTheLoop) {
  delay.ran(1, 1.05);
  delay.ran(1, 4);
  EXPECT_EQ(linesOf("macsecd_loop_"),
            "macsecd_loop_delay_seconds_count 2\n"
            "macsecd_loop_delay_seconds_sum 3.05\n"
            "macsecd_loop_delay_seconds_bucket{le=\"0.001\"} 0\n"
            "macsecd_loop_delay_seconds_bucket{le=\"0.01\"} 0\n"
            "macsecd_loop_delay_seconds_bucket{le=\"0.1\"} 1\n"
            "macsecd_loop_delay_seconds_bucket{le=\"1\"} 1\n"
            "macsecd_loop_delay_seconds_bucket{le=\"10\"} 2\n"
            "macsecd_loop_delay_seconds_bucket{le=\"+Inf\"} 2\n"
            "macsecd_loop_frozen_total 1\n");
}

TEST_F(MetricsTest, TellWhatTheSocketsRefused) {
  control = {.refusedUsers = 1, .turnedAway = 2, .madeRoom = 5, .slowReaders = 3, .brokenLines = 4};
  eapKeys = {.madeRoom = 6};
  EXPECT_EQ(linesOf("macsecd_control_"),
            "macsecd_control_refusals_total{reason=\"user\"} 1\n"
            "macsecd_control_refusals_total{reason=\"too-many\"} 2\n"
            "macsecd_control_refusals_total{reason=\"made-room\"} 5\n"
            "macsecd_control_refusals_total{reason=\"slow-reader\"} 3\n"
            "macsecd_control_refusals_total{reason=\"broken-line\"} 4\n");
  EXPECT_THAT(linesOf("macsecd_eap_keys_"),
              HasSubstr("macsecd_eap_keys_refusals_total{reason=\"made-room\"} 6\n"));
}

TEST_F(MetricsTest, KeepToTheTextFormat) {
  talk(a, b, 20);
  std::istringstream all(text());
  std::string declared;
  for (std::string line; std::getline(all, line);) {
    if (line.starts_with("# HELP ")) continue;
    if (line.starts_with("# TYPE ")) {
      EXPECT_THAT(line, MatchesRegex("# TYPE macsecd_[a-z_]+ (gauge|counter|histogram)"));
      declared = line.substr(7, line.find(' ', 7) - 7);
      EXPECT_EQ(declared.ends_with("_total"), line.ends_with(" counter")) << line;
      continue;
    }
    EXPECT_TRUE(line.starts_with(declared)) << line;
    EXPECT_THAT(line, MatchesRegex("macsecd_[a-z_]+([{][a-z_]+=\".*\"[}])? [0-9.e+]+"));
  }
}

TEST_F(MetricsTest, EscapeWhatStandsInALabel) {
  Macsecd::SwitchConfig config = Macsecd::configWith(Macsecd::kCak);
  config.interfaces = {{"odd\"name\\\n", "one", 1}};
  a.host.configIs(config);
  EXPECT_THAT(metrics->text(),
              HasSubstr("macsecd_port_secured{interface=\"odd\\\"name\\\\\\n\"} 0\n"));
}

TEST_F(MetricsTest, NeverHoldAKey) {
  talk(a, b, 20);
  Support::Poison poison;
  poison.add("CAK", Macsecd::kCak);
  poison.addFrom(*a.host.status());
  EXPECT_EQ(poison.foundIn(text()), "");
}

}  // namespace
}  // namespace Linux
