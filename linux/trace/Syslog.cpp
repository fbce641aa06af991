#include "linux/trace/Syslog.h"

#include <sys/stat.h>
#include <sys/uio.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <iostream>
#include <map>
#include <string_view>

namespace Linux {

namespace {

using Names = std::vector<char const*>;

// What the arguments of a message are, in their order.
Names namesOf(std::string_view message) {
  static std::map<std::string_view, Names> const names = {
      {"MKA_CA_CREATED", {"CKN", "INTERFACE"}},
      {"MKA_KEY_IN_USE", {"CKN", "INTERFACE"}},
      {"MKA_FALLBACK_KEY_IN_USE", {"CKN", "INTERFACE"}},
      {"MKA_STATE_CHG", {"CKN", "STATE", "INTERFACE"}},
      {"MKA_SESSION_ESTABLISHED", {"PEER_ADDRESS", "PEER_PORT", "CKN", "INTERFACE"}},
      {"MKA_SAK_CREATED", {"KEY_ID_END", "KEY_NUMBER", "INTERFACE"}},
      {"MKA_SAK_ACTIVATED", {"KEY_ID_END", "KEY_NUMBER", "INTERFACE"}},
      {"MACSECD_NO_SOCKET", {"INTERFACE", "REASON"}},
      {"MACSECD_KEY_SPENT", {"INTERFACE", "SAK"}},
      {"MACSECD_PORT_BOUND_ANEW", {"INTERFACE", "REASON"}},
      {"MACSEC_KERNEL_MISSING", {"INTERFACE", "REASON"}},
      {"MACSEC_KERNEL_REFUSED", {"REQUEST", "INTERFACE", "DEVICE", "REASON"}},
      {"MACSEC_KEY_REFUSED", {"INTERFACE", "DEVICE", "REQUEST", "REASON"}},
      {"MACSEC_PARENT_NOT_CLOSED", {"INTERFACE", "REASON"}},
      {"MACSECD_PORT_OPEN", {"INTERFACE", "SAK"}},
      {"MACSECD_PORT_CLOSED", {"INTERFACE", "CAUSE", "REASON"}},
      {"MACSECD_DEVICE_MADE", {"INTERFACE", "DEVICE"}},
      {"MACSECD_DEVICE_MADE_ANEW", {"INTERFACE", "DEVICE"}},
      {"MACSECD_DEVICE_GONE", {"INTERFACE", "DEVICE"}},
  };
  auto const found = names.find(message);
  return found == names.end() ? Names() : found->second;
}

// Which argument is the name of an interface, by the word before it; beyond all if none is.
size_t interfaceAmong(std::string_view format) {
  size_t const at = format.find("nterface %s");
  if (at == std::string_view::npos) return SIZE_MAX;
  size_t before = 0;
  for (size_t i = 0; (i = format.find("%s", i)) < at; ++i) ++before;
  return before;
}

char const* wordOf(Vesk::LogSeverity severity) {
  static constexpr std::array<char const*, 8> words = {"emergency", "alert",  "critical", "error",
                                                       "warning",   "notice", "info",     "debug"};
  return words.at(static_cast<size_t>(severity));
}

/// Whether the standard error is the stream that the service manager gave to the journal.
bool stderrGoesToJournal() {
  char const* const stream = std::getenv("JOURNAL_STREAM");
  struct stat status;
  if (!stream || fstat(STDERR_FILENO, &status) != 0) return false;
  return stream == std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

bool sendToJournal(Vesk::LogMessage const& message) {
  std::vector<std::string> const fields = journalFieldsOf(message);
  std::vector<iovec> parts;
  for (std::string const& field : fields) {
    parts.push_back({const_cast<char*>(field.data()), field.size()});
  }
  return sd_journal_sendv(parts.data(), static_cast<int>(parts.size())) >= 0;
}

}  // namespace

std::string lineOf(Vesk::LogMessage const& message) {
  std::string line =
      std::string(wordOf(message.handle.severity())) + ": " + message.handle.name() + ": ";
  for (char const c : message.text) {
    bool const isControl = static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
    line += isControl ? '?' : c;
  }
  return line;
}

std::vector<std::string> journalFieldsOf(Vesk::LogMessage const& message) {
  std::vector<std::string> fields = {
      "MESSAGE=" + message.text,
      "PRIORITY=" + std::to_string(static_cast<int>(message.handle.severity())),
      "SYSLOG_IDENTIFIER=macsecd",
      std::string("MACSEC_EVENT=") + message.handle.name(),
  };
  Names const names = namesOf(message.handle.name());
  size_t const interface = interfaceAmong(message.handle.format());
  for (size_t i = 0; i < message.arguments.size(); ++i) {
    std::string const name = i < names.size() ? names[i]
                             : i == interface ? "INTERFACE"
                                              : "ARGUMENT_" + std::to_string(i + 1);
    fields.push_back("MACSEC_" + name + "=" + message.arguments[i]);
  }
  return fields;
}

Syslog::Syslog() : goesToJournal_(stderrGoesToJournal()) {}

void Syslog::operator()(Vesk::LogMessage const& message) const {
  if (goesToJournal_ && sendToJournal(message)) return;
  std::cerr << lineOf(message) + "\n" << std::flush;
}

}  // namespace Linux
