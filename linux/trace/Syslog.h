#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "runtime/Log.h"

namespace Linux {

/// The message on one line: severity, name, text. Characters that would begin another line, or move
/// a terminal's cursor, are shown as '?'.
std::string lineOf(Vesk::LogMessage const& message);

/// The fields of the message in the journal, each as "NAME=value": MESSAGE, PRIORITY,
/// SYSLOG_IDENTIFIER, MACSEC_EVENT (its name), and one for each argument: MACSEC_INTERFACE,
/// MACSEC_CKN, MACSEC_KEY_NUMBER and so on, or MACSEC_ARGUMENT_1 and so on where they have no name.
std::vector<std::string> journalFieldsOf(Vesk::LogMessage const& message);

/// Where the messages of a daemon go: to the journal if the standard error goes there, otherwise to
/// the standard error.
class Syslog {
 public:
  Syslog();
  void operator()(Vesk::LogMessage const& message) const;
  bool goesToJournal() const { return goesToJournal_; }

 private:
  bool goesToJournal_;
};

}  // namespace Linux
