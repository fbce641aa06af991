#pragma once

#include <cstdint>

#include "runtime/Describe.h"
#include "runtime/IntfId.h"
#include "runtime/Reactor.h"

namespace Interface {

/// What forwarding may do with an interface.
enum class IntfForwardingModel : uint8_t { bridged = 0, routed = 1, unauthorized = 2 };

/// No traffic but that of the port's own protocols.
constexpr IntfForwardingModel intfForwardingModelUnauthorized() {
  return IntfForwardingModel::unauthorized;
}

}  // namespace Interface

template <>
struct Vesk::EnumNames<Interface::IntfForwardingModel> {
  using Model = Interface::IntfForwardingModel;
  static constexpr std::pair<Model, char const*> names[] = {{Model::bridged, "bridged"},
                                                            {Model::routed, "routed"},
                                                            {Model::unauthorized, "unauthorized"}};
};

namespace Interface {

/// What one system tells forwarding of each interface. No entry leaves the word to others.
class IntfForwardingModelInputDir final
    : public Vesk::DescribedEntity<IntfForwardingModelInputDir> {
 public:
  enum Attribute : uint8_t { kForwardingModelInput };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onForwardingModelInput(Lumo::IntfId const&) {}
    virtual void onForwardingModelInput() {}
    virtual void onForwardingModelInputImmediate() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.template collection<Lumo::IntfId>(kForwardingModelInput, &R::onForwardingModelInput,
                                          &R::onForwardingModelInputImmediate);
    }
  };
  class Notifiee : public NotifieeConst {};

  using ForwardingModelInputMap = Vesk::ValueMap<Lumo::IntfId, IntfForwardingModel>;

  explicit IntfForwardingModelInputDir(Vesk::Name const& name) : DescribedEntity(name) {}
  static Vesk::Ptr<IntfForwardingModelInputDir> IntfForwardingModelInputDirIs(
      Vesk::Name const& name) {
    return Vesk::makeActive<IntfForwardingModelInputDir>(name);
  }

  /// The entries.
  ForwardingModelInputMap const& forwardingModelInput() const { return forwardingModelInput_; }
  IntfForwardingModel const* forwardingModelInput(Lumo::IntfId key) const {
    return forwardingModelInput_[key];
  }
  void forwardingModelInputIs(Lumo::IntfId key, IntfForwardingModel const& v) {
    valueIs<kForwardingModelInput>(forwardingModelInput_, key, v);
  }
  void forwardingModelInputDel(Lumo::IntfId key) {
    valueDel<kForwardingModelInput>(forwardingModelInput_, key);
  }
  void forwardingModelInputDelAll() { valueDelAll<kForwardingModelInput>(forwardingModelInput_); }

  template <class V>
  static constexpr void describe(V&& v) {
    v.values("forwardingModelInput", &IntfForwardingModelInputDir::forwardingModelInput_,
             &IntfForwardingModelInputDir::forwardingModelInputIs);
  }

 private:
  ForwardingModelInputMap forwardingModelInput_;
};

}  // namespace Interface
