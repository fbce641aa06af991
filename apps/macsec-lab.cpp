#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <iostream>

#include "lab/DoctorComparison.h"
#include "lab/Play.h"
#include "lab/exhaust/Exhaust.h"
#include "lab/judge/invariants/Invariants.h"
#include "lab/random/RandomScenario.h"
#include "lab/report/Decode.h"
#include "lab/swarm/Swarm.h"

namespace {

struct DecodeOptions {
  std::string file;
  std::vector<std::string> keys;
  bool showKeys = false;
};

void addPlayOptions(CLI::App& app, Lab::PlayOptions& options) {
  app.add_flag("--show", options.show,
               "Show the timeline, the status table, and where the captures lie");
  app.add_option("--seed", options.seed, "Vary what the scenarios leave open");
  app.add_option("--events", options.events, "Write everything observable as JSON lines")
      ->type_name("FILE");
  app.add_option("--pcap-dir", options.pcapDir, "Write a capture of each wire")->type_name("DIR");
  app.add_option("--state-dir", options.stateDir, "Write what each switch has stored at the end")
      ->type_name("DIR");
  app.add_option("files", options.files, "Scenarios")->type_name("FILE.scenario");
}

void addDecodeOptions(CLI::App& app, DecodeOptions& options) {
  app.add_option("file", options.file, "A capture")->type_name("FILE.pcap")->required();
  app.add_option("--key", options.keys,
                 "A key to check and open frames with; may be given several times")
      ->type_name("CKN:CAK")
      ->take_all()
      ->expected(1);
  app.add_flag("--show-keys", options.showKeys, "Show the keys that frames carry");
}

void addComparisonOptions(CLI::App& app, Lab::ComparisonOptions& options) {
  app.add_option("--scenarios", options.scenarios, "How many are played")->capture_default_str();
  app.add_option("--seed", options.seed, "Seed of the first; each has the next one")
      ->capture_default_str();
  app.add_flag("--json", options.json, "Write one JSON object");
}

// What says how a swarm is drawn and when it ends.
struct SwarmWishes {
  Lab::FaultProfile profile = Lab::FaultProfile::all;
  double minutes = 0;
};

void addSwarmOptions(CLI::App& app, Lab::SwarmOptions& options, SwarmWishes& wishes) {
  std::map<std::string, Lab::FaultProfile> profiles;
  for (auto const profile : Lab::kFaultProfiles) profiles[Lab::wordOf(profile)] = profile;
  app.add_option("--runs", options.runs, "How many are played")->capture_default_str();
  app.add_option("--minutes", wishes.minutes, "End after so many minutes");
  app.add_option("--from", options.from, "Number of the first run")->capture_default_str();
  app.add_option("--jobs", options.jobs, "How many processes play")
      ->check(CLI::Range(1, 1024))
      ->capture_default_str();
  app.add_option("--profile", wishes.profile,
                 "What happens: all, wires, interfaces, hardware, processes or configurations")
      ->type_name("NAME")
      ->transform(CLI::CheckedTransformer(profiles));
  app.add_option("--invariant", options.invariants,
                 "Hold runs to this one; may be given several times; to all without it")
      ->type_name("NAME")
      ->check(CLI::IsMember(Lab::invariantNames()));
  app.add_flag("--until-failure", options.untilFailure,
               "End with the first failure, and don't reduce it");
  app.add_option("--keep", options.keep, "Where the scenarios of runs that failed are written")
      ->type_name("DIR")
      ->capture_default_str();
}

void addExhaustOptions(CLI::App& app, Lab::ExhaustOptions& options) {
  std::map<std::string, Lab::SmallFault> kinds;
  for (Lab::SmallFault const fault : Lab::kSmallFaults) kinds[Lab::wordOf(fault)] = fault;
  app.add_option("file", options.file, "A scenario")->type_name("FILE.scenario")->required();
  app.add_option("--faults", options.faults,
                 "Kinds of faults, with commas: loss, duplicate, delay, replay, late, death; all "
                 "without it")
      ->delimiter(',')
      ->transform(CLI::CheckedTransformer(kinds));
  app.add_flag("--pairs", options.pairs, "Play each pair of faults, too");
  app.add_option("--jobs", options.jobs, "How many processes play")
      ->check(CLI::Range(1, 1024))
      ->capture_default_str();
  app.add_option("--keep", options.keep, "Where the scenarios of runs that failed are written")
      ->type_name("DIR")
      ->capture_default_str();
}

int swarm(Lab::SwarmOptions options, SwarmWishes const& wishes) {
  using Clock = std::chrono::steady_clock;
  options.draw = [profile = wishes.profile](uint32_t number) {
    return Lab::swarmScenario(number, profile);
  };
  if (wishes.minutes > 0) {
    auto const end = Clock::now() + std::chrono::duration<double, std::ratio<60>>(wishes.minutes);
    options.isTimeUp = [end] { return Clock::now() >= end; };
  }
  options.showsProgress = ::isatty(STDOUT_FILENO) != 0;
  return Lab::swarm(options, std::cout);
}

int decode(DecodeOptions const& options) {
  std::vector<Codec::KeyPair> keys;
  for (std::string const& text : options.keys) {
    auto key = Lab::keyPairOf(text, std::cerr);
    if (!key) return 2;
    keys.push_back(std::move(*key));
  }
  return Lab::decode(options.file, keys, options.showKeys, std::cout, std::cerr);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Plays whole switches that agree on keys, in virtual time");
  Lab::PlayOptions playOptions;
  DecodeOptions decodeOptions;
  Lab::ComparisonOptions comparisonOptions;
  uint32_t randomSeed = 1;
  addPlayOptions(app, playOptions);
  CLI::App& play = *app.add_subcommand("play", "Play scenarios; the word may be left out");
  addPlayOptions(play, playOptions);
  CLI::App& decoder = *app.add_subcommand("decode", "Print the MKPDUs of a capture");
  addDecodeOptions(decoder, decodeOptions);
  CLI::App& comparison = *app.add_subcommand(
      "compare-doctor", "Play random scenarios with the port doctor and without it");
  addComparisonOptions(comparison, comparisonOptions);
  CLI::App& random = *app.add_subcommand("random", "Print a random scenario");
  random.add_option("--seed", randomSeed, "Decides all of it")->capture_default_str();
  CLI::App& swarming =
      *app.add_subcommand("swarm", "Play random scenarios, and hold them to all invariants");
  Lab::SwarmOptions swarmOptions;
  SwarmWishes swarmWishes;
  addSwarmOptions(swarming, swarmOptions, swarmWishes);
  CLI::App& exhausting =
      *app.add_subcommand("exhaust", "Play a scenario with every small fault that it offers");
  Lab::ExhaustOptions exhaustOptions;
  addExhaustOptions(exhausting, exhaustOptions);
  try {
    app.parse(argc, argv);
    bool const plays = !decoder && !comparison && !random && !swarming && !exhausting;
    if (plays && playOptions.files.empty()) throw CLI::RequiredError("FILE.scenario");
  } catch (CLI::ParseError const& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  if (decoder) return decode(decodeOptions);
  if (comparison) return Lab::compareDoctor(comparisonOptions, std::cout);
  if (swarming) return swarm(swarmOptions, swarmWishes);
  if (exhausting) return Lab::exhaust(exhaustOptions, std::cout, std::cerr);
  if (random) {
    std::cout << Lab::randomScenario(randomSeed);
    return 0;
  }
  return Lab::play(playOptions, std::cout, std::cerr);
}
