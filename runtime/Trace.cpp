#include "runtime/Trace.h"

#include <set>
#include <unordered_map>
#include <utility>

#include "runtime/StateMachine.h"
#include "runtime/World.h"

namespace Vesk {

namespace {

TraceHandle* firstHandle = nullptr;
uint16_t ringLevels = 0;

}  // namespace

/// Which levels of which handles go to the trace sink of one world.
class StreamLevels {
 public:
  StreamLevels() = default;
  ~StreamLevels() {
    for (auto const& [handle, levels] : levels_) handle->streamsChange(levels, 0);
  }
  StreamLevels(StreamLevels const&) = delete;
  StreamLevels& operator=(StreamLevels const&) = delete;

  void levelsIs(TraceHandle& handle, uint16_t levels) {
    uint16_t& stored = levels_[&handle];
    handle.streamsChange(std::exchange(stored, levels), levels);
  }
  uint16_t levels(TraceHandle const& handle) const {
    auto const found = levels_.find(const_cast<TraceHandle*>(&handle));
    return found == levels_.end() ? 0 : found->second;
  }

 private:
  std::unordered_map<TraceHandle*, uint16_t> levels_;
};

TraceHandle::TraceHandle(char const* name) : name_(name), levels_(ringLevels), next_(firstHandle) {
  firstHandle = this;
}

void TraceHandle::streamsChange(uint16_t former, uint16_t levels) {
  for (size_t level = 0; level < streams_.size(); ++level) {
    if (former >> level & 1) --streams_[level];
    if (levels >> level & 1) ++streams_[level];
  }
  levelsAreCounted();
}

void TraceHandle::levelsAreCounted() {
  unsigned levels = ringLevels;
  for (size_t level = 0; level < streams_.size(); ++level) {
    if (streams_[level] > 0) levels |= 1u << level;
  }
  levels_ = static_cast<uint16_t>(levels);
}

bool TraceHandle::goesToStream(FacilityLevel level) const {
  return world().kept<StreamLevels>().levels(*this) >> level & 1;
}

bool TraceHandle::goesToRing(FacilityLevel level) const { return ringLevels >> level & 1; }

std::vector<std::string> TraceHandle::names() {
  std::set<std::string> names;
  for (TraceHandle* handle = firstHandle; handle; handle = handle->next_) {
    names.insert(handle->name_);
  }
  return {names.begin(), names.end()};
}

void TraceHandle::streamLevelsIs(std::string_view name, uint16_t levels) {
  auto& stream = world().kept<StreamLevels>();
  for (TraceHandle* handle = firstHandle; handle; handle = handle->next_) {
    if (name.empty() || name == handle->name_) stream.levelsIs(*handle, levels & kAllTraceLevels);
  }
}

void TraceHandle::ringLevelsIs(uint16_t levels) {
  ringLevels = levels & kAllTraceLevels;
  for (TraceHandle* handle = firstHandle; handle; handle = handle->next_) {
    handle->levelsAreCounted();
  }
}

void TraceHelper::trace(char const* file, int line, char const* function) {
  std::string const text = std::move(stream_).str();
  callOut([&] { world().trace(TraceRecord{handle_.name(), level_, file, line, function, text}); });
}

}  // namespace Vesk
