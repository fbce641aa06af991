#pragma once

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Support {

/// What this process can write to, as addresses. What has no name and is larger than a test needs
/// is a sanitizer's own.
inline std::vector<std::pair<uint64_t, uint64_t>> writableMemory() {
  std::vector<std::pair<uint64_t, uint64_t>> found;
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    uint64_t start = 0;
    uint64_t end = 0;
    char mode[5] = "";
    if (sscanf(line.c_str(), "%" SCNx64 "-%" SCNx64 " %4s", &start, &end, mode) != 3) continue;
    if (std::string_view(mode).starts_with("rw") && end - start <= 1u << 28) {
      found.emplace_back(start, end);
    }
  }
  return found;
}

/// Adds up what `copiesIn` finds in what this process can write to, piece by piece; the pieces
/// overlap by `overlap` octets. The kernel reads it, since a sanitizer keeps a program from reading
/// what isn't the program's own.
inline size_t searchMemory(size_t overlap,
                           std::function<size_t(std::string_view)> const& copiesIn) {
  constexpr size_t kPart = 1 << 20;
  std::vector<char> part(kPart + overlap);
  int const memory = open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
  size_t copies = 0;
  for (auto const& [start, end] : writableMemory()) {
    for (uint64_t at = start; at < end; at += kPart) {
      size_t const size = std::min<uint64_t>(part.size(), end - at);
      ssize_t const got = pread(memory, part.data(), size, static_cast<off_t>(at));
      if (got > 0) copies += copiesIn({part.data(), static_cast<size_t>(got)});
    }
  }
  explicit_bzero(part.data(), part.size());
  close(memory);
  return copies;
}

}  // namespace Support
