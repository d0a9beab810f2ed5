#pragma once

#include <atomic>
#include <cstdint>

namespace ox {

// Whether the system is recent enough, asked once in its life. Safe from any thread.
class VersionGate {
 public:
  explicit VersionGate(std::int32_t minorThreshold) : minorThreshold_(minorThreshold) {}

  bool answer();

  // Each number on its own, strictly: 11.0 is not above (9, 10). Not a comparison of versions.
  static bool isAbove(std::int32_t major, std::int32_t minor, std::int32_t minorThreshold) {
    return major > 9 && minor > minorThreshold;
  }

 private:
  static constexpr std::int8_t kNotAsked = 10;

  std::int32_t minorThreshold_;
  std::atomic<std::int8_t> cached_{kNotAsked};
};

}  // namespace ox
