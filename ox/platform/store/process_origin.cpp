#include "ox/platform/store/process_origin.hpp"

#include <cerrno>
#include <mutex>
#include <optional>
#include <utility>

namespace ox {
namespace {

struct CurrentOrigin {
  std::mutex mutex;
  std::optional<Origin> origin;
};

CurrentOrigin& current() {
  static auto& origin = *new CurrentOrigin;
  return origin;
}

}  // namespace

void setOrigin(Origin origin) {
  const std::lock_guard lock(current().mutex);
  current().origin = std::move(origin);
}

Origin processOrigin() {
  const std::lock_guard lock(current().mutex);
  if (current().origin) return *current().origin;
  return {program_invocation_short_name, {}, false, std::nullopt};
}

}  // namespace ox
