#pragma once

#include <set>

#include "host/state/StateTree.h"
#include "lab/world/PortView.h"
#include "tests/lab/Played.h"

namespace Lab {

/// Kills switch A of a simulation once, and looks at what is demanded of that: nobody notices.
class KillDemands final : public Audience {
 public:
  KillDemands(Simulation& simulation, MemoryStore::Death death, double deadFor = 0)
      : storeHasAll_(death.taken),
        losesFrames_(!death.taken || deadFor > 0),
        a_(simulation.switchOf("A")),
        b_(simulation.switchOf("B")) {
    simulation.audienceIs(*this);
    a_.killedAt(
        death, [this] { killedNow(); }, deadFor);
  }

  /// When it was killed.
  std::optional<double> killedAt() const { return killedAt_; }
  std::vector<std::string> const& failures() const { return failures_; }

  void happened(Event const& event) override {
    Switch const& one = event.switchName == "A" ? a_ : b_;
    if (auto const* ended = std::get_if<ProcessEnded>(&event.what)) {
      follows_ = follows_ || ended->status == kKilled;
    }
    if (auto const* line = std::get_if<SyslogLine>(&event.what)) {
      isBoundAnew_ = isBoundAnew_ || (&one == &b_ && line->name == "MACSECD_PORT_BOUND_ANEW");
    }
    if (auto const* frame = std::get_if<FramePassed>(&event.what)) framePassed(one, *frame);
    if (!follows_) return;
    if (auto const* port = eventOf(event, EventKind::state)) portChanged(one, *port);
    if (auto const* sa = std::get_if<SaInstalled>(&event.what)) saChanged(one, *sa);
    if (auto const* sa = std::get_if<SaAsked>(&event.what)) saChanged(one, *sa);
  }
  void instantDone(double) override {
    if (follows_ && a_.host().running() && !std::exchange(isCompared_, true)) compareActors();
    if (follows_) compareInstalled();
  }
  /// What stands when the scenario is over.
  void atTheEnd() {
    if (!isOpen(a_)) fail("A isn't open in the end");
    if (!isOpen(b_)) fail("B isn't open in the end");
    if (!sameSak(storedBy(a_), storedBy(b_))) {
      fail("not one key in the end: A has " + sakText(viewOf(a_).txSak()) + ", B has " +
           sakText(viewOf(b_).txSak()));
    }
  }

 private:
  // A secure association: at whom, for transmit, association number.
  struct Place {
    Switch const* at;
    bool transmit;
    uint8_t an;
    auto operator<=>(Place const&) const = default;
  };
  struct Installed {
    KeyName key;
    uint64_t entityId;
  };

  static Lumo::IntfId intf() { return Lumo::IntfId("Ethernet1"); }
  static StoredSak storedBy(Switch const& one) { return {viewOf(one).txSak(), one.host().world()}; }
  static PortView viewOf(Switch const& one) { return {*one.host().status(), intf()}; }
  // What the tree says, which the next process begins with.
  static bool isOpen(Switch const& one) {
    auto const cpStatus = one.host().status()->cpStatus(intf());
    return cpStatus && cpStatus->controlledPortEnabled();
  }
  static KeyName keyOf(Macsec::SaStatus const& sa) { return {sa.keyId().charPtr(), sa.keyNum()}; }
  void fail(std::string what) { failures_.push_back(std::move(what)); }

  // The tree is the one that the next process begins with.
  void killedNow() {
    killedAt_ = a_.world().now();
    if (a_.store().diedWithinTurn()) {
      storeHasAll_ = false;
      losesFrames_ = true;
    }
    for (auto const& dropped : a_.host().droppedState()) fail("dropped " + dropped.path);
    for (Switch const* one : {&a_, &b_}) {
      if (isOpen(*one)) open_.insert(one);
      auto const& entry = *one->hardware().slice()->status(intf());
      for (Macsec::SaStatus& sa : entry.rxSaStatus()) install(*one, false, sa);
      if (entry.txSaStatus()) install(*one, true, *entry.txSaStatus());
    }
    auto const port = a_.host().status()->portStatus(intf());
    if (!port) return;
    for (Macsec::MkaActorStatus& actor : port->actorStatus()) {
      if (actor.msgId() == Vesk::String8()) continue;
      actors_[actor.ckn().charPtr()] = {actor.msgId().charPtr(), actor.msgNum()};
    }
  }
  // An SA that a lost turn was about to begin with isn't in use yet.
  bool isAsked(bool transmit, Macsec::SaStatus const& sa) const {
    auto const cpStatus = a_.host().status()->cpStatus(intf());
    if (!cpStatus) return false;
    auto const rx = cpStatus->rxSak(sa.associationNumber());
    Macsec::Sak const asked = transmit ? cpStatus->txSak() : rx ? *rx : Macsec::Sak();
    return asked.keyMsgId() == sa.keyId() && asked.keyNum() == sa.keyNum();
  }
  void install(Switch const& at, bool transmit, Macsec::SaStatus const& sa) {
    Place const place{&at, transmit, sa.associationNumber().value()};
    if (&at == &a_ && !isAsked(transmit, sa)) {
      if (storeHasAll_ && isInUse(place, keyOf(sa))) touched(place, "forgotten by the tree");
      return;
    }
    installed_.insert({place, {keyOf(sa), sa.entityId()}});
  }

