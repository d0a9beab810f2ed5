#include "ox/platform/store/upkeep/circles.hpp"

#include <gtest/gtest.h>
#include <string>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "tests/support/growth.hpp"
#include "tests/support/statement_count.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

using Rows = std::vector<std::int64_t>;

TEST(Circles, HoldEveryGroupThatLeadsBackToItselfAndNoOther) {
  EXPECT_EQ(groupsBelowThemselves({}), Rows());
  EXPECT_EQ(groupsBelowThemselves({{1, 2}, {2, 3}, {1, 3}}), Rows());
  EXPECT_EQ(groupsBelowThemselves({{7, 7}, {7, 8}}), Rows({7}));
  EXPECT_EQ(groupsBelowThemselves({{9, 4}, {4, 2}, {2, 9}, {9, 1}, {1, 5}}), Rows({2, 4, 9}));
  // Two circles that share a group, one below them, and groups that only lead to them.
  EXPECT_EQ(groupsBelowThemselves(
                {{1, 2}, {2, 3}, {3, 2}, {3, 4}, {4, 3}, {4, 5}, {5, 6}, {6, 5}, {6, 7}, {8, 1}}),
            Rows({2, 3, 4, 5, 6}));
}

TEST(Circles, AreFoundInTreesDeeperThanTheStack) {
  std::vector<GroupLink> links;
  constexpr std::int64_t kDepth = 300000;
  for (std::int64_t row = 1; row < kDepth; ++row) links.emplace_back(row, row + 1);
  EXPECT_EQ(groupsBelowThemselves(links), Rows());
  links.emplace_back(kDepth, kDepth - 1);
  EXPECT_EQ(groupsBelowThemselves(links), Rows({kDepth - 1, kDepth}));
}

std::uint64_t stepsToCheckNested(std::size_t depth) {
  const auto path = support::temporaryPath("nested" + std::to_string(depth) + ".db").string();
  openStoreSource(path)->containers();
  {
    const auto last = std::to_string(depth);
    const auto rows =
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + last +
        ") INSERT INTO record(id, uid, kind, container) SELECT i, 'g' || i, 1, 1 FROM n;"
        "INSERT INTO link(id, parent, child) SELECT id, id, id + 1 FROM record WHERE id < " +
        last + ";";
    sqlite::Connection(path, sqlite::Connection::Mode::ReadWrite).execute(rows.c_str());
  }
  const auto before = support::stepsTaken();
  storeProblems(path);
  return support::stepsTaken() - before;
}

TEST(Circles, AreLookedForInStepsByTheLink) {
  support::statementsRun();
  support::expectLinearGrowth(200, stepsToCheckNested);
}

}  // namespace
}  // namespace ox
