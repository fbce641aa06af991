#include "runtime/Glimmer.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "runtime/Trace.h"

namespace Glimmer {

namespace {

TraceFile* currentFile = nullptr;

std::vector<MsgDesc::Entry>& allEntries() {
  alignas(std::vector<MsgDesc::Entry>) static unsigned char
      storage[sizeof(std::vector<MsgDesc::Entry>)];
  static auto* entries = ::new (storage) std::vector<MsgDesc::Entry>;
  return *entries;
}

// A message lies in the ring as: size of all of it, number of the statement, then each argument as
// a length octet and its text.
constexpr size_t kHeaderSize = 8;

std::string filledIn(std::string const& format, std::vector<std::string> const& arguments) {
  std::string text;
  size_t next = 0;
  for (size_t i = 0; i < format.size(); ++i) {
    if (format.compare(i, 2, "%s") == 0 && next < arguments.size()) {
      text += arguments[next++];
      ++i;
    } else {
      text += format[i];
    }
  }
  return text;
}

}  // namespace

void MsgDesc::registerIs(char const* sourceName, int line, std::string const& format) {
  allEntries().push_back({sourceName, line, format});
  id_ = static_cast<uint32_t>(allEntries().size());
}

std::vector<MsgDesc::Entry> const& MsgDesc::entries() { return allEntries(); }

void RingBuf::startMsg(TraceFile&, uint32_t id) {
  built_ = kHeaderSize;
  std::memcpy(&building_[4], &id, 4);
}

void RingBuf::argument(std::string_view text) {
  size_t const size = std::min(text.size(), kArgumentMax);
  if (built_ + 1 + size > building_.size()) return;
  building_[built_++] = static_cast<uint8_t>(size);
  std::memcpy(&building_[built_], text.data(), size);
  built_ += size;
}

void RingBuf::endMsg() {
  if (built_ > memory_.size()) return;
  auto const size = static_cast<uint32_t>(built_);
  std::memcpy(&building_[0], &size, 4);
  while (end_ + size - oldest_ > memory_.size()) oldest_ += sizeAt(oldest_);
  put({building_.data(), built_});
}

void RingBuf::put(std::span<uint8_t const> bytes) {
  for (uint8_t byte : bytes) at(end_++) = byte;
}

uint32_t RingBuf::sizeAt(uint64_t position) const {
  uint8_t bytes[4];
  for (size_t i = 0; i < 4; ++i) bytes[i] = at(position + i);
  uint32_t size;
  std::memcpy(&size, bytes, 4);
  return size;
}

RingBuf::Message RingBuf::messageAt(uint64_t position) const {
  uint64_t const end = position + sizeAt(position);
  Message message{sizeAt(position + 4), {}};
  for (uint64_t p = position + kHeaderSize; p < end;) {
    std::string text(at(p++), '\0');
    for (char& c : text) c = static_cast<char>(at(p++));
    message.arguments.push_back(std::move(text));
  }
  return message;
}

std::vector<std::string> RingBuf::messages() const {
  std::vector<std::string> texts;
  for (uint64_t p = oldest_; p < end_; p += sizeAt(p)) {
    Message const message = messageAt(p);
    texts.push_back(filledIn(MsgDesc::entries()[message.id - 1].format, message.arguments));
  }
  return texts;
}

TraceFile::TraceFile(std::span<uint8_t> memory) {
  size_t const ringSize = memory.size() / kLevels;
  rings_.reserve(kLevels);
  for (size_t i = 0; i < kLevels; ++i) {
    rings_.emplace_back(memory.subspan(i * ringSize, ringSize));
  }
}

TraceFile* TraceFile::current() { return currentFile; }

void TraceFile::currentIs(TraceFile* file) {
  currentFile = file;
  Vesk::TraceHandle::ringLevelsIs(file ? Vesk::kAllTraceLevels : 0);
}

}  // namespace Glimmer
