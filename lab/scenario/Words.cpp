#include "lab/scenario/Words.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <utility>

namespace Lab {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == ',' || c == '\r'; }

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::vector<std::string> split(std::string_view phrase) {
  std::vector<std::string> words;
  for (auto const& part : phrase) {
    if (part == ' ') {
      words.emplace_back();
    } else {
      if (words.empty()) words.emplace_back();
      words.back() += part;
    }
  }
  return words;
}

}  // namespace

Words::Words(std::string_view line) {
  size_t at = 0;
  while (true) {
    while (at < line.size() && isBlank(line[at])) ++at;
    if (at == line.size() || line[at] == '#') break;
    int column = static_cast<int>(at) + 1;
    bool quoted = line[at] == '\'';
    size_t begin = at + (quoted ? 1 : 0);
    size_t end = begin;
    while (end < line.size() && (quoted ? line[end] != '\'' : !isBlank(line[end]))) ++end;
    if (quoted && end == line.size()) failAt(column, "the quote isn't closed", "add a '");
    words_.push_back({std::string(line.substr(begin, end - begin)), column, quoted});
    end_ = static_cast<int>(end) + 1;
    at = end + (quoted ? 1 : 0);
  }
}

int Words::column() const { return atEnd() ? end_ : words_[next_].column; }

std::string Words::shown() const {
  return atEnd() ? "the end of the line" : Macsecd::quotedWord(peek());
}

std::string Words::text(size_t hiddenFrom) const {
  std::string text;
  for (size_t i = 0; i < words_.size(); ++i) {
    if (i > 0) text += ' ';
    text += i >= hiddenFrom    ? "(key)"
            : words_[i].quoted ? "'" + words_[i].text + "'"
                               : words_[i].text;
  }
  return text;
}

bool Words::take(std::string_view phrase) {
  auto parts = split(phrase);
  if (words_.size() - next_ < parts.size()) return false;
  for (size_t i = 0; i < parts.size(); ++i) {
    auto const& word = words_[next_ + i];
    if (word.quoted || word.text != parts[i]) return false;
  }
  next_ += parts.size();
  return true;
}

void Words::need(std::string_view phrase) {
  if (take(phrase)) return;
  fail(fmt::format("{} stands where '{}' should", shown(), phrase),
       fmt::format("write '{}'", phrase));
}

void Words::needEnd() {
  if (!atEnd()) fail(fmt::format("{} is left over", shown()), "remove the rest of the line");
}

std::string Words::any(std::string_view what) {
  if (atEnd()) fail(fmt::format("{} is missing", what), "add it at the end of the line");
  return words_[next_++].text;
}

double Words::time() { return decimal("a time in seconds", 0, 1e9); }

double Words::decimal(std::string_view what, double min, double max) {
  auto remedy = fmt::format("write a number from {} to {}, such as 1.5", min, max);
  if (atEnd()) fail(fmt::format("{} is missing", what), remedy);
  auto const& word = peek();
  bool digits =
      std::all_of(word.begin(), word.end(), [](char c) { return isDigit(c) || c == '.'; });
  double value = 0;
  auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  bool whole = error == std::errc() && end == word.data() + word.size();
  if (!digits || !whole) fail(fmt::format("{} isn't {}", shown(), what), remedy);
  if (value < min || value > max) fail(fmt::format("{} is out of range", what), remedy);
  ++next_;
  return value;
}

bool Words::atNumber() const { return !atEnd() && !words_[next_].quoted && isDigit(peek()[0]); }

uint32_t Words::number(std::string_view what, uint32_t min, uint32_t max) {
  auto remedy = fmt::format("write a whole number from {} to {}", min, max);
  if (atEnd()) fail(fmt::format("{} is missing", what), remedy);
  std::string_view digits = peek();
  bool hex = digits.starts_with("0x");
  if (hex) digits.remove_prefix(2);
  uint64_t value = 0;
  auto const* end = digits.data() + digits.size();
  auto [stop, error] = std::from_chars(digits.data(), end, value, hex ? 16 : 10);
  if (digits.empty() || stop != end) fail(fmt::format("{} isn't {}", shown(), what), remedy);
  if (error != std::errc() || value < min || value > max) {
    fail(fmt::format("{} is out of range", what), remedy);
  }
  ++next_;
  return static_cast<uint32_t>(value);
}

