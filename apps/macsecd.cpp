#include <CLI/CLI.hpp>
#include <iostream>

#include "host/config/ConfigFile.h"
#include "linux/Daemon.h"
#include "linux/kernel/InterfaceUse.h"
#include "linux/kernel/KernelHardware.h"

namespace {

constexpr int kWrongArguments = 2;

constexpr char const* kExitStatuses =
    "SIGHUP has it read the configuration again, SIGTERM and SIGINT stop it, SIGUSR1 ends it and\n"
    "leaves the ports as they are, for a restart.\n\n"
    "Exit status:\n"
    "  0  it was stopped; with --check: the configuration has no mistake\n"
    "  1  the configuration has mistakes; they are written to the standard error or the journal\n"
    "  2  the arguments are wrong\n"
    "  3  the machine refuses what it needs\n";

struct Arguments {
  Linux::DaemonOptions daemon;
  bool onlyChecks = false;
};

void addOptions(CLI::App& app, Arguments& arguments) {
  Linux::DaemonOptions& daemon = arguments.daemon;
  daemon.configFile = "/etc/macsecd/macsecd.yaml";
  daemon.counters = "/macsecd-counters";
  daemon.controlSocket = "/run/macsecd/control";
  daemon.stateFile = "/run/macsecd/state";
  daemon.traceFile = "/run/macsecd/trace";
  app.add_option("--config", daemon.configFile, "The configuration")
      ->type_name("FILE")
      ->capture_default_str();
  app.add_flag("--check", arguments.onlyChecks, "Only check the configuration");
  app.add_option("--eap-keys", daemon.eapKeySocket, "Take keys from 802.1X programs at this socket")
      ->type_name("PATH");
  app.add_option("--counters", daemon.counters,
                 "Count frames in shared memory of this name; not in shared memory if empty")
      ->type_name("NAME")
      ->capture_default_str();
  app.add_option("--control", daemon.controlSocket,
                 "Answer macsecctl at this socket; no socket if empty")
      ->type_name("PATH")
      ->capture_default_str();
  app.add_option("--state", daemon.stateFile,
                 "Keep in this file what a restart goes on with; nowhere if empty")
      ->type_name("FILE")
      ->capture_default_str();
  app.add_option("--trace", daemon.traceFile, "Trace to this file while macsecctl has it traced")
      ->type_name("FILE")
      ->capture_default_str();
  app.add_option("--metrics", daemon.metrics,
                 "Serve metrics to Prometheus at this loopback address, such as 127.0.0.1:9464")
      ->type_name("ADDRESS:PORT");
  app.add_flag("--emulate-hardware", daemon.emulateHardware)->group("");
  app.footer(kExitStatuses);
}

int check(std::string const& configFile) {
  auto const read = Macsecd::readConfigFile(configFile);
  std::cerr << Macsecd::textOf(read.diagnostics);
  if (!read.good()) return 1;
  for (std::string const& sentence : Linux::cutOffBy(read.config.interfaces)) {
    std::cerr << configFile << ": warning: " << sentence << "\n";
  }
  return 0;
}

std::unique_ptr<Linux::HardwareDriver> kernelHardware(Macsecd::Host& host, Linux::EventLoop&) {
  return std::make_unique<Linux::KernelHardware>(host);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Secures Ethernet links: agrees on MACsec keys with the peers (IEEE 802.1X MKA)");
  Arguments arguments;
  addOptions(app, arguments);
  try {
    app.parse(argc, argv);
  } catch (CLI::ParseError const& error) {
    return app.exit(error) == 0 ? 0 : kWrongArguments;
  }
  if (arguments.onlyChecks) return check(arguments.daemon.configFile);
  return static_cast<int>(Linux::runDaemon(arguments.daemon, kernelHardware));
}
