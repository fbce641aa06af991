// Writes the first part of a process's vector registers back, as a kernel does that has no room for
// more. Ends with 0 if it is taken and nothing else has changed, and where the processor has no
// more than this part. To be run with the library of registers.cpp before it.
#include <elf.h>
#include <sys/ptrace.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

constexpr size_t kMmx = 32, kXmm = 160, kHeader = 512, kUpToAvx = 576 + 256, kCompaction = 8;
constexpr unsigned char kMark = 0x5a;

using Set = std::array<unsigned char, 1 << 16>;

size_t readSet(pid_t process, Set& set) {
  iovec whole{set.data(), set.size()};
  return ptrace(PTRACE_GETREGSET, process, NT_X86_XSTATE, &whole) == 0 ? whole.iov_len : 0;
}

bool writePart(pid_t process, Set& set, size_t size) {
  iovec part{set.data(), size};
  return ptrace(PTRACE_SETREGSET, process, NT_X86_XSTATE, &part) == 0;
}

pid_t stoppedProcess() {
  pid_t const child = fork();
  if (child == 0) {
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    raise(SIGSTOP);
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  return child;
}

char const* fault(pid_t process) {
  static Set before, part, after;
  size_t const size = readSet(process, before);
  part = before;
  part[kHeader] |= 3;  // the components that are marked are in use
  std::memset(part.data() + kXmm, kMark, 16);
  std::memset(part.data() + kMmx, kMark, 10);
  part[kHeader + 2] |= 1 << 2;  // and of one beyond the part, of which it knows nothing
  if (!writePart(process, part, kUpToAvx)) return "a part isn't taken";
  if (readSet(process, after) != size) return "the size has changed";
  if (std::memcmp(after.data() + kXmm, part.data() + kXmm, 16) != 0) return "the part isn't there";
  if (after[kHeader + 2] != before[kHeader + 2]) return "a bit came without its component";
  if (std::memcmp(after.data() + kUpToAvx, before.data() + kUpToAvx, size - kUpToAvx) != 0) {
    return "what lies beyond the part has changed";
  }
  // A whole set goes through as it is, a bit that the kernel refuses with it.
  if (!writePart(process, before, size)) return "a whole set isn't taken";
  before[kHeader + kCompaction] = 1;
  return writePart(process, before, size) ? "a whole set is changed" : nullptr;
}

}  // namespace

int main() {
  pid_t const process = stoppedProcess();
  static Set set;
  size_t const size = readSet(process, set);
  char const* const found = size > kUpToAvx ? fault(process) : nullptr;
  kill(process, SIGKILL);
  waitpid(process, nullptr, 0);
  if (found) std::printf("%s\n", found);
  return found || size == 0 ? 1 : 0;
}
