#include <functional>
#include <map>

#include "runtime/Reactor.h"
#include "tests/host/HostFixture.h"

// Whatever an agent does with a switch from inside the sink of its frames, the sink of its log, or
// a notification: nothing crashes, and the link opens when all that it needs is back.

namespace Macsecd {
namespace {

/// A world that tells somebody of each message.
struct LoggingWorld final : Support::TestWorld {
  explicit LoggingWorld(std::function<void()> told) : onLog(std::move(told)) {}
  void syslog(Vesk::LogMessage const& message) override {
    TestWorld::syslog(message);
    onLog();
  }
  std::function<void()> onLog;
};

SwitchConfig closingConfig() {
  SwitchConfig config = configWith(kCak);
  config.interfaces.front().onPeerLoss = OnPeerLoss::close;
  return config;
}

/// A switch whose agent does something, once, when it is called for a certain time: with a frame, a
/// message, or a port that opens or closes.
struct CalledBack final : Codec::FrameSink {
  using Inputs = Interface::IntfForwardingModelInputDir;
  struct InputReactor final : Vesk::Reactor<Inputs const, CalledBack, InputReactor> {
    using Reactor::Reactor;
    void onForwardingModelInput(Lumo::IntfId const&) override { owner().called(); }
  };

  CalledBack() : world([this] { called(); }), host(world, "switch", *this) {
    for (auto const& inputs :
         {host.peerLossInputDir(), host.transmitHoldInputDir(), host.forwardingModelInputDir()}) {
      reactors.push_back(Vesk::make<InputReactor>(*this, inputs));
    }
  }
  ~CalledBack() {
    for (auto& reactor : reactors) Vesk::retire(reactor);
  }

  void send(Lumo::IntfId, std::span<uint8_t const> frame) override {
    frames.emplace_back(frame.begin(), frame.end());
    called();
  }
  void called() {
    if (++calls == when) deed(*this);
  }
  void interface() { host.interfaceIs(kIntf, Lumo::EthAddr({2, 0, 0, 0, 0, 1}), 1); }
  /// All that the link needs.
  void prepare() {
    interface();
    host.configIs(closingConfig());
    host.start();
    host.linkIs(kIntf, true);
  }
  /// What the port doctor looks after.
  void peerIsAnother() {
    Vesk::WorldScope const scope(world);
    auto const cp = host.status()->cpStatus(kIntf);
    if (!cp) return;
    cp->peerSsciIs(Macsec::Ssci({Lumo::EthAddr({2, 0, 0, 0, 0, 9}), 1}, "00000001"));
    cp->controlledPortEnabledIs(false);
  }

  std::function<void(CalledBack&)> deed;
  int when = 0;
  int calls = 0;
  LoggingWorld world;
  Host host;
  std::vector<std::vector<uint8_t>> frames;
  std::vector<Vesk::Ptr<InputReactor>> reactors;
};

void talk(CalledBack& own, Switch& other, double until, bool isCut = false) {
  for (double time = own.world.time; time <= until; time += 0.25) {
    own.world.time = other.world.time = time;
    own.host.timerWheel()->runDue();
    auto const frames = std::exchange(own.frames, {});
    other.host.timerWheel()->runDue();
    auto const others = std::exchange(other.sent.frames, {});
    if (isCut) continue;
    for (auto const& frame : frames) other.host.receive(kIntf, frame);
    for (auto const& frame : others) own.host.receive(kIntf, frame);
  }
}

/// A start, a port that the doctor has to look after, and a loss of the peer. True if the agent was
/// called as often as it waits for.
bool live(CalledBack& own, Switch& other) {
  own.prepare();
  other.bringUp();
  talk(own, other, 20);
  own.peerIsAnother();
  talk(own, other, 45);
  talk(own, other, 55, true);
  talk(own, other, 75);
  return own.calls >= own.when;
}

std::map<std::string, std::function<void(CalledBack&)>> const deeds = {
    {"LinkDown", [](CalledBack& s) { s.host.linkIs(kIntf, false); }},
    {"LinkDownAndUp",
     [](CalledBack& s) {
       s.host.linkIs(kIntf, false);
       s.host.linkIs(kIntf, true);
     }},
    {"InterfaceGone", [](CalledBack& s) { s.host.interfaceDel(kIntf); }},
    {"InterfaceMadeAnew",
     [](CalledBack& s) {
       s.host.interfaceDel(kIntf);
       s.prepare();
     }},
    {"OtherKey",
     [](CalledBack& s) { s.host.configIs(configWith("f123456789abcdef0123456789abcdef")); }},
    {"NoConfiguration", [](CalledBack& s) { s.host.configIs({}); }},
    {"Stop", [](CalledBack& s) { s.host.stop(); }},
    {"StopAndStart",
     [](CalledBack& s) {
       s.host.stop();
       s.host.start();
     }},
    {"Death", [](CalledBack& s) { s.host.die(); }},
    {"Restart", [](CalledBack& s) { s.host.restart(); }},
};

class ASwitchCalledBack : public ::testing::TestWithParam<std::string> {};

TEST_P(ASwitchCalledBack, StandsItEachTime) {
  bool isCalled = true;
  int when = 1;
  for (; isCalled; ++when) {
    SCOPED_TRACE(when);
    CalledBack own;
    Switch other(2);
    own.deed = deeds.at(GetParam());
    own.when = when;
    isCalled = live(own, other);
    own.when = 0;
    own.prepare();
    talk(own, other, 120);
    EXPECT_TRUE(own.host.isOpen(kIntf));
  }
  EXPECT_GT(when, 40);
}

INSTANTIATE_TEST_SUITE_P(Deeds, ASwitchCalledBack, ::testing::ValuesIn([] {
                           std::vector<std::string> names;
                           for (auto const& [name, deed] : deeds) names.push_back(name);
                           return names;
                         }()),
                         [](auto const& one) { return one.param; });

}  // namespace
}  // namespace Macsecd
