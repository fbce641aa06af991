#include "linux/serve/LineBuffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace Linux {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

/// A buffer in memory that the test looks at, also after its end.
class LineBuffers : public ::testing::Test {
 protected:
  LineBuffers() : buffer_(std::construct_at(reinterpret_cast<LineBuffer*>(memory_))) {}
  ~LineBuffers() override {
    if (buffer_) std::destroy_at(buffer_);
  }
  void add(std::string const& text) {
    ASSERT_LE(text.size(), buffer_->room().size());
    std::copy(text.begin(), text.end(), buffer_->room().begin());
    buffer_->filled(text.size());
  }
  std::vector<std::string> lines(size_t most = 99) {
    std::vector<std::string> lines;
    buffer_->takeLines([&](std::span<uint8_t> line) {
      lines.emplace_back(line.begin(), line.end());
      return lines.size() < most;
    });
    return lines;
  }
  void end() { std::destroy_at(std::exchange(buffer_, nullptr)); }
  std::string memory() const { return {reinterpret_cast<char const*>(memory_), sizeof memory_}; }

  alignas(LineBuffer) std::byte memory_[sizeof(LineBuffer)] = {};
  LineBuffer* buffer_;
};

TEST_F(LineBuffers, LinesComeOutInOrderAndTheRestStays) {
  add("one\n\ntwo\nthr");
  EXPECT_THAT(lines(), ElementsAre("one", "", "two"));
  EXPECT_TRUE(buffer_->hasRest());
  add("ee\n");
  EXPECT_THAT(lines(), ElementsAre("three"));
  EXPECT_FALSE(buffer_->hasRest());
}

TEST_F(LineBuffers, WhatHasBeenTakenIsWipedAtOnceAndTheRestAtTheEnd) {
  add("the secret\nanother secr");
  lines();
  EXPECT_THAT(memory(), Not(HasSubstr("the sec")));
  EXPECT_THAT(memory().substr(memory().find("another secr") + 12), Not(HasSubstr("secr")));
  end();
  EXPECT_THAT(memory(), Not(HasSubstr("secr")));
}

TEST_F(LineBuffers, LinesBehindARefusalStay) {
  add("one\ntwo\nthree\n");
  EXPECT_THAT(lines(2), ElementsAre("one", "two"));
  EXPECT_THAT(lines(), ElementsAre("three"));
}

TEST_F(LineBuffers, ALineOfTheLimitFitsWithItsEndAndNoLongerOne) {
  add(std::string(LineBuffer::kMaxLine, 'x'));
  EXPECT_THAT(lines(), ElementsAre());
  EXPECT_FALSE(buffer_->isFull());
  add("\n");
  EXPECT_EQ(lines().at(0).size(), LineBuffer::kMaxLine);
  add(std::string(LineBuffer::kMaxLine + 1, 'x'));
  EXPECT_THAT(lines(), ElementsAre());
  EXPECT_TRUE(buffer_->isFull());
  EXPECT_TRUE(buffer_->room().empty());
}

}  // namespace
}  // namespace Linux
