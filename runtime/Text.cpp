#include "runtime/Text.h"

#include <cctype>
#include <charconv>
#include <ostream>

namespace Vesk {

void appendQuoted(std::string& out, std::string_view text) {
  out += '\'';
  for (char c : text) {
    if (c == '\'' || c == '\\') out += '\\';
    out += c;
  }
  out += '\'';
}

void appendDouble(std::string& out, double value) {
  char text[32];
  auto [end, error] = std::to_chars(text, text + sizeof text, value);
  std::string_view const digits(text, static_cast<size_t>(end - text));
  out += digits;
  if (digits.find_first_not_of("-0123456789") == std::string_view::npos) out += ".0";
}

std::ostream& writeText(std::ostream& out, std::string const& text) { return out << text; }

void TextParser::fail(std::string const& wanted) const {
  throwParseException("expected " + wanted + " at character " + std::to_string(at_) + " of " +
                      std::to_string(text_.size()));
}

void TextParser::expect(std::string_view literal) {
  if (text_.substr(at_, literal.size()) != literal) fail("\"" + std::string(literal) + "\"");
  at_ += literal.size();
}

void TextParser::expectEnd() {
  if (at_ != text_.size()) fail("the end of the text");
}

bool TextParser::boolean() {
  std::string const text = word();
  if (text != "True" && text != "False") fail("True or False");
  return text == "True";
}

uint64_t TextParser::number(uint64_t max) {
  uint64_t value = 0;
  auto [end, error] = std::from_chars(text_.data() + at_, text_.data() + text_.size(), value);
  if (error != std::errc() || value > max) fail("a number up to " + std::to_string(max));
  at_ = static_cast<size_t>(end - text_.data());
  return value;
}

uint64_t TextParser::anyNumber() {
  uint64_t value = 0;
  auto [end, error] = std::from_chars(text_.data() + at_, text_.data() + text_.size(), value);
  if (error == std::errc::invalid_argument) fail("a number");
  at_ = static_cast<size_t>(end - text_.data());
  return error == std::errc() ? value : UINT64_MAX;
}

double TextParser::real() {
  double value = 0.0;
  auto [end, error] = std::from_chars(text_.data() + at_, text_.data() + text_.size(), value);
  if (error != std::errc()) fail("a number");
  at_ = static_cast<size_t>(end - text_.data());
  return value;
}

std::string TextParser::quoted() {
  expect("'");
  std::string value;
  while (at_ < text_.size() && text_[at_] != '\'') {
    if (text_[at_] == '\\') ++at_;
    if (at_ < text_.size()) value += text_[at_++];
  }
  expect("'");
  return value;
}

std::string TextParser::word() {
  size_t const from = at_;
  auto isPart = [](char c) { return c == '_' || std::isalnum(static_cast<unsigned char>(c)) != 0; };
  while (at_ < text_.size() && isPart(text_[at_])) ++at_;
  if (at_ == from) fail("a word");
  return std::string(text_.substr(from, at_ - from));
}

}  // namespace Vesk
