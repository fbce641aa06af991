#include "host/KeptConfig.h"

#include "platform/WardcodeLib.h"

namespace Macsecd {

namespace {

std::string const kTextPath = std::string(KeptConfig::kPathBegin) + "text";

}  // namespace

void KeptConfig::takeUp(StateValues const& values) {
  auto const text = values.find(kTextPath);
  sealed_ = text == values.end() ? Vesk::String8() : Vesk::String8(text->second);
  pending_ = {};
}

void KeptConfig::textIs(Vesk::String8 const& sealed) {
  sealed_ = sealed;
  if (store_) pending_.values[kTextPath] = std::string(sealed.view());
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
  if (pending_.empty() || !store_->commit(pending_).empty()) return false;
  pending_ = {};
  return true;
}

}  // namespace Macsecd
