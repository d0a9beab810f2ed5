#include "ox/sync/run/steps/plan_report.hpp"

#include <optional>

namespace ox::sync {
namespace {

using What = PlannedChange::What;

std::optional<What> whatHere(const CardStep& step) {
  switch (step.here) {
    case CardStep::Here::Nothing:
      return std::nullopt;
    case CardStep::Here::Add:
      return step.isBroughtBack ? What::BringBack : What::Add;
    case CardStep::Here::Change:
      return What::Change;
    case CardStep::Here::Delete:
      return What::Delete;
  }
  return std::nullopt;
}

std::optional<What> whatThere(const CardStep& step) {
  switch (step.there) {
    case CardStep::There::Nothing:
      return std::nullopt;
    case CardStep::There::Create:
      return step.isSentAgain ? What::BringBack : What::Add;
    case CardStep::There::Update:
      return What::Change;
    case CardStep::There::Delete:
      return What::Delete;
  }
  return std::nullopt;
}

void count(std::optional<What> what, SyncCounts& counts) {
  if (!what) return;
  switch (*what) {
    case What::Add:
      ++counts.added;
      break;
    case What::Change:
      ++counts.changed;
      break;
    case What::Delete:
      ++counts.deleted;
      break;
    case What::BringBack:
      ++counts.broughtBack;
      break;
  }
}

// One that is refused before anything is sent is no plan.
bool isSending(const CardStep& step) {
  return step.there != CardStep::There::Nothing && !step.pushed;
}

}  // namespace

SyncCounts plannedHere(const CardSteps& steps) {
  SyncCounts counts;
  for (const auto& step : steps) count(whatHere(step), counts);
  return counts;
}

SyncCounts plannedThere(const CardSteps& steps) {
  SyncCounts counts;
  for (const auto& step : steps) {
    if (isSending(step)) count(whatThere(step), counts);
  }
  return counts;
}

void countDone(const CardSteps& steps, BookReport& report) {
  for (const auto& step : steps) {
    if (!step.isPutOff) count(whatHere(step), report.down);
    const bool isSent =
        step.pushed &&
        (step.pushed->outcome == Pushed::Outcome::Done ||
         (step.there == CardStep::There::Delete && step.pushed->outcome == Pushed::Outcome::Gone));
    if (isSent) count(whatThere(step), report.up);
  }
}

std::vector<PlannedChange> plannedChanges(const CardSteps& steps) {
  std::vector<PlannedChange> changes;
  for (const auto& step : steps) {
    const bool isGroup = step.card.kind == RecordKind::Group;
    if (const auto what = whatHere(step)) {
      changes.push_back({PlannedChange::Where::Here, *what, step.name, isGroup});
    }
    if (!isSending(step)) continue;
    if (const auto what = whatThere(step)) {
      changes.push_back({PlannedChange::Where::There, *what, step.name, isGroup});
    }
  }
  return changes;
}

std::vector<PlannedChange> plannedDeletions(const CardSteps& steps) {
  auto changes = plannedChanges(steps);
  std::erase_if(changes, [](const auto& change) { return change.what != What::Delete; });
  return changes;
}

}  // namespace ox::sync
