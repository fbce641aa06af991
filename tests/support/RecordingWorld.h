#pragma once

#include <string>
#include <vector>

#include "runtime/Entity.h"
#include "runtime/Log.h"
#include "runtime/Trace.h"
#include "runtime/World.h"

namespace Vesk::Test {

/// A world whose clock a test moves and whose sinks keep all that arrives. Current while it lives.
class RecordingWorld final : public World {
 public:
  struct Trace {
    std::string handle;
    FacilityLevel level;
    std::string file;
    int line;
    std::string function;
    std::string text;
  };

  double now() const override { return time; }
  int rand() override { return 0; }
  void randomBytes(std::span<uint8_t> out) override {
    for (uint8_t& byte : out) byte = nextByte++;
  }
  void syslog(LogMessage const& m) override {
    logged.push_back(std::string(m.handle.name()) + ": " + m.text);
    lastHash = m.hash;
    lastFacility = m.facility;
    lastArguments = m.arguments;
  }
  void trace(TraceRecord const& r) override {
    traced.push_back({r.handle, r.level, r.file, r.line, r.function, r.text});
  }
  void attributeWritten(AttributeWrite const& w) override {
    std::string const key = w.key.empty() ? "" : "[" + w.key + "]";
    written.push_back(w.entity.fullName() + "." + w.attribute + key + "=" + w.value);
  }
  void flushAttributes() override { ++flushes; }
  void exit(int status) override { exits.push_back(status); }

  double time = 0.0;
  std::vector<std::string> logged;
  std::vector<std::string> lastArguments;
  uint32_t lastHash = 0;
  uint8_t lastFacility = 0;
  std::vector<Trace> traced;
  std::vector<std::string> written;
  std::vector<int> exits;
  int flushes = 0;
  uint8_t nextByte = 0;

 private:
  WorldScope scope_{*this};
};

}  // namespace Vesk::Test
