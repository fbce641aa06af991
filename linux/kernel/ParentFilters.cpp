#include "linux/kernel/ParentFilters.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "runtime/Log.h"
#include "runtime/TimerWheel.h"
#include "runtime/World.h"

namespace Linux {

namespace {

using Macsecd::Fault;

Vesk::LogHandle const MACSEC_PARENT_NOT_CLOSED(
    "MACSEC_PARENT_NOT_CLOSED", Vesk::LogSeverity::error,
    "Clear frames aren't kept from interface %s: %s",
    "The filter that lets MACsec and EAPOL through alone couldn't be set. Frames without "
    "protection reach this machine beside the secured ones. It is tried again in a while.",
    "Do what the message says. The kernel needs its modules 'sch_ingress', 'cls_bpf' and "
    "'act_gact', and the process CAP_NET_ADMIN.",
    0.0, 0.0);

Vesk::LogHandle const MACSEC_PARENT_CLOSED_AGAIN(
    "MACSEC_PARENT_CLOSED_AGAIN", Vesk::LogSeverity::warning,
    "The filter of interface %s was changed by somebody, and is set again",
    "Until now frames without protection may have passed the interface.",
    "See which program changes traffic control filters of interfaces that must be secure.", 60.0,
    1.0);

Fault refused(char const* what, KernelAnswer const& answer) {
  return {std::string("the kernel refuses to ") + what + ": " + answer.text, {}};
}

// Another kind of hooks has no side for what goes out, though it takes filters for it.
Fault foreignHooks(std::string const& kind) {
  return {"another program has a qdisc of the kind '" + kind + "' there",
          "replace it by one of the kind 'clsact'"};
}

Fault refusedFilter(KernelAnswer const& answer) {
  Fault fault = refused("set the filter", answer);
  if (answer.error == EINVAL || answer.error == EEXIST) {
    fault.remedy = "another program's filter may have its preference 3: give that another one";
  }
  return fault;
}

}  // namespace

bool ParentFilters::interfaceIs(Lumo::IntfId intfId, int index, Macsecd::EtherTypes clear) {
  auto const known = parents_.find(intfId);
  if (known != parents_.end() && known->second.index != index) left_.insert(known->second.index);
  left_.erase(index);
  Parent& parent = parents_[intfId];
  bool const isOther = parent.index != index || parent.clear != clear;
  if (isOther) parent.wasClosed = false;
  parent.index = index;
  parent.clear = std::move(clear);
  return close(intfId, parent);
}

void ParentFilters::interfaceDel(Lumo::IntfId intfId) {
  retries_.del(intfId);
  if (auto const parent = parents_.extract(intfId)) left_.insert(parent.mapped().index);
}

// Once, until it is over or something else is wrong.
bool ParentFilters::close(Lumo::IntfId intfId, Parent& parent) {
  auto const closed = closeNow(intfId, parent);
  std::string const problem = closed ? std::string() : closed.fault().text();
  if (!problem.empty() && problem != parent.problem) {
    Vesk::log(MACSEC_PARENT_NOT_CLOSED, intfId, problem);
    parent.retry.reset();
  }
  if (faultIs_ && problem != parent.problem) faultIs_(intfId, {problem, {}});
  parent.problem = problem;
  if (closed) parent.retry.reset();
  retries_.timeIs(intfId, closed ? Zorn::never : Vesk::now() + parent.retry.next());
  return static_cast<bool>(closed);
}

// What was listed before in this turn may be over: the first time that it leads nowhere, it is
// listed again.
Macsecd::Result<> ParentFilters::closeNow(Lumo::IntfId intfId, Parent& parent) {
  bool const isListed = hooks_.isFresh() && parent.problem.empty();
  auto closed = closeAsListed(intfId, parent);
  if (closed || !isListed) return closed;
  hooks_.expire();
  return closeAsListed(intfId, parent);
}

Macsecd::Result<> ParentFilters::closeAsListed(Lumo::IntfId intfId, Parent& parent) {
  std::string kind;
  if (auto const answer = hooks_.kindOf(parent.index, kind); !answer) {
    return refused("list qdiscs", answer);
  }
  bool const hadHooks = !kind.empty();
  if (hadHooks && kind != kBothSides) return foreignHooks(kind);
  HeldFilters held;
  KernelAnswer const answer =
      hadHooks ? kernel_.filters(parent.index, parent.clear, held) : kernel_.hooksAdd(parent.index);
  if (answer.error == ENODEV) return {};  // it is gone, which the watch of the links tells next
  if (!answer) return refused(hadHooks ? "list filters" : "make the qdisc 'clsact'", answer);
  hooks_.kindIs(parent.index, kBothSides);
  bool const isWhole = held.in.isWhole && held.out.isWhole;
  if (!isWhole && parent.wasClosed) Vesk::log(MACSEC_PARENT_CLOSED_AGAIN, intfId);
  bool const areOurs = !hadHooks || held.in.hooksAreOurs || held.out.hooksAreOurs;
  if (auto const set = this->set(parent, held, areOurs); !set) return refusedFilter(set);
  parent.wasClosed = true;
  return {};
}

// One that stands is changed under its own handle, which tells whose the hooks are. Where the
// kernel doesn't change it, it goes first: it kept nothing out any more.
KernelAnswer ParentFilters::set(Parent const& parent, HeldFilters const& held, bool hooksAreOurs) {
  int const index = parent.index;
  for (auto const& [side, filter] :
       {std::pair(FilterSide::in, held.in), std::pair(FilterSide::out, held.out)}) {
    if (filter.isWhole) continue;
    bool const mark = filter.isThere ? filter.hooksAreOurs : hooksAreOurs;
    KernelAnswer answer = kernel_.filterIs(index, side, mark, parent.clear);
    if (answer.error == EINVAL && filter.isThere && kernel_.filterDel(index, side, mark)) {
      answer = kernel_.filterIs(index, side, mark, parent.clear);
    }
    if (!answer) return answer;
  }
  return {};
}

// The interface may have gone, and its filter with it. What the kernel doesn't remove now is
// removed by the next process.
void ParentFilters::open(int index) {
  hooks_.expire();
  HeldFilters held;
  if (!kernel_.filters(index, {}, held)) return;
  bool const hooksAreOurs = held.in.hooksAreOurs || held.out.hooksAreOurs;
  if (hooksAreOurs && !held.hasOthers) {
    kernel_.hooksDel(index);
    return;
  }
  for (auto const& [side, filter] :
       {std::pair(FilterSide::in, held.in), std::pair(FilterSide::out, held.out)}) {
    if (filter.isThere) kernel_.filterDel(index, side, filter.hooksAreOurs);
  }
}

void ParentFilters::openLeft() {
  for (int const index : std::exchange(left_, {})) open(index);
}

void ParentFilters::removeOthers() {
  std::vector<FilterHooks> all;
  if (!kernel_.hooks(all)) return;
  std::set<int> closed;
  for (auto const& [intfId, parent] : parents_) closed.insert(parent.index);
  for (FilterHooks const& hooks : all) {
    if (hooks.kind == kBothSides && !closed.contains(hooks.index)) open(hooks.index);
  }
}

void ParentFilters::removeAll() {
  for (auto const& [intfId, parent] : std::exchange(parents_, {})) left_.insert(parent.index);
  retries_ = {};
  openLeft();
}

std::optional<std::string> ParentFilters::trouble(Lumo::IntfId intfId) const {
  auto const parent = parents_.find(intfId);
  if (parent == parents_.end() || parent->second.problem.empty()) return {};
  return parent->second.problem;
}

// Asked in every turn: no interface is looked at for it.
double ParentFilters::nextTime() const {
  if (!left_.empty()) return Vesk::now();
  bool const isChecked = parents_.size() > retries_.size();
  return std::min(retries_.nextTime(), isChecked ? nextCheck_ : Zorn::never);
}

void ParentFilters::run() {
  openLeft();
  auto const oneListing = round();
  double const now = Vesk::now();
  auto const due = retries_.due(now);
  if (nextCheck_ <= now) check();
  for (Lumo::IntfId const intfId : due) close(intfId, parents_.at(intfId));
}

// Those with a problem have times of their own.
void ParentFilters::check() {
  double const now = Vesk::now();
  nextCheck_ = now + Limits::kFilterCheck;
  if (!kernel_.hasChanged() && now < nextLook_) return;
  nextLook_ = now + Limits::kFilterLook;
  for (auto& [intfId, parent] : parents_) {
    if (parent.problem.empty()) close(intfId, parent);
  }
}

}  // namespace Linux
