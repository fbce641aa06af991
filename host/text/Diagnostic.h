#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Macsecd {

/// What is said of one mistake in a file that the operator wrote: where it stands, what is wrong,
/// what to do. It never holds the text of a key.
struct Diagnostic {
  std::string file;
  int line = 1;    ///< from 1
  int column = 1;  ///< from 1, in octets
  std::string what;
  std::string remedy;

  /// "file:line:column: what; remedy", without an end of line.
  std::string text() const;
  friend bool operator==(Diagnostic const&, Diagnostic const&) = default;
};

/// The diagnostics in the order of their places, one on each line.
std::string textOf(std::vector<Diagnostic> const& diagnostics);
/// Sorts by file, line and column; diagnostics of one place keep their order, and equal ones go.
void sortByPlace(std::vector<Diagnostic>& diagnostics);

/// Fewest hexadecimal digits that could be a key, or much of one: more than any word of the
/// language has that is hexadecimal by chance.
inline constexpr size_t shortestKeyWord = 12;
/// Whether a word, or several with something between them, could be a key: enough hexadecimal
/// digits and little else.
bool mayBeKey(std::string_view word);

/// Whether a message may show a word: not one with as much of a key in it as eight hexadecimal
/// digits, with or without something between them.
bool mayBeShown(std::string_view word);

/// The word in single quotes as a message may show it; of one that it may not, the length alone.
std::string quotedWord(std::string_view word);

/// The word of `known` that is nearest to `word` (insertions, deletions, replacements and swaps of
/// neighbours), or that it begins; empty when none is near enough to be meant.
std::string nearestWord(std::string_view word, std::vector<std::string> const& known);

/// What to do about an unknown word: "write 'x'", or the list of the known ones.
std::string remedyForUnknown(std::string_view word, std::vector<std::string> const& known);

}  // namespace Macsecd
