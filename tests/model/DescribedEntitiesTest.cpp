#include <gtest/gtest.h>

#include "model/Config.h"
#include "model/MacSecIntfStatus.h"
#include "model/MacSecStatus.h"
#include "model/MkaPamManager.h"
#include "model/Status.h"
#include "tests/support/DescribedLayout.h"

namespace Macsec::Test {
namespace {

using Vesk::make;
using Vesk::Test::expectEveryAttributeDescribed;

Lumo::IntfId const intfId("Ethernet1");

TEST(DescribedEntities, OfTheStatusTreeNameEveryAttribute) {
  expectEveryAttributeDescribed(*make<Status>("status"));
  expectEveryAttributeDescribed(*make<IntfStatus>(intfId, MacsecParams()));
  expectEveryAttributeDescribed(*make<CpStatus>(intfId, MacsecParams()));
  expectEveryAttributeDescribed(*make<MkaPortStatus>(intfId));
  expectEveryAttributeDescribed(*make<MkaActorStatus>("ckn"));
  expectEveryAttributeDescribed(*make<MkaPeer>("peer"));
}

TEST(DescribedEntities, OfTheConfigurationNameEveryAttribute) {
  expectEveryAttributeDescribed(*make<Config>("config"));
  expectEveryAttributeDescribed(*make<IntfConfig>("intf", intfId));
  expectEveryAttributeDescribed(*make<Profile>("profile"));
}

TEST(DescribedEntities, OfTheHardwareNameEveryAttribute) {
  expectEveryAttributeDescribed(*make<MacSecStatus>("slice"));
  expectEveryAttributeDescribed(*make<MacSecIntfStatusPtrDir>("dir"));
  expectEveryAttributeDescribed(*make<MacSecIntfStatus>(intfId));
  expectEveryAttributeDescribed(*make<SaStatus>(AssociationNumber(1), "key", 1u));
}

TEST(DescribedEntities, OfTheExchangeNameEveryAttribute) {
  expectEveryAttributeDescribed(*make<MkaInfo>());
  expectEveryAttributeDescribed(*make<MkaMessageInfo>());
  expectEveryAttributeDescribed(*make<Intf>(intfId));
  expectEveryAttributeDescribed(*make<MkaPamCounter>(intfId));
  expectEveryAttributeDescribed(*make<MkaPamManager>(nullptr));
}

}  // namespace
}  // namespace Macsec::Test
