#pragma once

namespace Vesk {

/// Says which invariant broke and where, then ends the process.
[[noreturn]] void assertionFailed(char const* condition, char const* file, int line,
                                  char const* function);

}  // namespace Vesk

/// Guards an invariant of the system itself: never what a peer, a file, an operator or a kernel can
/// cause. `text` names the condition in the message.
#define VESK_ASSERT_NAMED(condition, text) \
  ((condition) ? void() : ::Vesk::assertionFailed(text, __FILE__, __LINE__, __PRETTY_FUNCTION__))
#define VESK_ASSERT(condition) VESK_ASSERT_NAMED(condition, #condition)

/// The same for invariants that are too dear to test in a release build.
#ifdef NDEBUG
#define VESK_DEBUG_ASSERT(condition) static_cast<void>(0)
#else
#define VESK_DEBUG_ASSERT(condition) VESK_ASSERT(condition)
#endif
