#pragma once

#include <cstddef>

#include "runtime/Home.h"

namespace Vesk {

/// Base of what isn't counted by reference and lives in the present home.
template <Home::Part part>
struct AtHome {
  static void* operator new(size_t size) { return Home::allocate(size, part); }
  static void operator delete(void* memory, size_t size) { Home::release(memory, size); }
};

/// Has a container of the standard library keep its elements in the present home, with what is hot.
template <class T>
struct HomeAllocator {
  using value_type = T;
  static_assert(alignof(T) <= Home::kGrain);
  HomeAllocator() = default;
  template <class U>
  HomeAllocator(HomeAllocator<U> const&) {}
  T* allocate(size_t count) {
    return static_cast<T*>(Home::allocate(octets(count), Home::Part::hot));
  }
  void deallocate(T* elements, size_t count) { Home::release(elements, octets(count)); }
  friend bool operator==(HomeAllocator const&, HomeAllocator const&) { return true; }

 private:
  struct Element {
    T element;
  };
  static size_t octets(size_t count) { return count * sizeof(Element); }
};

}  // namespace Vesk
