#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>

#include "linux/trace/TraceFile.h"
#include "linux/trace/TraceLayout.h"

namespace Linux {

namespace {

using Macsecd::Fault;

/// Takes what stands before the next tab, and the tab.
std::string_view field(std::string_view& line) {
  size_t const end = line.find('\t');
  std::string_view const found = line.substr(0, end);
  line.remove_prefix(end == line.npos ? line.size() : end + 1);
  return found;
}

template <class T>
bool parse(std::string_view text, T& value) {
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size();
}

/// Nothing for the rest of a line that was overwritten or never finished.
std::optional<TracedStatement> statementOf(std::string_view line) {
  if (std::ranges::count(line, '\t') < 4) return std::nullopt;
  TracedStatement statement;
  if (!parse(field(line), statement.time)) return std::nullopt;
  if (!parse(field(line), statement.level)) return std::nullopt;
  statement.handle = field(line);
  statement.place = field(line);
  statement.text = line;
  return statement;
}

/// The octets from the oldest that stand to the newest. `later` is the head as it was when the ring
/// had been read.
std::string ringText(TraceHead const& head, TraceHead const& later, std::string_view ring) {
  uint64_t const oldest = later.begun < ring.size() ? 0 : later.begun - ring.size();
  std::string text;
  for (uint64_t at = oldest; at < head.ended;) {
    uint64_t const from = at % ring.size();
    uint64_t const size = std::min(head.ended - at, ring.size() - from);
    text += ring.substr(from, size);
    at += size;
  }
  return oldest == 0 ? text : text.substr(std::min(text.find('\n'), text.size() - 1) + 1);
}

std::vector<TracedStatement> statementsOf(std::string_view text) {
  std::vector<TracedStatement> found;
  while (!text.empty()) {
    size_t const end = std::min(text.find('\n'), text.size() - 1);
    if (auto statement = statementOf(text.substr(0, end))) found.push_back(*std::move(statement));
    text.remove_prefix(end + 1);
  }
  return found;
}

}  // namespace

Macsecd::Result<std::vector<TracedStatement>> readTrace(std::string const& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    return Fault{path + ": " + std::strerror(errno),
                 "trace first with 'macsecctl trace on', and read as root"};
  }
  std::string const octets{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  TraceHead head{};
  if (octets.size() > kTraceHeadSize) std::memcpy(&head, octets.data(), sizeof head);
  TraceHead later = head;
  std::ifstream(path, std::ios::binary).read(reinterpret_cast<char*>(&later), sizeof later);
  bool const isTrace = head.magic == kTraceMagic && head.size == octets.size() - kTraceHeadSize &&
                       head.ended <= head.begun && head.begun - head.ended <= TraceFile::kMaxLine;
  if (!isTrace) return Fault{path + ": is no trace", "name the file that macsecd traces to"};
  return statementsOf(ringText(head, later, std::string_view(octets).substr(kTraceHeadSize)));
}

}  // namespace Linux
