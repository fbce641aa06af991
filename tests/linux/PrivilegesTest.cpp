#include "linux/Privileges.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <functional>

namespace Linux {
namespace {

/// Whether this holds in a process that has dropped its privileges.
bool holdsWithout(std::function<bool()> const& what) {
  pid_t const child = fork();
  if (child == 0) {
    dropPrivileges();
    _exit(what() ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
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

TEST(Privileges, CanBeDroppedTwice) {
  EXPECT_TRUE(holdsWithout([] {
    dropPrivileges();
    return true;
  }));
}

}  // namespace
}  // namespace Linux
