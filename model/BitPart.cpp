#include "model/BitPart.h"

#include <charconv>
#include <ostream>

#include "runtime/Exceptions.h"

namespace Macsec {

namespace {

[[noreturn]] void refuse(std::string_view wanted, std::string_view text) {
  Vesk::throwParseException("'" + std::string(text) + "' is not the text of a " +
                            std::string(wanted));
}

/// Takes a decimal octet off the front of `text`; false if there is none.
bool tookOctet(std::string_view& text, uint8_t& octet) {
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), octet);
  if (error != std::errc()) return false;
  text.remove_prefix(static_cast<size_t>(end - text.data()));
  return true;
}

bool took(std::string_view& text, std::string_view piece) {
  if (!text.starts_with(piece)) return false;
  text.remove_prefix(piece.size());
  return true;
}

}  // namespace

std::string wordToStrep(char const* typeName, uint8_t v0, uint8_t v1) {
  return "Value('" + std::string(typeName) + "', ** {'v0': " + std::to_string(v0) +
         ", 'v1': " + std::to_string(v1) + "})";
}

uint16_t wordFromStrep(char const* typeName, std::string_view text) {
  std::string_view rest = text;
  uint8_t v0 = 0;
  uint8_t v1 = 0;
  if (took(rest, "Value('") && took(rest, typeName) && took(rest, "', ** {'v0': ") &&
      tookOctet(rest, v0) && took(rest, ", 'v1': ") && tookOctet(rest, v1) && rest == "})") {
    return static_cast<uint16_t>(v0 << 8 | v1);
  }
  refuse(typeName, text);
}

uint8_t octetFromStrep(std::string_view text) {
  std::string_view rest = text;
  uint8_t octet = 0;
  if (tookOctet(rest, octet) && rest.empty()) return octet;
  refuse("number from 0 to 255", text);
}

std::ostream& strepTo(std::ostream& out, std::string const& text) { return out << text; }

}  // namespace Macsec
