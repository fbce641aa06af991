#pragma once

#include <string>

#include "lab/random/FaultProfile.h"
#include "lab/random/RandomNet.h"

namespace Lab {

/// Draws what happens to a random net, and writes it as lines of a scenario. Each kind of fault has
/// a function, which writes the repair as well where there is one. What is drawn is drawn statement
/// by statement, so that every compiler draws the same.
class RandomFaults {
 public:
  RandomFaults(RandomNet const& net, Dice& dice, std::string& text)
      : net_(net), dice_(dice), text_(text) {}

  void draw();
  /// Of some kinds alone, which the seed chooses among those of the profile, and more of them.
  void drawSome(FaultProfile profile);

 private:
  using Fault = void (RandomFaults::*)();
  struct Kind {
    uint32_t weight;
    Fault draw;
    FaultProfile profile;
    bool endsProcesses = false;
  };
  static std::vector<Kind> const& kinds();
  static std::vector<Kind> const& kindsOfSwarms();

  void begin();
  static void leaveStatesWhole(std::vector<Kind>& kinds);
  void drawOneOf(std::vector<Kind> const& kinds);
  // Of wires.
  void loseSome();
  void loseShare();
  void delay();
  void shuffle();
  void corrupt();
  void cut();
  void replay();
  // Of interfaces.
  void flapLink();
  void remakeInterface();
  void deviceDown();
  void sendBroken();
  void thirdMember();
  // Of switches.
  void restart();
  void exit();
  void shutDown();
  void hardware();
  void packetNumber();
  void spendKey();
  void loseKey();
  // Of processes and their stores.
  void kill();
  void standStill();
  void clockRate();
  void loseState();
  void fillStore();
  // Of configurations.
  void changeKey();
  void removeKey();
  void publishAnew();
  void priority();
  void rekeyPeriod();
  void delayProtection();
  void suite();
  void suiteOfOne();

  void at(double time, std::string const& action);
  void publishOn(RandomNet::Link const& link, double time, double apart);
  RandomNet::Link const& aLink() { return dice_.oneOf(net_.links); }
  std::string anEndOf(RandomNet::Link const& link) { return link.end(dice_.chance(50)); }
  std::string aSwitch() { return {dice_.oneOf(net_.switches)}; }
  std::string otherThan(std::string const& name) const;
  std::string aPort();
  // "profile p1 on A"
  std::string aProfile();
  // "from A e1" or "both ways at A e1"
  std::string aWay();
  double aWhile(double most = 40) { return dice_.seconds(0.5, most); }

  RandomNet const& net_;
  Dice& dice_;
  std::string& text_;
  double now_ = 0;          ///< of the fault that is drawn
  uint32_t sessions_ = 0;   ///< of 802.1X, each with a key of its own
  uint32_t newKeys_ = 100;  ///< numbers of keys that nobody has had before
};

}  // namespace Lab
