#include "linux/keep/SharedCounters.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "linux/process/Limits.h"
#include "runtime/Log.h"
#include "runtime/Trace.h"

namespace Linux {

namespace {

Vesk::TraceHandle traceHandle("Macsec");

Vesk::LogHandle const MACSECD_COUNTERS_NOT_SHARED(
    "MACSECD_COUNTERS_NOT_SHARED", Vesk::LogSeverity::warning,
    "Frames are counted in the process's own memory, from 0 on: %s; free /dev/shm%s or name "
    "another place with --counters, and restart",
    "The shared memory for the counters of frames can't be had. These counters end with the "
    "process.",
    "Do what the message says.", 0.0, 1.0);

Vesk::LogHandle const MACSECD_COUNTERS_CUT_SHORT(
    "MACSECD_COUNTERS_CUT_SHORT", Vesk::LogSeverity::error,
    "The counters of frames start anew: /dev/shm%s was cut short, or its file system is full",
    "Octets of the shared memory for the counters of frames weren't there any more.",
    "See that nothing but macsecd writes to that file, and that /dev/shm has room.", 0.0, 1.0);

[[noreturn]] void fail(std::string const& what) {
  throw std::system_error(errno, std::generic_category(), "message counters in " + what);
}

[[noreturn]] void refuse(std::errc code, std::string const& what) {
  throw std::system_error(std::make_error_code(code), "message counters in " + what);
}

struct stat statusOf(Descriptor const& file, std::string const& name) {
  struct stat status;
  if (fstat(file.fd(), &status) != 0) fail(name);
  return status;
}

bool writeAll(int fd, void const* data, size_t octets) {
  auto const* at = static_cast<char const*>(data);
  while (octets > 0) {
    ssize_t const wrote = write(fd, at, octets);
    if (wrote < 0 && errno == EINTR) continue;
    if (wrote <= 0) return false;
    at += wrote;
    octets -= static_cast<size_t>(wrote);
  }
  return true;
}

// Never follows a link, and never waits for the reader of a pipe.
bool writeCorruptionFile(std::string const& path, std::string const& head,
                         std::span<uint8_t const> octets) {
  Descriptor const file(
      open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
  struct stat status;
  if (!file.isOpen() || fstat(file.fd(), &status) != 0) return false;
  if (!S_ISREG(status.st_mode) || status.st_nlink != 1 || status.st_uid != geteuid()) {
    errno = EEXIST;
    return false;
  }
  return fchmod(file.fd(), 0600) == 0 && ftruncate(file.fd(), 0) == 0 &&
         writeAll(file.fd(), head.data(), head.size()) &&
         writeAll(file.fd(), octets.data(), octets.size());
}

}  // namespace

Mapping::Mapping(Descriptor const& file, size_t octets, int protection) {
  void* const memory = mmap(nullptr, octets, protection, MAP_SHARED, file.fd(), 0);
  if (memory == MAP_FAILED) fail("a mapping of " + std::to_string(octets) + " octets");
  words_ = {static_cast<uint64_t*>(memory), octets / sizeof(uint64_t)};
  range_ = std::make_unique<MappedRange>(words_);
}

Mapping::~Mapping() {
  range_.reset();
  if (!words_.empty()) munmap(words_.data(), words_.size_bytes());
}

SharedCounters::SharedCounters(std::string name, SharedCountersOptions options)
    : name_(std::move(name)), options_(std::move(options)) {
  open();
}

void SharedCounters::open() {
  memory_ = Descriptor(shm_open(name_.c_str(), O_RDWR | O_CREAT, 0600));
  if (!memory_.isOpen() && errno == EINVAL) fail(name_ + ", which is a folder or no name");
  if (!memory_.isOpen()) fail(name_);
  struct stat const status = statusOf(memory_, name_);
  if (!S_ISREG(status.st_mode)) refuse(std::errc::invalid_argument, name_ + " aren't in a file");
  if (status.st_uid != geteuid()) {
    refuse(std::errc::operation_not_permitted, name_ + " belong to another user");
  }
  if (!options_.counts) return;
  if (flock(memory_.fd(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK) fail(name_);
    refuse(std::errc::device_or_resource_busy, name_ + " are those of another process");
  }
  if (fchmod(memory_.fd(), options_.mode) != 0) fail(name_);
}

size_t SharedCounters::size() const {
  return static_cast<size_t>(statusOf(memory_, name_).st_size);
}

// Memory of another size isn't changed under those who have mapped it.
void SharedCounters::create(size_t octets) {
  if (size() != 0) {
    VESK_TRACE(1, ": ", std::string_view(name_), " has ", size(), " octets instead of ", octets,
               " and is made anew");
    remove(name_);
    open();
  }
  if (ftruncate(memory_.fd(), static_cast<off_t>(octets)) != 0) fail(name_);
}

std::span<uint64_t> SharedCounters::attach(size_t least, size_t most) {
  if (losses_ >= Limits::kMostLosses) return own_.attach(least, most);
  if (!mapping_.words().empty() && mapping_.words().size() >= least) return mapping_.words();
  size_t const octets = most * sizeof(uint64_t);
  if (size() != octets && (options_.counts || size() == 0)) create(octets);
  if (size() < least * sizeof(uint64_t)) refuse(std::errc::not_enough_memory, name_);
  mapping_ = Mapping(memory_, size(), PROT_READ | PROT_WRITE);
  return mapping_.words();
}

void SharedCounters::detach() {
  if (!mapping_.isWhole()) {
    Vesk::log(MACSECD_COUNTERS_CUT_SHORT, name_);
    if (++losses_ == Limits::kMostLosses) {
      Vesk::log(MACSECD_COUNTERS_NOT_SHARED, "this happened too often", name_);
    }
  }
  mapping_ = {};
}

void SharedCounters::corruptionFileIs(std::string_view text, std::span<uint8_t const> octets) {
  if (options_.corruptionFile.empty()) return;
  std::string const head = std::string(text) + "\noctets: " + std::to_string(octets.size()) + "\n";
  if (!writeCorruptionFile(options_.corruptionFile, head, octets)) {
    VESK_TRACE(1, ": ", std::string_view(options_.corruptionFile),
               " can't be written: ", std::string_view(std::strerror(errno)));
  }
}

void SharedCounters::remove(std::string const& name) { shm_unlink(name.c_str()); }

Vesk::Ptr<Macsec::Brine::MessageCounters> messageCountersIn(std::string const& name) {
  using Macsec::Brine::MessageCounters;
  try {
    return Vesk::make<MessageCounters>("counters", std::make_shared<SharedCounters>(name));
  } catch (std::system_error const& error) {
    Vesk::log(MACSECD_COUNTERS_NOT_SHARED, error.what(), name);
    return MessageCounters::inProcess("counters");
  }
}

SharedCounterView::SharedCounterView(std::string const& name) {
  Descriptor const memory(shm_open(name.c_str(), O_RDONLY, 0));
  if (!memory.isOpen()) fail(name);
  size_t const octets = static_cast<size_t>(statusOf(memory, name).st_size);
  if (octets == 0) refuse(std::errc::no_message_available, name + " aren't there yet");
  mapping_ = Mapping(memory, octets, PROT_READ);
}

}  // namespace Linux
