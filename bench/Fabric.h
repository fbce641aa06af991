#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "bench/Wires.h"
#include "host/Host.h"
#include "runtime/World.h"

namespace Bench {

/// The world of a measured switch: virtual time, spread first delays, cheap random bytes.
class FabricWorld final : public Vesk::World {
 public:
  FabricWorld(double const& clock, uint32_t seed) : clock_(clock), random_(seed) {}
  double now() const override { return clock_; }
  int rand() override { return static_cast<int>(random_() & 0x7fffffff); }
  void randomBytes(std::span<uint8_t> out) override {
    for (uint8_t& byte : out) byte = static_cast<uint8_t>(random_());
  }
  void syslog(Vesk::LogMessage const&) override {}
  void exit(int) override {}

 private:
  double const& clock_;
  std::mt19937 random_;  // tidy: allow(randomness) a world's own source, the same in every run
};

/// Whether the ports of a switch share a profile, or each has one with keys of its own.
enum class Keys : uint8_t { shared, own };

/// Two switches with many ports, each wired to the port of the same name on the other. Every port
/// has a primary and a fallback key, so two actors with one peer each.
class Fabric {
 public:
  explicit Fabric(uint32_t portsOnEach, Keys keys = Keys::shared);
  ~Fabric();

  /// Runs in virtual time.
  void runUntil(double time);
  void delayProtectionIs(bool on);
  /// Runs until all ports are open, looking every half second; false if they aren't after a minute.
  bool openAllPorts();
  /// Ports of both switches together.
  uint32_t ports() const { return 2 * portsOnEach_; }
  uint64_t frames() const { return frames_; }
  uint64_t octets() const { return octets_; }
  /// What the wires occupy, which is none of the switches' memory.
  uint64_t wireMemory() const { return wires_.memory(); }
  /// What the homes of the switches take, in octets.
  size_t homeMemory() const;
  double now() const { return clock_; }

 private:
  struct End;

  Macsecd::SwitchConfig config(uint8_t priority) const;
  bool areAllPortsOpen() const;
  void carry(uint32_t from, Lumo::IntfId intfId, std::span<uint8_t const> frame);
  void deliverDue();

  uint32_t const portsOnEach_;
  Keys const keys_;
  double clock_ = 0.0;
  std::vector<Lumo::IntfId> intfIds_;
  Wires wires_;
  std::unique_ptr<End> ends_[2];
  uint64_t frames_ = 0;
  uint64_t octets_ = 0;
};

}  // namespace Bench
