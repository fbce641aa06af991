#include "runtime/HomeBlocks.h"

#include <sys/mman.h>

#include <vector>

#include "runtime/Home.h"
#include "runtime/Sanitizer.h"

namespace Vesk::HomeBlocks {

namespace {

// So much of the reserved addresses is opened at once.
constexpr uintptr_t kChunk = uintptr_t{1} << 20;
static_assert(kChunk % Home::kBlock == 0 && Home::kReserved % kChunk == 0);

// The first address that a block can have; null if the system gives none.
char* reserved() {
  void* const memory = mmap(nullptr, Home::kReserved + Home::kBlock, PROT_NONE,
                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) return nullptr;
  auto const before = -reinterpret_cast<uintptr_t>(memory) & (Home::kBlock - 1);
  char* const first = static_cast<char*>(memory) + before;
  objectsMayLieAt(first, Home::kReserved);
  return first;
}

bool open(char* chunk) { return mprotect(chunk, kChunk, PROT_READ | PROT_WRITE) == 0; }

struct Blocks {
  char* const begin = reserved();
  uintptr_t used = 0;
  std::vector<void*> free;
};

// It stays for what lives until the process has ended.
Blocks& blocks() {
  static auto* const blocks = new Blocks();
  return *blocks;
}

}  // namespace

void* take() {
  Blocks& all = blocks();
  if (!all.free.empty()) {
    void* const block = all.free.back();
    all.free.pop_back();
    return block;
  }
  if (!all.begin || all.used + Home::kBlock > Home::kReserved) return nullptr;
  char* const block = all.begin + all.used;
  if (all.used % kChunk == 0 && !open(block)) return nullptr;
  all.used += Home::kBlock;
  return block;
}

void give(void* block) { blocks().free.push_back(block); }

uintptr_t begin() { return reinterpret_cast<uintptr_t>(blocks().begin); }

}  // namespace Vesk::HomeBlocks
