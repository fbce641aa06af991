#include "linux/process/ServiceManager.h"

#include <systemd/sd-daemon.h>

#include <ctime>

namespace Linux::ServiceManager {

void ready() { sd_notify(0, "READY=1"); }

// The time tells it which of two reloads has ended.
void reloading() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  sd_notifyf(0, "RELOADING=1\nMONOTONIC_USEC=%lld",
             static_cast<long long>(time.tv_sec) * 1000000 + time.tv_nsec / 1000);
}

void stopping() { sd_notify(0, "STOPPING=1"); }

}  // namespace Linux::ServiceManager
