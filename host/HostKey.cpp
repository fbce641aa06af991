#include "host/HostKey.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/SecretOctets.h"
#include "platform/WardcodeLib.h"
#include "runtime/World.h"

namespace Macsecd {

namespace {

using Key = Macsec::SecretOctets<WardcodeLib::kHostKeySize>;

class File {
 public:
  explicit File(int descriptor) : descriptor_(descriptor) {}
  ~File() {
    if (isOpen()) close(descriptor_);
  }
  File(File const&) = delete;
  File& operator=(File const&) = delete;
  bool isOpen() const { return descriptor_ >= 0; }
  int descriptor() const { return descriptor_; }

 private:
  int const descriptor_;
};

std::string failed(std::string const& path, char const* what, char const* remedy) {
  return path + ": " + what + ": " + std::strerror(errno) + "; " + remedy;
}

void use(Key& key) { WardcodeLib::hostKeyIs(key.octets().first<WardcodeLib::kHostKeySize>()); }

std::optional<std::string> makeFile(std::string const& path) {
  File const file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!file.isOpen()) return failed(path, "can't be made", "make its folder writable");
  Key key;
  key.sizeIs(WardcodeLib::kHostKeySize);
  Vesk::world().randomBytes(key.octets());
  if (write(file.descriptor(), key.octets().data(), key.size()) !=
      static_cast<ssize_t>(key.size())) {
    auto const error = failed(path, "can't be written", "make room on its disk");
    unlink(path.c_str());
    return error;
  }
  use(key);
  return std::nullopt;
}

std::optional<std::string> readFile(std::string const& path, File const& file) {
  struct stat status;
  if (fstat(file.descriptor(), &status) != 0) {
    return failed(path, "can't be looked at", "check its disk");
  }
  if (!S_ISREG(status.st_mode)) return path + ": is no plain file; name another one";
  if ((status.st_mode & 077) != 0) {
    return path + ": others than its owner can reach it; chmod 600, and take it for known";
  }
  Key key;
  key.sizeIs(WardcodeLib::kHostKeySize);
  bool const isWhole =
      status.st_size == static_cast<off_t>(key.size()) &&
      read(file.descriptor(), key.octets().data(), key.size()) == static_cast<ssize_t>(key.size());
  if (!isWhole) {
    return path + ": isn't 32 octets long; restore it, or delete it and configure the keys anew";
  }
  use(key);
  return std::nullopt;
}

}  // namespace

std::optional<std::string> useHostKeyFile(std::string const& path) {
  File const file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.isOpen()) return readFile(path, file);
  if (errno == ENOENT) return makeFile(path);
  return failed(path, "can't be read", "run as its owner");
}

}  // namespace Macsecd
