#include "host/config/InputFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace Macsecd {

namespace {

Fault unreadable(int error) {
  return {"the file can't be read: " + std::generic_category().message(error),
          "check its name and its permissions"};
}

char const* kindOf(mode_t mode) {
  if (S_ISDIR(mode)) return "a directory";
  if (S_ISFIFO(mode)) return "a pipe";
  if (S_ISSOCK(mode)) return "a socket";
  return "a device";
}

}  // namespace

InputFile::InputFile(std::string path) : path_(std::move(path)) {
  if (open() || fault_) return;
  isMissing_ = errno == ENOENT;
  fault_ = unreadable(errno);
}

InputFile::~InputFile() {
  if (descriptor_ >= 0) close(descriptor_);
}

// What lies there is looked at before it is opened, and again, for it may be another file by then.
bool InputFile::open() {
  if (stat(path_.c_str(), &status_) != 0 || (fault_ = faultOfKind())) return false;
  descriptor_ = ::open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (descriptor_ < 0 || fstat(descriptor_, &status_) != 0 || (fault_ = faultOfKind())) {
    return false;
  }
  // Whoever writes into a pipe may take its time.
  return S_ISREG(status_.st_mode) || fcntl(descriptor_, F_SETFL, O_RDONLY) == 0;
}

bool InputFile::wasGiven() const {
  return path_ == "/dev/stdin" || path_.starts_with("/dev/fd/") ||
         path_.starts_with("/proc/self/fd/");
}

std::optional<Fault> InputFile::faultOfKind() const {
  mode_t const mode = status_.st_mode;
  if (S_ISREG(mode) || (S_ISFIFO(mode) && wasGiven())) return std::nullopt;
  return Fault{fmt::format("the file can't be read: it is {}", kindOf(mode)),
               "name a regular file"};
}

std::optional<Fault> InputFile::faultOfOwner() const {
  if (status_.st_uid == 0 || status_.st_uid == geteuid()) return std::nullopt;
  return Fault{
      fmt::format("the file holds keys and belongs to the user {}", status_.st_uid),
      fmt::format("chown {} {}, and replace its keys: others may know them", geteuid(), path_)};
}

std::optional<Fault> InputFile::faultOfKeeping() const {
  if (wasGiven()) return std::nullopt;
  if (auto fault = faultOfOwner()) return fault;
  char const* who = nullptr;
  if (othersMay() & S_IWGRP) who = "its group can change it";
  if (othersMay() & S_IROTH) who = "everybody can read it";
  if (othersMay() & S_IWOTH) who = "everybody can change it";
  if (!who) return std::nullopt;
  return Fault{fmt::format("the file holds keys, and {}", who),
               fmt::format("chmod 600 {}, and replace its keys: others may know them", path_)};
}

Result<Vesk::String8> InputFile::read(size_t most) {
  ssize_t got = 0;
  size_t size = 0;
  auto const all = Vesk::String8::secretFilled(most + 1, [&](char* text) {
    do {
      got = ::read(descriptor_, text + size, most + 1 - size);
      if (got > 0) size += static_cast<size_t>(got);
    } while ((got > 0 && size <= most) || (got < 0 && errno == EINTR));
  });
  if (got < 0) return unreadable(errno);
  if (size > most) {
    return Fault{fmt::format("the file has more than {} octets", most), "make it shorter"};
  }
  if (size == 0 && S_ISFIFO(status_.st_mode)) {
    return Fault{"nothing came through the pipe, which can be read only once",
                 "name a regular file"};
  }
  return Vesk::String8::secret(all.view().substr(0, size));
}

}  // namespace Macsecd
