#include "linux/process/ProcessWorld.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iostream>

#include "platform/Fips.h"
#include "platform/RandomOctets.h"

namespace Linux {

namespace {

double bootTime() {
  timespec time;
  clock_gettime(CLOCK_BOOTTIME, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}  // namespace

double ProcessWorld::wallTime() const {
  timespec time;
  clock_gettime(CLOCK_REALTIME, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double ProcessWorld::now() const {
  if (!hasTurns_) return bootTime();
  if (!turnTime_) turnTime_ = bootTime();
  return *turnTime_;
}

void ProcessWorld::turnEnds() {
  hasTurns_ = true;
  turnTime_.reset();
}

int ProcessWorld::rand() {
  uint8_t bytes[4];
  randomBytes(bytes);
  return (bytes[0] & 0x7f) << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
}

// Any of it may become part of a key, and FIPS mode is about the generator of those.
void ProcessWorld::randomBytes(std::span<uint8_t> out) { Macsec::randomOctets(out); }

void ProcessWorld::exit(int status) {
  std::cout.flush();
  std::fflush(nullptr);
  std::_Exit(status);
}

int ProcessWorld::fipsModeSet(int on) { return Macsec::FIPS_mode_set(on); }

void ProcessWorld::randCleanup() { Macsec::RAND_cleanup(); }

}  // namespace Linux
