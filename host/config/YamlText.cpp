#include "host/config/YamlText.h"

#include <fmt/format.h>
#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/yaml.h>

#include <sstream>

namespace Macsecd {

namespace {

/// Looks at the shape of a text and keeps nothing of it. The library's own way to read all
/// documents of a text never ends where one is followed by something that can't begin another.
class ShapeCheck final : public YAML::EventHandler {
 public:
  explicit ShapeCheck(std::string const& text) : text_(text) {}

  void OnDocumentStart(YAML::Mark const& mark) override {
    if (++documents_ == 1) return;
    if (text_.compare(static_cast<size_t>(mark.pos), 3, "---") == 0) {
      throw YamlFault{mark,
                      {"a second document begins here",
                       "a configuration is one document: remove the line '---' before it"}};
    }
    throw YamlFault{mark,
                    {"this isn't YAML: more text behind the end of the document",
                     "remove it, or correct brackets and indentation before it"}};
  }
  void OnMapStart(YAML::Mark const& mark, std::string const&, YAML::anchor_t,
                  YAML::EmitterStyle::value) override {
    deeper(mark);
  }
  void OnSequenceStart(YAML::Mark const& mark, std::string const&, YAML::anchor_t,
                       YAML::EmitterStyle::value) override {
    deeper(mark);
  }
  void OnMapEnd() override { --depth_; }
  void OnSequenceEnd() override { --depth_; }
  void OnDocumentEnd() override {}
  void OnNull(YAML::Mark const&, YAML::anchor_t) override {}
  void OnAlias(YAML::Mark const&, YAML::anchor_t) override {}
  void OnScalar(YAML::Mark const&, std::string const&, YAML::anchor_t,
                std::string const&) override {}

 private:
  void deeper(YAML::Mark const& mark) {
    if (++depth_ <= maxYamlDepth) return;
    throw YamlFault{mark,
                    {fmt::format("entries are nested more than {} deep here", maxYamlDepth),
                     "a configuration needs four levels: correct brackets and indentation"}};
  }

  std::string const& text_;
  int documents_ = 0;
  int depth_ = 0;
};

/// The parser's own words, without what it may quote from the file.
std::string describe(YAML::Exception const& error) {
  return error.msg.substr(0, error.msg.find(':'));
}

void checkShape(std::string const& text) {
  std::istringstream in(text);
  YAML::Parser parser(in);
  ShapeCheck check(text);
  while (parser.HandleNextDocument(check)) {
  }
}

}  // namespace

YAML::Node readYaml(std::string const& text) {
  try {
    checkShape(text);
    return YAML::Load(text);
  } catch (YAML::Exception const& error) {
    throw YamlFault{error.mark,
                    {"this isn't YAML: " + describe(error),
                     "check indentation, colons and quotes here and just before"}};
  }
}

}  // namespace Macsecd
