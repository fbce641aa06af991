#pragma once

#include <cstddef>
#include <cstdint>

namespace Vesk {

class Homes;

/// Where the objects of one interface live together: entities, reactors, timers, state machines and
/// texts. With thousands of interfaces it is memory that costs, if each of the many objects that an
/// MKPDU touches lies on a page of its own.
///
/// Nobody who makes an object says where. What is made while a handler of an object runs lives
/// where that object does, and what has an interface for its key begins the home of it
/// (`HomeScope`). All else comes from the heap; so does what finds no room any more, and everything
/// while pointers are counted for threads.
///
/// A home is one block of addresses, of which only the pages in use cost memory: the objects of
/// classes that say `kIsHot` lie together from its begin on, so that all of them can be fetched
/// ahead, and all others from its end back. It goes with its last object.
///
///     | Home | hot objects -->                  <-- all others |
class Home {
 public:
  static constexpr size_t kBlock = size_t{1} << 13;
  /// Where objects may begin: at no finer an alignment, and no coarser.
  static constexpr size_t kGrain = 8;
  /// Addresses for all homes of a process; a sixteenth of those that 32 bits have.
  static constexpr bool kIsNarrow = sizeof(uintptr_t) < 8;
  static constexpr uintptr_t kReserved = uintptr_t{1} << (kIsNarrow ? 28 : 31);
  enum class Part : uint8_t { hot, cold };

  Home(Home const&) = delete;
  Home& operator=(Home const&) = delete;

  /// In the present home, or on the heap.
  static void* allocate(size_t size, Part part);
  static void release(void* memory, size_t size);
  /// That of an object; null for one on the heap.
  static Home* of(void const* object) {
    uintptr_t const address = reinterpret_cast<uintptr_t>(object);
    if (address - begin_ >= kReserved) return nullptr;
    if (kIsNarrow && begin_ == kNowhere) return nullptr;
    return reinterpret_cast<Home*>(address & ~(kBlock - 1));
  }
  /// Where an object lies; `cold` for one on the heap.
  static Part partAt(void const* object);
  /// Asks the processor for what is hot in the home of this object, where there are so many homes
  /// that it doesn't keep them all at hand.
  static void fetch(void const* object) {
    if (homesInAll_ > kAtHand) fetchAll(object);
  }

  size_t objects() const { return objects_; }
  /// Of memory, in whole pages.
  size_t octets() const;

 private:
  friend class BesideScope;
  friend class HomeScope;
  friend class Homes;
  friend class RunningHandler;
  struct Cell;

  Home(Homes* homes, uint32_t interface);
  ~Home() { --homesInAll_; }
  void* take(size_t size, Part part);
  void* takeFree(size_t size, uint16_t* place);
  static void fetchAll(void const* object);
  char* at(uint16_t place) { return reinterpret_cast<char*>(this) + place; }
  void* takeAfter(size_t size);
  void* takeBefore(size_t size);
  void give(void* memory, size_t size);
  void letGo();

  // Their hot parts fill half of the second-level caches of present processors.
  static constexpr size_t kAtHand = 128;

  inline static size_t homesInAll_ = 0;
  // No home begins at an odd address. Of 64 bits, no object has the highest one.
  static constexpr uintptr_t kNowhere = UINTPTR_MAX / 2 + 2;
  // The first of the reserved addresses. Without any, no object is in a home.
  inline static uintptr_t begin_ = kNowhere;
  // Where what is made now lives: in the home of this object.
  inline static void const* present_ = nullptr;

  Homes* homes_;
  uint32_t const interface_;
  uint32_t objects_ = 0;
  // Places in the block.
  uint16_t hotEnd_;
  uint16_t coldBegin_;
  uint16_t freeHot_ = 0;
  uint16_t freeCold_ = 0;
};

/// In which part the objects of a class live.
template <class T>
constexpr Home::Part partOf() {
  if constexpr (requires { T::kIsHot; }) return Home::Part::hot;
  return Home::Part::cold;
}

}  // namespace Vesk
