#include "runtime/Trace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "tests/support/RecordingWorld.h"

Vesk::TraceHandle const traceHandle("Test");

namespace Macsec {

// A class of the system's namespace, as the signature names it.
class TracedSm {
 public:
  void handleKey(int number) { VESK_TRACE(3, ": Processing new key ", number); }
  uint8_t handleNothing() const {
    VESK_TRACE(8, "");
    return 0;
  }
  void handleText(Vesk::String8 const& text) { VESK_TRACE(1, ": ", text, "."); }
};

}  // namespace Macsec

namespace Vesk::Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TraceTest : public testing::Test {
 protected:
  ~TraceTest() override {
    TraceHandle::streamLevelsIs("", 0);
    Glimmer::TraceFile::currentIs(nullptr);
  }
  RecordingWorld recording;
  Macsec::TracedSm sm;
  std::array<uint8_t, 40960> memory{};
  Glimmer::TraceFile file{memory};
};

TEST_F(TraceTest, TextStartsWithTheFullSignatureOfTheFunction) {
  TraceHandle::streamLevelsIs("Test", kAllTraceLevels);
  sm.handleKey(5);
  sm.handleNothing();
  ASSERT_EQ(recording.traced.size(), 2u);
  auto const& first = recording.traced[0];
  EXPECT_EQ(first.text, "void Macsec::TracedSm::handleKey(int): Processing new key 5");
  EXPECT_EQ(first.function, "void Macsec::TracedSm::handleKey(int)");
  EXPECT_EQ(first.handle, "Test");
  EXPECT_EQ(first.level, 3);
  EXPECT_NE(first.file.find("TraceTest.cpp"), std::string::npos);
  EXPECT_GT(first.line, 0);
  EXPECT_EQ(recording.traced[1].text, "uint8_t Macsec::TracedSm::handleNothing() const");
}

TEST_F(TraceTest, StreamAndRingGetTheSameText) {
  TraceHandle::streamLevelsIs("Test", kAllTraceLevels);
  Glimmer::TraceFile::currentIs(&file);
  sm.handleText("100 %s");
  sm.handleText("second");
  ASSERT_EQ(recording.traced.size(), 2u);
  EXPECT_THAT(file.ring(1).messages(),
              ElementsAre(recording.traced[0].text, recording.traced[1].text));
  EXPECT_THAT(file.ring(3).messages(), IsEmpty());
}

TEST_F(TraceTest, RingTakesAllLevelsWithoutTheStream) {
  Glimmer::TraceFile::currentIs(&file);
  sm.handleKey(1);
  EXPECT_THAT(recording.traced, IsEmpty());
  EXPECT_THAT(file.ring(3).messages(),
              ElementsAre("void Macsec::TracedSm::handleKey(int): Processing new key 1"));
}

TEST_F(TraceTest, WithoutTraceFileNothingHappens) {
  size_t const registered = Glimmer::MsgDesc::entries().size();
  VESK_TRACE(3, ": not yet used");
  EXPECT_EQ(Glimmer::MsgDesc::entries().size(), registered);
  EXPECT_FALSE(traceHandle.isEnabled(3));
}

TEST_F(TraceTest, CallSiteRegistersOnceWithSourceLineAndFormat) {
  Glimmer::TraceFile::currentIs(&file);
  size_t const registered = Glimmer::MsgDesc::entries().size();
  for (int i = 0; i < 3; ++i) VESK_TRACE(3, ": turn ", i, " of ", 3);
  ASSERT_EQ(Glimmer::MsgDesc::entries().size(), registered + 1);
  auto const& entry = Glimmer::MsgDesc::entries().back();
  EXPECT_NE(std::strstr(entry.sourceName, "TraceTest.cpp"), nullptr);
  EXPECT_GT(entry.line, 0);
  EXPECT_EQ(entry.format, std::string(__PRETTY_FUNCTION__) + ": turn %s of %s");
  EXPECT_EQ(file.ring(3).messages().size(), 3u);
}

TEST_F(TraceTest, BufferIsAnArgumentAndNoPieceOfTheFormat) {
  Glimmer::TraceFile::currentIs(&file);
  char buffer[8];
  for (char const* text : {"one", "two"}) {
    std::strcpy(buffer, text);
    VESK_TRACE(3, ": ", buffer);
  }
  std::string const front(__PRETTY_FUNCTION__);
  EXPECT_THAT(file.ring(3).messages(), ElementsAre(front + ": one", front + ": two"));
}

TEST_F(TraceTest, NumbersOfOneByteAreDecimal) {
  TraceHandle::streamLevelsIs("Test", kAllTraceLevels);
  Glimmer::TraceFile::currentIs(&file);
  VESK_TRACE(2, ": ", uint8_t{65});
  EXPECT_EQ(recording.traced[0].text, std::string(__PRETTY_FUNCTION__) + ": 65");
  EXPECT_THAT(file.ring(2).messages(), ElementsAre(recording.traced[0].text));
}

TEST_F(TraceTest, DisabledLevelDoesNotEvaluateItsArguments) {
  TraceHandle::streamLevelsIs("Test", 1u << 3);
  int evaluated = 0;
  VESK_TRACE(8, ": ", ++evaluated);
  EXPECT_EQ(evaluated, 0);
  VESK_TRACE(3, ": ", ++evaluated);
  EXPECT_EQ(evaluated, 1);
}

TEST_F(TraceTest, LevelsAreSetByNameAndForAll) {
  static TraceHandle const twin("Test");
  static TraceHandle const other("Other");
  TraceHandle::streamLevelsIs("Test", 1u << 3);
  EXPECT_TRUE(traceHandle.isEnabled(3));
  EXPECT_FALSE(traceHandle.isEnabled(8));
  EXPECT_TRUE(twin.isEnabled(3));
  EXPECT_FALSE(other.isEnabled(3));
  TraceHandle::streamLevelsIs("", 1u << 8);
  EXPECT_TRUE(other.goesToStream(8));
  EXPECT_FALSE(traceHandle.goesToStream(3));
}

TEST_F(TraceTest, HandleMadeLaterTakesPartInTheTraceFile) {
  Glimmer::TraceFile::currentIs(&file);
  static TraceHandle const late("Late");
  EXPECT_TRUE(late.goesToRing(8));
  Glimmer::TraceFile::currentIs(nullptr);
  EXPECT_FALSE(late.isEnabled(8));
}

TEST_F(TraceTest, HelperIsThereOnlyForAnEnabledLevel) {
  EXPECT_FALSE(TraceHelper::createIfEnabled(traceHandle, 3));
  TraceHandle::streamLevelsIs("Test", 1u << 3);
  auto helper = TraceHelper::createIfEnabled(traceHandle, 3);
  ASSERT_TRUE(helper);
  helper.stream() << "by hand";
  helper.trace("file", 7, "function");
  EXPECT_EQ(recording.traced[0].text, "by hand");
  EXPECT_EQ(recording.traced[0].line, 7);
}

}  // namespace
}  // namespace Vesk::Test
