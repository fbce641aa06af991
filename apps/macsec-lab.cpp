#include <CLI/CLI.hpp>
#include <iostream>

#include "lab/Decode.h"
#include "lab/Play.h"

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
  addPlayOptions(app, playOptions);
  CLI::App& play = *app.add_subcommand("play", "Play scenarios; the word may be left out");
  addPlayOptions(play, playOptions);
  CLI::App& decoder = *app.add_subcommand("decode", "Print the MKPDUs of a capture");
  addDecodeOptions(decoder, decodeOptions);
  try {
    app.parse(argc, argv);
    if (!decoder && playOptions.files.empty()) throw CLI::RequiredError("FILE.scenario");
  } catch (CLI::ParseError const& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  return decoder ? decode(decodeOptions) : Lab::play(playOptions, std::cout, std::cerr);
}
