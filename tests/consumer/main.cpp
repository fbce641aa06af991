#include <cstdio>
#include <random>

#include "codec/FrameCodec.h"
#include "config/ConfigSm.h"
#include "engine/MkaRootSm.h"
#include "hardware/HwEmulator.h"
#include "hardware/HwStatusSm.h"
#include "hardware/MacsecForwardingModelSm.h"
#include "hardware/MacsecHwStatus.h"
#include "model/Factories.h"
#include "model/MacsecConfig.h"
#include "model/MacsecStatus.h"
#include "platform/WardcodeLib.h"
#include "runtime/Log.h"
#include "runtime/World.h"

// An agent of somebody else: the world and the wires are its own, the rest is loaded.
struct AgentWorld final : Vesk::World {
  double now() const override { return time; }
  int rand() override { return 0; }
  void randomBytes(std::span<uint8_t> out) override {
    for (uint8_t& byte : out) byte = static_cast<uint8_t>(source());
  }
  void syslog(Vesk::LogMessage const& message) override {
    std::printf("%s\n", message.text.c_str());
  }
  void exit(int) override {}
  double time = 0;
  std::mt19937 source;  // tidy: allow(randomness) the agent's own source
};

struct AgentWires final : Codec::FrameSink {
  void send(Lumo::IntfId, std::span<uint8_t const> frame) override { octets += frame.size(); }
  size_t octets = 0;
};

int main() {
  AgentWorld world;
  AgentWires wires;
  Vesk::WorldScope scope(world);
  Lumo::IntfId const intfId("Ethernet1");

  // The entities.
  auto config = Macsec::configFactory("config");
  auto status = Macsec::statusFactory("status");
  auto pamManager = Macsec::mkaPamManagerFactory(nullptr);
  auto hwStatus = Macsec::macSecIntfStatusPtrDirFactory("hardware");
  auto slice = Macsec::macSecStatusFactory("slice");
  auto slices = Vesk::make<Vesk::Dir>("slices");
  auto interfaces = Vesk::make<Interface::EthIntfStatusDir>("interfaces");
  auto forwarding = Vesk::make<Interface::IntfForwardingModelInputDir>("forwarding");
  auto wheel = Vesk::make<Zorn::TimerWheel>();
  slices->entityPtrIs(slice);
  slice->statusIs(intfId);
  interfaces->intfStatusIs(intfId, Lumo::EthAddr({2, 0, 0, 0, 0, 1}), 1);

  // The start order.
  status->macsecEnabledIs(!config->shutdown());
  auto hwStatusSm = Macsec::hwStatusSmFactory(hwStatus, slices);
  auto hwEmulator = Macsec::hwEmulatorFactory(status, hwStatus);
  auto configSm = Macsec::configSmFactory(config, status, nullptr, interfaces, nullptr);
  Codec::FrameCodec codec(pamManager, status, interfaces, wires);
  auto mkaRootSm = Macsec::mkaRootSmFactory(status, interfaces, pamManager, hwStatus, wheel);
  auto forwardingSm = Macsec::macsecForwardingModelSmFactory(status, forwarding);

  // An operator, a link, and time.
  auto profile = config->profileIs("uplink");
  profile->keyIs(
      Macsec::Cak("c0de0001", WardcodeLib::doEncodeKey("0123456789abcdef0123456789abcdef")));
  profile->intfIs(intfId, true);
  interfaces->intfStatus(intfId)->linkStatusIs(Interface::linkUp);
  for (world.time = 0; world.time < 10; world.time += 0.5) wheel->runDue();

  bool const isUnauthorized = forwarding->forwardingModelInput(intfId) != nullptr;
  if (wires.octets == 0 || !isUnauthorized) return 1;
  std::printf("macsecd loaded\n");
  return 0;
}
