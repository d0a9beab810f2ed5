#include "ox/platform/store/committed/read_only_containers.hpp"

#include <algorithm>

namespace ox {

const std::unordered_set<std::int32_t>& ReadOnlyContainers::rows() {
  const auto& moment = committed_.moment();
  // A damaged journal tells no moments.
  if (rows_ && moment_ == moment && moment != StoreMoment()) return *rows_;
  rows_.reset();
  file_.guarded([&] {
    auto& row = file_.statement(Sql::ReadOnlyContainers);
    const sqlite::StatementScope scope(row);
    std::unordered_set<std::int32_t> rows;
    while (row.step()) rows.insert(static_cast<std::int32_t>(row.integer(0)));
    rows_ = std::move(rows);
  });
  moment_ = moment;
  return *rows_;
}

std::string ReadOnlyContainers::refusalOf(std::int32_t container) {
  if (!rows().contains(container)) return {};
  const auto info = committed_.containers().inRow(container);
  return "the account " + (info ? info->name : std::to_string(container)) +
         " is read-only: the book that it is in step with takes no changes";
}

std::string ReadOnlyContainers::refusalOf(const Act& act) {
  if (act.bringsFromElsewhere || rows().empty()) return {};
  // Its contacts go with a container that goes.
  const auto isGoing = [&](std::int32_t container) {
    return std::ranges::any_of(act.removedContainers,
                               [&](const auto& removed) { return removed.row == container; });
  };
  std::string refusal;
  const auto check = [&](std::int32_t container) {
    if (!refusal.empty() || !rows().contains(container) || isGoing(container)) return;
    refusal = refusalOf(container);
  };
  for (const auto& record : act.restored) check(record.record.container);
  for (const auto& record : act.added) check(record.container);
  for (const auto& record : act.changed) check(record.record.container);
  for (const auto& record : act.removed) check(record.container);
  for (const auto* links : {&act.addedLinks, &act.removedLinks}) {
    for (const auto& link : *links) check(link.group.container);
  }
  return refusal;
}

}  // namespace ox
