#pragma once

#include <string>
#include <vector>

#include "runtime/Entity.h"
#include "tests/support/TestWorld.h"

namespace Vesk::Test {

/// A test world that is current while it lives, counts its random bytes up from 0, and keeps all
/// that the runtime says about what arrives at its sinks.
class RecordingWorld final : public Support::TestWorld {
 public:
  struct Trace {
    std::string handle;
    FacilityLevel level;
    std::string file;
    int line;
    std::string function;
    std::string text;
  };

  void randomBytes(std::span<uint8_t> out) override {
    for (uint8_t& byte : out) byte = nextByte++;
  }
  void syslog(LogMessage const& m) override {
    TestWorld::syslog(m);
    logged.push_back(std::string(m.handle.name()) + ": " + m.text);
    lastHash = m.hash;
    lastFacility = m.facility;
    lastArguments = m.arguments;
  }
  void trace(TraceRecord const& r) override {
    TestWorld::trace(r);
    traced.push_back({r.handle, r.level, r.file, r.line, r.function, r.text});
  }
  void attributeWritten(AttributeWrite const& w) override {
    std::string const key = w.key.empty() ? "" : "[" + w.key + "]";
    written.push_back(w.entity.fullName() + "." + w.attribute + key + "=" + w.value);
  }
  void flushAttributes() override { ++flushes; }

  std::vector<std::string> logged;
  std::vector<std::string> lastArguments;
  uint32_t lastHash = 0;
  uint8_t lastFacility = 0;
  std::vector<Trace> traced;
  std::vector<std::string> written;
  int flushes = 0;
  uint8_t nextByte = 0;

 private:
  WorldScope scope_{*this};
};

}  // namespace Vesk::Test
