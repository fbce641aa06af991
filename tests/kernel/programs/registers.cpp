// A library that is loaded before Debian's user-mode-linux (LD_PRELOAD) where that kernel would end
// with "ptrace set fp regs failed".
//
// It keeps the vector registers of its processes in a buffer of a fixed size. A processor with more
// of them (AMX) has a larger set, of which the kernel of this machine reads out the first part, but
// which it takes back whole or not at all (EFAULT). Here such a part is laid upon what the process
// has, and the whole set is written. Where the sizes agree, nothing is changed.
#include <cpuid.h>
#include <dlfcn.h>
#include <elf.h>
#include <sys/ptrace.h>
#include <sys/types.h>
#include <sys/uio.h>

#include <array>
#include <cstdarg>
#include <cstdint>
#include <cstring>

namespace {

// The set as ptrace shows it, in the processor's standard format: what the first coprocessors had,
// a header whose first word has a bit for each component that isn't in its initial state, then the
// components, each at a place of its own.
constexpr size_t kHeader = 512, kHeaderSize = 64;
constexpr size_t kMostOctets = 1 << 16;
constexpr unsigned kFirstWithPlace = 2;  // components before it lie in front of the header
constexpr unsigned kComponents = 63;     // the last bit isn't one's
constexpr unsigned kLeaf = 0xd;          // of CPUID, that tells of components

struct Place {
  size_t offset = 0, size = 0;  // of no size: the processor has no such component
};

using Ptrace = long (*)(__ptrace_request, ...);

// All that needs time or stack is done before the kernel begins: its own stacks are small.
Ptrace theirPtrace = nullptr;
std::array<Place, kComponents> places;
alignas(64) std::array<char, kMostOctets> whole;

__attribute__((constructor)) void prepare() {
  theirPtrace = reinterpret_cast<Ptrace>(dlsym(RTLD_NEXT, "ptrace"));
  for (unsigned i = kFirstWithPlace; i < kComponents; ++i) {
    unsigned size = 0, offset = 0, flags = 0, none = 0;
    __get_cpuid_count(kLeaf, i, &size, &offset, &flags, &none);
    places[i] = {offset, offset ? size : 0};  // one without a place is the system's alone
  }
}

uint64_t componentsOf(char const* set) {
  uint64_t word = 0;
  std::memcpy(&word, set + kHeader, sizeof word);
  return word;
}

// A component comes as a whole and together with its bit, from the part if it lies within, else
// from the process. So no bit speaks of contents from elsewhere, and the bits that the kernel
// checks are such as it has told itself.
void layUpon(char* set, char const* part, size_t size) {
  uint64_t given = (1 << kFirstWithPlace) - 1;
  uint64_t const had = componentsOf(set);
  for (unsigned i = kFirstWithPlace; i < kComponents; ++i) {
    auto const& place = places[i];
    if (place.size == 0 || place.offset + place.size > size) continue;
    std::memcpy(set + place.offset, part + place.offset, place.size);
    given |= uint64_t{1} << i;
  }
  std::memcpy(set, part, kHeader + kHeaderSize);
  uint64_t const bits = (componentsOf(part) & given) | (had & ~given);
  std::memcpy(set + kHeader, &bits, sizeof bits);
}

bool isSetOfRegisters(__ptrace_request request, void const* kind, iovec const* given) {
  return request == PTRACE_SETREGSET && reinterpret_cast<uintptr_t>(kind) == NT_X86_XSTATE &&
         given->iov_len >= kHeader + kHeaderSize;
}

}  // namespace

// The one of the C library reads as many arguments as this, whatever the request.
extern "C" long ptrace(__ptrace_request request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  pid_t const process = va_arg(arguments, pid_t);
  void* const address = va_arg(arguments, void*);
  void* const data = va_arg(arguments, void*);
  va_end(arguments);

  auto const* const part = static_cast<iovec const*>(data);
  if (!isSetOfRegisters(request, address, part)) {
    return theirPtrace(request, process, address, data);
  }
  iovec set{whole.data(), whole.size()};
  bool const isKnown = theirPtrace(PTRACE_GETREGSET, process, address, &set) == 0;
  if (!isKnown || part->iov_len >= set.iov_len) {
    return theirPtrace(request, process, address, data);
  }
  layUpon(whole.data(), static_cast<char const*>(part->iov_base), part->iov_len);
  return theirPtrace(request, process, address, &set);
}
