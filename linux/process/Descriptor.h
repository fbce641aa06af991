#pragma once

#include <unistd.h>

#include <utility>

namespace Linux {

/// A file descriptor that is closed when its owner goes.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(Descriptor&& o) noexcept : fd_(std::exchange(o.fd_, -1)) {}
  Descriptor& operator=(Descriptor&& o) noexcept {
    std::swap(fd_, o.fd_);
    return *this;
  }
  ~Descriptor() {
    if (isOpen()) close(fd_);
  }

  bool isOpen() const { return fd_ >= 0; }
  /// -1 when there is none.
  int fd() const { return fd_; }

 private:
  int fd_ = -1;
};

}  // namespace Linux
