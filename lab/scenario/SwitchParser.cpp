#include "lab/scenario/SwitchParser.h"

#include <fmt/format.h>

#include <filesystem>
#include <set>

#include "lab/scenario/Words.h"

namespace Lab {

namespace {

class SwitchParser {
 public:
  SwitchParser(std::string const& file, SwitchSpec& spec,
               std::vector<Macsecd::Diagnostic>& diagnostics)
      : file_(file), spec_(spec), diagnostics_(diagnostics) {}

  void parse(std::vector<Line> const& lines) {
    for (size_t at = 0; at < lines.size();) {
      size_t end = at + 1;
      while (end < lines.size() && lines[end].indentation > lines[at].indentation) ++end;
      std::vector<Line> below(lines.begin() + static_cast<long>(at) + 1,
                              lines.begin() + static_cast<long>(end));
      parseEntry(lines[at], below);
      at = end;
    }
    if (!seen_.count("mac")) missing("mac 02:00:00:00:00:01");
    if (!seen_.count("config")) missing("config FILE' or 'config:");
  }

 private:
  void parseEntry(Line const& line, std::vector<Line> const& below) {
    try {
      Words words(line.text);
      if (words.empty()) return;
      parseWords(words, below);
    } catch (LineError const& error) {
      diagnostics_.push_back({file_, line.number, error.column, error.what, error.remedy});
    }
  }

  void parseWords(Words& words, std::vector<Line> const& below) {
    bool block = words.take("config:");
    if (block) {
      once(words, "config");
      parseBlock(below);
    } else if (words.take("mac")) {
      once(words, "mac");
      spec_.mac = words.address();
    } else if (words.take("start at")) {
      once(words, "start at");
      spec_.start = words.time();
    } else if (words.take("first delays")) {
      once(words, "first delays");
      do {
        spec_.firstDelays.push_back(words.number("a delay in whole seconds", 0, UINT32_MAX));
      } while (!words.atEnd());
    } else if (words.take("FIPS provider")) {
      once(words, "FIPS provider");
      words.need("is missing");
      spec_.hasFipsProvider = false;
    } else if (words.take("config")) {
      once(words, "config");
      parseFile(words);
    } else {
      words.unknown("entry of a switch",
                    {"mac", "start at", "first delays", "FIPS provider", "config", "config:"});
    }
    words.needEnd();
    if (!block && !below.empty()) {
      throw LineError{words.column(), "the lines below are indented too far",
                      "indent the entries of a switch alike"};
    }
  }

  void once(Words const& words, std::string const& entry) {
    if (seen_.insert(entry).second) return;
    words.fail(fmt::format("'{}' stands twice in switch {}", entry, spec_.name), "remove one");
  }

  /// The lines of the block go to YAML as they stand, blank ones in place of those between.
  void parseBlock(std::vector<Line> const& below) {
    if (below.empty())
      throw LineError{1, "the configuration is empty", "indent it below 'config:'"};
    std::string yaml;
    int number = below.front().number;
    for (auto const& line : below) {
      yaml.append(static_cast<size_t>(line.number - number), '\n');
      yaml.append(line.text);
      number = line.number;
    }
    take(Macsecd::parseConfig(yaml, file_, below.front().number - 1));
  }

  void parseFile(Words& words) {
    auto name = words.any("the name of a file");
    auto const path = std::filesystem::path(file_).parent_path() / name;
    take(Macsecd::readConfigFile(path.string(), Macsecd::Keys::example));
  }

  void take(Macsecd::ConfigResult result) {
    spec_.config = std::move(result.config);
    diagnostics_.insert(diagnostics_.end(), result.diagnostics.begin(), result.diagnostics.end());
  }

  void missing(std::string const& entry) {
    diagnostics_.push_back({file_, spec_.line, 1,
                            fmt::format("switch {} lacks an entry", spec_.name),
                            fmt::format("add '{}'", entry)});
  }

  std::string const& file_;
  SwitchSpec& spec_;
  std::vector<Macsecd::Diagnostic>& diagnostics_;
  std::set<std::string> seen_;
};

}  // namespace

void parseSwitch(std::vector<Line> const& lines, std::string const& file, SwitchSpec& spec,
                 std::vector<Macsecd::Diagnostic>& diagnostics) {
  SwitchParser(file, spec, diagnostics).parse(lines);
}

}  // namespace Lab
