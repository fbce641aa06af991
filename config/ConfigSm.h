#pragma once

#include "model/Config.h"
#include "model/Status.h"
#include "platform/EapKeyStatus.h"
#include "platform/EthIntfStatus.h"
#include "platform/MessageCounters.h"
#include "runtime/NestedReactors.h"
#include "runtime/Reactor.h"

namespace Macsec {

/// Turns the configuration tree into the `IntfStatus` entries of the status tree, which are all
/// that the engine sees of configuration. An entry exists while some profile binds the interface
/// and has something to run on: a configured primary key, or 802.1X enabled.
class ConfigSm final : public Vesk::StateMachine {
 public:
  /// `eapKeyStatus` and `brineCounters` may be null where there is no 802.1X module and no table of
  /// message counters.
  ConfigSm(Vesk::Ptr<Config const> config, Vesk::Ptr<Status> status,
           Vesk::Ptr<Dot1x::EapKeyStatus const> eapKeyStatus,
           Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
           Vesk::Ptr<Brine::MessageCounters> brineCounters);
  ~ConfigSm() override;
  static Vesk::Ptr<ConfigSm> ConfigSmIs(
      Vesk::Ptr<Config const> config, Vesk::Ptr<Status> status,
      Vesk::Ptr<Dot1x::EapKeyStatus const> eapKeyStatus,
      Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
      Vesk::Ptr<Brine::MessageCounters> brineCounters);
  void hasNotificationActiveIs(bool active) override;

  Vesk::Ptr<Config const> const& config() const;
  /// Follows another tree from now on.
  void configIs(Vesk::Ptr<Config const> config);
  Vesk::Ptr<Status> const& status() const;
  void statusIs(Vesk::Ptr<Status> status);
  Vesk::Ptr<Dot1x::EapKeyStatus const> const& eapKeyStatus() const;
  Vesk::Ptr<Interface::EthIntfStatusDir const> const& ethIntfStatusDir() const;
  Vesk::Ptr<Brine::MessageCounters> const& brineCounters() const { return brineCounters_; }
  bool initialized() const { return initialized_; }
  /// How many profiles have a reactor.
  size_t profiles() const { return profile_.members(); }

  // Profiles.
  void handleInitialized();
  // Keys of 802.1X.
  void handleEapKeyStatus();
  void handleEapKeyStatus(Lumo::IntfId intfId);
  /// The CAK and CKN of a master session key (IEEE 802.1X-2010, 6.2.2); the default value when they
  /// can't be derived.
  Cak deriveKey(CipherSuite cipher, Dot1x::EapKey const& eapKey) const;
  // The FIPS mode of the process. It is set once; what would change it ends the process.
  void updateFipsStatus();
  void handleFipsRestrictions();
  void maybeUpdateFipsStatus();
  void cleanUpAndDie();
  // Delay protection.
  void handleDelayProtection();
  // Message counters.
  void handleClearMkaCounters();
  void doClearCounters(Lumo::IntfId intfId);

 protected:
  void end() override;

 private:
  struct ConfigReactor;
  struct StatusReactor;
  struct EapKeyStatusReactor;
  struct EthIntfStatusDirReactor;
  struct ProfileReactor;

  bool isStale(IntfStatus const& intfStatus) const;
  void followProfiles();

  Vesk::Ptr<ConfigReactor> config_;
  Vesk::Ptr<StatusReactor> status_;
  Vesk::Ptr<EapKeyStatusReactor> eapKeyStatus_;
  Vesk::Ptr<EthIntfStatusDirReactor> ethIntfStatusDir_;
  Vesk::Ptr<Brine::MessageCounters> brineCounters_;
  Vesk::NestedReactors<ProfileReactor, Vesk::Name> profile_;
  bool initialized_ = false;
};

/// Builds the state machine with its notification on.
Vesk::Ptr<ConfigSm> configSmFactory(Vesk::Ptr<Config const> config, Vesk::Ptr<Status> status,
                                    Vesk::Ptr<Dot1x::EapKeyStatus const> eapKeyStatus,
                                    Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
                                    Vesk::Ptr<Brine::MessageCounters> brineCounters);

/// Whether two keys differ: by name, or by clear text. The encoded form is never compared.
bool keysDiffer(Cak const& a, Cak const& b);

}  // namespace Macsec
