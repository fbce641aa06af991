#include "linux/process/ProcessName.h"

#include <fmt/format.h>

#include <fstream>
#include <iterator>

namespace Linux {

namespace {

constexpr size_t kMostOfLine = 120;

std::string commandLineOf(pid_t pid) {
  std::ifstream file(fmt::format("/proc/{}/cmdline", pid), std::ios::binary);
  std::string line;
  for (std::istreambuf_iterator<char> at(file), end; at != end && line.size() < kMostOfLine; ++at) {
    line += *at == '\0' ? ' ' : *at >= ' ' && *at <= '~' ? *at : '?';
  }
  while (line.ends_with(' ')) line.pop_back();
  return line;
}

}  // namespace

std::string processName(pid_t pid) {
  if (pid <= 0) return "a process that isn't seen from here";
  std::string const line = commandLineOf(pid);
  return line.empty() ? fmt::format("process {}", pid) : fmt::format("process {} ({})", pid, line);
}

}  // namespace Linux
