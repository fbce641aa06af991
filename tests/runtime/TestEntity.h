#pragma once

#include <functional>
#include <string>
#include <vector>

#include "runtime/Describe.h"
#include "runtime/Reactor.h"

namespace Vesk::Test {

/// A member of `Port::lane`, with a constructor parameter beside its key.
class Lane final : public DescribedEntity<Lane> {
 public:
  enum Attribute : uint8_t { kLoad };

  class NotifieeConst : public NotifieeBase {
   public:
    virtual void onLoad() {}
    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.value(kLoad, &R::onLoad);
    }
  };
  class Notifiee : public NotifieeConst {};

  Lane(Lumo::IntfId intfId, uint32_t width)
      : DescribedEntity(intfId.stringValue()), intfId_(intfId), width_(width) {}

  Lumo::IntfId fwkKey() const { return intfId_; }
  Lumo::IntfId intfId() const { return intfId_; }
  uint32_t width() const { return width_; }
  uint32_t load() const { return load_; }
  void loadIs(uint32_t v) { write<kLoad>(load_, v); }

  template <class V>
  static constexpr void describe(V&& v) {
    v.parameter("intfId", &Lane::intfId_);
    v.parameter("width", &Lane::width_);
    v.value("load", &Lane::load_, &Lane::loadIs);
  }

 private:
  Lumo::IntfId intfId_;
  uint32_t width_;
  uint32_t load_ = 0;
};

/// Two values, a collection of entities, and a collection of values.
class Port final : public DescribedEntity<Port> {
 public:
  enum Attribute : uint8_t { kSpeed, kLabel, kLane, kNote };

  class NotifieeConst : public NotifieeBase {
   public:
    virtual void onSpeed() {}
    virtual void onLabel() {}
    virtual void onLane(Lumo::IntfId const&) {}
    virtual void onLaneImmediate() {}
    virtual void onNote(Name const&) {}
    virtual void onNoteImmediate() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.value(kSpeed, &R::onSpeed);
      v.value(kLabel, &R::onLabel);
      v.template collection<Lumo::IntfId>(kLane, &R::onLane, &R::onLaneImmediate);
      v.template collection<Name>(kNote, &R::onNote, &R::onNoteImmediate);
    }
  };
  class Notifiee : public NotifieeConst {};

  using LaneMap = HashMap<Lane, Lumo::IntfId>;
  using NoteMap = ValueMap<Name, uint32_t>;

  explicit Port(Name const& name = "port") : DescribedEntity(name) {}

  uint32_t speed() const { return speed_; }
  void speedIs(uint32_t v) { write<kSpeed>(speed_, v); }
  uint32_t speedInc(uint32_t n) {
    speedIs(speed_ + n);
    return speed_;
  }
  /// A write that concerns one interface.
  void speedOfIs(Lumo::IntfId intfId, uint32_t v) { writeKeyed<kSpeed>(intfId, speed_, v); }

  String8 const& label() const { return label_; }
  void labelIs(String8 const& v) { write<kLabel>(label_, v); }

  LaneMap const& lane() const { return lane_; }
  Ptr<Lane> lane(Lumo::IntfId key) const { return lane_[key]; }
  Ptr<Lane> laneIs(Lumo::IntfId key, uint32_t width = 1) {
    Ptr<Lane> lane = memberIs<kLane>(lane_, key, [&] { return make<Lane>(key, width); });
    requireSameParameter(lane->name(), "width", width, lane->width());
    return lane;
  }
  Ptr<Lane> laneDel(Lumo::IntfId key) { return memberDel<kLane>(lane_, key); }
  void laneDelAll() { memberDelAll<kLane>(lane_); }
  /// A factory that fails.
  Ptr<Lane> nullLaneIs(Lumo::IntfId key) {
    return memberIs<kLane>(lane_, key, [] { return Ptr<Lane>(); });
  }

  NoteMap const& note() const { return note_; }
  uint32_t const* note(Name const& key) const { return note_[key]; }
  void noteIs(Name const& key, uint32_t v) { valueIs<kNote>(note_, key, v); }
  void noteDel(Name const& key) { valueDel<kNote>(note_, key); }
  void noteDelAll() { valueDelAll<kNote>(note_); }

  template <class V>
  static constexpr void describe(V&& v) {
    v.value("speed", &Port::speed_, &Port::speedIs);
    v.value("label", &Port::label_, &Port::labelIs);
    v.members("lane", &Port::lane_, &Port::laneIs);
    v.values("note", &Port::note_, &Port::noteIs);
  }

 private:
  uint32_t speed_ = 0;
  String8 label_;
  LaneMap lane_;
  NoteMap note_;
};

/// Owns reactors in a test: takes down what they hear, and then does what the test wants.
struct Owner {
  std::vector<std::string> heard;
  std::function<void(std::string const&)> then;

  void hear(std::string const& what) {
    heard.push_back(what);
    if (then) then(what);
  }
};

/// Hears everything of a port as "NAME ATTRIBUTE".
class PortReactor final : public Reactor<Port, Owner, PortReactor> {
 public:
  PortReactor(Owner& owner, Ptr<Port> port, std::string name, Lumo::IntfId key = Lumo::IntfId())
      : Reactor(owner, std::move(port), key), name_(std::move(name)) {}

  void onSpeed() override { owner().hear(name_ + " speed"); }
  void onLabel() override { owner().hear(name_ + " label"); }
  void onLane(Lumo::IntfId const& key) override { hearKey(" lane ", key.stringValue()); }
  void onLaneImmediate() override { owner().hear(name_ + " lanes"); }
  void onNote(Name const& key) override { hearKey(" note ", key); }
  void onNoteImmediate() override { owner().hear(name_ + " notes"); }

 private:
  void hearKey(char const* what, Name const& key) {
    owner().hear(name_ + what + std::string(key.view()));
  }
  std::string name_;
};

/// Hears the speed alone.
class SpeedReactor final : public Reactor<Port, Owner, SpeedReactor> {
 public:
  SpeedReactor(Owner& owner, Ptr<Port> port, std::string name, Lumo::IntfId key = Lumo::IntfId())
      : Reactor(owner, std::move(port), key), name_(std::move(name)) {}
  void onSpeed() override { owner().hear(name_ + " speed"); }

 private:
  std::string name_;
};

/// Overrides nothing.
class DeafReactor final : public Reactor<Port, Owner, DeafReactor> {
 public:
  using Reactor::Reactor;
};

/// A nested reactor on one lane.
class LaneReactor final : public Reactor<Lane, Owner, LaneReactor> {
 public:
  LaneReactor(Owner& owner, Ptr<Lane> lane) : Reactor(owner, lane), key_(lane->intfId()) {}
  Lumo::IntfId fwkKey() const { return key_; }
  void onLoad() override {
    owner().hear("load of " + std::string(key_.stringValue().view()) + " " +
                 std::to_string(notifier()->load()));
  }

 private:
  Lumo::IntfId key_;
};

}  // namespace Vesk::Test