std::string Words::switchName(Known const& known) {
  if (atEnd()) fail("the name of a switch is missing", "add it at the end of the line");
  if (!known.switches.count(peek())) unknown("switch", known.switchNames());
  return words_[next_++].text;
}

PortName Words::port(Known const& known) {
  PortName port;
  port.switchName = switchName(known);
  if (atEnd()) fail("the interface is missing", "write a switch and its interface: A Ethernet1");
  port.interface = peek();
  if (!known.ports.count(port) && !known.unsure.count(port.switchName)) {
    unknown("interface of " + port.switchName, known.interfacesOf(port.switchName));
  }
  ++next_;
  return port;
}

PortName Words::wiredPort(Known const& known) {
  int column = this->column();
  PortName named = port(known);
  if (known.wired.count(named)) return named;
  failAt(column, fmt::format("{} is on no wire", named.text()),
         fmt::format("add 'wire {} to ...'", named.text()));
}

ProfileName Words::profileOn(Known const& known) {
  need("of profile");
  size_t at = next_;
  any("the name of a profile");
  need("on");
  std::string const owner = switchName(known);
  size_t const behind = std::exchange(next_, at);
  ProfileName named{owner, profile(owner, known)};
  next_ = behind;
  return named;
}

PortName Words::interfaceOn(Known const& known) {
  size_t at = next_;
  any("the interface");
  need("on");
  PortName named{switchName(known), words_[at].text};
  if (known.ports.count(named) || known.unsure.count(named.switchName)) return named;
  next_ = at;
  unknown("interface of " + named.switchName, known.interfacesOf(named.switchName));
}

std::string Words::profile(std::string const& switchName, Known const& known) {
  if (atEnd()) fail("the name of a profile is missing", "add it at the end of the line");
  auto profiles = known.profilesOf(switchName);
  bool found = std::count(profiles.begin(), profiles.end(), peek()) > 0;
  if (!found && !known.unsure.count(switchName)) unknown("profile of " + switchName, profiles);
  return words_[next_++].text;
}

bool Words::onOrOff() {
  bool on = take("on");
  if (!on && !take("off")) unknown("state", {"on", "off"});
  return on;
}

Lumo::EthAddr Words::address() {
  int column = this->column();
  auto parsed = Lumo::EthAddr::parsed(any("the MAC address"));
  if (parsed) return *parsed;
  failAt(column, "this isn't a MAC address",
         "write six pairs of hexadecimal digits: 02:00:00:00:00:01");
}

std::string Words::keyName(Known const& known) {
  if (atEnd()) fail("the name of a key is missing", "add it");
  if (!known.hasKeyName(peek())) {
    unknown("key up to this line", {known.keyNames.begin(), known.keyNames.end()});
  }
  return words_[next_++].text;
}

Mark Words::mark(Known const& known) {
  if (atEnd()) fail("the name of a mark is missing", "add it");
  if (!known.marks.count(peek())) unknown("mark up to this line", known.markNames());
  return {words_[next_++].text};
}

void Words::unknown(std::string_view what, std::vector<std::string> const& allowed) const {
  if (atEnd())
    fail(fmt::format("the line ends where a {} should stand", what),
         fmt::format("add one of: {}", fmt::join(allowed, ", ")));
  fail(fmt::format("there is no {} {}", what, shown()), Macsecd::remedyForUnknown(peek(), allowed));
}

void Words::fail(std::string what, std::string remedy) const {
  failAt(column(), std::move(what), std::move(remedy));
}

void Words::failAt(int column, std::string what, std::string remedy) {
  throw LineError{column, std::move(what), std::move(remedy)};
}

}  // namespace Lab
