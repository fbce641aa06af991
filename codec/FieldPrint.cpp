#include "codec/FieldPrint.h"

#include <algorithm>
#include <ostream>
#include <string_view>

#include "codec/FieldWalk.h"
#include "platform/Hex.h"

namespace Codec {

namespace {

constexpr size_t kLabelWidth = 30;

std::ostream& line(std::ostream& out, std::string_view label) {
  out << "    " << label << ":";
  for (size_t i = label.size(); i < kLabelWidth; ++i) out << ' ';
  return out;
}

bool isPrintable(Octets octets) {
  return !octets.empty() &&
         std::ranges::all_of(octets, [](uint8_t c) { return c >= 0x20 && c < 0x7f; });
}

}  // namespace

void printField(std::ostream& out, char const* label, uint8_t v) {
  line(out, label) << unsigned{v} << "\n";
}

void printField(std::ostream& out, char const* label, Lumo::NetU32 v) {
  line(out, label) << v.value() << "\n";
}

void printField(std::ostream& out, char const* label, Lumo::NetU64 cipherSuite) {
  auto const suite = FieldValues::fromFrame(cipherSuite);
  line(out, label) << Macsec::hexString({cipherSuite.bytes(), 8}) << " (";
  out << (suite == Macsec::CipherSuite::None ? "not ours" : Macsec::suiteName(suite)) << ")\n";
}

void printField(std::ostream& out, char const* label, Macsec::MemberIdentifier const& v) {
  line(out, label) << Macsec::hexString(v.bytes()) << "\n";
}

void printField(std::ostream& out, char const* label, Macsec::SciParameterSet const& v) {
  line(out, label) << v.addr() << "/" << v.portId().value() << "\n";
}

void printField(std::ostream& out, char const* label, char const* v) {
  line(out, label) << v << "\n";
}

void printOctets(std::ostream& out, char const* label, Octets v) {
  line(out, label) << Macsec::hexString(v) << "\n";
}

void printName(std::ostream& out, char const* label, Octets v) {
  line(out, label) << Macsec::hexString(v);
  if (isPrintable(v)) {
    out << " \"" << std::string_view(reinterpret_cast<char const*>(v.data()), v.size()) << "\"";
  }
  out << "\n";
}

}  // namespace Codec
