#include "lab/scenario/Defect.h"

namespace Lab {

std::vector<Defect> const& defects() {
  static std::vector<Defect> const defects = [] {
    std::vector<Defect> counted;
    for (auto const& [defect, name] : Vesk::EnumNames<Defect>::names) {
      if (defect != Defect::none && defect != Defect::invalid) counted.push_back(defect);
    }
    return counted;
  }();
  return defects;
}

}  // namespace Lab
