#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <type_traits>
#include <utility>

#include "runtime/Home.h"

namespace Vesk {

/// Base of everything that is reached through a virtual table and counted by reference.
class VFPtrInterface {
 public:
  /// Process-wide: 1 makes every count a locked operation, for a host that shares objects with
  /// another thread. 0, the default, leaves them plain increments.
  static uint8_t enableThreadSafePointers;

 protected:
  virtual ~VFPtrInterface() = default;
};

/// Base of every entity, state machine and reactor: one 32-bit word with the reference count and
/// two flags. An object is born with one reference, which `Vesk::make` hands to the first `Ptr`.
class PtrInterface : public VFPtrInterface {
 public:
  PtrInterface(PtrInterface const&) = delete;
  PtrInterface& operator=(PtrInterface const&) = delete;

  static void* operator new(size_t size) { return Home::allocate(size, Home::Part::cold); }
  static void* operator new(size_t size, Home::Part part) { return Home::allocate(size, part); }
  static void operator delete(void* memory, size_t size) { Home::release(memory, size); }
  // After a constructor that threw: how large the object would have been isn't known.
  static void operator delete(void* memory, Home::Part) { Home::release(memory, 0); }

  uint32_t references() const { return word_ & kCountMask; }
  /// True once the object has been taken out of service: no handler of it runs any more.
  bool isMarkedForDeletion() const { return static_cast<int32_t>(word_) < 0; }
  virtual void isMarkedForDeletionIs(bool marked) { flagIs(kMarkedForDeletion, marked); }

  bool hasNotificationActive() const { return (word_ & kNotificationActive) != 0; }
  /// Kept and passed on to what the object owns; it gates no delivery.
  virtual void hasNotificationActiveIs(bool active) { flagIs(kNotificationActive, active); }

  /// Runs when the last reference has gone: tells who watches, then destroys the object.
  virtual void zeroReferencesIs();

  void referenceInc() const {
    if (enableThreadSafePointers) [[unlikely]] {
      referenceIncAtomically();
    } else {
      ++word_;
    }
  }
  void referenceDec() const {
    if (enableThreadSafePointers) [[unlikely]] {
      referenceDecAtomically();
    } else if ((--word_ & kCountMask) == 0) [[unlikely]] {
      lastReferenceGone();
    }
  }

 protected:
  PtrInterface() = default;
  ~PtrInterface() override = default;
  /// Tells the notifiees of a dying notifier (`onZeroReferences`).
  virtual void tellZeroReferences() {}

 private:
  static constexpr uint32_t kCountMask = 0x5fffffff;
  static constexpr uint32_t kMarkedForDeletion = 0x80000000;
  static constexpr uint32_t kNotificationActive = 0x20000000;

  void referenceIncAtomically() const;
  void referenceDecAtomically() const;
  void flagIs(uint32_t flag, bool on) {
    if (enableThreadSafePointers) {
      on ? std::atomic_ref(word_).fetch_or(flag) : std::atomic_ref(word_).fetch_and(~flag);
    } else {
      word_ = on ? word_ | flag : word_ & ~flag;
    }
  }
  void lastReferenceGone() const;

  alignas(4) mutable uint32_t word_ = 1;
};

/// The owning smart pointer; `Ptr<T const>` is the read-only view of the same object. Dereferencing
/// a null pointer is a programming fault, and nothing guards it.
template <class T>
class Ptr {
 public:
  Ptr() = default;
  Ptr(std::nullptr_t) {}
  Ptr(T* p) : p_(p) { acquire(); }
  Ptr(Ptr const& o) : p_(o.p_) { acquire(); }
  Ptr(Ptr&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
  template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  Ptr(Ptr<U> const& o) : p_(o.ptr()) {
    acquire();
  }
  ~Ptr() { release(); }
  Ptr& operator=(Ptr o) noexcept {
    std::swap(p_, o.p_);
    return *this;
  }

  /// Takes over the reference that the object was born with.
  static Ptr adopt(T* p) {
    Ptr r;
    r.p_ = p;
    return r;
  }

  T* ptr() const { return p_; }
  T* operator->() const { return p_; }
  T& operator*() const { return *p_; }
  explicit operator bool() const { return p_ != nullptr; }

 private:
  void acquire() const {
    if (p_) p_->referenceInc();
  }
  void release() const {
    if (p_) p_->referenceDec();
  }
  T* p_ = nullptr;
};

template <class T, class U>
bool operator==(Ptr<T> const& a, Ptr<U> const& b) {
  return a.ptr() == b.ptr();
}
template <class T>
bool operator==(Ptr<T> const& a, std::nullptr_t) {
  return a.ptr() == nullptr;
}

template <class T, class U>
Ptr<T> ptrCast(Ptr<U> const& p) {
  return Ptr<T>(dynamic_cast<T*>(p.ptr()));
}

/// Allocates and constructs: the one place where objects of the runtime come from. The part is that
/// of the present home.
template <class T, class... Args>
Ptr<T> makeIn(Home::Part part, Args&&... args) {
  static_assert(alignof(T) <= Home::kGrain);
  return Ptr<T>::adopt(new (part) T(std::forward<Args>(args)...));
}
template <class T, class... Args>
Ptr<T> make(Args&&... args) {
  return makeIn<T>(partOf<T>(), std::forward<Args>(args)...);
}

}  // namespace Vesk
