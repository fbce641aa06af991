#include "host/config/ClearTypes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/config/ConfigFile.h"

namespace Macsecd {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

ConfigResult readWith(std::string const& clear) {
  return parseConfig("profiles: {p: {}}\ninterfaces:\n  e: {profile: p, clear: " + clear + "}\n",
                     "f");
}

std::string diagnosticIn(std::string const& clear) {
  auto const read = readWith(clear);
  return read.diagnostics.size() == 1 ? read.diagnostics[0].text() : textOf(read.diagnostics);
}

TEST(WhatPassesInClear, IsNothingByDefault) {
  auto const read = parseConfig("profiles: {p: {}}\ninterfaces: {e: {profile: p}}\n", "f");
  EXPECT_THAT(read.config.interfaces.at(0).clear, IsEmpty());
  EXPECT_THAT(readWith("[]").config.interfaces.at(0).clear, IsEmpty());
}

TEST(WhatPassesInClear, HasNamesOrEtherTypes) {
  auto const read = readWith("[ptp, lldp, lacp, 0x8892]");
  ASSERT_TRUE(read.good()) << textOf(read.diagnostics);
  EXPECT_THAT(read.config.interfaces.at(0).clear, ElementsAre(0x8809, 0x8892, 0x88cc, 0x88f7));
}

TEST(WhatPassesInClear, MayBeWrittenOneBelowTheOther) {
  auto const read = parseConfig(
      "profiles: {p: {}}\ninterfaces:\n  e:\n    profile: p\n    clear:\n      - lldp\n      - "
      "0x88F7\n",
      "f");
  ASSERT_TRUE(read.good()) << textOf(read.diagnostics);
  EXPECT_THAT(read.config.interfaces.at(0).clear, ElementsAre(0x88cc, 0x88f7));
}

TEST(WhatPassesInClear, IsAList) {
  EXPECT_EQ(diagnosticIn("lldp"), "f:3:26: 'clear' has to be a list; write [lldp, lacp]");
}

TEST(WhatPassesInClear, HasNoOtherNames) {
  EXPECT_EQ(diagnosticIn("[lldpp]"),
            "f:3:27: 'clear' knows no protocol 'lldpp'; write 'lldp', or an EtherType as 0x88cc");
  EXPECT_THAT(diagnosticIn("[35020]"), ::testing::HasSubstr("knows no protocol '35020'"));
  EXPECT_THAT(diagnosticIn("[0x]"), ::testing::HasSubstr("knows no protocol '0x'"));
  EXPECT_THAT(diagnosticIn("[0x88cg]"), ::testing::HasSubstr("knows no protocol '0x88cg'"));
  EXPECT_THAT(diagnosticIn("[[lldp]]"), ::testing::HasSubstr("has to be a single value"));
}

TEST(WhatPassesInClear, IsNoLengthAndNoLongerNumber) {
  for (char const* word : {"0x5ff", "0x0", "0x10000", "0x188cc", "0x88cc88cc88cc"}) {
    EXPECT_THAT(diagnosticIn("[" + std::string(word) + "]"),
                ::testing::HasSubstr("is no EtherType; write one from 0x0600 to 0xffff"))
        << word;
  }
}

TEST(WhatPassesInClear, IsntWhatPassesInAnyCaseOrNever) {
  EXPECT_EQ(diagnosticIn("[0x88e5]"),
            "f:3:27: '0x88e5' passes in any case: it is that of MACsec; leave it out");
  EXPECT_EQ(diagnosticIn("[0x888E]"),
            "f:3:27: '0x888E' passes in any case: it is that of key agreement; leave it out");
  EXPECT_EQ(
      diagnosticIn("[0x8100]"),
      "f:3:27: '0x8100' is the tag of a VLAN, whose frames never pass in clear; leave it out");
}

TEST(WhatPassesInClear, StandsOnceByNameOrNumber) {
  EXPECT_EQ(diagnosticIn("[lldp, lacp, 0x88cc]"),
            "f:3:39: '0x88cc' (0x88cc) stands twice in 'clear'; remove it here");
  EXPECT_EQ(diagnosticIn("[lldp, lldp]"),
            "f:3:33: 'lldp' (0x88cc) stands twice in 'clear'; remove it here");
}

TEST(WhatPassesInClear, IsNoMoreThanTheFilterHasRoomFor) {
  std::string list = "[0x9000";
  for (int i = 1; i < 16; ++i) list += ", 0x90" + std::to_string(10 + i);
  EXPECT_TRUE(readWith(list + "]").good());
  EXPECT_THAT(diagnosticIn(list + ", lldp]"), ::testing::HasSubstr("more than 16 entries"));
}

}  // namespace
}  // namespace Macsecd
