#include "lab/swarm/Workers.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace Lab {

namespace {

[[noreturn]] void failed(char const* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

void writeAll(int file, std::string const& text) {
  for (size_t done = 0; done < text.size();) {
    ssize_t const written = ::write(file, text.data() + done, text.size() - done);
    if (written < 0 && errno != EINTR) ::_exit(1);
    if (written > 0) done += static_cast<size_t>(written);
  }
}

int statusOf(int pid) {
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

}  // namespace

void Workers::start(uint32_t number) {
  std::array<int, 2> pipe{};
  if (::pipe(pipe.data()) != 0) failed("pipe");
  int const pid = ::fork();
  if (pid < 0) failed("fork");
  if (pid == 0) {
    ::close(pipe[0]);
    work_(number, [&](std::string const& line) { writeAll(pipe[1], line + "\n"); });
    ::_exit(0);
  }
  ::close(pipe[1]);
  workers_.push_back({number, pid, pipe[0], {}});
}

void Workers::listen(Heard const& heard, Ended const& ended) {
  while (!workers_.empty()) {
    std::vector<pollfd> files;
    for (Worker const& worker : workers_) files.push_back({worker.pipe, POLLIN, 0});
    if (::poll(files.data(), files.size(), -1) < 0 && errno != EINTR) failed("poll");
    for (size_t i = files.size(); i-- > 0;) {
      if (files[i].revents == 0) continue;
      bool isOver = false;
      read(workers_[i], heard, isOver);
      if (!isOver) continue;
      Worker const gone = std::move(workers_[i]);
      workers_.erase(workers_.begin() + static_cast<std::ptrdiff_t>(i));
      ::close(gone.pipe);
      ended(gone.number, statusOf(gone.pid));
    }
  }
}

void Workers::read(Worker& worker, Heard const& heard, bool& isOver) {
  std::array<char, 4096> octets{};
  ssize_t const size = ::read(worker.pipe, octets.data(), octets.size());
  isOver = size == 0 || (size < 0 && errno != EINTR);
  if (size <= 0) return;
  worker.rest.append(octets.data(), static_cast<size_t>(size));
  for (size_t end; (end = worker.rest.find('\n')) != std::string::npos;) {
    std::string const line = worker.rest.substr(0, end);
    worker.rest.erase(0, end + 1);
    heard(worker.number, line);
  }
}

bool endsItsProcess(std::function<void()> const& work) {
  int const pid = ::fork();
  if (pid < 0) failed("fork");
  if (pid == 0) {
    ::close(STDERR_FILENO);
    work();
    ::_exit(0);
  }
  return statusOf(pid) != 0;
}

}  // namespace Lab
