#include "host/config/YamlText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/config/ConfigFile.h"

namespace Macsecd {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

std::vector<std::string> complaints(std::string const& text) {
  std::vector<std::string> lines;
  for (auto const& diagnostic : parseConfig(text, "f").diagnostics)
    lines.push_back(diagnostic.text());
  return lines;
}

TEST(YamlText, WhatFollowsTheDocumentIsAMistakeAndNoEndlessRowOfDocuments) {
  for (char const* const behind : {",", "]", "}", ", x", "}}"}) {
    EXPECT_THAT(complaints(std::string("{profiles: {}}") + behind + "\n"),
                ElementsAre(HasSubstr("f:1:15: this isn't YAML: ")))
        << behind;
  }
  EXPECT_THAT(complaints("{profiles: {}},"),
              ElementsAre("f:1:15: this isn't YAML: more text behind the end of the document; "
                          "remove it, or correct brackets and indentation before it"));
  EXPECT_THAT(complaints(","), SizeIs(1));
  EXPECT_THAT(complaints("]\n"), SizeIs(1));
}

TEST(YamlText, ThereIsExactlyOneDocument) {
  EXPECT_THAT(complaints("---\nfips: true\n...\n"), SizeIs(0));
  EXPECT_THAT(complaints("fips: true\n---\nfips: true\n"),
              ElementsAre("f:2:1: a second document begins here; a configuration is one document: "
                          "remove the line '---' before it"));
  EXPECT_THAT(complaints("fips: true\n...\n---\n"), SizeIs(1));
}

TEST(YamlText, NestingHasABound) {
  for (auto const& [open, close] : {std::pair{"[", "]"}, {"{a: ", "}"}, {"? ", ""}, {"- ", ""}}) {
    for (size_t const depth : {33u, 1000u, 20000u}) {
      std::string text, end;
      for (size_t at = 0; at < depth; ++at) {
        text += open;
        end += close;
      }
      EXPECT_THAT(complaints(text + "x" + end), ElementsAre(HasSubstr("nested more than 32 deep")))
          << open << depth;
    }
  }
}

TEST(YamlText, AControlCharacterIsAMistakeAtItsPlace) {
  EXPECT_THAT(complaints(std::string("fips: true\n# \0\n", 14)),
              ElementsAre("f:2:3: a control character stands here; remove it; a configuration is "
                          "plain text in UTF-8"));
  EXPECT_THAT(complaints("fips: \x05\x01\x01\x01\x01\x01\x01\x01\x01\x01\x01\x01\n"), SizeIs(1));
  EXPECT_THAT(complaints("fips: true # \xc3\xa9\r\n"), SizeIs(0));
}

TEST(YamlText, AFileOfMistakesIsToldUpToAHundred) {
  std::string text;
  for (int at = 0; at < 1000; ++at) text += "word" + std::to_string(at) + ": 1\n";
  auto const all = complaints(text);
  ASSERT_THAT(all, SizeIs(100));
  EXPECT_THAT(all.back(), HasSubstr("f:100:1: there are too many mistakes; correct those before"));
}

TEST(YamlText, ACyclicAliasIsReadOnce) {
  EXPECT_THAT(complaints("profiles: &a {x: *a}\n"), SizeIs(::testing::Ge(1u)));
}

}  // namespace
}  // namespace Macsecd
