#include <gtest/gtest.h>

#include <regex>

#include "host/config/ConfigFile.h"
#include "host/control/Control.h"
#include "host/control/ControlJson.h"
#include "host/port/EventJson.h"
#include "host/text/ControlProtocol.h"
#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

/// All names of members in a JSON, at any depth.
void collectNames(Json const& json, std::vector<std::string>& names) {
  for (auto const& item : json.items()) {
    if (json.is_object()) names.push_back(item.key());
    if (item.value().is_structured()) collectNames(item.value(), names);
  }
}

TEST(Vocabulary, WritesSuitesAsTheConfigurationDoes) {
  std::vector<std::string> names;
  for (Suite const suite : {Suite::gcmAesXpn128, Suite::gcmAesXpn256}) {
    names.emplace_back(suiteName(static_cast<Macsec::CipherSuite>(suite)));
  }
  EXPECT_EQ(names, suiteWords());
}

TEST(Vocabulary, NamesEachMemberOfAnAnswerInKebabCase) {
  Switch b{2}, a{1};
  for (Switch* one : {&a, &b}) one->bringUp();
  talk(a, b, 20);
  Control control(a.host, [] { return std::vector<Diagnostic>{{"f", 1, 2, "what", "remedy"}}; });
  std::vector<std::string> names;
  for (char const* const command : {"status", "explain", "counters", "reload"}) {
    auto const request = requestOf(command);
    Json const answer = Json::parse(control.answer(request.dump(), true));
    ASSERT_TRUE(answer["ok"]) << answer;
    collectNames(answer, names);
  }
  for (auto const& [kind, word] : Vesk::EnumNames<EventKind>::names) {
    Vesk::WorldScope const scope(a.world);
    collectNames(eventJson({}, PortEvent{kind, "Ethernet1"}), names);
    names.emplace_back(word);
  }
  EXPECT_GT(names.size(), 60u);
  std::regex const kebab("[a-z0-9]+(-[a-z0-9]+)*");
  for (std::string const& name : names) EXPECT_TRUE(std::regex_match(name, kebab)) << name;
}

}  // namespace
}  // namespace Macsecd
