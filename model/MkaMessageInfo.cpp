#include "model/MkaMessageInfo.h"

namespace Macsec {

Vesk::Ptr<MkaInfo> MkaMessageInfo::mkaInfoIs() {
  if (mkaInfo_) return mkaInfo_.ptr();
  childIs<kMkaInfo>(mkaInfo_, Vesk::make<MkaInfo>());
  return mkaInfo_.ptr();
}

Vesk::Ptr<MkaInfo> MkaMessageInfo::mkaInfoDel() {
  Vesk::Ptr<MkaInfo> gone = mkaInfo_.ptr();
  childIs<kMkaInfo>(mkaInfo_, Vesk::Ptr<MkaInfo>());
  return gone;
}

}  // namespace Macsec
