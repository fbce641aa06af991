#include <CLI/CLI.hpp>
#include <iostream>
#include <nlohmann/json.hpp>

#include "host/Control.h"
#include "host/ControlText.h"
#include "linux/ControlClient.h"

namespace {

using Macsecd::ControlView;

struct Options {
  std::string socket = "/run/macsecd/control";
  std::string interface;
  bool json = false;
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
    {"reload", "reload", ControlView::reload, Command::none, "Read the configuration again"},
};

/// 0 when done, 1 when the switch refused, 3 when it can't be asked.
int run(Command const& command, Options const& options) {
  nlohmann::ordered_json request = {{"version", Macsecd::Control::kVersion},
                                    {"command", command.request}};
  if (!options.interface.empty()) request["interface"] = options.interface;
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

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Looks at a running macsecd and tells it what to do");
  Options options;
  app.add_option("--socket", options.socket, "Where it listens")->capture_default_str();
  app.add_flag("--json", options.json, "Show the answer as it came");
  app.require_subcommand(1);
  app.fallthrough();
  for (Command const& command : kCommands) {
    CLI::App& sub = *app.add_subcommand(command.name, command.help);
    if (command.interface == Command::none) continue;
    auto* const interface = sub.add_option("interface", options.interface, "One alone");
    if (command.interface == Command::mustName) interface->required();
  }
  try {
    app.parse(argc, argv);
  } catch (CLI::ParseError const& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  for (Command const& command : kCommands) {
    if (app.got_subcommand(command.name)) return run(command, options);
  }
  return 2;
}
