#include "lab/swarm/Reducer.h"

#include <gmock/gmock.h>

namespace Lab {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string const kNet =
    "title two links\n"
    "seed 7\n"
    "run until 200\n"
    "switch A\n"
    "  config:\n"
    "    profiles:\n"
    "      p1: {key: here}\n"
    "    interfaces:\n"
    "      e1: {profile: p1}\n"
    "      e2: {profile: p1}\n"
    "wire A e1 to B e1\n"
    "wire A e2 to B e2\n"
    "at 3.4 cut from A e1\n"
    "at 5.6 restart A\n"
    "at 7.8 cut from A e2\n";

bool has(std::string const& text, std::string const& part) {
  return text.find(part) != std::string::npos;
}

TEST(TheReducer, LeavesOutEveryLineThatDoesNotMatter) {
  Reducer reducer([](std::string const& text) { return has(text, "restart A"); });
  EXPECT_EQ(reducer.reduced(kNet), "at 6 restart A\n");
}

TEST(TheReducer, KeepsLinesThatMatterTogether) {
  Reducer reducer([](std::string const& text) {
    return has(text, "seed 7") && has(text, "cut from A e1") && has(text, "cut from A e2");
  });
  EXPECT_EQ(reducer.reduced(kNet), "seed 7\nat 3 cut from A e1\nat 8 cut from A e2\n");
}

TEST(TheReducer, TakesAWireOutWithAllThatIsSaidOfItsInterfaces) {
  // No line of the second link may stand alone.
  Reducer reducer([](std::string const& text) {
    bool const isWhole = has(text, "e2: {") == has(text, "wire A e2") &&
                         has(text, "wire A e2") == has(text, "cut from A e2");
    return isWhole && has(text, "wire A e1");
  });
  EXPECT_EQ(reducer.reduced(kNet), "wire A e1 to B e1\n");
}

TEST(TheReducer, KeepsATimeThatMattersAsItIs) {
  Reducer reducer([](std::string const& text) { return has(text, "at 5.6 restart A"); });
  EXPECT_EQ(reducer.reduced(kNet), "at 5.6 restart A\n");
}

TEST(TheReducer, EndsTheRunAsSoonAsItFails) {
  Reducer reducer([](std::string const& text) {
    auto const end = text.find("run until ");
    return end != std::string::npos && std::stod(text.substr(end + 10)) >= 42;
  });
  EXPECT_EQ(reducer.reduced(kNet), "run until 42\n");
}

TEST(TheReducer, GivesBackWhatCannotGetSmaller) {
  Reducer reducer([](std::string const& text) { return text == kNet; });
  EXPECT_EQ(reducer.reduced(kNet), kNet);
  EXPECT_GT(reducer.tried(), 0u);
}

}  // namespace
}  // namespace Lab
