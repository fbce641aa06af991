#include "host/state/HostKey.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host/config/InputFile.h"
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

Fault failed(std::string const& path, char const* what, char const* remedy) {
  return {path + ": " + what + ": " + std::strerror(errno), remedy};
}

void use(Key& key) { WardcodeLib::hostKeyIs(key.octets().first<WardcodeLib::kHostKeySize>()); }

Result<> makeFile(std::string const& path) {
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
  return {};
}

Fault refused(std::string const& path, Fault const& fault) {
  return {path + ": " + fault.what, fault.remedy};
}

Result<> readFile(std::string const& path, InputFile& file) {
  if (auto const fault = file.faultOfOwner()) return refused(path, *fault);
  if (file.othersMay() != 0) {
    return Fault{path + ": users other than its owner can reach it",
                 "chmod 600 " + path + ", and regard the key as known to others"};
  }
  auto const content = file.read(WardcodeLib::kHostKeySize);
  if (!content || content->size() != WardcodeLib::kHostKeySize) {
    return Fault{path + ": isn't 32 octets long",
                 "restore it, or delete it and configure the keys anew"};
  }
  Key key;
  key.sizeIs(WardcodeLib::kHostKeySize);
  std::ranges::copy(content->view(), key.octets().begin());
  use(key);
  return {};
}

}  // namespace

Result<> useHostKeyFile(std::string const& path) {
  InputFile file(path);
  if (file.isMissing()) return makeFile(path);
  if (file.fault()) return refused(path, *file.fault());
  return readFile(path, file);
}

}  // namespace Macsecd
