#include "lab/random/RandomNet.h"

#include <fmt/format.h>

namespace Lab {

namespace {

// The keys of one end of a wire: name and text by number, 0 for none.
struct Keys {
  uint32_t primary = 0;
  uint32_t primaryText = 0;
  uint32_t fallback = 0;
};

struct KeyPlan {
  Keys a, b;
  bool dot1x = false;
};

constexpr uint32_t kFirst = 1, kSecond = 2, kThird = 3, kWrongText = 9;

Keys keys(uint32_t primary, uint32_t fallback) { return {primary, primary, fallback}; }

// What the two ends have: in most scenarios at least one key fits.
KeyPlan drawKeys(Dice& dice) {
  uint32_t const fallback = dice.chance(50) ? kSecond : 0;
  Keys const usual = keys(kFirst, fallback), both = keys(kFirst, kSecond);
  switch (dice.number(0, 9)) {
    case 0:  // each one's primary key is the other's fallback key
      return {both, keys(kSecond, kFirst)};
    case 1:  // the same name for two keys
      return {both, {kFirst, kWrongText, kSecond}};
    case 2:
      return {both, keys(kThird, kSecond)};
    case 3:  // one's only key is the other's fallback key
      return {keys(kFirst, 0), keys(kThird, kFirst)};
    case 4:
      return {usual, keys(kFirst, 0)};
    case 5:
    case 6: {
      Keys const published{0, 0, fallback};
      return {published, published, true};
    }
    default:
      return {usual, usual};
  }
}

std::string keyLine(char const* word, uint32_t name, uint32_t text) {
  if (name == 0) return {};
  return fmt::format("        {}: {{ckn: {}, cak: {}}}\n", word, keyName(name), keyText(text));
}

std::string profileText(RandomNet::Link const& link, Keys const& keys, Dice& dice) {
  std::string text = fmt::format("      {}:\n", link.profile());
  text += link.dot1x ? "        dot1x: true\n" : keyLine("key", keys.primary, keys.primaryText);
  text += keyLine("fallback-key", keys.fallback, keys.fallback);
  text += fmt::format("        key-server-priority: {}\n", dice.oneOf<int>({10, 16, 20}));
  if (dice.chance(25)) text += fmt::format("        rekey-period: {}\n", dice.number(15, 60));
  return text;
}

std::string interfaceText(RandomNet::Link const& link, Dice& dice) {
  return fmt::format("      {}: {{profile: {}{}}}\n", link.interface(), link.profile(),
                     dice.chance(10) ? ", on-peer-loss: close" : "");
}

// The switch with this letter; the first has the lowest address in most scenarios.
void drawSwitch(char letter, std::vector<RandomNet::Link> const& links,
                std::vector<Keys> const& keys, Dice& dice, std::string& text) {
  uint32_t const number = static_cast<uint32_t>(letter - 'A') + 1;
  uint32_t const address = dice.chance(30) ? 10 - number : number;
  text += fmt::format("switch {}\n  mac 02:00:00:00:00:{:02x}\n", letter, address);
  if (dice.chance(50)) text += fmt::format("  start at {}\n", dice.seconds(0, 8));
  text += "  config:\n";
  if (dice.chance(10)) text += "    delay-protection: true\n";
  text += "    profiles:\n";
  for (size_t i = 0; i < links.size(); ++i) text += profileText(links[i], keys[i], dice);
  text += "    interfaces:\n";
  for (auto const& link : links) text += interfaceText(link, dice);
}

}  // namespace

std::string keyName(uint32_t number) { return fmt::format("c0de{:04x}", number); }

std::string keyText(uint32_t number) { return fmt::format("{:032x}", 0x1234567800000000 + number); }

RandomNet drawNet(Dice& dice, std::string& text) {
  RandomNet net;
  std::vector<Keys> ofA, ofB;
  uint32_t const links = dice.number(1, 3);
  for (uint32_t number = 1; number <= links; ++number) {
    KeyPlan const plan = drawKeys(dice);
    if (number == 1) net.hasThird = !plan.dot1x && dice.chance(20);
    net.links.push_back({number, plan.dot1x, net.hasThird && number == 1});
    ofA.push_back(plan.a);
    ofB.push_back(plan.b);
  }
  drawSwitch('A', net.links, ofA, dice, text);
  drawSwitch('B', net.links, ofB, dice, text);
  if (net.hasThird) drawSwitch('C', {net.links[0]}, {ofA[0]}, dice, text);
  for (auto const& link : net.links) {
    text += fmt::format("wire A {0} to B {0}{1}\n", link.interface(),
                        link.hasThird ? " to C " + link.interface() : "");
  }
  return net;
}

}  // namespace Lab
