#include "linux/keep/MappedRange.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

namespace Linux {

namespace {

// The handler reads these. It runs within an access to one of the ranges, never within a change of
// the list.
MappedRange* ranges = nullptr;
size_t pageSize = 0;
struct sigaction formerAction;

// With the former action back in force, the access that failed is tried again and comes to that. A
// signal that somebody sent has no such access.
void handleBusError(int signal, siginfo_t* info, void*) {
  int const before = errno;
  if (info->si_code != BUS_ADRERR ||
      !MappedRange::replacePage(reinterpret_cast<uintptr_t>(info->si_addr))) {
    sigaction(signal, &formerAction, nullptr);
    if (info->si_code <= 0) raise(signal);
  }
  errno = before;
}

bool handlesBusErrors() {
  pageSize = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  struct sigaction action {};
  action.sa_sigaction = handleBusError;
  action.sa_flags = SA_SIGINFO;
  sigemptyset(&action.sa_mask);
  return sigaction(SIGBUS, &action, &formerAction) == 0;
}

}  // namespace

MappedRange::MappedRange(std::span<uint64_t> words)
    : begin_(reinterpret_cast<uintptr_t>(words.data())),
      end_(begin_ + words.size_bytes()),
      next_(ranges) {
  static bool const once = handlesBusErrors();
  static_cast<void>(once);
  ranges = this;
}

MappedRange::~MappedRange() {
  MappedRange** at = &ranges;
  while (*at != this) at = &(*at)->next_;
  *at = next_;
}

bool MappedRange::replacePage(uintptr_t address) {
  MappedRange* range = ranges;
  while (range && !(range->begin_ <= address && address < range->end_)) range = range->next_;
  if (!range) return false;
  auto* const page = reinterpret_cast<void*>(address & ~(pageSize - 1));
  int const flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED;
  if (mmap(page, pageSize, PROT_READ | PROT_WRITE, flags, -1, 0) == MAP_FAILED) return false;
  std::memset(page, 0xff, pageSize);
  range->isWhole_.store(false, std::memory_order_relaxed);
  return true;
}

}  // namespace Linux
