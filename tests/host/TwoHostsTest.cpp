#include <random>

#include "host/state/UnreadableKeys.h"
#include "platform/WardcodeLib.h"
#include "runtime/Trace.h"
#include "tests/host/HostFixture.h"
#include "tests/host/KeptState.h"

namespace Macsecd {
namespace {

using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::Not;

/// A world that has nothing in common with another one.
class OwnWorld final : public Vesk::World {
 public:
  explicit OwnWorld(uint32_t seed) : source_(seed) {}
  double now() const override { return 1.0; }
  int rand() override { return 0; }
  void randomBytes(std::span<uint8_t> out) override {
    for (uint8_t& octet : out) octet = static_cast<uint8_t>(source_());
  }
  void syslog(Vesk::LogMessage const& message) override { logs.push_back(message.handle.name()); }
  void trace(Vesk::TraceRecord const& record) override { traces.push_back(record.text); }
  void exit(int) override {}

  std::vector<std::string> logs;
  std::vector<std::string> traces;

 private:
  std::mt19937 source_;  // tidy: allow(randomness) a world's own source, the same in every run
};

/// A switch with a store, in a world of its own; one of several in a process.
struct KeptSwitch {
  explicit KeptSwitch(uint32_t seed)
      : world(seed), host(std::in_place, world, "switch", sent, options()) {}
  HostOptions options() { return {.store = &store}; }
  void begin() {
    host->interfaceIs(kIntf, Lumo::EthAddr({2, 0, 0, 0, 0, 1}), 1);
    host->configIs(configWith(kCak));
    host->start();
    host->linkIs(kIntf, true);
    host->commit();
  }
  Vesk::String8 storedKey() const { return host->status()->intfStatus(kIntf)->key().cak(); }

  OwnWorld world;
  KeptState store;
  Sent sent;
  std::optional<Host> host;
};

/// No call of theirs stands in a world that the caller has entered.
class TwoHosts : public ::testing::Test {
 protected:
  TwoHosts() {
    first.emplace(1);
    second.emplace(2);
    first->begin();
    second->begin();
  }
  std::optional<KeptSwitch> first, second;
};

TEST_F(TwoHosts, OfWhichTheFirstEndsFirstLeaveTheOtherItsStore) {
  first.reset();
  auto const before = second->store.values;
  second->host->linkIs(kIntf, false);
  EXPECT_TRUE(second->host->commit());
  EXPECT_NE(second->store.values, before);
}

TEST_F(TwoHosts, OfWhichOneDiesLeaveTheOtherItsStore) {
  second->host->die();
  first->host->linkIs(kIntf, false);
  EXPECT_TRUE(first->host->commit());
  second->host->start();
  second->host->linkIs(kIntf, false);
  EXPECT_TRUE(second->host->commit());
}

TEST_F(TwoHosts, StoreKeysUnderAKeyOfTheirOwn) {
  auto const decoded = [](KeptSwitch& in, Vesk::String8 const& stored) {
    Vesk::WorldScope const scope(in.world);
    return WardcodeLib::doDecodeKey(stored);
  };
  EXPECT_EQ(decoded(*first, first->storedKey()), kCak);
  EXPECT_EQ(decoded(*second, second->storedKey()), kCak);
  EXPECT_EQ(decoded(*first, second->storedKey()), "");
}

TEST_F(TwoHosts, TellOfUnreadableKeysEachInItsOwnLog) {
  auto const teller = [](KeptSwitch& of) {
    Vesk::WorldScope const scope(of.world);
    return std::make_unique<UnreadableKeyTeller>([&of] { return of.host->status(); });
  };
  auto const ofFirst = teller(*first), ofSecond = teller(*second);
  {
    Vesk::WorldScope const scope(second->world);
    WardcodeLib::doDecodeKey(first->storedKey());
  }
  EXPECT_THAT(second->world.logs, Contains("MACSECD_KEY_UNREADABLE"));
  EXPECT_THAT(first->world.logs, Not(Contains("MACSECD_KEY_UNREADABLE")));
}

TEST_F(TwoHosts, AreTracedEachByItself) {
  {
    Vesk::WorldScope const scope(first->world);
    Vesk::TraceHandle::streamLevelsIs("", Vesk::kAllTraceLevels);
  }
  second->host->restart();
  EXPECT_THAT(second->world.traces, IsEmpty());
  EXPECT_THAT(first->world.traces, IsEmpty());
  first->host->restart();
  EXPECT_THAT(first->world.traces, Not(IsEmpty()));
}

TEST_F(TwoHosts, FireTheirTimersEachInItsWorld) {
  Vesk::WorldScope const scope(first->world);
  auto const written = second->store.values;
  second->host->timerWheel()->runDue();
  EXPECT_FALSE(second->sent.frames.empty());
  EXPECT_TRUE(first->sent.frames.empty());
  EXPECT_TRUE(second->host->commit());
  EXPECT_NE(second->store.values, written);
  EXPECT_FALSE(first->host->commit());
}

TEST_F(TwoHosts, MayReceiveOfEachOtherInTheMiddleOfAFrame) {
  struct Wire final : Codec::FrameSink {
    void send(Lumo::IntfId intfId, std::span<uint8_t const> frame) override {
      ++frames;
      if (other) other->receive(intfId, frame);
    }
    Host* other = nullptr;
    int frames = 0;
  };
  OwnWorld worlds[2] = {OwnWorld(3), OwnWorld(4)};
  Wire wires[2];
  Host a(worlds[0], "a", wires[0]), b(worlds[1], "b", wires[1]);
  wires[0].other = &b;
  wires[1].other = &a;
  for (Host* host : {&a, &b}) {
    host->interfaceIs(kIntf, Lumo::EthAddr({2, 0, 0, 0, 0, uint8_t(host == &a ? 1 : 2)}), 1);
    host->configIs(configWith(kCak));
    host->start();
    host->linkIs(kIntf, true);
  }
  for (int round = 0; round < 3; ++round) {
    a.timerWheel()->runDue();
    b.timerWheel()->runDue();
  }
  auto const actor = [](Host const& host) {
    return host.status()->portStatus(kIntf)->actorStatus("6162");
  };
  EXPECT_EQ(actor(a)->potentialPeer().members() + actor(a)->livePeer().members(), 1u);
  EXPECT_EQ(actor(b)->potentialPeer().members() + actor(b)->livePeer().members(), 1u);
}

}  // namespace
}  // namespace Macsecd
