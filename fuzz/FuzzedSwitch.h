#pragma once

#include <deque>
#include <vector>

#include "fuzz/FuzzWorld.h"
#include "host/Host.h"

namespace Fuzz {

inline constexpr char kCkn[] = "6162";
inline constexpr char kCak[] = "0123456789abcdef0123456789abcdef";

/// A switch with one interface and one key, in a world of its own.
class FuzzedSwitch final : public Codec::FrameSink {
 public:
  explicit FuzzedSwitch(uint8_t number, Macsecd::HostOptions const& options = {})
      : world(number), host(world, "switch", *this, options), number_(number) {}

  static Macsecd::SwitchConfig config() {
    Macsecd::SwitchConfig config;
    Macsecd::ProfileConfig profile;
    profile.name = "one";
    profile.key = Macsecd::KeyConfig{kCkn, Vesk::String8::secret(kCak)};
    config.profiles.push_back(profile);
    config.interfaces.push_back({"Ethernet1", "one", 1});
    return config;
  }
  static Lumo::IntfId intfId() { return Lumo::IntfId("Ethernet1"); }

  void start() {
    host.interfaceIs(intfId(), Lumo::EthAddr({2, 0, 0, 0, 0, number_}), 1);
    host.configIs(config());
    host.start();
    host.linkIs(intfId(), true);
  }
  void send(Lumo::IntfId, std::span<uint8_t const> frame) override {
    sent.emplace_back(frame.begin(), frame.end());
  }

  std::deque<std::vector<uint8_t>> sent;
  FuzzWorld world;
  Macsecd::Host host;

 private:
  uint8_t const number_;
};

/// Time goes on for so many seconds, frames come to the other end at once, and each turn is
/// committed.
inline void goOn(FuzzedSwitch& a, FuzzedSwitch& b, double seconds) {
  constexpr double kStep = 0.25;
  for (double const end = a.world.time + seconds; a.world.time < end;) {
    for (auto [from, to] : {std::pair(&a, &b), std::pair(&b, &a)}) {
      from->world.time += kStep;
      from->host.timerWheel()->runDue();
      from->host.commit();
      for (; !from->sent.empty(); from->sent.pop_front()) {
        to->host.receive(FuzzedSwitch::intfId(), from->sent.front());
      }
      to->host.commit();
    }
  }
}

}  // namespace Fuzz
