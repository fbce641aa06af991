#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "lab/judge/Expectations.h"
#include "lab/report/Captures.h"
#include "lab/report/Events.h"
#include "lab/report/Timeline.h"
#include "lab/scenario/ScenarioParser.h"
#include "lab/world/Simulation.h"
#include "tests/support/Poison.h"

namespace Lab {
namespace {

using Support::Poison;

constexpr char const* kCak = "0123456789abcdef0123456789abcdef";
constexpr char const* kLongCak = "00112233445566778899AABBCCDDEEFF00112233445566778899aabbccddeeff";
constexpr char const* kFallback = "fedcba9876543210fedcba9876543210";
constexpr char const* kNewCak = "a0a1a2a3a4a5a6a7a8a9aaabacadaeaf";
constexpr char const* kMsk =
    "404142434445464748494a4b4c4d4e4f505152535455565758595a5b5c5d5e5f"
    "606162636465666768696a6b6c6d6e6f707172737475767778797a7b7c7d7e7f";

std::string switchText(std::string const& name, std::string const& mac, std::string const& delays) {
  return "switch " + name + "\n  mac " + mac + "\n  first delays " + delays +
         "\n  config:\n    profiles:\n"
         "      core:\n        key: {ckn: c0de0001, cak: " +
         kCak +
         "}\n"
         "        fallback-key: {ckn: c0defa11, cak: " +
         kFallback +
         "}\n"
         "        rekey-period: 12\n"
         "      long:\n        key: {ckn: c0de0009, cak: " +
         kLongCak +
         "}\n"
         "        cipher-suite: gcm-aes-xpn-256\n        rekey-period: 15\n"
         "      eap: {dot1x: true}\n"
         "    interfaces:\n      Ethernet1: {profile: core}\n"
         "      Ethernet2: {profile: long}\n      Ethernet3: {profile: eap}\n";
}

/// Everything happens here that touches a key: agreement, rotation, a key change, one that is
/// mistyped, forged frames, a restart, a shutdown, a wrong expectation.
std::string scenarioText() {
  return switchText("A", "02:00:00:00:00:01", "0 0 0 0") +
         switchText("B", "02:00:00:00:00:02", "1 1 1 1") +
         "wire A Ethernet1 to B Ethernet1\nwire A Ethernet2 to B Ethernet2\n"
         "wire A Ethernet3 to B Ethernet3\nrun until 100\n"
         "by 15 expect A Ethernet1 is open\nby 15 expect A Ethernet2 is open\n"
         "by 40 expect A Ethernet3 is open\n"
         "at 20 corrupt byte 60 of 5 frames both ways at A Ethernet1\n"
         "at 30 set key of profile core on A to c0de0002 " +
         kNewCak +
         "\n"
         "at 35 set key of profile core on B to c0de0002 " +
         kNewCak +
         "\n"
         "by 60 expect B Ethernet1 uses key c0de0002\n"
         "at 65 restart A\n"
         "at 70 shutdown B\nat 75 no shutdown B\n"
         "by 95 expect A Ethernet1 is open\nat 99 expect A Ethernet1 is absent\n";
}

/// Listens to two switches wherever something can be heard, and learns their keys meanwhile.
class Ear final : public Audience {
 public:
  Ear(Simulation& simulation, Poison& poison) : simulation_(simulation), poison_(poison) {
    for (auto const& one : simulation.switches()) {
      Vesk::WorldScope const scope(one->world());
      Vesk::TraceHandle::streamLevelsIs("", Vesk::kAllTraceLevels);
      auto& sinks = one->world().sinks;
      sinks.trace = [this](Vesk::TraceRecord const& record) { traces << record.text << '\n'; };
      sinks.attribute = [this, former = sinks.attribute](Vesk::AttributeWrite const& write) {
        writes << write.entity.fullName() << ' ' << write.attribute << ' ' << write.key << ' '
               << write.value << '\n';
        former(write);
      };
    }
  }
  void happened(Event const& event) override {
    if (auto const* line = std::get_if<SyslogLine>(&event.what)) {
      logs << line->name << ' ' << line->text << '\n';
      for (auto const& argument : line->arguments) logs << argument << '\n';
    }
  }
  void acted(double, std::string const& text) override { logs << text << '\n'; }
  void instantDone(double time) override {
    if (time >= 20 && !published_) publish();
    for (auto const& one : simulation_.switches()) {
      Vesk::WorldScope const scope(one->world());
      poison_.addFrom(*one->host().status());
      if (time >= nextLook_) lookAt(one->host());
    }
    if (time >= nextLook_) nextLook_ += 10;
  }

  std::ostringstream logs, traces, writes, status;

 private:
  // The first switch is the authenticator, which becomes key server.
  void publish() {
    published_ = true;
    Dot1x::Dot1xType type = 0;
    for (auto const& one : simulation_.switches()) {
      Vesk::WorldScope const scope(one->world());
      Dot1x::EapKey const key(type++, WardcodeLib::doEncodeKey(kMsk), "0d80",
                              Lumo::EthAddr({2, 0, 0, 0, 0, 1}), Lumo::EthAddr({2, 0, 0, 0, 0, 2}));
      one->host().eapKeyStatus()->keyIs(Lumo::IntfId("Ethernet3"), key);
    }
  }
  void lookAt(Macsecd::Host const& host) {
    status << Vesk::entityToText(*host.status()) << Vesk::entityToText(*host.config())
           << Vesk::entityToText(*host.eapKeyStatus()) << Vesk::entityToText(*host.hwStatus());
  }

