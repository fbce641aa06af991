#include "linux/Daemon.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "linux/trace/Syslog.h"

namespace Linux {
namespace {

char const* const kGood =
    "profiles:\n"
    "  uplink:\n"
    "    key: {ckn: c0de0001, cak: 0123456789abcdef0123456789abcdef}\n"
    "interfaces:\n"
    "  absent0: {profile: uplink}\n";

/// A file that goes in the end.
struct File {
  explicit File(std::string const& text)
      : path(std::filesystem::temp_directory_path() /
             ("macsecd-test-" + std::to_string(getpid()) + ".yaml")) {
    write(text);
  }
  ~File() { std::filesystem::remove(path); }
  void write(std::string const& text) const {
    std::ofstream(path) << text;
    std::filesystem::permissions(path, std::filesystem::perms(0600));
  }
  std::string const path;
};

/// What a driver was asked for, and what it found as it was.
struct Record {
  std::vector<double> late = {};  ///< by how much each run came late, in seconds
  std::vector<bool> running = {};
  std::vector<std::string> calls = {};
  int signal = SIGTERM;
};

/// Wants to run every 10 ms, and has the process stopped after three times.
class Driver final : public HardwareDriver {
 public:
  Driver(Record& record, Macsecd::Host& host) : record_(record), host_(host), next_(Zorn::never) {}
  void configIs(Macsecd::SwitchConfig const&) override { record_.calls.push_back("config"); }
  void interfaceIs(Lumo::IntfId, int, Lumo::EthAddr const&) override {}
  void interfaceMtuIs(Lumo::IntfId, uint32_t) override {}
  void interfaceDel(Lumo::IntfId) override {}
  void linkChanged(LinkChange const&) override {}
  // The start may take long: only then is there something to run.
  void interfacesAreKnown() override { next_ = Vesk::now() + kPeriod; }
  double nextTime() const override { return next_; }
  void run() override {
    record_.late.push_back(Vesk::now() - next_);
    record_.running.push_back(host_.running());
    next_ = Vesk::now() + kPeriod;
    if (record_.late.size() == 3) kill(getpid(), record_.signal);
  }
  void leave() override { ended("leave"); }
  void removeAll() override { ended("remove all"); }

 private:
  static constexpr double kPeriod = 0.01;
  void ended(char const* how) {
    record_.calls.push_back(how);
    record_.running.push_back(host_.running());
  }
  Record& record_;
  Macsecd::Host& host_;
  double next_;
};

TEST(Daemon, RunsTheDriverWhenItWantsAndTakesAllAwayWhenTheSwitchHasStopped) {
  File const config(kGood);
  Record record;
  ProcessWorld world{Syslog()};
  Daemon daemon(world, {.configFile = config.path}, nullptr, [&](Macsecd::Host& host, EventLoop&) {
    return std::make_unique<Driver>(record, host);
  });
  EXPECT_EQ(daemon.run(), DaemonEnd::stopped);
  ASSERT_GE(record.late.size(), 3u);
  for (size_t i = 0; i < record.late.size(); ++i) {
    EXPECT_GE(record.late[i], 0.0);
    EXPECT_TRUE(record.running[i]);
  }
  EXPECT_FALSE(record.running.back());
  EXPECT_EQ(record.calls, (std::vector<std::string>{"config", "remove all"}));
}

TEST(Daemon, LeavesAllAsItIsWhenAnotherProcessIsToGoOn) {
  File const config(kGood);
  Record record{.signal = SIGUSR1};
  ProcessWorld world{Syslog()};
  Daemon daemon(world, {.configFile = config.path}, nullptr, [&](Macsecd::Host& host, EventLoop&) {
    return std::make_unique<Driver>(record, host);
  });
  EXPECT_EQ(daemon.run(), DaemonEnd::stopped);
  EXPECT_TRUE(record.running.back()) << "the driver has to look away before the switch ends";
  EXPECT_EQ(record.calls, (std::vector<std::string>{"config", "leave"}));
}

TEST(Daemon, DoesNotStartOnAConfigurationWithMistakes) {
  File const config(std::string(kGood) + "shutdwon: true\n");
  Record record;
  ProcessWorld world{Syslog()};
  Daemon daemon(world, {.configFile = config.path}, nullptr, [&](Macsecd::Host& host, EventLoop&) {
    return std::make_unique<Driver>(record, host);
  });
  EXPECT_EQ(daemon.run(), DaemonEnd::badConfiguration);
  EXPECT_TRUE(record.late.empty());
}

}  // namespace
}  // namespace Linux
