#include "linux/trace/Syslog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace Linux {
namespace {

using ::testing::ElementsAre;

Vesk::LogHandle const kState("MKA_STATE_CHG", Vesk::LogSeverity::notice, "%s %s on %s", "", "", 0.0,
                             1.0);
Vesk::LogHandle const kOther("SOMETHING_ELSE", Vesk::LogSeverity::warning, "%s", "", "", 0.0, 1.0);

TEST(Syslog, PutsSeverityNameAndTextOnOneLine) {
  std::vector<std::string> const arguments = {"6162", "UP", "eth0"};
  EXPECT_EQ(lineOf({kState, arguments, "6162 UP on eth0", 0, 2}),
            "notice: MKA_STATE_CHG: 6162 UP on eth0");
}

TEST(Syslog, LetsNoTextBeginAnotherLineOrMoveTheCursor) {
  std::vector<std::string> const arguments;
  EXPECT_EQ(lineOf({kOther, arguments, "a\nerror: b\033[2J\177", 0, 2}),
            "warning: SOMETHING_ELSE: a?error: b?[2J?");
}

TEST(Syslog, NamesWhatAMessageTellsOfInTheJournal) {
  std::vector<std::string> const arguments = {"6162", "UP", "eth0"};
  EXPECT_THAT(journalFieldsOf({kState, arguments, "6162 UP on eth0", 0, 2}),
              ElementsAre("MESSAGE=6162 UP on eth0", "PRIORITY=5", "SYSLOG_IDENTIFIER=macsecd",
                          "MACSEC_EVENT=MKA_STATE_CHG", "MACSEC_CKN=6162", "MACSEC_STATE=UP",
                          "MACSEC_INTERFACE=eth0"));
}

TEST(Syslog, NamesTheInterfaceOfEachMessageThatTellsOfOne) {
  Vesk::LogHandle const members("MEMBERS", Vesk::LogSeverity::notice,
                                "More than %s members on interface %s: %s", "", "", 0.0, 1.0);
  std::vector<std::string> const arguments = {"2", "eth0", "x"};
  EXPECT_THAT(
      journalFieldsOf({members, arguments, "", 0, 2}),
      ElementsAre("MESSAGE=", "PRIORITY=5", "SYSLOG_IDENTIFIER=macsecd", "MACSEC_EVENT=MEMBERS",
                  "MACSEC_ARGUMENT_1=2", "MACSEC_INTERFACE=eth0", "MACSEC_ARGUMENT_3=x"));
}

TEST(Syslog, NumbersArgumentsWithoutAName) {
  std::vector<std::string> const arguments = {"x", "y"};
  EXPECT_THAT(
      journalFieldsOf({kOther, arguments, "x", 0, 2}),
      ElementsAre("MESSAGE=x", "PRIORITY=4", "SYSLOG_IDENTIFIER=macsecd",
                  "MACSEC_EVENT=SOMETHING_ELSE", "MACSEC_ARGUMENT_1=x", "MACSEC_ARGUMENT_2=y"));
}

TEST(Syslog, GoesToTheJournalOnlyIfTheStandardErrorDoes) {
  struct stat status;
  ASSERT_EQ(fstat(STDERR_FILENO, &status), 0);
  std::string const own = std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
  setenv("JOURNAL_STREAM", own.c_str(), 1);
  EXPECT_TRUE(Syslog().goesToJournal());
  setenv("JOURNAL_STREAM", (own + "0").c_str(), 1);
  EXPECT_FALSE(Syslog().goesToJournal());
  unsetenv("JOURNAL_STREAM");
  EXPECT_FALSE(Syslog().goesToJournal());
}

}  // namespace
}  // namespace Linux
