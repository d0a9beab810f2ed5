#include "ox/records/entry_identity.hpp"

#include <array>
#include <gtest/gtest.h>

#include "tests/records/entry_lists.hpp"

namespace ox {
namespace {

using testing::entryList;
using testing::textOf;

struct IdentityRow {
  const char* about;
  const char* before;
  const char* now;
  const char* given;
};

const std::array kIdentityRows = {
    IdentityRow{"the same identifiers", "a:1 b:2*", "a:9 b:2*", "a:9 b:2*"},
    IdentityRow{"rewritten", "a:1/x b:2/y*", "p:1/x q:2/y*", "a:1/x b:2/y*"},
    IdentityRow{"moved", "a:1 b:2", "p:2 q:1", "b:2 a:1"},
    IdentityRow{"under another label", "a:1/x b:2/y", "p:2/z q:1/x", "b:2/z a:1/x"},
    IdentityRow{"the same label goes first", "a:1/x b:1/y", "p:1/y q:1/x", "b:1/y a:1/x"},
    IdentityRow{"added in front", "a:1", "p:0 q:1", "p:0 a:1"},
    IdentityRow{"added behind", "a:1", "p:1 q:2", "a:1 q:2"},
    IdentityRow{"changed", "a:1/x b:2/y c:3/x", "p:1/x q:9/y r:3/x", "a:1/x q:9/y c:3/x"},
    IdentityRow{"equal ones, each once", "a:1 b:1", "p:1 q:1 r:1", "a:1 b:1 r:1"},
};

TEST(EntryIdentity, AsTheRowsSay) {
  for (const auto& row : kIdentityRows) {
    EXPECT_EQ(textOf(withIdentifiersOf(entryList(row.before), entryList(row.now))), row.given)
        << row.about;
  }
}

const std::array kPlaceRows = {
    IdentityRow{"changed where it stood", "a:1/x b:2/y* c:3/x", "a:1/x q:9/y* c:3/x",
                "a:1/x b:9/y* c:3/x"},
    IdentityRow{"the only one", "a:1*", "p:9*", "a:9*"},
    IdentityRow{"all", "a:1 b:2", "p:8 q:9 r:7", "a:8 b:9 r:7"},
    IdentityRow{"the first of two under one label", "a:1 b:2 c:3", "p:9 c:3", "a:9 c:3"},
    IdentityRow{"under another label", "a:1/x", "p:9/y", "p:9/y"},
    IdentityRow{"removed in front, added behind", "a:1 b:2", "b:2 q:9", "b:2 q:9"},
    IdentityRow{"behind another neighbour", "a:1 b:2 c:3", "b:2 a:1 p:9", "b:2 a:1 p:9"},
};

TEST(EntryIdentity, OfPlacesIsAsTheRowsSay) {
  for (const auto& row : kPlaceRows) {
    EXPECT_EQ(textOf(withIdentifiersOfPlaces(entryList(row.before), entryList(row.now))), row.given)
        << row.about;
  }
}

TEST(EntryIdentity, OfTenThousandEntriesGoesToEachEqualOneInTurn) {
  MultiValue before;
  MultiValue now;
  for (std::uint64_t i = 1; i <= 10'000; ++i) {
    before.entries.push_back({i, "l", "x"});
    now.entries.push_back({20'000 + i, "l", i % 2 == 0 ? std::string("x") : std::to_string(i)});
  }
  const auto given = withIdentifiersOf(before, std::move(now));
  EXPECT_EQ(given.entries[1].identifier, 1U);
  EXPECT_EQ(given.entries[9'999].identifier, 5'000U);
}

}  // namespace
}  // namespace ox
