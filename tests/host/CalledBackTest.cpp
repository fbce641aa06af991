#include <functional>
#include <map>

#include "tests/host/HostFixture.h"

// Whatever an agent does with a switch from inside the sink of its frames: nothing crashes, and the
// link opens when all that it needs is back.

namespace Macsecd {
namespace {

/// A switch whose sink does something, once, when it takes a certain frame.
struct CalledBack final : Codec::FrameSink {
  CalledBack() : world(1), host(world, "switch", *this) {}

  void send(Lumo::IntfId, std::span<uint8_t const> frame) override {
    frames.emplace_back(frame.begin(), frame.end());
    if (++sent == when) deed(*this);
  }
  void interface() { host.interfaceIs(kIntf, Lumo::EthAddr({2, 0, 0, 0, 0, 1}), 1); }
  void configure() { host.configIs(configWith(kCak)); }
  /// All that the link needs.
  void prepare() {
    interface();
    configure();
    host.start();
    host.linkIs(kIntf, true);
  }

  Support::TestWorld world;
  Host host;
  std::vector<std::vector<uint8_t>> frames;
  std::function<void(CalledBack&)> deed;
  int when = 0;
  int sent = 0;
};

void talk(CalledBack& own, Switch& other, double until) {
  for (double time = own.world.time; time <= until; time += 0.25) {
    own.world.time = other.world.time = time;
    own.host.timerWheel()->runDue();
    for (auto const& frame : std::exchange(own.frames, {})) other.host.receive(kIntf, frame);
    other.host.timerWheel()->runDue();
    for (auto const& frame : std::exchange(other.sent.frames, {})) own.host.receive(kIntf, frame);
  }
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

TEST_P(ASwitchCalledBack, StandsItAtEachOfItsFirstFrames) {
  for (int when = 1; when <= 11; ++when) {
    SCOPED_TRACE(when);
    CalledBack own;
    own.deed = deeds.at(GetParam());
    own.when = when;
    own.prepare();
    Switch other(2);
    other.bringUp();
    talk(own, other, 20);
    EXPECT_GE(own.sent, when);
    own.prepare();
    talk(own, other, 60);
    EXPECT_TRUE(own.host.isOpen(kIntf));
  }
}

INSTANTIATE_TEST_SUITE_P(Deeds, ASwitchCalledBack, ::testing::ValuesIn([] {
                           std::vector<std::string> names;
                           for (auto const& [name, deed] : deeds) names.push_back(name);
                           return names;
                         }()),
                         [](auto const& one) { return one.param; });

}  // namespace
}  // namespace Macsecd
