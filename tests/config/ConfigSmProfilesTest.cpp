#include "tests/config/ConfigFixture.h"

namespace Macsec {
namespace {

using ::testing::ElementsAre;

TEST_F(Configuration, AProfileWithAKeyMakesTheStatusOfItsInterface) {
  begin();
  auto profile = config->profileIs("one");
  profile->cipherSuiteIs(CipherSuite::gcmAesXpn256);
  profile->includeSciIs(true);
  profile->intfIs(kIntf, true);
  EXPECT_FALSE(intfStatus());
  Cak const key = Support::key("6162");
  profile->keyIs(key);
  ASSERT_TRUE(intfStatus());
  EXPECT_EQ(intfStatus()->macsecParams(), MacsecParams(CipherSuite::gcmAesXpn256, true));
  EXPECT_EQ(intfStatus()->profileName(), "one");
  EXPECT_EQ(intfStatus()->keyServerPriority(), 16);
  EXPECT_EQ(intfStatus()->key(), key);
  EXPECT_EQ(intfStatus()->dot1xType(), 2);
  EXPECT_EQ(world.traced(": Creating an intfStatus for Ethernet1"), 1u);
  EXPECT_EQ(world.traced(": Updating intfStatus for Ethernet1"), 1u);
  profile->defaultKeyIs(Support::key("6364"));
  EXPECT_EQ(world.traced(": IntfStatus Ethernet1 already exists."), 1u);
}

TEST_F(Configuration, AFallbackKeyAloneMakesNothingAndKeepsNothing) {
  begin();
  auto profile = config->profileIs("one");
  profile->intfIs(kIntf, true);
  profile->defaultKeyIs(Support::key("6364"));
  EXPECT_FALSE(intfStatus());
  profile->keyIs(Support::key("6162"));
  EXPECT_TRUE(intfStatus());
  profile->keyIs(Cak());
  EXPECT_FALSE(intfStatus());
  EXPECT_EQ(world.traced(": Deleting intfStatus for Ethernet1"), 1u);
}

TEST_F(Configuration, AnInterfaceThatIsListedAsFalseIsNotBound) {
  begin();
  auto profile = bind();
  profile->intfIs(kIntf, false);
  EXPECT_FALSE(intfStatus());
  profile->intfIs(kIntf, true);
  EXPECT_TRUE(intfStatus());
  profile->intfDel(kIntf);
  EXPECT_FALSE(intfStatus());
}

TEST_F(Configuration, ItCopiesInOrder) {
  begin();
  auto first = bind();
  first->keyServerPriorityIs(1);
  auto second = config->profileIs("two");
  second->keyServerPriorityIs(9);
  second->sessionReKeyPeriodIs(30);
  second->defaultKeyIs(Support::key("6364"));
  second->groupCakIs(GroupCak(true, 5));
  second->keyIs(Support::key("6566"));
  intfStatus()->dot1xTypeIs(0);
  auto writes = Vesk::make<IntfWrites>(intfStatus());
  second->intfIs(kIntf, true);
  EXPECT_THAT(writes->order, ElementsAre("profileName", "priority", "rekey", "defaultKey",
                                         "groupCak", "dot1xType", "key"));
  EXPECT_EQ(intfStatus()->reKeyPeriod(), 30.0);
  EXPECT_EQ(intfStatus()->groupCakLifetime(), 300u);
  second->groupCakIs(GroupCak(false, 5));
  EXPECT_EQ(intfStatus()->groupCakLifetime(), 0u);
  Vesk::retire(writes);
}

TEST_F(Configuration, AnUnchangedProfileWritesNothing) {
  begin();
  auto profile = bind();
  auto writes = Vesk::make<IntfWrites>(intfStatus());
  profile->keyServerPriorityIs(7);
  EXPECT_THAT(writes->order, ElementsAre("priority"));
  EXPECT_EQ(world.traced(": Updating intfStatus Ethernet1"), 1u);
  Vesk::retire(writes);
}

TEST_F(Configuration, AttributesOfAProfileWithoutStatusChangeNothing) {
  begin();
  auto profile = config->profileIs("one");
  profile->intfIs(kIntf, true);
  profile->keyServerPriorityIs(7);
  profile->sessionReKeyPeriodIs(7);
  profile->groupCakIs(GroupCak(true, 5));
  EXPECT_TRUE(status->intfStatus().empty());
}

// Neither the value of the binding nor the name in the status is looked at.
TEST_F(Configuration, AttributesReachAnInterfaceThatIsListedAsFalse) {
  begin();
  bind();
  auto second = config->profileIs("two");
  second->intfIs(kIntf, false);
  second->keyIs(Support::key("6566"));
  EXPECT_EQ(intfStatus()->profileName(), "one");
  second->keyServerPriorityIs(7);
  EXPECT_EQ(intfStatus()->profileName(), "two");
  EXPECT_EQ(intfStatus()->keyServerPriority(), 7);
}

TEST_F(Configuration, OfTwoProfilesWithOneInterfaceTheLaterOwnsIt) {
  begin();
  auto first = bind("one");
  auto const made = intfStatus();
  auto second = bind("two", kIntf, Support::key("6566"));
  EXPECT_EQ(intfStatus(), made);
  EXPECT_EQ(intfStatus()->profileName(), "two");
  first->intfDel(kIntf);
  EXPECT_EQ(intfStatus(), made);
  second->intfDel(kIntf);
  EXPECT_FALSE(intfStatus());
}

TEST_F(Configuration, AnotherEncodingOfTheSameKeyDisturbsNobody) {
  begin();
  auto profile = bind();
  profile->defaultKeyIs(Support::key("6364"));
  auto writes = Vesk::make<IntfWrites>(intfStatus());
  profile->keyIs(Support::key("6162"));
  profile->defaultKeyIs(Support::key("6364"));
  EXPECT_THAT(writes->order, ElementsAre());
  EXPECT_NE(profile->key(), intfStatus()->key());
  profile->keyIs(Support::key("6162", Support::kOtherCak));
  EXPECT_THAT(writes->order, ElementsAre("key"));
  Vesk::retire(writes);
}

TEST(KeysDiffer, ByNameOrByClearText) {
  Support::TestWorld world;
  Vesk::WorldScope scope(world);
  EXPECT_FALSE(keysDiffer(Support::key("6162"), Support::key("6162")));
  EXPECT_TRUE(keysDiffer(Support::key("6162"), Support::key("6163")));
  EXPECT_TRUE(keysDiffer(Support::key("6162"), Support::key("6162", Support::kOtherCak)));
  EXPECT_FALSE(keysDiffer(Cak(), Cak()));
  EXPECT_TRUE(keysDiffer(Cak(), Support::key("6162")));
  EXPECT_TRUE(keysDiffer(Cak("6162", "w1:00"), Cak("6162", "w1:01"))) << "neither decodes";
  EXPECT_FALSE(keysDiffer(Cak("6162", "w1:00"), Cak("6162", "w1:00")));
}

class Recreation : public Configuration, public ::testing::WithParamInterface<bool> {
 protected:
  void change(Vesk::Ptr<Profile> const& profile) {
    if (GetParam()) {
      profile->cipherSuiteIs(CipherSuite::gcmAesXpn256);
    } else {
      profile->includeSciIs(true);
    }
  }
  MacsecParams changed() const {
    return GetParam() ? MacsecParams(CipherSuite::gcmAesXpn256, false)
                      : MacsecParams(CipherSuite::gcmAesXpn128, true);
  }
};

TEST_P(Recreation, MakesTheStatusAnew) {
  begin();
  auto profile = bind();
  auto const former = intfStatus();
  change(profile);
  ASSERT_TRUE(intfStatus());
  EXPECT_NE(intfStatus(), former);
  EXPECT_EQ(intfStatus()->macsecParams(), changed());
  EXPECT_EQ(intfStatus()->key(), profile->key());
  EXPECT_EQ(world.traced(GetParam() ? " Updating Cipher" : " Updating SCI Inclusion Flag "), 1u);
}

TEST_P(Recreation, MakesNothingWithoutAKeyOrWithoutAnInterface) {
  begin();
  auto profile = config->profileIs("one");
  change(profile);
  profile->intfIs(kIntf, true);
  EXPECT_TRUE(status->intfStatus().empty());
}

TEST_P(Recreation, DeletesAlsoTheStatusThatAnotherProfileOwns) {
  begin();
  auto first = bind("one");
  bind("two", kIntf, Support::key("6566"));
  change(first);
  EXPECT_EQ(intfStatus()->profileName(), "one");
  EXPECT_EQ(intfStatus()->macsecParams(), changed());
}

INSTANTIATE_TEST_SUITE_P(CipherAndSci, Recreation, ::testing::Bool());

TEST_F(Configuration, AnExistingStatusKeepsItsParameters) {
  begin();
  bind("one");
  auto second = config->profileIs("two");
  second->cipherSuiteIs(CipherSuite::gcmAesXpn256);
  second->keyIs(Support::key("6566"));
  second->intfIs(kIntf, true);
  EXPECT_EQ(intfStatus()->macsecParams(), MacsecParams());
  EXPECT_EQ(intfStatus()->profileName(), "two");
}

TEST_F(Configuration, ADeletedProfileTakesTheInterfacesThatNameIt) {
  begin();
  bind("one");
  auto profile = config->profile("one");
  profile->intfIs(kOther, true);
  EXPECT_EQ(status->intfStatus().members(), 2u);
  EXPECT_EQ(sm->profiles(), 1u);
  config->profileDel("one");
  EXPECT_EQ(sm->profiles(), 0u);
  EXPECT_FALSE(intfStatus());
  EXPECT_TRUE(status->intfStatus(kOther));
}

// Start.

TEST_F(Configuration, AtItsStartItTakesUpProfilesAndRemovesWhatIsStale) {
  auto profile = bind();
  profile->intfIs(kOther, false);
  Lumo::IntfId const gone("Ethernet8"), unnamed("Ethernet9");
  status->intfStatusIs(kIntf, MacsecParams())->profileNameIs("one");
  status->intfStatusIs(kOther, MacsecParams())->profileNameIs("one");
  status->intfStatusIs(gone, MacsecParams())->profileNameIs("gone");
  status->intfStatusIs(unnamed, MacsecParams());
  auto const kept = intfStatus();
  begin();
  EXPECT_TRUE(sm->initialized());
  EXPECT_EQ(intfStatus(), kept);
  EXPECT_EQ(kept->key(), profile->key());
  EXPECT_EQ(status->intfStatus().members(), 1u);
  EXPECT_EQ(world.traced(": Deleting stale intfStatus for Ethernet8"), 1u);
  EXPECT_EQ(world.traced(": Deleting stale intfStatus for Ethernet9"), 1u);
}

TEST_F(Configuration, AStatusWhoseProfileHasNoKeyIsStaleUnlessTheKeyComesFrom8021X) {
  auto profile = config->profileIs("one");
  profile->intfIs(kIntf, true);
  status->intfStatusIs(kIntf, MacsecParams())->profileNameIs("one");
  begin();
  EXPECT_FALSE(intfStatus());
  sm = nullptr;
  profile->dot1xEnabledIs(true);
  status->intfStatusIs(kIntf, MacsecParams())->profileNameIs("one");
  begin();
  EXPECT_TRUE(intfStatus());
}

TEST_F(Configuration, StaleEntriesGoBeforeItIsInitialized) {
  status->intfStatusIs(kIntf, MacsecParams())->profileNameIs("gone");
  struct Watch final : Vesk::Reactor<Status const, Configuration, Watch> {
    using Reactor::Reactor;
    void onIntfStatus(Lumo::IntfId const&) override { order.push_back("intfStatus"); }
    void onMkpduPeriod() override { order.push_back("mkpduPeriod"); }
    void onDelayProtection() override { order.push_back("delayProtection"); }
    void onMkpduThreshold() override { order.push_back("mkpduThreshold"); }
    std::vector<std::string> order;
  };
  config->delayProtectionIs(true);
  status->mkpduThresholdIs(9);
  auto watch = Vesk::make<Watch>(*this, status);
  begin();
  EXPECT_THAT(watch->order,
              ElementsAre("intfStatus", "mkpduPeriod", "delayProtection", "mkpduThreshold"));
  Vesk::retire(watch);
}

/// Does something once, inside the next notification of an interface's status.
struct InsideIntfStatus final : Vesk::Reactor<Status const, int, InsideIntfStatus> {
  InsideIntfStatus(Vesk::Ptr<Status> const& status, std::function<void()> once)
      : Reactor(none, status), deed(std::move(once)) {}
  void onIntfStatus(Lumo::IntfId const&) override {
    if (deed) std::exchange(deed, nullptr)();
  }
  std::function<void()> deed;
  static inline int none = 0;
};

TEST_F(Configuration, AProfileDeletedWhileItsEntriesAreMadeAnewLeavesNone) {
  auto profile = bind();
  begin();
  auto inside =
      Vesk::make<InsideIntfStatus>(status, [this] { config->profileDel(Vesk::Name("one")); });
  profile->cipherSuiteIs(CipherSuite::gcmAesXpn256);
  EXPECT_FALSE(intfStatus());
  Vesk::retire(inside);
}

TEST_F(Configuration, DroppedInsideANotificationWritesNothingMore) {
  auto profile = bind();
  begin();
  auto inside = Vesk::make<InsideIntfStatus>(status, [this] { sm = nullptr; });
  profile->cipherSuiteIs(CipherSuite::gcmAesXpn256);
  EXPECT_FALSE(intfStatus());
  Vesk::retire(inside);
}

TEST_F(Configuration, DelayProtectionShortensThePeriodAndKeepsTheThreshold) {
  begin();
  EXPECT_FALSE(status->delayProtection());
  config->delayProtectionIs(true);
  EXPECT_TRUE(status->delayProtection());
  EXPECT_EQ(status->mkpduPeriod(), 0.5);
  EXPECT_EQ(status->mkpduThreshold(), 2);
  config->delayProtectionIs(false);
  EXPECT_FALSE(status->delayProtection());
  EXPECT_EQ(status->mkpduPeriod(), 2.0);
  EXPECT_EQ(status->mkpduThreshold(), 2);
  EXPECT_EQ(world.traced(" Updating Delay Protection Flag"), 3u);
}

TEST_F(Configuration, ItIsDeafAfterItsEnd) {
  begin();
  sm = nullptr;
  bind();
  config->delayProtectionIs(true);
  EXPECT_FALSE(intfStatus());
  EXPECT_FALSE(status->delayProtection());
}

}  // namespace
}  // namespace Macsec
