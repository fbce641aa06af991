#pragma once

#include <unistd.h>

#include <string>

#include "linux/keep/SharedCounters.h"

namespace Linux {

/// A name of shared memory that no other test uses, and that is gone in the end.
class SharedName {
 public:
  SharedName() : name_("/macsecd-test-" + std::to_string(getpid())) {}
  ~SharedName() { SharedCounters::remove(name_); }
  SharedName(SharedName const&) = delete;
  SharedName& operator=(SharedName const&) = delete;
  operator std::string const&() const { return name_; }
  char const* c_str() const { return name_.c_str(); }

 private:
  std::string const name_;
};

}  // namespace Linux
