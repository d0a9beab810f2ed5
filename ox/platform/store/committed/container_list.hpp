#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/container_info.hpp"

namespace ox {

// The committed containers, read when they are first asked for and after each forget(). A damaged
// one is not there: whoever asks for all, or for it, is told by a failure that is noticed. Used by
// one thread at a time; throws StoreError when the file fails.
class ContainerList {
 public:
  explicit ContainerList(StoreFile& file) : file_(file) {}

  // The local one first, then in creation order.
  const std::vector<ContainerPtr>& all();
  // Null when there is none in that row.
  ContainerPtr inRow(std::int32_t row);
  // The same; throws DamagedRow where that row is damaged.
  ContainerPtr soundInRow(std::int32_t row);
  // By exact identifier, else the one container whose standard id equals the text; 0 without one.
  std::int32_t rowOf(std::string_view identifier);
  // The same; throws DamagedRow where a damaged one may be it.
  std::int32_t soundRowOf(std::string_view identifier);
  void forget() { loaded_ = false; }

 private:
  void load();
  static std::string damageOf(std::int64_t row);
  void noticeDamage(std::int64_t row) const;
  bool isDamaged(std::int32_t row) const;
  std::int32_t findRowOf(std::string_view identifier);

  StoreFile& file_;
  bool loaded_ = false;
  std::vector<ContainerPtr> all_;
  std::unordered_map<std::int32_t, ContainerPtr> byRow_;
  std::vector<std::int64_t> damaged_;
};

// The identifier with every ":ABAccount" taken out.
std::string standardContainerId(std::string_view identifier);

}  // namespace ox
