#include "ox/platform/store/committed/container_list.hpp"

#include <utility>

#include "ox/platform/store/file/stored_rows.hpp"

namespace ox {

void ContainerList::load() {
  if (loaded_) return;
  all_.clear();
  byRow_.clear();
  file_.guarded([&] {
    for (auto& [row, info] : containersOf(file_)) {
      auto container = std::make_shared<const ContainerInfo>(std::move(info));
      byRow_.emplace(row, container);
      all_.push_back(std::move(container));
    }
  });
  loaded_ = true;
}

const std::vector<ContainerPtr>& ContainerList::all() {
  load();
  return all_;
}

ContainerPtr ContainerList::inRow(std::int32_t row) {
  load();
  const auto found = byRow_.find(row);
  return found == byRow_.end() ? nullptr : found->second;
}

std::int32_t ContainerList::rowOf(std::string_view identifier) {
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
