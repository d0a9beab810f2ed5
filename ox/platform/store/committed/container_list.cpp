#include "ox/platform/store/committed/container_list.hpp"

#include <algorithm>
#include <utility>

#include "ox/base/failures.hpp"
#include "ox/platform/store/file/stored_rows.hpp"

namespace ox {

void ContainerList::load() {
  if (loaded_) return;
  all_.clear();
  byRow_.clear();
  damaged_.clear();
  file_.guarded([&] {
    for (auto& [row, info, isSound] : containersOf(file_)) {
      if (!isSound) {
        damaged_.push_back(row);
        continue;
      }
      auto container = std::make_shared<const ContainerInfo>(std::move(info));
      byRow_.emplace(static_cast<std::int32_t>(row), container);
      all_.push_back(std::move(container));
    }
  });
  loaded_ = true;
}

std::string ContainerList::damageOf(std::int64_t row) {
  return "row " + std::to_string(row) + " of the accounts is damaged";
}

void ContainerList::noticeDamage(std::int64_t row) const {
  const auto& name = file_.address().name();
  failures::notice(FailureKind::Corrupt, name + ": " + damageOf(row), name);
}

bool ContainerList::isDamaged(std::int32_t row) const {
  return std::ranges::find(damaged_, row) != damaged_.end();
}

const std::vector<ContainerPtr>& ContainerList::all() {
  load();
  for (const auto row : damaged_) noticeDamage(row);
  return all_;
}

ContainerPtr ContainerList::inRow(std::int32_t row) {
  load();
  const auto found = byRow_.find(row);
  if (found != byRow_.end()) return found->second;
  if (isDamaged(row)) noticeDamage(row);
  return nullptr;
}

ContainerPtr ContainerList::soundInRow(std::int32_t row) {
  load();
  if (isDamaged(row)) throw DamagedRow(damageOf(row));
  return inRow(row);
}

std::int32_t ContainerList::rowOf(std::string_view identifier) {
  const auto row = findRowOf(identifier);
  if (row != 0) return row;
  // It may be one of those.
  for (const auto damaged : damaged_) noticeDamage(damaged);
  return 0;
}

std::int32_t ContainerList::soundRowOf(std::string_view identifier) {
  const auto row = findRowOf(identifier);
  if (row == 0 && !damaged_.empty()) throw DamagedRow(damageOf(damaged_.front()));
  return row;
}

std::int32_t ContainerList::findRowOf(std::string_view identifier) {
  load();
  std::int32_t byStandardId = 0;
  int matches = 0;
  for (const auto& [row, container] : byRow_) {
    if (container->identifier == identifier) return row;
    if (standardContainerId(container->identifier) != identifier) continue;
    byStandardId = row;
    ++matches;
  }
  return matches == 1 ? byStandardId : 0;
}

std::string standardContainerId(std::string_view identifier) {
  return withoutAll(identifier, ":ABAccount");
}

}  // namespace ox
