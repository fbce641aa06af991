#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "host/text/Limits.h"
#include "host/text/Result.h"
#include "runtime/String8.h"

namespace Macsecd {

/// A file that is open to be read. Opening it waits for nobody and starts nothing: what is no
/// regular file isn't opened, since a pipe may have no writer, and a device does what it likes. A
/// pipe is taken only where the process was given it open ("/dev/stdin", "/dev/fd/63").
class InputFile {
 public:
  explicit InputFile(std::string path);
  ~InputFile();
  InputFile(InputFile const&) = delete;
  InputFile& operator=(InputFile const&) = delete;

  /// Why it isn't open; nothing when it is.
  std::optional<Fault> const& fault() const { return fault_; }
  bool isMissing() const { return isMissing_; }

  /// What its group and others may do with it, as bits of a mode.
  mode_t othersMay() const { return status_.st_mode & (S_IRWXG | S_IRWXO); }
  /// Why it isn't its owner's alone to decide on: that is root, or this user.
  std::optional<Fault> faultOfOwner() const;
  /// Who else than its owner, and readers of its group, can read or change what holds keys, and how
  /// to put that right. What the process was given open is in the hands of whoever gave it.
  std::optional<Fault> faultOfKeeping() const;

  /// All of it, in memory that is wiped. Refused are more octets than `most`, and a pipe that gives
  /// none: it may have been read before.
  Result<Vesk::String8> read(size_t most);

 private:
  bool wasGiven() const;
  bool open();
  std::optional<Fault> faultOfKind() const;

  std::string const path_;
  int descriptor_ = -1;
  struct stat status_ {};
  std::optional<Fault> fault_;
  bool isMissing_ = false;
};

/// Most octets of a text that an operator writes: a configuration, a scenario.
inline constexpr size_t maxTextSize = Limits::kText;

}  // namespace Macsecd
