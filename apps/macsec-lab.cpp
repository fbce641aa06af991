#include <CLI/CLI.hpp>
#include <iostream>

#include "lab/Play.h"

namespace {

void addPlayOptions(CLI::App& app, Lab::PlayOptions& options) {
  app.add_flag("--show", options.show,
               "Show the timeline, the status table, and where the captures lie");
  app.add_option("--seed", options.seed, "Vary what the scenarios leave open");
  app.add_option("--events", options.events, "Write everything observable as JSON lines")
      ->type_name("FILE");
  app.add_option("--pcap-dir", options.pcapDir, "Write a capture of each wire")->type_name("DIR");
  app.add_option("files", options.files, "Scenarios")->type_name("FILE.scenario");
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Plays whole switches that agree on keys, in virtual time");
  Lab::PlayOptions options;
  addPlayOptions(app, options);
  CLI::App& play = *app.add_subcommand("play", "Play scenarios; the word may be left out");
  addPlayOptions(play, options);
  try {
    app.parse(argc, argv);
    if (options.files.empty()) throw CLI::RequiredError("FILE.scenario");
  } catch (CLI::ParseError const& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  return Lab::play(options, std::cout, std::cerr);
}
