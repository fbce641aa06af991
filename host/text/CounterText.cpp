#include "host/text/CounterText.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <exception>
#include <iterator>
#include <vector>

namespace Macsecd {

namespace {

using Macsec::Brine::InterfaceCounters;
using Macsec::Brine::MessageCounterData;
using Macsec::Brine::MessageCounterReader;

/// A line of the table. One without numbers says something in `frames`.
struct Row {
  std::string interface;
  std::string frames;
  std::string since;
  std::string total;
};

constexpr char const* kOthers = "(others)";

/// The lines of one interface, or of a record that can't be read.
struct Block {
  std::string interface;
  std::vector<Row> rows;
};

Block blockOf(InterfaceCounters const& counters) {
  bool const isOthers = counters.name.empty();
  Block block{isOthers ? kOthers : counters.name, {}};
  for (size_t i = 0; i < counters.total.size(); ++i) {
    if (counters.total[i] == 0) continue;
    block.rows.push_back({"", counterName(i), std::to_string(counters.sinceSnapshot[i]),
                          std::to_string(counters.total[i])});
  }
  if (block.rows.empty() && !isOthers) block.rows.push_back({"", "none", "", ""});
  return block;
}

Block unreadable(size_t index, char const* what) {
  return {fmt::format("(record {})", index), {{"", fmt::format("unreadable: {}", what), "", ""}}};
}

// Interfaces by name, then what has none.
bool comesBefore(Block const& a, Block const& b) {
  bool const isNamed[] = {a.interface[0] != '(', b.interface[0] != '('};
  if (isNamed[0] != isNamed[1]) return isNamed[0];
  return a.interface < b.interface;
}

std::vector<Row> rowsOf(MessageCounterReader const& reader) {
  std::vector<Block> blocks;
  for (size_t i = 0, end = reader.records(); i < end; ++i) {
    try {
      if (auto const counters = reader.record(i)) blocks.push_back(blockOf(*counters));
    } catch (std::exception const& damage) {
      blocks.push_back(unreadable(i, damage.what()));
    }
  }
  std::stable_sort(blocks.begin(), blocks.end(), comesBefore);
  std::vector<Row> rows{{"Interface", "Frames", "Since clear", "Total"}};
  for (Block& block : blocks) {
    if (!block.rows.empty()) block.rows.front().interface = block.interface;
    std::move(block.rows.begin(), block.rows.end(), std::back_inserter(rows));
  }
  return rows;
}

}  // namespace

std::string counterName(size_t counter) {
  auto const [direction, type, subType] = MessageCounterData::kindOf(counter);
  std::string text = fmt::format("{} {}", Vesk::stringValue(direction), Vesk::stringValue(type));
  if (subType != Macsec::MessageCounterFailureSubType::none)
    text += fmt::format(" {}", Macsec::reasonName(subType));
  return text;
}

std::string counterText(MessageCounterReader const& reader) {
  auto const rows = rowsOf(reader);
  std::array<size_t, 4> width{};
  for (Row const& row : rows) {
    width[0] = std::max(width[0], row.interface.size());
    if (row.total.empty()) continue;
    width[1] = std::max(width[1], row.frames.size());
    width[2] = std::max(width[2], row.since.size());
    width[3] = std::max(width[3], row.total.size());
  }
  std::string text;
  for (Row const& row : rows) {
    if (row.total.empty()) {
      text += fmt::format("{:<{}}  {}\n", row.interface, width[0], row.frames);
    } else {
      text += fmt::format("{:<{}}  {:<{}}  {:>{}}  {:>{}}\n", row.interface, width[0], row.frames,
                          width[1], row.since, width[2], row.total, width[3]);
    }
  }
  return text;
}

}  // namespace Macsecd
