#pragma once

#include <prometheus/collectable.h>

#include <string>

#include "host/port/PortHistory.h"
#include "linux/process/LoopDelay.h"
#include "linux/serve/StreamServer.h"

namespace Linux {

/// What a switch tells Prometheus: docs/metrics.md lists it. Nothing is kept but what the tree
/// doesn't hold; the rest is read when it is asked for.
class Metrics final : public prometheus::Collectable {
 public:
  /// In the world of the host. All have to outlive this; `control` and `eapKeys` count what the
  /// control socket and the feed of 802.1X keys refused.
  Metrics(Macsecd::Host& host, LoopDelay const& delay, StreamServer::Counts const& control,
          StreamServer::Counts const& eapKeys);

  std::vector<prometheus::MetricFamily> Collect() const override;
  /// All of it in the text format 0.0.4.
  std::string text() const;

 private:
  Macsecd::Host& host_;
  LoopDelay const& delay_;
  StreamServer::Counts const& control_;
  StreamServer::Counts const& eapKeys_;
  Macsecd::PortHistory history_;
};

}  // namespace Linux
