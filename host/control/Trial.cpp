#include "host/control/Trial.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "host/config/InputFile.h"
#include "runtime/Log.h"
#include "runtime/World.h"

namespace Macsecd {

namespace {

using Vesk::LogSeverity;

Vesk::LogHandle const MACSECD_TRIAL_BEGINS("MACSECD_TRIAL_BEGINS", LogSeverity::notice,
                                           "%s is in force for %s s, and then no more",
                                           "A configuration is on trial.",
                                           "To keep it: macsecctl keep", 0.0, 0.0);

Vesk::LogHandle const MACSECD_TRIAL_KEPT("MACSECD_TRIAL_KEPT", LogSeverity::notice, "%s is kept",
                                         "A configuration on trial stays in force.",
                                         Vesk::NoActionRequired, 0.0, 0.0);

Vesk::LogHandle const MACSECD_TRIAL_WENT_BACK(
    "MACSECD_TRIAL_WENT_BACK", LogSeverity::warning,
    "%s wasn't kept; the configuration that was in force before is so again",
    "Nobody has kept the configuration on trial in time.",
    "Try it again, with 'macsecctl keep' in time, or have it read: macsecctl reload", 0.0, 0.0);

}  // namespace

Result<std::vector<Diagnostic>> Trial::begin(std::string const& path, unsigned seconds) {
  Vesk::WorldScope const scope(host_.world());
  if (InputFile const file(path); file.fault()) {
    return Fault{path + ": " + file.fault()->what,
                 "put it where macsecd itself can read it, as in /etc/macsecd"};
  }
  ConfigResult const read = readConfigFile(path, Keys::kept);
  if (!read.good()) return read.diagnostics;
  if (!host_.keptConfig().config()) {
    return Fault{"there is no configuration to go back to", "have it read: macsecctl reload"};
  }
  if (auto const marked = host_.keptConfig().triedIs(read.sealed); !marked) {
    return Fault{"a start wouldn't know that it is on trial: " + marked.fault().what,
                 marked.fault().remedy};
  }
  path_ = path;
  state_ = State::running;
  end_ = Vesk::now() + seconds;
  Vesk::log(MACSECD_TRIAL_BEGINS, path, seconds);
  host_.configIs(read.config);
  apply_(read.config);
  return std::vector<Diagnostic>();
}

Result<> Trial::keep() {
  Vesk::WorldScope const scope(host_.world());
  if (state_ != State::running) {
    return Fault{"no configuration is on trial", "try one: macsecctl try FILE"};
  }
  host_.keptConfig().keepTried();
  host_.configFaultIs("");
  end(State::kept);
  Vesk::log(MACSECD_TRIAL_KEPT, path_);
  return {};
}

bool Trial::isOfAnotherFile() const {
  std::error_code ignored;
  return !std::filesystem::equivalent(path_, file_, ignored);
}

void Trial::endReplaced() {
  if (state_ == State::running) end(State::replaced);
}

double Trial::secondsLeft() const {
  return state_ == State::running ? std::max(0.0, end_ - host_.world().now()) : 0;
}

void Trial::run() {
  Vesk::WorldScope const scope(host_.world());
  if (state_ != State::running || Vesk::now() < end_) return;
  end(State::wentBack);
  Vesk::log(MACSECD_TRIAL_WENT_BACK, path_);
  auto const former = host_.keptConfig().config();
  if (!former) return;
  if (!isOfAnotherFile()) host_.configFaultIs(path_ + " was tried and not kept");
  host_.configIs(*former);
  apply_(*former);
}

void Trial::end(State state) {
  state_ = state;
  end_ = std::numeric_limits<double>::infinity();
}

}  // namespace Macsecd
