#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/text/KeyText.h"
#include "lab/scenario/Known.h"

namespace Lab {

/// Thrown where a line can't be read on; the next line is read all the same.
struct LineError {
  int column;
  std::string what;
  std::string remedy;
};

struct Word {
  std::string text;
  int column;   ///< from 1
  bool quoted;  ///< stood in single quotes: never a word of the language
};

/// The words of one line with a reading position. Words are parted by blanks and commas; single
/// quotes hold a word with blanks together; # begins a comment.
class Words {
 public:
  /// Throws LineError when a quote isn't closed.
  explicit Words(std::string_view line);

  bool empty() const { return words_.empty(); }
  bool atEnd() const { return next_ == words_.size(); }
  int column() const;  ///< of the next word, or behind the last one
  /// The next word for messages.
  std::string shown() const;
  /// All words with single blanks between. From word `hiddenFrom` on they read "(key)".
  std::string text(size_t hiddenFrom = SIZE_MAX) const;
  size_t position() const { return next_; }

  /// Goes on behind a phrase of one or more words, when it stands here.
  bool take(std::string_view phrase);
  /// The same, and an error when it doesn't.
  void need(std::string_view phrase);
  /// An error when words are left.
  void needEnd();

  /// The next word, whatever it is; `what` says in messages what is missing.
  std::string any(std::string_view what);
  double time();
  double decimal(std::string_view what, double min, double max);
  /// Decimal, or hexadecimal after 0x.
  uint32_t number(std::string_view what, uint32_t min, uint32_t max);
  bool atNumber() const;

  std::string switchName(Known const& known);
  PortName port(Known const& known);
  PortName wiredPort(Known const& known);
  ProfileName profileOn(Known const& known);
  /// "INTERFACE on SWITCH".
  PortName interfaceOn(Known const& known);
  std::string profile(std::string const& switchName, Known const& known);
  bool onOrOff();
  Lumo::EthAddr address();
  std::string keyName(Known const& known);
  Mark mark(Known const& known);

  /// An error at the next word: it is none of those that may stand here.
  [[noreturn]] void unknown(std::string_view what, std::vector<std::string> const& allowed) const;
  [[noreturn]] void fail(std::string what, std::string remedy) const;
  [[noreturn]] static void failAt(int column, std::string what, std::string remedy);

 private:
  std::string const& peek() const { return words_[next_].text; }

  std::vector<Word> words_;
  size_t next_ = 0;
  int end_ = 1;
};

}  // namespace Lab
