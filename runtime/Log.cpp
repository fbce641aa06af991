#include "runtime/Log.h"

#include <algorithm>

#include "runtime/StateMachine.h"
#include "runtime/World.h"

namespace Vesk {

char const NoActionRequired[] = "No action is required.";

namespace {

std::string formatted(char const* format, std::vector<std::string> const& arguments) {
  std::string text;
  auto next = arguments.begin();
  for (char const* p = format; *p; ++p) {
    if (p[0] == '%' && p[1] == 's' && next != arguments.end()) {
      text += *next++;
      ++p;
    } else {
      text += *p;
    }
  }
  return text;
}

String8 leading(std::vector<std::string> const& arguments, size_t count) {
  std::string joined;
  for (size_t i = 0; i < count; ++i) {
    if (i > 0) joined += '\0';
    joined += arguments[i];
  }
  return joined;
}

}  // namespace

bool LogHandle::okToLog(uint32_t hash) const {
  return interval_ <= 0.0 || world().rateLimits().take(hash, interval_);
}

void LogHandle::log(uint32_t hash, std::string const& text, uint8_t facility,
                    std::vector<std::string> const& arguments) const {
  callOut([&] { world().syslog(LogMessage{*this, arguments, text, hash, facility}); });
}

bool RateLimits::take(uint32_t hash, double interval) {
  double const now = Vesk::now();
  dropOld(now);
  auto [entry, isNew] = until_.try_emplace(hash, 0.0);
  if (!isNew && now < entry->second) return false;
  entry->second = now + interval;
  nextSweep_ = std::min(nextSweep_, entry->second);
  return true;
}

void RateLimits::dropOld(double now) {
  if (now < nextSweep_) return;
  std::erase_if(until_, [now](auto const& entry) { return entry.second <= now; });
  nextSweep_ = now + 60.0;
}

void logTexts(LogHandle const& handle, std::vector<std::string> const& arguments) {
  size_t const count = std::min<size_t>(handle.rateLimitArgs(), arguments.size());
  uint32_t const hash = leading(arguments, count).hash();
  if (!handle.okToLog(handle.idHash() ^ hash)) return;
  handle.log(hash, formatted(handle.format(), arguments), 2, arguments);
}

}  // namespace Vesk
