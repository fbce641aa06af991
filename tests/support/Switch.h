#pragma once

#include <deque>
#include <functional>
#include <memory>

#include "engine/MkaRootSm.h"
#include "hardware/HwEmulator.h"
#include "hardware/HwStatusSm.h"
#include "model/Factories.h"
#include "platform/EthIntfStatus.h"
#include "platform/WardcodeLib.h"
#include "runtime/Dir.h"
#include "tests/support/TestWorld.h"

namespace Support {

inline constexpr char const* kCak = "0123456789abcdef0123456789abcdef";
inline constexpr char const* kOtherCak = "fedcba9876543210fedcba9876543210";

/// A key as configuration stores it. No two encodings of one key are the same.
inline Macsec::Cak key(Vesk::String8 const& ckn, char const* cak = kCak) {
  static TestWorld world(99);
  Vesk::WorldScope scope(world);
  return Macsec::Cak(ckn, WardcodeLib::doEncodeKey(cak));
}

/// A decoded MKPDU on its way, as the frame codec would carry it.
struct Mkpdu {
  Macsec::BasicInfo basic;
  Macsec::SakUseInfo sakUse;
  Macsec::SakDistInfo sakDist;
  Macsec::CakDistInfo cakDist;
  std::vector<std::pair<Vesk::String8, uint32_t>> live;
  std::vector<std::pair<Vesk::String8, uint32_t>> potential;
};

/// A switch without a codec: entities, engine and emulated hardware, whose messages a test takes
/// and gives in decoded form. Every member that does something runs in the switch's own world.
class Switch {
 public:
  explicit Switch(uint8_t number, char const* intf = "Ethernet1")
      : world(number), intfId(intf), number_(number) {
    Vesk::WorldScope scope(world);
    status = Macsec::statusFactory("status");
    pamManager =
        Macsec::mkaPamManagerFactory(Interface::EthDevPamCollection::EthDevPamCollectionIs("pam"));
    ethDir = Interface::EthIntfStatusDir::EthIntfStatusDirIs("interfaces");
    hwStatus = Macsec::macSecIntfStatusPtrDirFactory("hardware");
    slice = Macsec::macSecStatusFactory("slice");
    slices = Vesk::makeActive<Vesk::Dir>("slices");
    slices->entityPtrIs(slice);
    wheel = Vesk::make<Zorn::TimerWheel>();
    ethDir->intfStatusIs(intfId, Lumo::EthAddr({2, 0, 0, 0, 0, number_}), 1);
    slice->statusIs(intfId);
    hwStatusSm = Macsec::hwStatusSmFactory(hwStatus, slices);
    sender_ = Vesk::make<Sender>(*this, pamManager->txMessageInfo());
  }
  ~Switch() {
    Vesk::WorldScope scope(world);
    root = nullptr;
    emulator = nullptr;
    hwStatusSm = nullptr;
    Vesk::retire(sender_);
  }

  /// Starts engine and emulator with the link up and these keys.
  void start(Macsec::Cak const& primary, Macsec::Cak const& fallback = Macsec::Cak(),
             uint8_t priority = 16) {
    Vesk::WorldScope scope(world);
    auto intfStatus = status->intfStatusIs(intfId, Macsec::MacsecParams());
    intfStatus->keyServerPriorityIs(priority);
    intfStatus->keyIs(primary);
    intfStatus->defaultKeyIs(fallback);
    status->macsecEnabledIs(true);
    emulator = Macsec::hwEmulatorFactory(status, hwStatus);
    ethDir->intfStatus(intfId)->linkStatusIs(Interface::linkUp);
    startEngine();
  }
  void startEngine() {
    Vesk::WorldScope scope(world);
    root = Macsec::mkaRootSmFactory(status, ethDir, pamManager, hwStatus, wheel);
  }
  template <class F>
  auto in(F run) {
    Vesk::WorldScope scope(world);
    return run();
  }
  void receive(Mkpdu const& mkpdu) {
    Vesk::WorldScope scope(world);
    auto rx = pamManager->rxMessageInfo();
    rx->intfIdIs(intfId);
    auto info = rx->mkaInfoIs();
    info->baseInfoIs(mkpdu.basic);
    info->sakUseInfoIs(mkpdu.sakUse);
    info->sakDistInfoIs(mkpdu.sakDist);
    info->cakDistInfoIs(mkpdu.cakDist);
    rx->livePeerDelAll();
    rx->potentialPeerDelAll();
    for (auto const& [id, number] : mkpdu.live) rx->livePeerIs(id, number);
    for (auto const& [id, number] : mkpdu.potential) rx->potentialPeerIs(id, number);
    rx->countInc(1);
  }

