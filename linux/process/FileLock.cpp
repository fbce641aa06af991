#include "linux/process/FileLock.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "linux/process/ProcessName.h"

namespace Linux {

namespace {

struct flock wholeFile() {
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  return lock;
}

[[noreturn]] void fail(std::string const& path, std::string const& what) {
  throw std::runtime_error(path + ": " + what);
}

Descriptor opened(std::string const& path) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  Descriptor file(open(path.c_str(), kFlags, 0600));
  if (!file.isOpen()) {
    fail(path, fmt::format("can't be opened: {}; see that its folder is there and may be written",
                           std::strerror(errno)));
  }
  struct stat status;
  if (fstat(file.fd(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_uid != geteuid()) {
    fail(path, "is no file of this user; remove it, or name another path");
  }
  return file;
}

}  // namespace

FileLock::FileLock(std::string const& path) : file_(opened(path)) {
  struct flock lock = wholeFile();
  if (fcntl(file_.fd(), F_SETLK, &lock) == 0) return;
  if (errno != EAGAIN && errno != EACCES) {
    fail(path, fmt::format("can't be locked: {}; name a path on another file system",
                           std::strerror(errno)));
  }
  lock = wholeFile();
  bool const isKnown = fcntl(file_.fd(), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
  fail(path, fmt::format("is held by {}; end it, or name another path",
                         processName(isKnown ? lock.l_pid : 0)));
}

}  // namespace Linux
