#include "host/state/KeptConfig.h"

#include "platform/SameKey.h"
#include "platform/WardcodeLib.h"
#include "runtime/Assert.h"

namespace Macsecd {

namespace {

std::string const kTextPath = std::string(KeptConfig::kPathBegin) + "text";
std::string const kTriedPath = std::string(KeptConfig::kPathBegin) + "tried";

Vesk::String8 valueAt(StateValues const& values, std::string const& path) {
  auto const found = values.find(path);
  return found == values.end() ? Vesk::String8() : Vesk::String8(found->second);
}

}  // namespace

void KeptConfig::takeUp(StateValues const& values) {
  sealed_ = valueAt(values, kTextPath);
  tried_ = valueAt(values, kTriedPath);
  pending_ = {};
}

void KeptConfig::textIs(Vesk::String8 const& sealed) {
  sealed_ = sealed;
  tried_ = {};
  if (!store_) return;
  pending_.values[kTextPath] = std::string(sealed_.view());
  pending_.values[kTriedPath] = std::nullopt;
}

Result<> KeptConfig::triedIs(Vesk::String8 const& sealed) {
  if (store_) {
    StateChange change = pending_;
    change.values[kTriedPath] = std::string(sealed.view());
    if (auto taken = store_->commit(change); !taken) return taken;
    pending_ = {};
  }
  tried_ = sealed;
  return {};
}

// Two encryptions of one text differ.
bool KeptConfig::isTried(Vesk::String8 const& sealed) const {
  return !tried_.empty() && Macsec::isSameKey(tried_, sealed);
}

// It had no mistakes when it was taken over; another version may find some.
std::optional<SwitchConfig> KeptConfig::config() const {
  if (sealed_.empty()) return {};
  Vesk::String8 const text = WardcodeLib::doDecodeKey(sealed_);
  if (text.empty()) return {};
  auto read = parseConfig(text.view(), "the configuration in force");
  if (!read.good()) return {};
  return std::move(read.config);
}

bool KeptConfig::commit() {
  if (pending_.empty()) return false;
  VESK_ASSERT(store_);
  if (!store_->commit(pending_)) return false;
  pending_ = {};
  return true;
}

}  // namespace Macsecd
