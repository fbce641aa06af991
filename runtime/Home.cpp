#include "runtime/Home.h"

#include <algorithm>
#include <new>
#include <utility>

#include "runtime/Assert.h"
#include "runtime/HomeBlocks.h"
#include "runtime/Homes.h"
#include "runtime/PtrInterface.h"
#include "runtime/Sanitizer.h"
#include "runtime/World.h"

namespace Vesk {

namespace {

constexpr size_t kLine = 64;
constexpr size_t kPage = 4096;
// What is cold leaves so much room for what is hot, and no more than this is fetched ahead.
constexpr size_t kHotRoom = 51 * kLine;
// How they are fetched: more lines at once than the first level of the caches can wait for would
// hold up all that is done meanwhile; the second level can wait for more.
constexpr int kToRead = 0;
constexpr int kSecondLevel = 2;
// So many free cells are looked at.
constexpr int kTried = 16;

constexpr size_t rounded(size_t size) { return (size + Home::kGrain - 1) & ~(Home::kGrain - 1); }

}  // namespace

struct Home::Cell {
  uint16_t next;
  uint16_t size;
};

Home::Home(Homes* homes, uint32_t interface)
    : homes_(homes), interface_(interface), hotEnd_(rounded(sizeof(Home))), coldBegin_(kBlock) {
  ++homesInAll_;
  noObjectAt(at(hotEnd_), kBlock - hotEnd_);
}

void* Home::allocate(size_t size, Part part) {
  if (Home* const home = present_ ? of(present_) : nullptr) {
    bool const isShared = VFPtrInterface::enableThreadSafePointers != 0;
    if (void* const memory = isShared ? nullptr : home->take(rounded(size), part)) return memory;
  }
  return ::operator new(size);
}

void Home::release(void* memory, size_t size) {
  Home* const home = of(memory);
  if (!home) return ::operator delete(memory);
  home->give(memory, rounded(size));
  home->letGo();
}

void* Home::take(size_t size, Part part) {
  bool const isHot = part == Part::hot;
  void* memory = takeFree(size, isHot ? &freeHot_ : &freeCold_);
  if (!memory) memory = isHot ? takeAfter(size) : takeBefore(size);
  if (!memory) return nullptr;
  ++objects_;
  objectAt(memory, size);
  return memory;
}

void* Home::takeAfter(size_t size) {
  if (size > size_t{coldBegin_} - hotEnd_) return nullptr;
  void* const memory = at(hotEnd_);
  hotEnd_ = static_cast<uint16_t>(hotEnd_ + size);
  return memory;
}

void* Home::takeBefore(size_t size) {
  if (size > coldBegin_ - std::max<size_t>(hotEnd_, kHotRoom)) return nullptr;
  coldBegin_ = static_cast<uint16_t>(coldBegin_ - size);
  return at(coldBegin_);
}

// One of the same size, so that none is ever cut.
void* Home::takeFree(size_t size, uint16_t* place) {
  for (int tried = 0; *place != 0 && tried < kTried; ++tried) {
    auto* const cell = reinterpret_cast<Cell*>(at(*place));
    if (cell->size == size) {
      *place = cell->next;
      return cell;
    }
    place = &cell->next;
  }
  return nullptr;
}

// Where each access is checked, nothing is used again before the home has gone.
void Home::give(void* memory, size_t size) {
  VESK_ASSERT(objects_ > 0);
  noObjectAt(memory, size);
  if (kAddressesAreChecked || size == 0) return;
  auto const place = static_cast<uint16_t>(static_cast<char*>(memory) - at(0));
  uint16_t& first = place < hotEnd_ ? freeHot_ : freeCold_;
  new (memory) Cell{first, static_cast<uint16_t>(size)};
  first = place;
}

void Home::letGo() {
  if (--objects_ > 0) return;
  if (homes_) homes_->homes_.erase(interface_);
  objectAt(this, kBlock);
  this->~Home();
  HomeBlocks::give(this);
}

Home::Part Home::partAt(void const* object) {
  Home const* const home = of(object);
  bool const isHot = home && object < reinterpret_cast<char const*>(home) + home->hotEnd_;
  return isHot ? Part::hot : Part::cold;
}

void Home::fetchAll(void const* object) {
  Home const* const home = of(object);
  if (!home) return;
  auto const* const begin = reinterpret_cast<char const*>(home);
#pragma GCC unroll 17
  for (size_t line = 0; line < kHotRoom; line += kLine)
    __builtin_prefetch(begin + line, kToRead, kSecondLevel);
}

size_t Home::octets() const {
  size_t const hot = (hotEnd_ + kPage - 1) / kPage;
  size_t const cold = (kBlock - coldBegin_ + kPage - 1) / kPage;
  return std::min((hot + cold) * kPage, kBlock);
}

}  // namespace Vesk