  Vesk::Ptr<Macsec::IntfStatus> intfStatus() const { return status->intfStatus(intfId); }
  Vesk::Ptr<Macsec::CpStatus> cpStatus() const { return status->cpStatus(intfId); }
  Vesk::Ptr<Macsec::MkaPortStatus> portStatus() const { return status->portStatus(intfId); }
  Vesk::Ptr<Macsec::MkaActorStatus> actor(Vesk::String8 const& ckn) const {
    return portStatus() ? portStatus()->actorStatus(ckn) : nullptr;
  }
  Vesk::Ptr<Macsec::MkaPortSm> portSm() const { return root->mkaSm()->mkaPortSm(intfId); }
  Vesk::Ptr<Macsec::MkaActorSm> actorSm(Vesk::String8 const& ckn) const {
    return portSm()->mkaActorSm(ckn);
  }

  TestWorld world;
  Lumo::IntfId const intfId;
  Vesk::Ptr<Macsec::Status> status;
  Vesk::Ptr<Macsec::MkaPamManager> pamManager;
  Vesk::Ptr<Interface::EthIntfStatusDir> ethDir;
  Vesk::Ptr<Macsec::MacSecIntfStatusPtrDir> hwStatus;
  Vesk::Ptr<Macsec::MacSecStatus> slice;
  Vesk::Ptr<Vesk::Dir> slices;
  Vesk::Ptr<Zorn::TimerWheel> wheel;
  Vesk::Ptr<Macsec::HwStatusSm> hwStatusSm;
  Vesk::Ptr<Macsec::HwEmulator> emulator;
  Vesk::Ptr<Macsec::MkaRootSm> root;
  /// What it has sent and nobody has taken yet.
  std::vector<Mkpdu> sent;

 private:
  struct Sender final : Vesk::Reactor<Macsec::MkaMessageInfo, Switch, Sender> {
    using Reactor::Reactor;
    void onCount() override { owner().take(*notifier()); }
  };
  void take(Macsec::MkaMessageInfo const& tx) {
    auto const info = tx.mkaInfo();
    Mkpdu mkpdu{
        info->baseInfo(), info->sakUseInfo(), info->sakDistInfo(), info->cakDistInfo(), {}, {}};
    for (auto& entry : tx.livePeer()) mkpdu.live.emplace_back(entry.fwkKey(), entry.value());
    for (auto& entry : tx.potentialPeer()) {
      mkpdu.potential.emplace_back(entry.fwkKey(), entry.value());
    }
    sent.push_back(std::move(mkpdu));
  }

  uint8_t number_;
  Vesk::Ptr<Sender> sender_;
};

/// Switches on one segment: what one sends reaches all others after the delay. Timers of an instant
/// come before the frames of that instant.
class Segment {
 public:
  explicit Segment(std::vector<Switch*> switches, double delay = 0.001)
      : switches_(std::move(switches)), delay_(delay) {}

  double now() const { return now_; }
  /// Frames that this returns true for are lost.
  std::function<bool(Switch const& from, Switch const& to)> isLost = [](auto&, auto&) {
    return false;
  };

  void runUntil(double end) {
    for (;;) {
      double const next = nextTime();
      if (next > end) break;
      clockIs(next);
      runTimers();
      deliver();
    }
    clockIs(end);
  }

 private:
  struct Flight {
    double due;
    Switch* from;
    Mkpdu mkpdu;
  };
  double nextTime() const {
    double next = flights_.empty() ? Zorn::never : flights_.front().due;
    for (Switch* s : switches_) next = std::min(next, s->wheel->nextTime());
    return next;
  }
  void clockIs(double time) {
    now_ = std::max(now_, time);
    for (Switch* s : switches_) s->world.time = now_;
  }
  void collect(Switch& from) {
    for (Mkpdu& mkpdu : from.sent) flights_.push_back({now_ + delay_, &from, std::move(mkpdu)});
    from.sent.clear();
  }
  void runTimers() {
    for (Switch* s : switches_) {
      while (s->in([&] { return s->wheel->runOne(); })) collect(*s);
    }
  }
  void deliver() {
    while (!flights_.empty() && flights_.front().due <= now_) {
      Flight const flight = std::move(flights_.front());
      flights_.pop_front();
      for (Switch* to : switches_) {
        if (to == flight.from || isLost(*flight.from, *to)) continue;
        to->receive(flight.mkpdu);
      }
    }
  }

  std::vector<Switch*> switches_;
  double delay_;
  double now_ = 0.0;
  std::deque<Flight> flights_;
};

}  // namespace Support
