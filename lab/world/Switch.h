#pragma once

#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "codec/FrameSink.h"
#include "host/Host.h"
#include "host/state/UnreadableKeys.h"
#include "lab/world/Hardware.h"
#include "lab/world/MemoryStore.h"
#include "lab/world/SwitchRecord.h"
#include "lab/world/SwitchWorld.h"
#include "lab/world/TreeWatch.h"

namespace Lab {

/// How a process ends that is killed (128 and the number of SIGKILL).
constexpr int kKilled = 137;

/// One whole switch in a simulation: its world, its host, its hardware. Whatever runs in it runs in
/// its world; each thing that it does is one turn of its loop, and what that changes in the status
/// tree is one commit. A process that ends is followed by another one over what the store holds: at
/// once, or one second later if it has ended while it started.
class Switch final : public Codec::FrameSink {
 public:
  struct Outlets {
    std::function<void(Switch&, Lumo::IntfId, std::span<uint8_t const>)> sent;
    std::function<void(Switch const&, TreeWatch::What)> happened;
  };

  /// One of the switches of this scenario. `nonces` watches all of them.
  Switch(SwitchSpec const& spec, Scenario const& scenario, Clock const& clock, uint32_t seed,
         uint32_t index, Macsecd::NonceWatch& nonces, Outlets outlets);
  ~Switch() override;

  SwitchSpec const& spec() const { return spec_; }
  std::string const& name() const { return spec_.name; }
  Macsecd::Host const& host() const { return *host_; }
  /// Null while no process runs.
  Vesk::Ptr<Macsec::Status const> status() const { return host_ ? host_->status() : nullptr; }
  SwitchWorld& world() { return world_; }
  std::vector<Lumo::IntfId> const& interfaces() const { return interfaces_; }
  bool isUp(Lumo::IntfId intfId) const {
    return started_ && !downLinks_.count(intfId) && !deleted_.count(intfId);
  }

  /// What its processes are to run with.
  Macsecd::SwitchConfig const& config() const { return config_; }
  bool isStarted() const { return started_; }
  bool isLinkUp(Lumo::IntfId intfId) const { return !downLinks_.contains(intfId); }
  bool isDeleted(Lumo::IntfId intfId) const { return deleted_.contains(intfId); }

  SwitchRecord const& record() const { return record_; }
  /// The instants of the simulation at which its timers ran.
  std::set<double> const& timerTimes() const { return timerTimes_; }

  void start();
  /// The process dies, and another one starts at once, or so many seconds later.
  void restart(double deadFor = 0, bool keepsState = true);
  /// The process is killed at this commit; `killed` hears of it when the tree has been rebuilt and
  /// before the next process begins, `deadFor` seconds later.
  void killedAt(MemoryStore::Death death, std::function<void()> killed, double deadFor = 0);
  /// The process isn't given the processor for so many seconds.
  void standStill(double seconds);
  bool isStandingStill() const { return world_.simulationNow() < stillUntil_; }
  void storeRefuses(bool refuses) { store_.refusesIs(refuses); }
  MemoryStore const& store() const { return store_; }
  Hardware const& hardware() const { return *hardware_; }
  void linkIs(Lumo::IntfId intfId, bool up);
  /// Somebody sets the MACsec device on the interface down, or up again.
  void deviceIs(Lumo::IntfId intfId, bool up);
  /// The interface goes, with its hardware; or it is made, with this address and its link up.
  void interfaceDel(Lumo::IntfId intfId);
  void interfaceIs(Lumo::IntfId intfId, Lumo::EthAddr const& mac);
  /// The configuration after `change` has been at it.
  void configure(std::function<void(Macsecd::SwitchConfig&)> const& change);
  /// Takes a configuration over that was read again, if it has no mistake.
  void reload(Reload reload);
  /// The 802.1X module publishes a key on an interface, or withdraws what it has published.
  void dot1xKeyIs(Lumo::IntfId intfId, uint8_t type, std::optional<Dot1xKey> const& key);
  void clearCounters();
  /// The hardware can't send any more with the key that the interface asks for, if there is one.
  void keyIsSpent(Lumo::IntfId intfId);
  void hardware(std::function<void(Hardware&)> const& change);
  void receive(Lumo::IntfId intfId, std::span<uint8_t const> frame);
  /// Whether traffic may pass on an interface that is up.
  bool passes(Lumo::IntfId intfId) const;
  /// What protects and validates data on an interface; null without one.
  SecY* secY(Lumo::IntfId intfId);

  /// The frame that the interface has accepted last; empty when it has accepted none.
  std::vector<uint8_t> const& lastAccepted(Lumo::IntfId intfId) { return lastAccepted_[intfId]; }

  /// When a new process, a timer or an answer of the hardware is due next; infinity when none is.
  double nextTime() const;
  /// Runs the first of them that is due. False if nothing was.
  bool runOne();

  void send(Lumo::IntfId intfId, std::span<uint8_t const> frame) override;

 private:
  template <class Work>
  void inWorld(Work work) {
    Vesk::WorldScope const scope(world_);
    try {
      work();
      if (host_) host_->commit();
    } catch (SwitchExit const& exit) {
      processEnded(exit.status);
    }
  }
  struct WaitingFrame {
    Lumo::IntfId intfId;
    std::vector<uint8_t> octets;
  };

  void connectWorld();
  Macsec::Brine::MessageCounterData countersOf(Lumo::IntfId intfId);
  void take(Lumo::IntfId intfId, std::span<uint8_t const> frame);
  bool takeWaiting();
  uint16_t portNumberOf(Lumo::IntfId intfId) const;
  void withIcvIndicator(Macsecd::SwitchConfig& config) const;
  void startProcess();
  void processDied();
  void processEnded(int status);
  void written(Vesk::AttributeWrite const& write);
  void tell(TreeWatch::What what);
  FramePassed passed(Lumo::IntfId intfId, FrameWay way, std::span<uint8_t const> frame) const;

  SwitchSpec const& spec_;
  Scenario const& scenario_;
  Macsecd::SwitchConfig config_;
  Outlets outlets_;
  SwitchWorld world_;
  MemoryStore store_;
  std::function<void()> killed_;
  double deadFor_ = 0;
  std::vector<Lumo::IntfId> interfaces_;
  std::set<Lumo::IntfId> downLinks_;
  std::set<Lumo::IntfId> deleted_;  ///< interfaces
  std::unique_ptr<Macsecd::Host> host_;
  std::unique_ptr<Hardware> hardware_;
  std::unique_ptr<TreeWatch> watch_;
  std::optional<Macsecd::UnreadableKeyTeller> unreadableKeys_;
  SwitchRecord record_;
  std::set<double> timerTimes_;
  uint64_t stateWrites_ = 0;  ///< attributes but counters
  bool started_ = false;
  bool starting_ = false;
  double startsAgain_;  // of the simulation's time, as the next one
  double stillUntil_ = -kNever;
  std::deque<WaitingFrame> waiting_;  ///< for a process that stands still
  std::map<Lumo::IntfId, std::vector<uint8_t>> lastAccepted_;
  // What a frame brings about is told behind the frame, whose verdict is known at its end alone.
  std::optional<std::vector<TreeWatch::What>> heldBack_;
};

}  // namespace Lab
