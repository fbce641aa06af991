#include "linux/trace/TraceFile.h"

#include <sys/stat.h>
#include <sys/wait.h>

#include <poll.h>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "linux/trace/TraceText.h"
#include "linux/trace/Tracing.h"
#include "tests/host/HostFixture.h"
#include "tests/support/Poison.h"

namespace Linux {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

Vesk::TraceHandle traceHandle("TraceFileTest");

class TraceFileTest : public ::testing::Test {
 protected:
  ~TraceFileTest() override {
    EXPECT_TRUE(Macsecd::traceIs({}));
    std::filesystem::remove(path);
  }
  static void add(TraceFile& file, unsigned number, std::string const& more = "") {
    std::string const text = "statement " + std::to_string(number) + more;
    file.add(number, {"Handle", 3, "/some/where/engine/MkaSm.cpp", 52, "f", text});
  }
  std::vector<TracedStatement> statements() const {
    auto read = readTrace(path);
    if (read) return *std::move(read);
    ADD_FAILURE() << read.fault().what;
    return {};
  }
  std::string const path = ::testing::TempDir() + "/trace-" + std::to_string(getpid());
};

TEST_F(TraceFileTest, HoldsStatementsInTheirOrder) {
  TraceFile file(path);
  for (unsigned i = 0; i < 3; ++i) add(file, i);
  auto const read = statements();
  ASSERT_EQ(read.size(), 3u);
  EXPECT_EQ(read[2].time, 2.0);
  EXPECT_EQ(read[2].level, 3u);
  EXPECT_EQ(read[2].handle, "Handle");
  EXPECT_EQ(read[2].place, "engine/MkaSm.cpp:52");
  EXPECT_EQ(read[2].text, "statement 2");
  struct stat status;
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
  EXPECT_EQ(static_cast<size_t>(status.st_size), TraceFile::kSize);
}

TEST_F(TraceFileTest, KeepsTheNewestWhenItIsFull) {
  TraceFile file(path, 10000);
  for (unsigned i = 0; i < 5000; ++i) {
    add(file, i, std::string(i % 97, '.'));
    if (i % 250 != 0) continue;
    auto const read = statements();
    ASSERT_FALSE(read.empty());
    for (size_t at = 0; at < read.size(); ++at) {
      ASSERT_EQ(read[at].time, i + 1.0 - static_cast<double>(read.size() - at));
    }
    ASSERT_GT(read.size(), i > 500 ? 50u : 0u);
  }
}

TEST_F(TraceFileTest, OutlivesAProcessThatIsKilledAtAnyMoment) {
  unsigned last = 0;
  for (int round = 0; round < 20; ++round) {
    int pipes[2];
    ASSERT_EQ(pipe(pipes), 0);
    pid_t const other = fork();
    if (other == 0) {
      TraceFile file(path, 20000);
      for (unsigned i = last + 1;; ++i) {
        add(file, i, std::string(i % 61, '.'));
        if (i == last + 1 && write(pipes[1], "", 1) != 1) _exit(1);
      }
    }
    Descriptor const writes(pipes[1]);
    Descriptor const reads(pipes[0]);
    pollfd waited{reads.fd(), POLLIN, 0};
    ASSERT_EQ(poll(&waited, 1, 60000), 1);
    poll(nullptr, 0, round);
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
    double former = 0;
    for (TracedStatement const& one : statements()) {
      ASSERT_EQ(one.time, former == 0 ? one.time : former + 1) << round;
      former = one.time;
      ASSERT_THAT(one.text, MatchesRegex("statement [0-9]+[.]*"));
    }
    ASSERT_GT(former, last);
    last = static_cast<unsigned>(former);
  }
}

TEST_F(TraceFileTest, GoesOnBehindWhatAFormerProcessHadOnlyBegun) {
  {
    TraceFile file(path);
    add(file, 1);
  }
  TraceHead head;
  std::fstream raw(path, std::ios::binary | std::ios::in | std::ios::out);
  raw.read(reinterpret_cast<char*>(&head), sizeof head);
  raw.seekp(static_cast<std::streamoff>(kTraceHeadSize + head.ended));
  raw << "7.000000\t3\tHan";
  head.begun += 100;
  raw.seekp(0);
  raw.write(reinterpret_cast<char*>(&head), sizeof head);
  raw.close();
  EXPECT_EQ(statements().size(), 1u);
  TraceFile file(path);
  add(file, 2);
  auto const read = statements();
  ASSERT_EQ(read.size(), 2u);
  EXPECT_EQ(read[1].text, "statement 2");
}

TEST_F(TraceFileTest, CutsLongStatementsAndKeepsEachOnItsLine) {
  TraceFile file(path);
  add(file, 1, "\nnext\tline" + std::string(10000, 'x'));
  add(file, 2);
  auto const read = statements();
  ASSERT_EQ(read.size(), 2u);
  EXPECT_THAT(read[0].text, ::testing::StartsWith("statement 1 next line"));
  EXPECT_LT(read[0].text.size(), TraceFile::kMaxLine);
}

TEST_F(TraceFileTest, SaysWhatIsWrong) {
  auto const refusal = [](std::string const& where) {
    try {
      TraceFile const file(where);
    } catch (Macsecd::Fault const& fault) {
      return fault.what;
    }
    return std::string("none");
  };
  EXPECT_THAT(refusal("/no/such/folder/trace"), HasSubstr("No such file"));
  TraceFile const file(path);
  EXPECT_THAT(refusal(path), HasSubstr("temporarily unavailable"));
  auto const none = readTrace(path + ".none");
  EXPECT_THAT(none.fault().remedy, HasSubstr("macsecctl trace on"));
  std::ofstream(path + ".odd") << std::string(200, 'x');
  EXPECT_THAT(readTrace(path + ".odd").fault().what, HasSubstr("is no trace"));
  std::filesystem::remove(path + ".odd");
}

TEST_F(TraceFileTest, ShowsTheStatementsWithTheTimeOfDay) {
  TraceFile file(path);
  add(file, 1);
  std::ostringstream text, json, err;
  EXPECT_EQ(showTrace(path, false, text, err), 0);
  EXPECT_THAT(text.str(), MatchesRegex("[0-9]+-[0-9]+-[0-9]+ [0-9:.]+  3  Handle  "
                                       "engine/MkaSm.cpp:52  statement 1\n"));
  EXPECT_EQ(showTrace(path, true, json, err), 0);
  EXPECT_EQ(json.str(), R"({"time":1.0,"level":3,"handle":"Handle","place":"engine/MkaSm.cpp:52",)"
                        R"("text":"statement 1"})"
                        "\n");
  EXPECT_EQ(showTrace(path + ".none", false, text, err), 1);
  EXPECT_THAT(err.str(), HasSubstr("No such file"));
}

TEST_F(TraceFileTest, IsThereWhileItIsTracedAlone) {
  ProcessWorld world([](auto const&) {});
  Vesk::WorldScope const scope(world);
  Tracing tracing(world, path);
  VESK_TRACE(3, ": before");
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_TRUE(tracing.wishIs({Macsecd::traceLevelsTo(3), {"TraceFileTest"}}));
  VESK_TRACE(3, ": traced");
  VESK_TRACE(4, ": too fine");
  EXPECT_FALSE(tracing.wishIs({Vesk::kAllTraceLevels, {"TraceFileTets"}}));
  VESK_TRACE(3, ": still traced");
  EXPECT_TRUE(tracing.wishIs({}));
  VESK_TRACE(3, ": after");
  auto const read = statements();
  ASSERT_EQ(read.size(), 2u);
  EXPECT_THAT(read[0].text, HasSubstr(": traced"));
  EXPECT_THAT(read[1].text, HasSubstr(": still traced"));
}

TEST_F(TraceFileTest, NeverHoldsAKey) {
  Macsecd::Switch b{2}, a{1};
  Support::Poison poison;
  poison.add("CAK", Macsecd::kCak);
  ASSERT_TRUE(Macsecd::traceIs({Vesk::kAllTraceLevels, {}}));
  for (Macsecd::Switch* one : {&a, &b}) {
    Vesk::WorldScope const scope(one->world);
    one->bringUp();
  }
  for (double time = 1; time < 40; ++time) {
    talk(a, b, time);
    for (Macsecd::Switch* one : {&a, &b}) poison.addFrom(*one->host.status());
    if (time == 30) a.actor()->llpnExhaustionInc(1);
  }
  EXPECT_GT(poison.count("SAK"), 1u);
  EXPECT_GT(poison.count("KEK"), 0u);
  TraceFile file(path);
  for (Macsecd::Switch* one : {&a, &b}) {
    for (std::string const& text : one->world.traces) file.add(1, {"Handle", 3, "f", 1, "", text});
  }
  std::ifstream in(path, std::ios::binary);
  std::string const octets{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  EXPECT_GT(statements().size(), 500u);
  EXPECT_EQ(poison.foundIn(octets), "");
}

}  // namespace
}  // namespace Linux
