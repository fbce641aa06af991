#pragma once

#include <map>
#include <optional>

#include "model/Status.h"

namespace Macsecd {

/// How long a key has been in use for transmission.
struct KeyAge {
  double seconds = 0;
  /// It was in use before anybody looked, so that it may be older.
  bool isLeast = false;
};

/// Knows since when each port sends with its key.
class KeyAges {
 public:
  explicit KeyAges(Vesk::Ptr<Macsec::Status const> status);
  ~KeyAges();
  KeyAges(KeyAges const&) = delete;
  KeyAges& operator=(KeyAges const&) = delete;

  /// Nothing for a port that doesn't send.
  std::optional<KeyAge> age(Lumo::IntfId intfId) const;

 private:
  struct StatusReactor;
  struct CpStatusReactor;
  struct Since {
    Macsec::Sak sak;
    double time = 0;
    bool isLeast = false;
  };

  void look(Macsec::CpStatus const& cpStatus, bool isFirst);

  Vesk::Ptr<StatusReactor> status_;
  std::map<Lumo::IntfId, Since> since_;
};

}  // namespace Macsecd
