#pragma once

#include "model/BasicParameterSet.h"
#include "model/MacsecConstants.h"
#include "model/ParameterSets.h"

namespace Codec {

/// The basic parameter set, the first of every frame, and what it is in a message.
///
///       0               1               2               3
///      +---------------+---------------+-+-+---+-----------------------+
///    0 | version       | priority      |K|D|cap| body length           |
///      +---------------+---------------+-+-+---+-----------------------+
///    4 | SCI: address (6), port (2)                                    |
///      +---------------------------------------------------------------+
///   12 | member identifier (12)                                        |
///      +---------------------------------------------------------------+
///   24 | message number                                                |
///      +---------------------------------------------------------------+
///   28 | algorithm agility                                             |
///      +---------------------------------------------------------------+
///   32 | name of the CAK (1 to 32), zeros up to a multiple of 4        |
///      +---------------------------------------------------------------+
///
/// K: is key server; D: MACsec desired; cap: MACsec capability. The body length is that of all
/// behind it but the zeros: 28 and the length of the name.
struct BasicSet {
  using Set = Macsec::BasicParameterSet;
  using Info = Macsec::BasicInfo;
  using Constants = Macsec::MacsecConstants;

  static constexpr size_t kMaxName = 32;

  template <class Walk>
  static void fields(Walk&& walk) {
    walk.fixed("version", &Set::version, &Set::versionIs, Constants::mkaVersion);
    walk("key server priority", &Set::keyServerPriority, &Set::keyServerPriorityIs,
         &Info::keyServerPriority, &Info::keyServerPriorityIs);
    walk("key server", &Set::keyServer, &Set::keyServerIs, &Info::keyServer, &Info::keyServerIs);
    walk("MACsec desired", &Set::macsecDesired, &Set::macsecDesiredIs, &Info::macsecDesired,
         &Info::macsecDesiredIs);
    walk("MACsec capability", &Set::macsecCapability, &Set::macsecCapabilityIs,
         &Info::macsecCapability, &Info::macsecCapabilityIs);
    walk("SCI", &Set::sci, &Set::sciIs, &Info::sci, &Info::sciIs);
    walk("member identifier", &Set::memberIdentifier, &Set::memberIdentifierIs, &Info::msgId,
         &Info::msgIdIs);
    walk("message number", &Set::messageNumber, &Set::messageNumberIs, &Info::msgNum,
         &Info::msgNumIs);
    walk.fixed("algorithm agility", &Set::algorithmAgility, &Set::algorithmAgilityIs,
               Lumo::NetU32(Constants::mkaAlgorithmAgility));
  }
};

}  // namespace Codec
