#pragma once

#include <algorithm>
#include <cerrno>
#include <functional>
#include <map>
#include <system_error>

#include "host/watch/NonceWatch.h"
#include "linux/kernel/MacsecKernel.h"

namespace Linux::Test {

/// The MACsec of a kernel, as Linux 6.1 was measured to answer: it keeps what it is given and
/// refuses what the kernel refuses. Keys are kept in `keys`, and every change that was asked for in
/// `asked`, in order. No nonce may be repeated, whatever becomes of the devices: `nonces` tells.
class FakeKernel final : public MacsecKernel {
 public:
  struct Device {
    MacsecLink link;
    SecY secY;
    bool up = false;
    std::optional<bool> authorized = {};
    uint32_t mtu = 0;  ///< if it was set
  };

  KernelAnswer present() override { return isPresent ? KernelAnswer() : answer(EOPNOTSUPP); }
  KernelAnswer links(std::vector<MacsecLink>& out) override {
    out.clear();
    for (Device const& device : devices) {
      out.push_back(device.link);
      out.back().up = device.up;
    }
    return {};
  }
  KernelAnswer secYs(std::vector<SecY>& out) override {
    noteSent();
    ++dumps;
    out.clear();
    for (Device const& device : devices) out.push_back(device.secY);
    if (afterDump) afterDump();
    return {};
  }

  KernelAnswer device(std::string const& name, MacsecLink& link, SecY& secY) override {
    Device const* const found = device(name);
    if (!found) return answer(ENODEV);
    link = found->link;
    link.up = found->up;
    secY = found->secY;
    secY.txSas.clear();
    secY.rxScs.clear();
    return {};
  }

  KernelAnswer secYAdd(NewSecY const& n) override {
    return ask("make " + n.name, [&] {
      for (Device const& device : devices) {
        if (device.link.name == n.name) return EEXIST;
        if (device.link.parent == n.parent && device.secY.sci == n.sci) return EBUSY;
      }
      if (!hasXpn) return EINVAL;
      int const index = nextIndex++;
      SecY secY{index, n.sci, n.cipher, n.sendSci};
      secY.settings = n.settings;
      devices.push_back({{index, n.parent, n.name}, secY});
      return 0;
    });
  }
  KernelAnswer secYDel(int index) override {
    return ask("remove", [&] {
      return std::erase_if(devices, [=](auto& d) { return d.link.index == index; }) ? 0 : ENODEV;
    });
  }
  KernelAnswer settingsIs(int index, SecYSettings const& settings) override {
    return change(index, "settings", [&](Device& d) { return d.secY.settings = settings, 0; });
  }
  // An AN without SA is taken: the device then drops what it is to send.
  KernelAnswer encodingSaIs(int index, uint8_t an) override {
    return change(index, "encode " + std::to_string(an),
                  [&](Device& d) { return an > 3 ? EINVAL : (d.secY.encodingSa = an, 0); });
  }
  KernelAnswer linkUp(int index) override {
    return change(index, "up", [&](Device& d) {
      d.link.isOurs = true;
      return isParentUp ? (d.up = true, 0) : ENETDOWN;
    });
  }
  KernelAnswer mtuIs(int index, uint32_t mtu) override {
    return change(index, "mtu " + std::to_string(mtu),
                  [&](Device& d) { return mtu > mostMtu ? ERANGE : (d.mtu = mtu, 0); });
  }
  KernelAnswer authorizedIs(int index, bool authorized) override {
    return change(index, authorized ? "authorized" : "unauthorized",
                  [&](Device& d) { return d.authorized = authorized, 0; });
  }

