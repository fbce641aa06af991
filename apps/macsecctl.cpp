#include <unistd.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <nlohmann/json.hpp>

#include "host/client/ControlText.h"
#include "host/text/ControlProtocol.h"
#include "host/text/Limits.h"
#include "linux/client/ControlClient.h"
#include "linux/client/ControlFollow.h"
#include "linux/client/ControlTrial.h"
#include "linux/trace/TraceText.h"
#include "runtime/Glimmer.h"

namespace {

using Macsecd::ControlView;
using Macsecd::Json;
using Macsecd::requestOf;

struct Options {
  std::string socket = "/run/macsecd/control";
  std::string interface;
  std::string file;
  bool json = false;
  bool sinceClear = false;
  double seconds = 0;
  size_t count = 0;
  std::string traceFile = "/run/macsecd/trace";
  unsigned level = Glimmer::TraceFile::kLevels - 1;
  std::vector<std::string> handles;
  unsigned timeout = Macsecd::Limits::kUsualTrial;
};

struct Command {
  char const* name;
  char const* request;
  ControlView view;
  enum { none, mayName, mustName } interface;
  char const* help;
};

constexpr Command kCommands[] = {
    {"status", "status", ControlView::status, Command::mayName, "A line for each port"},
    {"show", "status", ControlView::ports, Command::mustName, "All that is known of each port"},
    {"peers", "status", ControlView::peers, Command::mayName, "A line for each peer"},
    {"keys", "status", ControlView::keys, Command::mayName, "A line for each key, by its name"},
    {"explain", "explain", ControlView::explain, Command::mayName,
     "Why a port isn't secured, and what to do about it"},
    {"counters", "counters", ControlView::counters, Command::mayName, "Frames by kind"},
    {"clear-counters", "clear-counters", ControlView::done, Command::none,
     "Count from zero again; the totals stay"},
    {"rekey", "rekey", ControlView::rekey, Command::mustName,
     "Make a new SAK; this switch has to be the key server"},
    {"reload", "reload", ControlView::reload, Command::none, "Read the configuration again"},
};

/// 0 when done, 1 when the switch refused, 3 when it can't be asked.
int ask(Json const& request, ControlView view, Options const& options) {
  auto const answer = Linux::askAt(options.socket, Macsecd::jsonText(request));
  if (!answer) {
    std::cerr << "macsecctl: " << answer.fault().text() << '\n';
    return 3;
  }
  auto const reading = Macsecd::readingOf(view, *answer);
  if (options.json) {
    std::cout << *answer << '\n';
  } else {
    (reading.isGood ? std::cout : std::cerr) << reading.text;
  }
  return reading.isGood ? 0 : 1;
}

int run(Command const& command, Options const& options) {
  Json request = requestOf(command.request);
  if (!options.interface.empty()) request["interface"] = options.interface;
  if (options.sinceClear) request["since-clear"] = true;
  return ask(request, command.view, options);
}

int runTrace(CLI::App const& trace, Options const& options) {
  if (trace.got_subcommand("dump")) {
    return Linux::showTrace(options.traceFile, options.json, std::cout, std::cerr);
  }
  Json request = requestOf("trace");
  request["on"] = trace.got_subcommand("on");
  if (request["on"]) {
    request["level"] = options.level;
    request["handles"] = options.handles;
  }
  return ask(request, ControlView::done, options);
}

void addCommands(CLI::App& app, Options& options) {
  for (Command const& command : kCommands) {
    CLI::App& sub = *app.add_subcommand(command.name, command.help);
    if (command.interface == Command::none) continue;
    auto* const interface = sub.add_option("interface", options.interface, "Only this interface");
    if (command.interface == Command::mustName) interface->required();
  }
  app.get_subcommand("counters")
      ->add_flag("--since-clear", options.sinceClear,
                 "Only what was counted since the counters were cleared");
}

void addFollowing(CLI::App& app, Options& options) {
  CLI::App& watch = *app.add_subcommand("watch", "Show the events of the ports as they come");
  watch.add_option("interface", options.interface, "Only this interface");
  CLI::App& capture = *app.add_subcommand("capture", "Write the MKPDUs of a port to a pcap file");
  capture.add_option("interface", options.interface, "The port")->required();
  capture.add_option("file", options.file, "The pcap file")->required();
  for (CLI::App* const sub : {&watch, &capture}) {
    sub->add_option("--seconds", options.seconds, "End after this time")
        ->check(CLI::PositiveNumber);
    sub->add_option("--count", options.count, "End after this number")->check(CLI::PositiveNumber);
  }
}

void addTracing(CLI::App& app, Options& options) {
  CLI::App& trace = *app.add_subcommand("trace", "Trace what the state machines decide");
  trace.require_subcommand(1);
  CLI::App& on = *trace.add_subcommand("on", "Trace from now on");
  on.add_option("--level", options.level, "Levels 0 to this one")
      ->check(CLI::Range(0, 9))
      ->capture_default_str();
  on.add_option("handles", options.handles, "Only traces of these names");
  trace.add_subcommand("off", "Stop tracing; what was traced stays");
  CLI::App& dump = *trace.add_subcommand("dump", "Show what was traced, the oldest first");
  dump.add_option("--file", options.traceFile, "The trace file")->capture_default_str();
}

void addTrial(CLI::App& app, Options& options) {
  CLI::App& trial = *app.add_subcommand(
      "try", "Take a configuration over, and go back to the former one unless it is kept in time");
  trial.add_option("file", options.file, "The configuration")->required();
  trial.add_option("--timeout", options.timeout, "Go back after this time in seconds")
      ->check(CLI::Range(1u, Macsecd::Limits::kMostTrial))
      ->capture_default_str();
  app.add_subcommand("keep", "Keep the configuration that is on trial");
}

int runTrial(Options const& options) {
  Linux::ControlTrial const trial{options.socket, options.file, options.timeout,
                                  isatty(STDOUT_FILENO) == 1};
  return Linux::tryOut(trial, std::cout, std::cerr);
}

/// The status of the program.
int runAny(CLI::App const& app, Options const& options) {
  for (Command const& command : kCommands) {
    if (app.got_subcommand(command.name)) return run(command, options);
  }
  Linux::ControlFollow const follow{options.socket, options.interface, options.json,
                                    options.seconds, options.count};
  if (app.got_subcommand("try")) return runTrial(options);
  if (app.got_subcommand("keep")) {
    return Linux::keepTried(options.socket, std::cout, std::cerr);
  }
  if (app.got_subcommand("trace")) return runTrace(*app.get_subcommand("trace"), options);
  if (app.got_subcommand("watch")) return Linux::showEvents(follow, std::cout, std::cerr);
  return Linux::captureFrames(follow, options.file, std::cout, std::cerr);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Shows what a running macsecd does, and controls it");
  Options options;
  app.add_option("--socket", options.socket, "The control socket of macsecd")
      ->capture_default_str();
  app.add_flag("--json", options.json, "Show the answer as it came");
  app.require_subcommand(1);
  app.fallthrough();
  addCommands(app, options);
  addFollowing(app, options);
  addTracing(app, options);
  addTrial(app, options);
  try {
    app.parse(argc, argv);
  } catch (CLI::ParseError const& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  return runAny(app, options);
}
