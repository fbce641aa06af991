#pragma once

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

namespace Linux {

/// Another process that does something and then waits for its end, which comes with this. One that
/// throws hasn't acted.
class OtherProcess {
 public:
  explicit OtherProcess(std::function<void()> const& act) {
    int ends[2];
    if (pipe(ends) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {
      act();
      if (write(ends[1], "", 1) != 1) _exit(1);
      while (true) pause();
    }
    close(ends[1]);
    char done;
    hasActed_ = read(ends[0], &done, 1) == 1;
    close(ends[0]);
  }
  ~OtherProcess() { kill(); }
  OtherProcess(OtherProcess const&) = delete;
  OtherProcess& operator=(OtherProcess const&) = delete;

  bool hasActed() const { return hasActed_; }
  pid_t pid() const { return pid_; }
  void kill() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
  }

 private:
  pid_t pid_ = -1;
  bool hasActed_ = false;
};

}  // namespace Linux