  void portChanged(Switch const& one, PortEvent const& port) {
    if (open_.count(&one) && port.value != "open") fail(one.name() + " is " + port.value);
  }
  static bool transmits(Switch const& one, KeyName const& key) {
    auto const& sa = one.hardware().slice()->status(intf())->txSaStatus();
    return sa && keyOf(*sa) == key;
  }
  // A key is in use as long as somebody transmits under it; another transmit key takes over without
  // a gap.
  bool isInUse(Place const& place, KeyName const& key) const {
    if (!place.transmit) return transmits(a_, key) || transmits(b_, key);
    return !place.at->hardware().slice()->status(intf())->txSaStatus() || transmits(*place.at, key);
  }
  template <class Sa>
  void saChanged(Switch const& one, Sa const& sa) {
    auto const was = installed_.find({&one, sa.transmit, sa.an});
    if (was == installed_.end() || (sa.key && *sa.key == was->second.key)) return;
    // Retirement of the old key at the other side doesn't wait for who has lost a frame.
    bool const mayLag = losesFrames_ && &one == &b_;
    if (!mayLag && isInUse(was->first, was->second.key)) touched(was->first, "replaced or removed");
    installed_.erase(was);
  }
  void touched(Place const& place, std::string const& how) {
    fail(place.at->name() + (place.transmit ? " transmit" : " receive") + " SA " +
         std::to_string(place.an) + " in use was " + how);
  }
  // One that was taken out and put in again is another entity.
  void compareInstalled() {
    for (auto const& [place, was] : installed_) {
      auto const& entry = *place.at->hardware().slice()->status(intf());
      auto const sa = place.transmit ? entry.txSaStatus()
                                     : entry.rxSaStatus(Macsec::AssociationNumber(place.an));
      if (!sa || sa->entityId() != was.entityId) touched(place, "installed again");
    }
  }

  // (Frames under another primary key than that of B fail their ICV, killed or not.)
  void framePassed(Switch const& one, FramePassed const& frame) {
    if (!frame.ckn || !frame.memberId || !frame.messageNumber) return;
    if (&one == &a_ && frame.way == FrameWay::out)
      return sent(*frame.ckn, *frame.memberId, *frame.messageNumber);
    if (follows_ && &one == &b_ && frame.way == FrameWay::in && frame.verdict != "accepted" &&
        frame.verdict != "ignored" && frame.verdict != "icvValidationErr" &&
        !isRepeatedNumber(frame) && !isForFormerMember(frame)) {
      fail("B refused a frame: " + *frame.verdict);
    }
  }
  // A lost turn sends one message number of each actor again, which costs that message alone.
  bool isRepeatedNumber(FramePassed const& frame) {
    return !storeHasAll_ && frame.verdict == "replayErr" && repeated_.insert(*frame.ckn).second;
  }
  // A port that is bound anew is another member, which the key server has to hear first.
  bool isForFormerMember(FramePassed const& frame) const {
    return isBoundAnew_ && frame.verdict == "livenessErr";
  }
  // A lost turn may send again what it has sent.
  void sent(std::string const& ckn, std::string const& memberId, uint32_t number) {
    auto const before = std::exchange(sent_[ckn], {memberId, number});
    if (!follows_ || before.first.empty()) return;
    if (before.first != memberId) fail("another member identifier under " + ckn);
    if (number < before.second + (storeHasAll_ ? 1 : 0)) fail("a message number went back");
  }
  void compareActors() {
    for (auto const& [ckn, before] : actors_) {
      auto const actor = viewOf(a_).actor(ckn);
      if (!actor) {
        fail("no actor of " + ckn);
      } else if (actor->msgId() != Vesk::String8(before.first)) {
        fail("another member identifier of " + ckn);
      } else if (actor->msgNum() < before.second) {
        fail("message numbers of " + ckn + " went back");
      }
    }
  }

  bool storeHasAll_;
  bool losesFrames_;
  bool isBoundAnew_ = false;
  std::set<std::string> repeated_;  // keys under which a number was repeated
  Switch& a_;
  Switch& b_;
  std::optional<double> killedAt_;
  bool follows_ = false;
  bool isCompared_ = false;
  std::set<Switch const*> open_;
  std::map<Place, Installed> installed_;
  std::map<std::string, std::pair<std::string, uint32_t>> actors_;  // member identifier, number
  std::map<std::string, std::pair<std::string, uint32_t>> sent_;    // the last of each key
  std::vector<std::string> failures_;
};

}  // namespace Lab
