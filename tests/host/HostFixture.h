#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/Host.h"
#include "tests/support/TestWorld.h"

namespace Macsecd {

inline Lumo::IntfId const kIntf("Ethernet1");
inline constexpr char const* kCak = "0123456789abcdef0123456789abcdef";

/// Keeps the frames that a switch sends.
struct Sent final : Codec::FrameSink {
  void send(Lumo::IntfId intfId, std::span<uint8_t const> frame) override {
    frames.emplace_back(frame.begin(), frame.end());
  }
  std::vector<std::vector<uint8_t>> frames;
};

/// One interface under one profile with one key.
inline SwitchConfig configWith(std::string const& cak, std::string const& profile = "one") {
  SwitchConfig config;
  ProfileConfig p;
  p.name = profile;
  p.key = KeyConfig{"6162", Vesk::String8(cak)};
  config.profiles.push_back(p);
  config.interfaces.push_back({"Ethernet1", profile, 1});
  return config;
}

/// A switch in its own world.
struct Switch {
  explicit Switch(uint8_t n, HostOptions const& options = {})
      : world(n), host(world, "switch", sent, options), number(n) {}
  void interface() { host.interfaceIs(kIntf, Lumo::EthAddr({2, 0, 0, 0, 0, number}), 1); }
  Vesk::Ptr<Macsec::IntfStatus> intfStatus() const { return host.status()->intfStatus(kIntf); }
  Vesk::Ptr<Macsec::MkaActorStatus> actor() const {
    auto const port = host.status()->portStatus(kIntf);
    return port ? port->actorStatus("6162") : nullptr;
  }
  /// Ready with this configuration, its link up.
  void bringUp(SwitchConfig const& config = configWith(kCak)) {
    interface();
    host.configIs(config);
    host.start();
    host.linkIs(kIntf, true);
  }
  Support::TestWorld world;
  Sent sent;
  Host host;
  uint8_t number;
};

/// Lets two switches talk until the time, frame by frame.
inline void talk(Switch& a, Switch& b, double until) {
  for (double time = a.world.time; time <= until; time += 0.25) {
    for (auto [from, to] : {std::pair(&a, &b), std::pair(&b, &a)}) {
      from->world.time = time;
      from->host.timerWheel()->runDue();
      to->world.time = time;
      for (auto const& frame : from->sent.frames) to->host.receive(kIntf, frame);
      from->sent.frames.clear();
    }
  }
}

}  // namespace Macsecd
