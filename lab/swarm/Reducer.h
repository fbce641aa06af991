#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Lab {

/// Makes the text of a scenario that fails as small as it gets by itself: leaves lines out, many at
/// a time and then fewer (Zeller's delta debugging), then rounds times and ends the run sooner, as
/// long as it still fails.
class Reducer {
 public:
  /// Whether a text fails as the first one did. One with mistakes doesn't.
  using Fails = std::function<bool(std::string const&)>;

  explicit Reducer(Fails fails) : fails_(std::move(fails)) {}

  std::string reduced(std::string_view text);
  /// How many texts were tried.
  size_t tried() const { return tried_; }

 private:
  using Lines = std::vector<std::string>;

  bool fail(Lines const& lines);
  bool leaveOut(Lines& lines, size_t from, size_t count);
  bool leaveOutPieces(Lines& lines, size_t piece);
  bool leaveOutBlocks(Lines& lines);
  bool leaveOutWires(Lines& lines);
  bool simplifyTimes(Lines& lines);
  bool endSooner(Lines& lines);

  Fails const fails_;
  size_t tried_ = 0;
};

}  // namespace Lab
