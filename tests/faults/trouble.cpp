#include "tests/faults/trouble.hpp"

#include <array>
#include <gtest/gtest.h>

#include "tests/support/store_environment.hpp"

namespace ox::faults {
namespace {

struct FaultRow {
  Fault fault;
  const char* name;
};
constexpr std::array kFaults = {FaultRow{Fault::Full, "full"}, FaultRow{Fault::Broken, "broken"},
                                FaultRow{Fault::BrokenOnce, "broken once"},
                                FaultRow{Fault::UnreadOnce, "unread once"}};

constexpr std::uint64_t kEachUpTo = 30;
constexpr std::uint64_t kStride = 23;

}  // namespace

int forEachTrouble(Points points, const std::function<bool(const Trouble&)>& attempt) {
  int met = 0;
  for (const auto& row : kFaults) {
    const bool sampled = points == Points::Sampled;
    for (std::uint64_t n = 1;; n += sampled && n >= kEachUpTo ? kStride : 1) {
      SCOPED_TRACE(std::string("disk ") + row.name + " at change " + std::to_string(n));
      if (!attempt({row.fault, n})) break;
      ++met;
      if (testing::Test::HasFailure()) return met;
    }
  }
  return met;
}

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

}  // namespace ox::faults
