#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace ox {

// One account of the store.
struct ContainerInfo {
  std::string identifier;
  std::string name;
  std::int32_t type = 0;  // 0 unassigned, 1 local, 2 Exchange, 3 CardDAV
};
using ContainerPtr = std::shared_ptr<const ContainerInfo>;

}  // namespace ox
