#include "linux/process/Privileges.h"

#include <cap-ng.h>
#include <gtest/gtest.h>
#include <linux/sched.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <functional>

namespace {

int syslogMessages = 0;

}  // namespace

/// What libraries have to say to the log of the machine comes here.
extern "C" void __syslog_chk(int, int, char const*, ...) { ++syslogMessages; }

namespace Linux {
namespace {

/// Whether this holds in a process that has dropped its privileges.
bool holdsWithout(std::function<bool()> const& what) {
  pid_t const child = fork();
  if (child == 0) {
    if (!dropPrivileges()) _exit(2);
    _exit(what() ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

pid_t cloned(unsigned long flags) {
  return static_cast<pid_t>(syscall(SYS_clone, flags, nullptr, nullptr, nullptr, nullptr));
}

/// A child that there is all the same goes at once.
bool isRefused(long child, int error) {
  if (child == 0) _exit(0);
  return child < 0 && errno == error;
}

TEST(Privileges, LeaveNoWayToStartAnotherProgram) {
  EXPECT_TRUE(holdsWithout([] {
    execl("/bin/true", "true", nullptr);
    return errno == EPERM;
  }));
}

TEST(Privileges, LeaveNoWayIntoOtherNamespaces) {
  EXPECT_TRUE(holdsWithout([] { return unshare(CLONE_NEWUSER) != 0 && errno == EPERM; }));
}

TEST(Privileges, LeaveNoWayToAProcessInOtherNamespaces) {
  for (unsigned long const flag : std::initializer_list<unsigned long>{
           CLONE_NEWNS, CLONE_NEWCGROUP, CLONE_NEWUTS, CLONE_NEWIPC, CLONE_NEWPID, CLONE_NEWNET,
           CLONE_NEWUSER}) {
    EXPECT_TRUE(holdsWithout([flag] { return isRefused(cloned(flag | SIGCHLD), EPERM); })) << flag;
    EXPECT_TRUE(holdsWithout([flag] {
      clone_args arguments{};
      arguments.flags = flag;
      arguments.exit_signal = SIGCHLD;
      return isRefused(syscall(SYS_clone3, &arguments, sizeof arguments), ENOSYS);
    })) << flag;
  }
}

TEST(Privileges, LeaveProcessesAndThreadsInTheSameNamespaces) {
  EXPECT_TRUE(holdsWithout([] {
    pid_t const child = fork();
    if (child == 0) _exit(7);
    int status = 0;
    waitpid(child, &status, 0);
    return child > 0 && WEXITSTATUS(status) == 7;
  }));
}

TEST(Privileges, LeaveNoCoreDumps) {
  EXPECT_TRUE(holdsWithout([] {
    rlimit limit{1, 1};
    getrlimit(RLIMIT_CORE, &limit);
    return limit.rlim_max == 0 && prctl(PR_GET_DUMPABLE) == 0;
  }));
}

TEST(Privileges, LeaveWhatTheDaemonDoes) {
  EXPECT_TRUE(holdsWithout([] {
    int const netlink = socket(AF_NETLINK, SOCK_RAW, 0);
    int const unixSocket = socket(AF_UNIX, SOCK_STREAM, 0);
    return netlink >= 0 && unixSocket >= 0 && getpid() > 0;
  }));
}

TEST(Privileges, AreDroppedWithoutAWordInTheLogOfTheMachineUnderAServiceManagerThatGaveFew) {
  EXPECT_TRUE(holdsWithout([] { return syslogMessages == 0; }));
  pid_t const child = fork();
  if (child == 0) {
    capng_clear(CAPNG_SELECT_BOTH);
    capng_apply(CAPNG_SELECT_CAPS);
    int const before = syslogMessages;
    if (!dropPrivileges()) _exit(2);
    _exit(syslogMessages - before);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

TEST(Privileges, CanBeDroppedTwice) {
  EXPECT_TRUE(holdsWithout([] {
    if (!dropPrivileges()) _exit(2);
    return true;
  }));
}

}  // namespace
}  // namespace Linux
