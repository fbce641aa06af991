#pragma once

#include <optional>
#include <string>

#include "host/ConfigFile.h"
#include "host/StateStore.h"

namespace Macsecd {

/// The configuration that was in force last, beside the status tree in its store: a start on a file
/// with mistakes goes on with it. Its text lies there as keys do, encrypted under the key of the
/// host (`WardcodeLib`).
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
  /// What is in force, or was last. Nothing if nothing was kept, or if it can't be read any more.
  std::optional<SwitchConfig> config() const;

  /// Gives the store what it hasn't got yet. True if there was something, and the store took it.
  bool commit();

 private:
  StateStore* const store_;
  Vesk::String8 sealed_;
  StateChange pending_;
};

}  // namespace Macsecd
