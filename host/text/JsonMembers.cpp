#include "host/text/JsonMembers.h"

#include <fmt/format.h>

namespace Macsecd {

namespace {

/// Goes through the text; throws `Fault` at the first place where it isn't as it has to be.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  std::vector<JsonMember> members() {
    std::vector<JsonMember> members;
    expect('{', "'{'");
    if (!takes('}')) {
      do {
        std::string_view const name = text("the name of a member, in double quotes");
        expect(':', "':'");
        members.push_back({name.substr(1, name.size() - 2), value()});
      } while (takes(','));
      expect('}', "',' or '}'");
    }
    if (peek() != '\0' || at_ < text_.size()) fail("the end of the line");
    return members;
  }

 private:
  static bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
  static bool isBare(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '+' ||
           c == '-' || c == '.';
  }

  [[noreturn]] void fail(char const* wanted) const {
    throw Fault{fmt::format("octet {} of the line isn't {}", at_ + 1, wanted),
                "write one JSON object on one line, without objects or lists in it"};
  }
  /// The next character that is no space; NUL behind the last one.
  char peek() {
    while (at_ < text_.size() && isSpace(text_[at_])) ++at_;
    return at_ < text_.size() ? text_[at_] : '\0';
  }
  bool takes(char c) {
    if (peek() != c) return false;
    ++at_;
    return true;
  }
  void expect(char c, char const* wanted) {
    if (!takes(c)) fail(wanted);
  }
  std::string_view text(char const* wanted) {
    if (peek() != '"') fail(wanted);
    size_t const start = at_++;
    while (at_ < text_.size() && text_[at_] != '"') at_ += text_[at_] == '\\' ? 2u : 1u;
    if (at_ >= text_.size()) fail("the '\"' that ends a text");
    return text_.substr(start, ++at_ - start);
  }
  std::string_view value() {
    if (peek() == '"') return text("");
    size_t const start = at_;
    while (at_ < text_.size() && isBare(text_[at_])) ++at_;
    if (at_ == start) fail("a text, number, 'true' or 'false'");
    return text_.substr(start, at_ - start);
  }

  std::string_view const text_;
  size_t at_ = 0;
};

}  // namespace

Result<std::vector<JsonMember>> jsonMembers(std::string_view text) {
  try {
    return Scanner(text).members();
  } catch (Fault& fault) {
    return std::move(fault);
  }
}

}  // namespace Macsecd
