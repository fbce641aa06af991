#pragma once

#include <unordered_map>

#include "runtime/Home.h"
#include "runtime/IntfId.h"

namespace Vesk {

/// The homes of one world.
class Homes {
 public:
  Homes() = default;
  /// What lives longer than the world keeps its home.
  ~Homes();
  Homes(Homes const&) = delete;
  Homes& operator=(Homes const&) = delete;

  /// That of an interface; null if there is no memory for it.
  Home* homeIs(Lumo::IntfId intfId);
  size_t members() const { return homes_.size(); }
  /// Of memory, in all.
  size_t octets() const;

 private:
  friend class Home;
  std::unordered_map<uint32_t, Home*> homes_;
};

/// What is made meanwhile lives in the home of an interface, if its world has homes.
class HomeScope {
 public:
  explicit HomeScope(Lumo::IntfId intfId);
  ~HomeScope();
  HomeScope(HomeScope const&) = delete;
  HomeScope& operator=(HomeScope const&) = delete;

 private:
  void const* const former_;
  Home* home_ = nullptr;
};

/// What is made meanwhile lives where an object does.
class BesideScope {
 public:
  explicit BesideScope(void const* object);
  ~BesideScope();
  BesideScope(BesideScope const&) = delete;
  BesideScope& operator=(BesideScope const&) = delete;

 private:
  void const* const former_;
  Home* const home_;
};

/// The same as `HomeScope` for whatever has a key, which may be an interface.
template <class Key>
class KeyedHomeScope {
 public:
  explicit KeyedHomeScope(Key const&) {}
};
template <>
class KeyedHomeScope<Lumo::IntfId> : public HomeScope {
 public:
  using HomeScope::HomeScope;
};

}  // namespace Vesk
