#include "runtime/Trace.h"

#include <set>

#include "runtime/StateMachine.h"
#include "runtime/World.h"

namespace Vesk {

namespace {

TraceHandle* firstHandle = nullptr;
uint16_t ringLevelsOfAll = 0;

}  // namespace

TraceHandle::TraceHandle(char const* name) : name_(name), next_(firstHandle) {
  firstHandle = this;
  levelsAre(0, ringLevelsOfAll);
}

void TraceHandle::levelsAre(uint16_t stream, uint16_t ring) {
  streamLevels_ = stream;
  ringLevels_ = ring;
  levels_ = stream | ring;
}

std::vector<std::string> TraceHandle::names() {
  std::set<std::string> names;
  for (TraceHandle* handle = firstHandle; handle; handle = handle->next_) {
    names.insert(handle->name_);
  }
  return {names.begin(), names.end()};
}

void TraceHandle::streamLevelsIs(std::string_view name, uint16_t levels) {
  for (TraceHandle* handle = firstHandle; handle; handle = handle->next_) {
    if (name.empty() || name == handle->name_) handle->levelsAre(levels, handle->ringLevels_);
  }
}

void TraceHandle::ringLevelsIs(uint16_t levels) {
  levels &= kAllTraceLevels;
  ringLevelsOfAll = levels;
  for (TraceHandle* handle = firstHandle; handle; handle = handle->next_) {
    handle->levelsAre(handle->streamLevels_, levels);
  }
}

void TraceHelper::trace(char const* file, int line, char const* function) {
  std::string const text = std::move(stream_).str();
  callOut([&] { world().trace(TraceRecord{handle_.name(), level_, file, line, function, text}); });
}

}  // namespace Vesk
