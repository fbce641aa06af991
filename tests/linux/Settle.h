#pragma once

#include <gtest/gtest.h>

#include "linux/process/EventLoop.h"

namespace Linux {

/// Lets a loop do all that there is to do just now.
inline void settle(EventLoop& loop) {
  int handlers = 0;
  while (handlers < 10000 && loop.runNext()) ++handlers;
  EXPECT_LT(handlers, 10000) << "there is always something to do";
}

}  // namespace Linux
