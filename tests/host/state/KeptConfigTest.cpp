#include "host/state/KeptConfig.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "host/explain/Explain.h"
#include "platform/WardcodeLib.h"
#include "tests/host/HostFixture.h"
#include "tests/host/KeptState.h"

namespace Macsecd {
namespace {

std::string const kText = "profiles:\n  one:\n    key: {ckn: \"6162\", cak: " + std::string(kCak) +
                          "}\ninterfaces: {Ethernet1: {profile: one}}\n";

/// A file that goes in the end.
class TheKeptConfiguration : public ::testing::Test {
 protected:
  ~TheKeptConfiguration() override { std::filesystem::remove(path_); }
  ConfigResult readOf(std::string const& text) const {
    std::ofstream(path_) << text;
    std::filesystem::permissions(path_, std::filesystem::perms(0600));
    return readConfigFile(path_, Keys::kept);
  }
  /// What the store holds under these paths.
  StateValues kept() const {
    StateValues found;
    for (auto const& entry : store_.values) {
      if (entry.first.starts_with(KeptConfig::kPathBegin)) found.insert(entry);
    }
    return found;
  }
  KeptConfig another() {
    KeptConfig next(&store_);
    next.takeUp(kept());
    return next;
  }

  Support::TestWorld world_;
  Vesk::WorldScope const scope_{world_};
  std::string const path_ = ::testing::TempDir() + "/kept-config-" + std::to_string(getpid());
  KeptState store_;
};

TEST_F(TheKeptConfiguration, IsThatOfTheFileInTheNextProcess) {
  KeptConfig config(&store_);
  EXPECT_FALSE(config.config());
  config.textIs(readOf(kText).sealed);
  EXPECT_TRUE(config.commit());
  EXPECT_FALSE(config.commit());
  auto const next = another().config();
  ASSERT_TRUE(next);
  EXPECT_EQ(next->profiles.at(0).key->cak, kCak);
  EXPECT_EQ(next->interfaces.at(0).name, "Ethernet1");
}

TEST_F(TheKeptConfiguration, LiesInTheStoreAsKeysDo) {
  KeptConfig config(&store_);
  config.textIs(readOf(kText).sealed);
  config.commit();
  ASSERT_EQ(kept().size(), 1u);
  EXPECT_TRUE(kept().begin()->second.starts_with("w1:"));
  EXPECT_EQ(kept().begin()->second.find(kCak), std::string::npos);
  EXPECT_EQ(kept().begin()->second.find("Ethernet1"), std::string::npos);
}

TEST_F(TheKeptConfiguration, IsNoneUnderAnotherKeyOfTheHost) {
  KeptConfig config(&store_);
  config.textIs(readOf(kText).sealed);
  config.commit();
  uint8_t const other[WardcodeLib::kHostKeySize] = {99};
  WardcodeLib::hostKeyIs(other);
  EXPECT_FALSE(another().config());
  WardcodeLib::decodeFailuresDel();
}

TEST_F(TheKeptConfiguration, IsGivenToTheStoreAgainWhenThatRefusedIt) {
  KeptConfig config(&store_);
  config.textIs(readOf(kText).sealed);
  store_.refusal = "no room";
  EXPECT_FALSE(config.commit());
  store_.refusal.clear();
  EXPECT_TRUE(config.commit());
  EXPECT_TRUE(another().config());
}

TEST_F(TheKeptConfiguration, OfASwitchIsTheLastOneWithoutMistakes) {
  Sent sink;
  {
    Host host(world_, "s", sink, {.store = &store_});
    ASSERT_TRUE(host.reload(readOf(kText)));
    host.start();
    ASSERT_FALSE(host.reload(readOf(kText + "shutdwon: true\n")));
    EXPECT_TRUE(host.commit());
  }
  Host next(world_, "s", sink, {.store = &store_});
  ASSERT_TRUE(next.keptConfig().config());
  EXPECT_EQ(next.keptConfig().config()->profiles.at(0).key->cak, kCak);
  EXPECT_TRUE(next.droppedState().empty());
}

TEST_F(TheKeptConfiguration, KnowsTheOneThatWasTriedAndNotKept) {
  KeptConfig config(&store_);
  config.textIs(readOf(kText).sealed);
  EXPECT_TRUE(config.triedIs(readOf(kText + "delay-protection: true\n").sealed));
  config.commit();
  auto next = another();
  EXPECT_FALSE(next.config()->delayProtection);
  EXPECT_TRUE(next.isTried(readOf(kText + "delay-protection: true\n").sealed));
  EXPECT_FALSE(next.isTried(readOf(kText).sealed));
  next.keepTried();
  next.commit();
  EXPECT_TRUE(another().config()->delayProtection);
  EXPECT_FALSE(another().isTried(readOf(kText + "delay-protection: true\n").sealed));
}

TEST_F(TheKeptConfiguration, IsToldByExplainWhileTheFileHasMistakes) {
  Switch s(1);
  s.bringUp(readOf(kText).config);
  EXPECT_FALSE(explain(s.host, kIntf).has(CauseKind::formerConfiguration));
  s.host.configFaultIs("the file has mistakes, and isn't in force");
  auto const told = explain(s.host, kIntf);
  ASSERT_TRUE(told.has(CauseKind::formerConfiguration));
  EXPECT_EQ(told.causes.back().what,
            "the file has mistakes, and isn't in force; the former configuration is");
  EXPECT_TRUE(s.host.reload(readOf(kText)));
  EXPECT_FALSE(explain(s.host, kIntf).has(CauseKind::formerConfiguration));
}

}  // namespace
}  // namespace Macsecd
