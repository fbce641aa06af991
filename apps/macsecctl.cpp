#include <CLI/CLI.hpp>
#include <iostream>
#include <nlohmann/json.hpp>

#include "host/Control.h"
#include "host/ControlText.h"
#include "linux/ControlClient.h"
#include "linux/ControlFollow.h"

namespace {

using Macsecd::ControlView;

struct Options {
  std::string socket = "/run/macsecd/control";
  std::string interface;
  std::string file;
  bool json = false;
  bool sinceClear = false;
  double seconds = 0;
  size_t count = 0;
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
    {"show", "status", ControlView::ports, Command::mustName, "Everything of a port"},
    {"peers", "status", ControlView::peers, Command::mayName, "The other ends"},
    {"keys", "status", ControlView::keys, Command::mayName, "The keys, by their names"},
    {"explain", "explain", ControlView::explain, Command::mayName,
     "Why a port isn't secured, and what to do about it"},
    {"counters", "counters", ControlView::counters, Command::mayName, "Frames by kind"},
    {"clear-counters", "clear-counters", ControlView::done, Command::none,
     "Count from here on; the totals stay"},
    {"rekey", "rekey", ControlView::rekey, Command::mustName,
     "Have the key server, which this switch has to be, make a new SAK"},
    {"reload", "reload", ControlView::reload, Command::none, "Read the configuration again"},
};

/// 0 when done, 1 when the switch refused, 3 when it can't be asked.
int run(Command const& command, Options const& options) {
  nlohmann::ordered_json request = {{"version", Macsecd::Control::kVersion},
                                    {"command", command.request}};
  if (!options.interface.empty()) request["interface"] = options.interface;
  if (options.sinceClear) request["since-clear"] = true;
  auto const answer = Linux::askAt(options.socket, request.dump());
  if (auto const* fault = std::get_if<Macsecd::Fault>(&answer)) {
    std::cerr << "macsecctl: " << fault->what << "; " << fault->remedy << '\n';
    return 3;
  }
  auto const& text = std::get<std::string>(answer);
  auto const reading = Macsecd::readingOf(command.view, text);
  if (options.json) {
    std::cout << text << '\n';
  } else {
    (reading.isGood ? std::cout : std::cerr) << reading.text;
  }
  return reading.isGood ? 0 : 1;
}

void addCommands(CLI::App& app, Options& options) {
  for (Command const& command : kCommands) {
    CLI::App& sub = *app.add_subcommand(command.name, command.help);
    if (command.interface == Command::none) continue;
    auto* const interface = sub.add_option("interface", options.interface, "One alone");
    if (command.interface == Command::mustName) interface->required();
  }
  app.get_subcommand("counters")
      ->add_flag("--since-clear", options.sinceClear, "Only what came since the last clearing");
}

void addFollowing(CLI::App& app, Options& options) {
  CLI::App& watch = *app.add_subcommand("watch", "Events of the ports as they come");
  watch.add_option("interface", options.interface, "One alone");
  CLI::App& capture = *app.add_subcommand("capture", "Write the MKPDUs of a port to a pcap file");
  capture.add_option("interface", options.interface, "The port")->required();
  capture.add_option("file", options.file, "The pcap file")->required();
  for (CLI::App* const sub : {&watch, &capture}) {
    sub->add_option("--seconds", options.seconds, "End after this time")
        ->check(CLI::PositiveNumber);
    sub->add_option("--count", options.count, "End after so many")->check(CLI::PositiveNumber);
  }
}

/// The status of the program.
int runAny(CLI::App const& app, Options const& options) {
  for (Command const& command : kCommands) {
    if (app.got_subcommand(command.name)) return run(command, options);
  }
  Linux::ControlFollow const follow{options.socket, options.interface, options.json,
                                    options.seconds, options.count};
  if (app.got_subcommand("watch")) return Linux::showEvents(follow, std::cout, std::cerr);
  return Linux::captureFrames(follow, options.file, std::cout, std::cerr);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Looks at a running macsecd and tells it what to do");
  Options options;
  app.add_option("--socket", options.socket, "Where it listens")->capture_default_str();
  app.add_flag("--json", options.json, "Show the answer as it came");
  app.require_subcommand(1);
  app.fallthrough();
  addCommands(app, options);
  addFollowing(app, options);
  try {
    app.parse(argc, argv);
  } catch (CLI::ParseError const& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  return runAny(app, options);
}
