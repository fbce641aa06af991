#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "host/text/JsonText.h"
#include "host/text/TextTable.h"
#include "lab/DoctorComparison.h"
#include "lab/world/Clock.h"

// How a comparison is told.

namespace Lab {

namespace {

using Macsecd::Json;
using Macsecd::kPortTroubles;
using Macsecd::PortTrouble;

// So many of the scenarios that it was worst for, and best, are named.
constexpr size_t kNamed = 5;

std::vector<std::string> rowOf(char const* name, Benefit const& benefit) {
  return {name,
          std::to_string(benefit.acted),
          std::to_string(benefit.better),
          std::to_string(benefit.worse),
          fmt::format("{:.1f}", benefit.with),
          fmt::format("{:.1f}", benefit.without)};
}

Json jsonOf(Benefit const& benefit) {
  return {{"scenarios", benefit.acted},
          {"better", benefit.better},
          {"worse", benefit.worse},
          {"secured-with", roundedTime(benefit.with)},
          {"secured-without", roundedTime(benefit.without)},
          {"passes", benefit.passes()}};
}

// Those that differ most come first, the worst before the best.
std::string extremes(std::map<uint32_t, double> const& differences, bool worst) {
  std::vector<std::pair<double, uint32_t>> sorted;
  for (auto const& [seed, difference] : differences) {
    if (worst ? difference < 0 : difference > 0) sorted.emplace_back(difference, seed);
  }
  std::ranges::sort(sorted);
  if (!worst) std::ranges::reverse(sorted);
  std::string text;
  for (size_t i = 0; i < std::min(kNamed, sorted.size()); ++i) {
    text += fmt::format("{} {} ({:+.1f})", i == 0 ? "" : ",", sorted[i].second, sorted[i].first);
  }
  return text.empty() ? " none" : text;
}

void writeText(DoctorComparison const& comparison, ComparisonOptions const& options,
               std::ostream& out) {
  out << fmt::format(
      "{} random scenarios from seed {}: {:.0f} of {:.0f} port-seconds are secured\n\n",
      comparison.scenarios(), options.seed, comparison.secured(), comparison.possible());
  std::vector<std::vector<std::string>> rows{
      {"Acts on", "Scenarios", "Better", "Worse", "Secured with it", "Without"}};
  rows.push_back(rowOf("all", comparison.all()));
  for (PortTrouble const trouble : kPortTroubles) {
    rows.push_back(rowOf(wordOf(trouble), comparison.of(trouble)));
  }
  for (auto const& [seed, repeats] : comparison.nonceRepeats()) {
    out << fmt::format("Seed {}: {}\n\n", seed, fmt::join(repeats, "; "));
  }
  out << Macsecd::textTable(rows)
      << fmt::format(
             "\nWorst seeds:{}\nBest seeds: {}\n\n{}\n", extremes(comparison.differences(), true),
             extremes(comparison.differences(), false), comparison.passes() ? "ok" : "FAILED");
}

void writeJson(DoctorComparison const& comparison, ComparisonOptions const& options,
               std::ostream& out) {
  Json json = {{"scenarios", comparison.scenarios()},
               {"seed", options.seed},
               {"possible", roundedTime(comparison.possible())},
               {"secured", roundedTime(comparison.secured())},
               {"all", jsonOf(comparison.all())},
               {"passes", comparison.passes()}};
  for (PortTrouble const trouble : kPortTroubles) {
    json["troubles"][wordOf(trouble)] = jsonOf(comparison.of(trouble));
  }
  json["differences"] = Json::array();
  for (auto const& [seed, difference] : comparison.differences()) {
    json["differences"].push_back({{"seed", seed}, {"seconds", roundedTime(difference)}});
  }
  json["nonce-repeats"] = Json::array();
  for (auto const& [seed, repeats] : comparison.nonceRepeats()) {
    json["nonce-repeats"].push_back({{"seed", seed}, {"repeats", repeats}});
  }
  out << json.dump(2) << '\n';
}

}  // namespace

int compareDoctor(ComparisonOptions const& options, std::ostream& out) {
  DoctorComparison comparison;
  for (uint32_t i = 0; i < options.scenarios; ++i) comparison.add(options.seed + i);
  (options.json ? writeJson : writeText)(comparison, options, out);
  return comparison.passes() ? 0 : 1;
}

}  // namespace Lab
