#include "lab/world/FrameSummary.h"

#include <gmock/gmock.h>

#include "tests/lab/Played.h"

namespace Lab {
namespace {

// The sets of the first frame that knows a peer.
std::vector<std::string> setsWith(std::string const& setting) {
  Played played(pair(setting, "5"));
  return played.all<FramePassed>("B").back().sets;
}

TEST(FrameSummary, NamesTheIcvIndicatorWhateverLengthItGives) {
  using testing::ElementsAre;
  EXPECT_THAT(setsWith("icv indicator of 16"), ElementsAre("live-peers", "icv-indicator"));
  EXPECT_THAT(setsWith("icv indicator of 4"), ElementsAre("live-peers", "icv-indicator"));
  EXPECT_THAT(setsWith("icv indicator left out"), ElementsAre("live-peers"));
}

}  // namespace
}  // namespace Lab
