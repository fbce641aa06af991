#include "bench/Fabric.h"

#include <algorithm>
#include <cstdio>

namespace Bench {

namespace {

constexpr double kWireDelay = 0.001;
constexpr double kLongestStart = 60.0;

}  // namespace

struct Fabric::End final : Codec::FrameSink {
  End(Fabric& in, uint32_t n) : fabric(in), number(n), world(in.clock_, n + 1) {}
  void send(Lumo::IntfId intfId, std::span<uint8_t const> frame) override {
    fabric.carry(number, intfId, frame);
  }
  Fabric& fabric;
  uint32_t const number;
  FabricWorld world;
  std::unique_ptr<Macsecd::Host> host;
};

Fabric::Fabric(uint32_t portsOnEach, Keys keys)
    : portsOnEach_(portsOnEach), keys_(keys), wires_(kWireDelay) {
  for (uint32_t i = 0; i < portsOnEach; ++i) {
    intfIds_.emplace_back(Vesk::String8("Ethernet" + std::to_string(i + 1)));
  }
  for (uint32_t n : {0u, 1u}) {
    ends_[n] = std::make_unique<End>(*this, n);
    ends_[n]->host =
        std::make_unique<Macsecd::Host>(ends_[n]->world, n == 0 ? "A" : "B", *ends_[n]);
    Macsecd::Host& host = *ends_[n]->host;
    for (uint32_t i = 0; i < portsOnEach; ++i) {
      auto const octet = [i](int shift) { return static_cast<uint8_t>(i >> shift); };
      host.interfaceIs(intfIds_[i],
                       Lumo::EthAddr({2, 0, static_cast<uint8_t>(n), 0, octet(8), octet(0)}), 1);
    }
    host.configIs(config(n == 0 ? 10 : 20));
    host.start();
    for (Lumo::IntfId intfId : intfIds_) host.linkIs(intfId, true);
  }
}

Fabric::~Fabric() = default;

namespace {

// A key that differs from one number to the other in its last digits.
std::string cak(char const* begin, size_t number) {
  char digits[9];
  std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned>(number));
  return std::string(begin) + digits;
}

Macsecd::ProfileConfig profile(size_t number, uint8_t priority) {
  Macsecd::ProfileConfig profile;
  profile.name = "fabric" + std::to_string(number);
  profile.key = {"6162", cak("0123456789abcdef01234567", number)};
  profile.fallbackKey = {"6364", cak("fedcba9876543210fedcba98", number)};
  profile.keyServerPriority = priority;
  return profile;
}

}  // namespace

Macsecd::SwitchConfig Fabric::config(uint8_t priority) const {
  Macsecd::SwitchConfig config;
  for (size_t i = 0; i < intfIds_.size(); ++i) {
    if (i == 0 || keys_ == Keys::own) config.profiles.push_back(profile(i, priority));
    std::string const interface(intfIds_[i].stringValue().view());
    config.interfaces.push_back({interface, config.profiles.back().name, 1});
  }
  return config;
}

void Fabric::carry(uint32_t from, Lumo::IntfId intfId, std::span<uint8_t const> frame) {
  ++frames_;
  octets_ += frame.size();
  wires_.carry(clock_, 1 - from, intfId, frame);
}

void Fabric::deliverDue() {
  while (CarriedFrame* frame = wires_.take(clock_)) {
    if (auto* const next = wires_.first()) ends_[next->to]->host->expect(next->intfId);
    ends_[frame->to]->host->receive(frame->intfId, {frame->octets.data(), frame->size});
    wires_.release(*frame);
  }
}

void Fabric::runUntil(double time) {
  for (;;) {
    double next = std::min(time, wires_.nextTime());
    for (auto& end : ends_) next = std::min(next, end->host->timerWheel()->nextTime());
    clock_ = std::max(clock_, next);
    for (auto& end : ends_) {
      if (end->host->timerWheel()->nextTime() <= clock_) end->host->timerWheel()->runDue();
    }
    deliverDue();
    if (next >= time) return;
  }
}

bool Fabric::openAllPorts() {
  while (!areAllPortsOpen()) {
    if (now() >= kLongestStart) return false;
    runUntil(now() + 0.5);
  }
  return true;
}

size_t Fabric::homeMemory() const {
  size_t octets = 0;
  for (auto& end : ends_) octets += end->world.kept<Vesk::Homes>().octets();
  return octets;
}

void Fabric::delayProtectionIs(bool on) {
  for (auto& end : ends_) {
    Vesk::WorldScope const scope(end->world);
    end->host->config()->delayProtectionIs(on);
  }
}

bool Fabric::areAllPortsOpen() const {
  for (auto& end : ends_) {
    if (end->host->status()->cpStatus().members() != portsOnEach_) return false;
    for (auto& cpStatus : end->host->status()->cpStatus()) {
      if (!cpStatus.controlledPortEnabled()) return false;
    }
  }
  return true;
}

}  // namespace Bench
