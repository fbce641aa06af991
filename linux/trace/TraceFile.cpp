#include "linux/trace/TraceFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>

namespace Linux {

namespace {

using Macsecd::Fault;

[[noreturn]] void fail(std::string const& path, char const* remedy) {
  throw Fault{path + ": " + std::strerror(errno), remedy};
}

/// The file, of this size and for this process alone.
Descriptor opened(std::string const& path, size_t size) {
  Descriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
  if (!file.isOpen()) fail(path, "name a file in a folder that this process may write to");
  struct stat status;
  if (fstat(file.fd(), &status) != 0) fail(path, "name another file");
  if (!S_ISREG(status.st_mode)) throw Fault{path + ": is no file", "name another one"};
  if (flock(file.fd(), LOCK_EX | LOCK_NB) != 0) fail(path, "name a file that nobody traces to");
  if (fchmod(file.fd(), 0600) != 0) fail(path, "name a file of this process's user");
  bool const fits = static_cast<size_t>(status.st_size) == size;
  if (!fits && ftruncate(file.fd(), static_cast<off_t>(size)) != 0) fail(path, "make room for it");
  // Memory that the disk has no room for would end the process when it is written to.
  if ((errno = posix_fallocate(file.fd(), 0, static_cast<off_t>(size))) != 0) {
    fail(path, "make room for it");
  }
  return file;
}

/// The last two parts of a path: "engine/MkaSm.cpp".
std::string_view shortName(std::string_view file) {
  size_t const last = file.rfind('/');
  if (last == file.npos || last == 0) return file;
  size_t const before = file.rfind('/', last - 1);
  return before == file.npos ? file : file.substr(before + 1);
}

}  // namespace

TraceFile::TraceFile(std::string const& path, size_t size) : file_(opened(path, size)) {
  void* const memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file_.fd(), 0);
  if (memory == MAP_FAILED) fail(path, "raise the limit of locked memory");
  memory_ = {static_cast<uint8_t*>(memory), size};
  ring_ = memory_.subspan(kTraceHeadSize);
  TraceHead& now = head();
  bool const isTrace = now.magic == kTraceMagic && now.size == ring_.size();
  if (!isTrace || now.begun < now.ended || now.begun - now.ended > kMaxLine) {
    std::ranges::fill(memory_, 0);
    now = {kTraceMagic, ring_.size(), 0, 0};
  }
  // What a process had only begun is no line, and must not become a part of the next one.
  bool const isBroken = now.begun != now.ended;
  now.ended = now.begun;
  if (isBroken) putLine("\n");
}

TraceFile::~TraceFile() { munmap(memory_.data(), memory_.size()); }

TraceHead& TraceFile::head() const { return *reinterpret_cast<TraceHead*>(memory_.data()); }

void TraceFile::add(double time, Vesk::TraceRecord const& record) {
  std::string line = fmt::format("{:.6f}\t{}\t{}\t{}:{}\t", time, record.level, record.handle,
                                 shortName(record.file), record.line);
  for (char const c : record.text) line += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
  line.resize(std::min(line.size(), kMaxLine - 1));
  putLine(line + '\n');
}

// A reader, also one that comes after the end of this process, sees the three steps in this order.
void TraceFile::putLine(std::string_view line) {
  std::atomic_ref<uint64_t> const begun(head().begun);
  std::atomic_ref<uint64_t> const ended(head().ended);
  uint64_t const at = ended;
  begun = at + line.size();
  size_t const from = at % ring_.size();
  size_t const first = std::min(line.size(), ring_.size() - from);
  std::memcpy(&ring_[from], line.data(), first);
  std::memcpy(&ring_[0], line.data() + first, line.size() - first);
  ended = at + line.size();
}

}  // namespace Linux
