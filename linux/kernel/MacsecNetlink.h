#pragma once

#include "linux/kernel/NetlinkSocket.h"

namespace Linux {

/// The MACsec of the kernel that this process runs on, over rtnetlink (devices) and generic netlink
/// (channels and associations). CAP_NET_ADMIN is needed for every change; reading needs nothing.
class MacsecNetlink final : public MacsecKernel {
 public:
  /// Works in the network namespace of the thread that makes it. Throws `std::system_error`.
  MacsecNetlink();

  KernelAnswer present() override;
  KernelAnswer links(std::vector<MacsecLink>& out) override;
  KernelAnswer secYs(std::vector<SecY>& out) override;
  KernelAnswer device(std::string const& name, MacsecLink& link, SecY& secY) override;
  KernelAnswer secYAdd(NewSecY const& secY) override;
  KernelAnswer secYDel(int index) override;
  KernelAnswer settingsIs(int index, SecYSettings const& settings) override;
  KernelAnswer encodingSaIs(int index, uint8_t an) override;
  KernelAnswer linkUp(int index) override;
  KernelAnswer mtuIs(int index, uint32_t mtu) override;
  KernelAnswer authorizedIs(int index, bool authorized) override;
  KernelAnswer rxScAdd(int index, SciNumber sci) override;
  KernelAnswer rxScDel(int index, SciNumber sci) override;
  KernelAnswer saAdd(SaPlace const& place, NewSa const& sa) override;
  KernelAnswer saOnIs(SaPlace const& place, bool on) override;
  KernelAnswer packetNumberIs(SaPlace const& place, uint64_t packetNumber) override;
  KernelAnswer saDel(SaPlace const& place) override;

 private:
  template <class Fill>
  KernelAnswer macsecLink(int index, Fill fill);
  template <class Fill>
  KernelAnswer request(uint8_t command, int index, Fill fill);
  template <class Fill>
  KernelAnswer saRequest(uint8_t onTx, uint8_t onRx, SaPlace const& place, Fill fill);
  KernelAnswer rxScRequest(uint8_t command, int index, SciNumber sci);

  KernelAnswer checked(KernelAnswer answer);

  NetlinkSocket route_;
  NetlinkSocket generic_;
  int family_ = -1;  // unknown until the kernel has MACsec
};

}  // namespace Linux
