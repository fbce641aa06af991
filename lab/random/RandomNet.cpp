#include "lab/random/RandomNet.h"

#include <fmt/format.h>

#include <algorithm>

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

// Drawn one after the other: in what order the parts of an expression are worked out is the
// compiler's choice.
std::string profileText(RandomNet::Link const& link, Keys const& keys, Dice& dice) {
  std::string text = fmt::format("      {}:\n", link.profile());
  text += link.dot1x ? "        dot1x: true\n" : keyLine("key", keys.primary, keys.primaryText);
  text += keyLine("fallback-key", keys.fallback, keys.fallback);
  text += fmt::format("        key-server-priority: {}\n", dice.oneOf<int>({10, 16, 20}));
  if (dice.chance(25)) text += fmt::format("        rekey-period: {}\n", dice.number(20, 60));
  return text;
}

std::string interfaceText(RandomNet::Link const& link, Dice& dice) {
  return fmt::format("      {}: {{profile: {}{}}}\n", link.interface(), link.profile(),
                     dice.chance(10) ? ", on-peer-loss: close" : "");
}

// What one switch has on one of its links.
struct Port {
  RandomNet::Link const& link;
  Keys const& keys;
};

// The switch with this letter; the first has the lowest address in most scenarios.
void drawSwitch(char letter, std::vector<Port> const& ports, Dice& dice, std::string& text) {
  uint32_t const number = static_cast<uint32_t>(letter - 'A') + 1;
  uint32_t const address = dice.chance(30) ? 60 - number : number;
  text += fmt::format("switch {}\n  mac 02:00:00:00:00:{:02x}\n", letter, address);
  if (dice.chance(50)) text += fmt::format("  start at {}\n", dice.seconds(0, 8));
  text += "  config:\n";
  if (dice.chance(10)) text += "    delay-protection: true\n";
  text += "    profiles:\n";
  for (Port const& port : ports) text += profileText(port.link, port.keys, dice);
  text += "    interfaces:\n";
  for (Port const& port : ports) text += interfaceText(port.link, dice);
}

// Each switch has a link to the one before it; all others go wherever they go.
void drawLinks(RandomNet& net, NetSize const& most, Dice& dice) {
  auto const switches = dice.number(2, most.switches);
  for (uint32_t i = 0; i < switches; ++i) net.switches.push_back(static_cast<char>('A' + i));
  uint32_t const links = std::max(switches - 1, dice.number(1, most.links));
  for (uint32_t number = 1; number <= links; ++number) {
    bool const isFurther = number >= switches;
    uint32_t const to = isFurther ? dice.number(1, switches - 1) : number;
    uint32_t const from = isFurther ? dice.number(0, to - 1) : to - 1;
    net.links.push_back({number, net.switches[from], net.switches[to]});
  }
}

}  // namespace

std::string keyName(uint32_t number) { return fmt::format("c0de{:04x}", number); }

std::string keyText(uint32_t number) { return fmt::format("{:032x}", 0x1234567800000000 + number); }

RandomNet drawNet(Dice& dice, NetSize const& most, std::string& text) {
  RandomNet net;
  drawLinks(net, most, dice);
  std::vector<KeyPlan> plans;
  for (RandomNet::Link& link : net.links) {
    plans.push_back(drawKeys(dice));
    link.dot1x = plans.back().dot1x;
  }
  net.hasThird = !net.links[0].dot1x && dice.chance(20);
  net.links[0].hasThird = net.hasThird;
  for (char const letter : net.switches) {
    std::vector<Port> ports;
    for (size_t i = 0; i < net.links.size(); ++i) {
      RandomNet::Link const& link = net.links[i];
      if (link.a == letter) ports.push_back({link, plans[i].a});
      if (link.b == letter) ports.push_back({link, plans[i].b});
    }
    drawSwitch(letter, ports, dice, text);
  }
  if (net.hasThird) drawSwitch('Z', {{net.links[0], plans[0].a}}, dice, text);
  for (auto const& link : net.links) {
    text += fmt::format("wire {1} {0} to {2} {0}{3}\n", link.interface(), link.a, link.b,
                        link.hasThird ? " to Z " + link.interface() : "");
  }
  return net;
}

}  // namespace Lab
