#include "host/text/Diagnostic.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <numeric>
#include <tuple>

namespace Macsecd {

namespace {

bool isHex(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }
bool isAlnum(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; }

/// At least so many hexadecimal digits, and little else.
bool isKeyLike(std::string_view word, ptrdiff_t fewestDigits) {
  auto const digits = std::ranges::count_if(word, isHex);
  return digits >= fewestDigits && digits * 4 >= std::ranges::count_if(word, isAlnum) * 3;
}

/// Optimal string alignment distance, three rows at a time.
size_t distance(std::string_view a, std::string_view b) {
  std::vector<size_t> before(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
  std::iota(last.begin(), last.end(), 0u);
  for (size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
      bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (swapped) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before.swap(last);
    last.swap(row);
  }
  return last[b.size()];
}

}  // namespace

std::string Diagnostic::text() const {
  return fmt::format("{}:{}:{}: {}; {}", file, line, column, what, remedy);
}

std::string textOf(std::vector<Diagnostic> const& diagnostics) {
  std::string all;
  for (auto const& diagnostic : diagnostics) all += diagnostic.text() + "\n";
  return all;
}

void sortByPlace(std::vector<Diagnostic>& diagnostics) {
  std::stable_sort(diagnostics.begin(), diagnostics.end(),
                   [](Diagnostic const& a, Diagnostic const& b) {
                     return std::tie(a.file, a.line, a.column) < std::tie(b.file, b.line, b.column);
                   });
  diagnostics.erase(std::unique(diagnostics.begin(), diagnostics.end()), diagnostics.end());
}

bool mayBeKey(std::string_view word) {
  return isKeyLike(word, static_cast<ptrdiff_t>(shortestKeyWord));
}

// Network cards are called "enx" and their address; no key begins like that.
bool mayBeShown(std::string_view word) {
  constexpr ptrdiff_t kHiddenDigits = 8;
  if (word.starts_with("enx") && word.size() == 15) return true;
  if (isKeyLike(word, kHiddenDigits)) return false;
  ptrdiff_t run = 0;
  for (char const c : word) {
    if (isHex(c)) {
      ++run;
    } else if (isAlnum(c)) {
      run = 0;
    }
    if (run == kHiddenDigits) return false;
  }
  return true;
}

std::string quotedWord(std::string_view word) {
  if (!mayBeShown(word)) return fmt::format("a word of {} characters", word.size());
  std::string shown(word.substr(0, 40));
  std::replace_if(
      shown.begin(), shown.end(), [](unsigned char c) { return std::iscntrl(c) != 0; }, '?');
  return "'" + shown + (word.size() > 40 ? "...'" : "'");
}

std::string nearestWord(std::string_view word, std::vector<std::string> const& known) {
  if (word.size() > 64) return {};
  std::string best;
  size_t bestDistance = std::max<size_t>(1, word.size() * 2 / 5) + 1;
  for (auto const& candidate : known) {
    bool begun = word.size() > 2 && candidate.starts_with(word);
    size_t d = begun ? 1 : distance(word, candidate);
    if (d >= bestDistance) continue;
    bestDistance = d;
    best = candidate;
  }
  return best;
}

std::string remedyForUnknown(std::string_view word, std::vector<std::string> const& known) {
  std::vector<std::string> shown;
  std::ranges::copy_if(known, std::back_inserter(shown), mayBeShown);
  std::string nearest = nearestWord(word, shown);
  if (!nearest.empty()) return fmt::format("write '{}'", nearest);
  if (known.empty()) return "remove it";
  if (shown.empty()) return "use one of those that are there";
  return fmt::format("use one of: {}", fmt::join(shown, ", "));
}

}  // namespace Macsecd