  KernelAnswer rxScAdd(int index, SciNumber sci) override {
    return change(index, "add channel", [&](Device& d) {
      for (Device& other : devices) {
        if (other.link.parent == d.link.parent && rxSc(other, sci)) return EEXIST;
      }
      d.secY.rxScs.push_back({sci, true});
      return 0;
    });
  }
  KernelAnswer rxScDel(int index, SciNumber sci) override {
    return change(index, "remove channel", [&](Device& d) {
      auto const isIt = [=](HeldRxSc const& sc) { return sc.sci == sci; };
      return std::erase_if(d.secY.rxScs, isIt) ? 0 : ENODEV;
    });
  }
  KernelAnswer saAdd(SaPlace const& place, NewSa const& sa) override {
    return atPlace(place, "add", [&](Device& d, std::vector<HeldSa>& sas) {
      size_t const size = d.secY.cipher == kGcmAesXpn256 ? 32 : 16;
      if (sa.packetNumber == 0 || place.an > 3 || sa.key.size() != size) return EINVAL;
      if (find(sas, place.an)) return EBUSY;
      if (!place.rxSci) nonces.begins(senderOf(sa.keyId, sa.ssci), sa.packetNumber);
      sas.push_back({place.an, true, sa.packetNumber, sa.ssci, sa.keyId});
      keys[sa.keyId].assign(sa.key.begin(), sa.key.end());
      return 0;
    });
  }
  KernelAnswer saOnIs(SaPlace const& place, bool on) override {
    return atSa(place, on ? "on" : "off", [&](HeldSa& sa) { return sa.on = on, 0; });
  }
  // The kernel takes lower numbers without a word.
  KernelAnswer packetNumberIs(SaPlace const& place, uint64_t number) override {
    return atSa(place, "number",
                [&](HeldSa& sa) { return number == 0 ? EINVAL : (sa.packetNumber = number, 0); });
  }
  KernelAnswer saDel(SaPlace const& place) override {
    return atPlace(place, "remove", [&](Device&, std::vector<HeldSa>& sas) {
      HeldSa const* const sa = find(sas, place.an);
      if (!sa) return ENODEV;
      if (sa->on) return EBUSY;
      sas.erase(sas.begin() + (sa - sas.data()));
      return 0;
    });
  }

  Device* device(std::string const& name) {
    for (Device& device : devices) {
      if (device.link.name == name) return &device;
    }
    return nullptr;
  }
  static HeldSa* find(std::vector<HeldSa>& sas, uint8_t an) {
    for (HeldSa& sa : sas) {
      if (sa.an == an) return &sa;
    }
    return nullptr;
  }
  static HeldRxSc* rxSc(Device& device, SciNumber sci) {
    for (HeldRxSc& sc : device.secY.rxScs) {
      if (sc.sci == sci) return &sc;
    }
    return nullptr;
  }
  std::vector<std::string> takeAsked() { return std::exchange(asked, {}); }

  std::vector<Device> devices;
  std::map<KeyId, std::vector<uint8_t>> keys;
  Macsecd::NonceWatch nonces;
  std::vector<std::string> asked;
  /// Requests by their text that are refused, whatever the reason, with this error.
  std::map<std::string, int> refused;
  bool isPresent = true, hasXpn = true, isParentUp = true;
  uint32_t mostMtu = 65503;
  int dumps = 0;
  std::function<void()> afterDump = {};  ///< what happens behind the back of whoever listed

 private:
  static Macsecd::NonceWatch::Sender senderOf(KeyId const& keyId, uint32_t ssci) {
    return {"the device", std::string(keyId.begin(), keyId.end()), ssci};
  }
  // How far each transmit SA has come.
  void noteSent() {
    for (Device const& device : devices) {
      for (HeldSa const& sa : device.secY.txSas) {
        nonces.reaches(senderOf(sa.keyId, sa.ssci), sa.packetNumber);
      }
    }
  }
  static KernelAnswer answer(int error) {
    return error ? KernelAnswer{error, std::generic_category().message(error)} : KernelAnswer();
  }
  template <class Do>
  KernelAnswer ask(std::string const& text, Do act) {
    noteSent();
    asked.push_back(text);
    if (auto const found = refused.find(text); found != refused.end()) return answer(found->second);
    return answer(act());
  }
  template <class Do>
  KernelAnswer change(int index, std::string const& text, Do act) {
    return ask(text, [&] {
      for (Device& device : devices) {
        if (device.link.index == index) return act(device);
      }
      return ENODEV;
    });
  }
  template <class Do>
  KernelAnswer atPlace(SaPlace const& place, std::string const& what, Do act) {
    std::string const text = what + (place.rxSci ? " rx " : " tx ") + std::to_string(place.an);
    return change(place.index, text, [&](Device& device) {
      if (!place.rxSci) return act(device, device.secY.txSas);
      HeldRxSc* const sc = rxSc(device, *place.rxSci);
      return sc ? act(device, sc->sas) : ENODEV;
    });
  }
  template <class Do>
  KernelAnswer atSa(SaPlace const& place, std::string const& what, Do act) {
    return atPlace(place, what, [&](Device&, std::vector<HeldSa>& sas) {
      HeldSa* const sa = find(sas, place.an);
      return sa ? act(*sa) : ENODEV;
    });
  }

  int nextIndex = 100;
};

}  // namespace Linux::Test
