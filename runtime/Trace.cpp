#include "runtime/Trace.h"

#include <set>

#include "runtime/World.h"

namespace Vesk {

namespace {

TraceHandle* firstHandle = nullptr;
uint16_t ringLevelsOfAll = 0;

}  // namespace

TraceHandle::TraceHandle(char const* name)
    : name_(name), ringLevels_(ringLevelsOfAll), next_(firstHandle) {
  firstHandle = this;
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
    if (name.empty() || name == handle->name_) handle->streamLevels_ = levels;
  }
}

void TraceHandle::ringLevelsIs(uint16_t levels) {
  levels &= kAllTraceLevels;
  ringLevelsOfAll = levels;
  for (TraceHandle* handle = firstHandle; handle; handle = handle->next_) {
    handle->ringLevels_ = levels;
  }
}

void TraceHelper::trace(char const* file, int line, char const* function) {
  std::string const text = std::move(stream_).str();
  world().trace(TraceRecord{handle_.name(), level_, file, line, function, text});
}

}  // namespace Vesk
