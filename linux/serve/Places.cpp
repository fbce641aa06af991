#include "linux/serve/Places.h"

#include <map>
#include <tuple>

namespace Linux {

namespace {

class Choice {
 public:
  Choice(std::vector<Place> const& places, Place const& newcomer) : newcomer_(newcomer) {
    for (Place const& place : places) ++held_[place.user];
  }

  bool mayGo(Place const& place) const {
    if (newcomer_.isOwner) return true;
    if (place.isIdle) {
      return place.user == newcomer_.user || held(place.user) > held(newcomer_.user);
    }
    return !place.isOwner && held(place.user) > held(newcomer_.user) + 1;
  }
  bool goesBefore(Place const& a, Place const& b) const { return rank(a) < rank(b); }

 private:
  size_t held(uid_t user) const {
    auto const found = held_.find(user);
    return found == held_.end() ? 0 : found->second;
  }
  std::tuple<bool, bool, long, uint64_t> rank(Place const& place) const {
    return {!place.isIdle, !place.isIdle && place.isOwner, -static_cast<long>(held(place.user)),
            place.lastUsed};
  }

  std::map<uid_t, size_t> held_;
  Place const& newcomer_;
};

}  // namespace

std::optional<size_t> placeGivenUp(std::vector<Place> const& places, Place const& newcomer) {
  Choice const choice(places, newcomer);
  std::optional<size_t> best;
  for (size_t i = 0; i < places.size(); ++i) {
    if (!choice.mayGo(places[i])) continue;
    if (!best || choice.goesBefore(places[i], places[*best])) best = i;
  }
  return best;
}

}  // namespace Linux
