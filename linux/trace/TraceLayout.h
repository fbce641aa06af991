#pragma once

#include <cstddef>
#include <cstdint>

namespace Linux {

/// How a trace file begins.
struct TraceHead {
  uint64_t magic;
  uint64_t size;   ///< octets of the ring, which follows
  uint64_t begun;  ///< octets that have been put into the ring, and that are about to be
  uint64_t ended;  ///< octets that have been put there for good
};

constexpr uint64_t kTraceMagic = 0x3165636172746b6d;
constexpr size_t kTraceHeadSize = 64;
static_assert(sizeof(TraceHead) <= kTraceHeadSize);

}  // namespace Linux
