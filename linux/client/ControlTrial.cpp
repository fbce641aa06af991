#include "linux/client/ControlTrial.h"

#include <fmt/format.h>
#include <poll.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <ostream>

#include "host/client/ControlText.h"
#include "host/text/ControlProtocol.h"
#include "linux/client/ControlClient.h"
#include "linux/client/ExitStatus.h"
#include "linux/process/Limits.h"

namespace Linux {

namespace {

using Macsecd::ControlView;
using Macsecd::Json;
using Macsecd::requestOf;

/// Asks, and shows what hinders it. The status, and what was answered.
struct Asked {
  Asked(std::string const& socket, Json const& request, ControlView view, std::ostream& err) {
    auto const answer = askAt(socket, Macsecd::jsonText(request));
    if (!answer) {
      err << "macsecctl: " << answer.fault().text() << '\n';
      status = kNoAnswer;
      return;
    }
    auto const reading = Macsecd::readingOf(view, *answer);
    if (!reading.isGood) {
      err << reading.text;
      status = kRefused;
      return;
    }
    result = Json::parse(*answer).at("result");
  }
  int status = 0;
  Json result;
};

std::string wordOf(Json const& result, char const* member) {
  return result.value(member, std::string());
}

void showHowToKeep(Json const& result, std::ostream& out) {
  if (!result.value("other-than-configured", false)) return;
  out << "A start or a reload takes the file that macsecd is configured with: put "
      << wordOf(result, "file") << " in its place.\n";
}

int outcome(Json const& result, std::ostream& out, std::ostream& err) {
  std::string const state = wordOf(result, "state");
  if (state == "kept") {
    out << "Kept.\n";
    showHowToKeep(result, out);
    return 0;
  }
  err << (state == "replaced" ? "Another configuration was read meanwhile.\n"
                              : "Not kept in time: the former configuration is in force again.\n");
  return kRefused;
}

int followTrial(ControlTrial const& trial, std::ostream& out, std::ostream& err) {
  while (true) {
    Asked const asked(trial.socket, requestOf("trial"), ControlView::done, err);
    if (trial.showsCountdown) out << "\r\033[K" << std::flush;
    if (asked.status != 0) {
      err << "What is on trial isn't kept: the next macsecd goes on with the former one.\n";
      return asked.status;
    }
    if (wordOf(asked.result, "state") != "running") return outcome(asked.result, out, err);
    if (trial.showsCountdown) {
      out << fmt::format("Goes back in {} s, unless: macsecctl keep",
                         asked.result.value("seconds", 0))
          << std::flush;
    }
    poll(nullptr, 0, Limits::kCountdown);
  }
}

}  // namespace

int tryOut(ControlTrial const& trial, std::ostream& out, std::ostream& err) {
  Json request = requestOf("try");
  std::string const file = std::filesystem::absolute(trial.file).lexically_normal().string();
  request["file"] = file;
  request["timeout"] = trial.seconds;
  Asked const asked(trial.socket, request, ControlView::reload, err);
  if (asked.status != 0) return asked.status;
  out << fmt::format(
             "{} is in force for {} s, and then the former configuration again, unless it is "
             "kept:\n"
             "macsecctl keep\n",
             file, trial.seconds)
      << std::flush;
  return followTrial(trial, out, err);
}

int keepTried(std::string const& socket, std::ostream& out, std::ostream& err) {
  Asked const asked(socket, requestOf("keep"), ControlView::done, err);
  return asked.status != 0 ? asked.status : outcome(asked.result, out, err);
}

}  // namespace Linux