  Simulation& simulation_;
  Poison& poison_;
  bool published_ = false;
  double nextLook_ = 1;
};

std::string contentOf(std::filesystem::path const& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

class PoisonTest : public ::testing::Test {
 protected:
  PoisonTest() {
    for (char const* key : {kCak, kLongCak, kFallback, kNewCak}) poison.add("CAK", key);
    poison.add("MSK", kMsk);
    poison.add("MSK", std::string_view(kMsk).substr(0, 32));
    std::filesystem::create_directories(folder);
  }
  ~PoisonTest() override { std::filesystem::remove_all(folder); }

  Poison poison;
  std::filesystem::path const folder =
      std::filesystem::temp_directory_path() / ("poison-" + std::to_string(getpid()));
};

TEST_F(PoisonTest, IsFoundWhereverItIs) {
  std::string octets(16, '\0');
  static_cast<void>(
      Macsec::hexDecode(kNewCak, {reinterpret_cast<uint8_t*>(octets.data()), octets.size()}));
  EXPECT_EQ(poison.foundIn("x " + std::string(kNewCak) + " y"), "CAK in digits");
  EXPECT_EQ(poison.foundIn("x A0A1a2a3A4A5A6A7A8A9AAABACADAEAF y"), "CAK in digits");
  EXPECT_EQ(poison.foundIn("x" + octets + "y"), "CAK in octets");
  EXPECT_EQ(poison.foundIn(std::string(kNewCak).substr(1)), "");
}

TEST_F(PoisonTest, NothingThatASwitchSaysOrShowsOrSendsHoldsAKey) {
  ScenarioResult const read = parseScenario(scenarioText(), "f");
  ASSERT_TRUE(read.good()) << Macsecd::textOf(read.diagnostics);
  std::ostringstream eventsOut, timelineOut, end;
  std::vector<std::filesystem::path> captured;
  std::vector<Failure> failures;
  {
    Simulation simulation(read.scenario, 1);
    Ear ear(simulation, poison);
    Events events(eventsOut);
    Timeline timeline(timelineOut, read.scenario);
    Captures captures(read.scenario, folder);
    Expectations expectations(simulation);
    for (Audience* audience :
         std::initializer_list<Audience*>{&ear, &events, &timeline, &captures, &expectations}) {
      simulation.audienceIs(*audience);
    }
    simulation.run();
    writeStatusTable(end, simulation);
    writeCounters(end, simulation);
    captured = captures.paths();
    failures = expectations.failures();
    EXPECT_EQ(poison.foundIn(ear.logs.str()), "");
    EXPECT_EQ(poison.foundIn(ear.traces.str()), "");
    EXPECT_EQ(poison.foundIn(ear.writes.str()), "");
    EXPECT_EQ(poison.foundIn(ear.status.str()), "");
    for (auto const* heard : {&ear.logs, &ear.traces, &ear.writes, &ear.status}) {
      EXPECT_GT(heard->str().size(), 1000u);
    }
  }
  EXPECT_EQ(poison.foundIn(eventsOut.str()), "");
  EXPECT_EQ(poison.foundIn(timelineOut.str()), "");
  EXPECT_EQ(poison.foundIn(end.str()), "");
  ASSERT_EQ(captured.size(), 3u);
  for (auto const& path : captured) {
    EXPECT_GT(contentOf(path).size(), 1000u);
    EXPECT_EQ(poison.foundIn(contentOf(path)), "");
  }
  // The scenario has to have gone where it was meant to go.
  ASSERT_EQ(failures.size(), 1u) << failures[0].text();
  EXPECT_EQ(poison.foundIn(failures[0].text()), "");
  EXPECT_GE(poison.count("SAK"), 12u);
  EXPECT_GE(poison.count("ICK"), 5u);
  EXPECT_GE(poison.count("KEK"), 5u);
}

// A key in a wrong place is the operator's mistake that comes nearest to a leak.
TEST_F(PoisonTest, NoMessageAboutAMistakeHoldsAKey) {
  std::string const key = kNewCak;
  for (std::string const& text :
       {"profiles: {one: {key: {ckn: ab, cak: " + key + "0}}}",
        "profiles: {one: {key: {ckn: ab, cak: [" + key + "]}}}",
        "profiles: {one: {key: " + key + "}}", "profiles: {one: {" + key + ": 1}}",
        "profiles: {" + key + ": {key: 5}}", key + ": 1",
        "profiles: {one: {key: {ckn: ab, cak: " + key + ", cak: " + key + "}}}",
        "profiles: {one: {key-server-priority: " + key + "}}",
        "interfaces: {Ethernet1: {profile: " + key + "}}",
        "profiles: {one: {key: {ckn: ab, cak: \"" + key + "}}}"}) {
    auto const read = Macsecd::parseConfig(text, "switch.yaml");
    EXPECT_FALSE(read.good()) << text;
    EXPECT_EQ(poison.foundIn(Macsecd::textOf(read.diagnostics)), "") << text;
  }
}

}  // namespace
}  // namespace Lab
