#pragma once

#include <cstdint>
#include <gtest/gtest.h>

namespace ox::support {

// Expects the counted steps of a piece of work to grow as its size does: at most two and a half
// times as many for twice the size. Square work takes four times as many. `steps` does the work of
// a size and answers how many it took.
template <typename Steps>
void expectLinearGrowth(std::size_t size, Steps steps) {
  std::uint64_t before = steps(size);
  ASSERT_GT(before, size / 2) << "nothing was counted";
  for (int doubled = 0; doubled < 2; ++doubled) {
    size *= 2;
    const std::uint64_t now = steps(size);
    EXPECT_LE(now * 2, before * 5) << "at " << size << ": " << now << " after " << before;
    before = now;
  }
}

}  // namespace ox::support
