#pragma once

#include <cstddef>
#include <new>

namespace Vesk {

/// Has a vector begin with a line of memory, as mapped memory does.
template <class T>
struct LineAllocator {
  using value_type = T;
  static constexpr std::align_val_t kLine{64};
  LineAllocator() = default;
  template <class U>
  LineAllocator(LineAllocator<U> const&) {}
  T* allocate(size_t count) { return static_cast<T*>(::operator new(count * sizeof(T), kLine)); }
  void deallocate(T* elements, size_t) { ::operator delete(elements, kLine); }
  friend bool operator==(LineAllocator const&, LineAllocator const&) { return true; }
};

}  // namespace Vesk
