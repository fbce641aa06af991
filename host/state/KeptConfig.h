#pragma once

#include <optional>
#include <string>

#include "host/config/ConfigFile.h"
#include "host/state/StateStore.h"

namespace Macsecd {

/// The configuration that was in force last, beside the status tree in its store: a start on a file
/// with mistakes goes on with it. Its text lies there as keys do, encrypted under the key of the
/// host (`WardcodeLib`). Beside it stands the one that was tried last and not kept, which no start
/// takes.
class KeptConfig {
 public:
  /// Under which paths it lies in a store; no attribute of the status tree has such a one.
  static constexpr char const* kPathBegin = "%config/";

  /// Keeps what it is told in `store`, which lives longer; null for nowhere.
  explicit KeptConfig(StateStore* store = nullptr) : store_(store) {}

  /// Begins with what a store held: the values under `kPathBegin`.
  void takeUp(StateValues const& values);
  /// This text, encrypted, is in force from now on, and goes to the store with the next `commit`.
  void textIs(Vesk::String8 const& sealed);
  /// This text, encrypted, is tried from now on, and the store knows it when this returns; what is
  /// kept stays. With a fault of the store nothing has changed.
  Result<> triedIs(Vesk::String8 const& sealed);
  /// What was tried is in force from now on.
  void keepTried() { textIs(Vesk::String8(tried_)); }
  /// Whether this text, encrypted, is the one that was tried last and not kept.
  bool isTried(Vesk::String8 const& sealed) const;
  /// What is in force, or was last. Nothing if nothing was kept, or if it can't be read any more.
  std::optional<SwitchConfig> config() const;

  /// Gives the store what it hasn't got yet. True if there was something, and the store took it.
  bool commit();

 private:
  StateStore* const store_;
  Vesk::String8 sealed_;
  Vesk::String8 tried_;  // empty for none
  StateChange pending_;
};

}  // namespace Macsecd
