#include "ox/records/merge.hpp"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>

#include "tests/records/entry_lists.hpp"

namespace ox {
namespace {

using testing::entryList;
using testing::textOf;

struct MergeRow {
  const char* about;
  const char* base;
  const char* mine;
  const char* theirs;
  const char* merged;
  const char* overtaken = "";
};

const std::array kMergeRows = {
    MergeRow{"nobody changed anything", "a:1 b:2*", "a:1 b:2*", "a:1 b:2*", "a:1 b:2*"},
    MergeRow{"I alone changed", "a:1 b:2", "x:0 b:9", "a:1 b:2", "x:0 b:9"},
    MergeRow{"they alone changed", "a:1 b:2", "a:1 b:2", "x:0 b:9*", "x:0 b:9*"},
    MergeRow{"both append", "a:1", "a:1 m:5", "a:1 t:6", "a:1 t:6 m:5"},
    MergeRow{"both start a list", "", "m:5*", "t:6*", "t:6 m:5*"},
    MergeRow{"both append several", "a:1", "a:1 m:5 n:7", "a:1 t:6 u:8", "a:1 t:6 u:8 m:5 n:7"},
    MergeRow{"both remove", "a:1 b:2 c:3", "b:2 c:3", "a:1 b:2", "b:2"},
    MergeRow{"both remove the same", "a:1 b:2", "b:2", "b:2 t:6", "b:2 t:6"},
    MergeRow{"both remove all", "a:1", "", "", ""},
    MergeRow{"I clear, they add", "a:1 b:2", "", "a:1 b:2 t:6", "t:6"},
    MergeRow{"they clear, I add", "a:1 b:2", "a:1 b:2 m:5", "", "m:5"},
    MergeRow{"changes of different entries", "a:1 b:2", "a:9 b:2", "a:1 b:8", "a:9 b:8"},
    MergeRow{"value here, label there is one entry", "a:1/home", "a:9/home", "a:1/work", "a:9/home",
             "a:1/work"},
    MergeRow{"a label of one side alone", "a:1/home b:2", "a:1/work b:2", "a:1/home b:3",
             "a:1/work b:3"},
    MergeRow{"both change one", "a:1 b:2", "a:9 b:2", "a:8 b:2", "a:9 b:2", "a:8"},
    MergeRow{"both change one to the same", "a:1", "a:9", "a:9 t:6", "a:9 t:6"},
    MergeRow{"I change what they removed", "a:1 b:2", "a:9 b:2", "b:2", "a:9 b:2", "a:1"},
    MergeRow{"I remove what they changed", "a:1 b:2", "b:2", "a:9 b:2", "b:2", "a:9"},
    MergeRow{"equal additions become one, with its identifier there", "a:1", "a:1 m:5", "a:1 t:5",
             "a:1 t:5"},
    MergeRow{"and stay primary", "a:1*", "a:1 m:5*", "a:1* t:5 u:6", "a:1 t:5* u:6"},
    MergeRow{"equal under another label are two", "a:1", "a:1 m:5/x", "a:1 t:5/y",
             "a:1 t:5/y m:5/x"},
    MergeRow{"two equal ones here, one there", "a:1", "a:1 m:5 n:5", "a:1 t:5", "a:1 t:5 n:5"},
    MergeRow{"an entry that was twice in the base stays twice", "a:1 b:1", "a:1 b:1 m:5",
             "a:1 b:1 t:6", "a:1 b:1 t:6 m:5"},
    MergeRow{"I add what they changed another to", "a:1 b:2", "a:1 b:2 m:5", "a:5 b:2", "b:2 m:5"},
    MergeRow{"they add what I changed another to", "a:1 b:2*", "a:5 b:2*", "a:1 b:2* t:5*",
             "a:5* b:2"},
    MergeRow{"I exchange, they change to the same", "a:1/x", "m:5/y", "a:5/y", "m:5/y"},
    MergeRow{"both put a new one in its place", "a:1 b:2", "m:5 b:2", "t:6 b:2 u:7", "m:5 b:2 u:7",
             "t:6"},
    MergeRow{"both put the same in its place", "a:1* b:2", "m:5* b:2", "t:5* b:2", "t:5* b:2"},
    MergeRow{"both replace it under labels of their own", "a:1", "m:5/x", "t:6/y", "t:6/y m:5/x"},
    MergeRow{"an addition in the middle stays there", "a:1 b:2", "a:1 m:5 b:2", "a:1 b:2 t:6",
             "a:1 m:5 b:2 t:6"},
    MergeRow{"an addition before all stays there", "a:1 b:2", "m:5 a:1 b:2", "a:1 b:2 t:6",
             "m:5 a:1 b:2 t:6"},
    MergeRow{"behind a neighbour that they removed", "a:1 b:2 c:3", "a:1 b:2 m:5 c:3", "a:1 c:3",
             "a:1 m:5 c:3"},
    MergeRow{"I alone move", "a:1 b:2 c:3", "c:3 a:1 b:2", "a:1 b:2 c:3 t:6", "c:3 a:1 b:2 t:6"},
    MergeRow{"they alone move", "a:1 b:2 c:3", "a:1 b:2 c:3 m:5", "c:3 a:1 b:2", "c:3 a:1 b:2 m:5"},
    MergeRow{"both move", "a:1 b:2 c:3", "b:2 a:1 c:3", "c:3 a:1 b:2", "c:3 a:1 b:2"},
    MergeRow{"primary of mine", "a:1* b:2", "a:1 b:2*", "a:1* b:2 t:6", "a:1 b:2* t:6"},
    MergeRow{"primary of theirs", "a:1* b:2", "a:1* b:2 m:5", "a:1 b:2*", "a:1 b:2* m:5"},
    MergeRow{"both choose one", "a:1* b:2 c:3", "a:1 b:2* c:3", "a:1 b:2 c:3*", "a:1 b:2* c:3"},
    MergeRow{"mine is gone", "a:1* b:2 c:3", "a:1 b:2* c:3", "a:1 c:3*", "a:1 c:3*"},
    MergeRow{"theirs is gone", "a:1* b:2 c:3", "a:1* b:2", "a:1 b:2 c:3*", "a:1 b:2"},
    MergeRow{"I take the mark away", "a:1* b:2", "a:1 b:2", "a:1* b:2 t:6", "a:1 b:2 t:6"},
    MergeRow{"one identifier for two additions", "", "a:1", "a:2", "a:1", "a:2"},
    MergeRow{"one identifier twice in a list", "a:1 a:2", "a:1 a:2 a:3", "a:1 a:2 t:6",
             "a:1 a:2 t:6 a:3"},
};

TEST(MergedEntries, AsTheRowsSay) {
  for (const auto& row : kMergeRows) {
    std::vector<MultiEntry> overtaken;
    const auto merged =
        mergedEntries(entryList(row.base), entryList(row.mine), entryList(row.theirs), overtaken);
    EXPECT_EQ(textOf(merged), row.merged) << row.about;
    EXPECT_EQ(textOf(overtaken), row.overtaken) << row.about;
  }
}

TEST(MergedEntries, AreComparedByWhatTheyHold) {
  const auto address = [](const char* street) {
    return Object(Dictionary{{"Street", street}, {"City", "Ulm"}});
  };
  MultiValue base;
  base.entries = {{1, "home", address("A")}};
  auto mine = base;
  mine.entries.push_back({2, "work", Dictionary{{"City", "Rom"}, {"Street", "B"}}});
  auto theirs = base;
  theirs.entries.push_back({3, "work", Dictionary{{"Street", "B"}, {"City", "Rom"}}});
  theirs.entries[0].value = address("C");
  std::vector<MultiEntry> overtaken;
  const auto merged = mergedEntries(base, mine, theirs, overtaken);
  EXPECT_EQ(merged, theirs);
  EXPECT_TRUE(overtaken.empty());
}

PropertyValue multi(const std::string& text) {
  return std::make_shared<const MultiValue>(entryList(text));
}

TEST(MergedValue, OfOneObject) {
  struct Row {
    Object base, mine, theirs, merged;
    std::vector<MultiEntry> overtaken = {};
  };
  const Object missing;
  const std::vector<Row> rows = {
      {"1", "2", "1", "2"},
      {"1", "1", "2", "2"},
      {"1", "2", "2", "2"},
      {"1", "2", "3", "2", {{0, std::nullopt, "3"}}},
      {"1", missing, "1", missing},
      {"1", "1", missing, missing},
      {"1", missing, missing, missing},
      {"1", "2", missing, "2", {{0, std::nullopt, missing}}},
      {"1", missing, "3", missing, {{0, std::nullopt, "3"}}},
      {missing, "2", "3", "2", {{0, std::nullopt, "3"}}},
  };
  for (const auto& row : rows) {
    std::vector<MultiEntry> overtaken;
    const auto merged = mergedValue(row.base, row.mine, row.theirs, overtaken);
    EXPECT_EQ(std::get<Object>(merged), row.merged) << &row - rows.data();
    EXPECT_EQ(overtaken, row.overtaken) << &row - rows.data();
  }
}

TEST(MergedValue, TakesAMissingListForAnEmptyOne) {
  std::vector<MultiEntry> overtaken;
  const auto text = [&](const PropertyValue& base, const PropertyValue& mine,
                        const PropertyValue& theirs) {
    const auto merged = mergedValue(base, mine, theirs, overtaken);
    return isMissing(merged) ? "missing" : textOf(*std::get<MultiValuePtr>(merged));
  };
  const PropertyValue missing = Object();
  const PropertyValue null = MultiValuePtr();
  EXPECT_EQ(text(missing, multi("m:5*"), multi("t:6*")), "t:6 m:5*");
  EXPECT_EQ(text(null, multi("m:5"), multi("t:6")), "t:6 m:5");
  EXPECT_EQ(text(multi("a:1"), missing, multi("a:1 t:6")), "t:6");
  EXPECT_EQ(text(multi("a:1"), multi("a:1 m:5"), missing), "m:5");
  EXPECT_EQ(text(multi("a:1 b:2"), multi("a:1"), multi("b:2")), "missing");
  EXPECT_EQ(text(multi("a:1"), null, missing), "missing");
  EXPECT_TRUE(overtaken.empty());
}

TEST(MergedTags, AsTheRowsSay) {
  using Tags = std::vector<std::string>;
  struct Row {
    Tags base, mine, theirs, merged;
  };
  const std::vector<Row> rows = {
      {{}, {"a"}, {"b"}, {"b", "a"}},
      {{}, {"a", "b"}, {"b", "c"}, {"a", "b", "c"}},
      {{"a", "b"}, {"b"}, {"a"}, {}},
      {{"a"}, {}, {"a", "b"}, {"b"}},
      {{"a"}, {"a", "c"}, {}, {"c"}},
      {{"a", "b"}, {"b", "a"}, {"a", "b", "c"}, {"b", "a", "c"}},
      {{"a", "b"}, {"a", "b", "c"}, {"b", "a"}, {"b", "a", "c"}},
      {{"a"}, {"a", "b"}, {"a", "b"}, {"a", "b"}},
      {{"a"}, {"a"}, {"a"}, {"a"}},
      {{"a", "a"}, {"a", "b", "b"}, {"c", "a", "c"}, {"c", "a", "b"}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(mergedTags(row.base, row.mine, row.theirs), row.merged) << &row - rows.data();
  }
}

// One side of a random merge: what it did, beside the list that came of it.
struct RandomSide {
  MultiValue values;
  std::set<std::uint64_t> removed;
  std::map<std::uint64_t, MultiEntry> changed;  // by identifier
  std::vector<MultiEntry> added;
  bool moved = false;
};

class RandomMerge : public ::testing::Test {
 protected:
  std::size_t below(std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_);
  }

  std::string freshValue() { return "v" + std::to_string(++values_); }

  MultiValue randomBase() {
    MultiValue base;
    for (auto count = below(7); count > 0; --count) {
      base.entries.push_back({++identifiers_, "l" + std::to_string(below(3)), freshValue()});
    }
    if (!base.entries.empty() && below(2) == 0) {
      base.primary = base.entries[below(base.entries.size())].identifier;
    }
    return base;
  }

  RandomSide randomSide(const MultiValue& base) {
    RandomSide side{base, {}, {}, {}, false};
    auto& entries = side.values.entries;
    for (auto steps = below(6); steps > 0; --steps) {
      const auto place = below(entries.size() + 1);
      const bool isOfBase =
          place < entries.size() && entries[place].identifier <= base.entries.size() + firstOfBase_;
      switch (below(4)) {
        case 0:
          if (!isOfBase) break;
          side.removed.insert(entries[place].identifier);
          if (side.values.primary == entries[place].identifier) side.values.primary = 0;
          side.changed.erase(entries[place].identifier);
          entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(place));
          break;
        case 1:
          if (!isOfBase) break;
          entries[place].value = freshValue();
          side.changed[entries[place].identifier] = entries[place];
          break;
        case 2:
          side.added.push_back({++identifiers_, "added", freshValue()});
          entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(place), side.added.back());
          break;
        default:
          if (below(4) == 0 && entries.size() > 1) {
            std::shuffle(entries.begin(), entries.end(), random_);
            side.moved = true;
          }
      }
    }
    if (!entries.empty() && below(3) == 0) {
      side.values.primary = entries[below(entries.size())].identifier;
    }
    return side;
  }

  std::mt19937 random_{20240607};
  std::uint64_t identifiers_ = 0;
  std::uint64_t firstOfBase_ = 0;  // no identifier of the base is at most this one
  int values_ = 0;
};

bool holds(const MultiValue& values, const MultiEntry& entry) {
  return std::ranges::find(values.entries, entry) != values.entries.end();
}

// Those of the list that stand in the other one too, in order.
std::vector<std::uint64_t> orderOf(const MultiValue& list, const MultiValue& other) {
  std::vector<std::uint64_t> order;
  for (const auto& entry : list.entries) {
    if (std::ranges::find(other.entries, entry.identifier, &MultiEntry::identifier) !=
        other.entries.end()) {
      order.push_back(entry.identifier);
    }
  }
  return order;
}

TEST_F(RandomMerge, HoldsWhatBothSidesDid) {
  for (int round = 0; round < 20'000; ++round) {
    firstOfBase_ = identifiers_;
    const auto base = randomBase();
    const auto mine = randomSide(base);
    const auto theirs = randomSide(base);
    std::vector<MultiEntry> overtaken;
    const auto merged = mergedEntries(base, mine.values, theirs.values, overtaken);

    std::set<std::uint64_t> seen;
    for (const auto& entry : merged.entries) EXPECT_TRUE(seen.insert(entry.identifier).second);
    for (const auto& entry : mine.added) EXPECT_TRUE(holds(merged, entry));
    for (const auto& entry : theirs.added) EXPECT_TRUE(holds(merged, entry));
    std::size_t conflicts = 0;
    for (const auto& entry : base.entries) {
      const auto id = entry.identifier;
      const bool changedHere = mine.changed.contains(id);
      const bool changedThere = theirs.changed.contains(id);
      const bool gone = mine.removed.contains(id) || (theirs.removed.contains(id) && !changedHere);
      EXPECT_EQ(seen.contains(id), !gone);
      if (changedHere) {
        EXPECT_TRUE(holds(merged, mine.changed.at(id)));
      } else if (changedThere && !gone) {
        EXPECT_TRUE(holds(merged, theirs.changed.at(id)));
      } else if (!gone) {
        EXPECT_TRUE(holds(merged, entry));
      }
      const bool touchedHere = changedHere || mine.removed.contains(id);
      const bool touchedThere = changedThere || theirs.removed.contains(id);
      conflicts += touchedHere && touchedThere && (changedHere || changedThere) ? 1 : 0;
    }
    EXPECT_EQ(overtaken.size(), conflicts);
    std::size_t kept = 0;
    for (const auto& entry : base.entries) kept += seen.contains(entry.identifier) ? 1 : 0;
    EXPECT_EQ(merged.entries.size(), kept + mine.added.size() + theirs.added.size());
    if (!mine.moved) {
      EXPECT_EQ(orderOf(merged, theirs.values), orderOf(theirs.values, merged));
    }
    if (!theirs.moved) {
      EXPECT_EQ(orderOf(merged, mine.values), orderOf(mine.values, merged));
    }
    EXPECT_TRUE(merged.primary == 0 || seen.contains(merged.primary));
    if (HasFailure()) FAIL() << "round " << round;
  }
}

TEST(MergedEntries, OfTenThousandEqualNewsOnBothSidesStandOnce) {
  MultiValue base;
  for (std::uint64_t i = 1; i <= 10'000; ++i) base.entries.push_back({i, "l", std::to_string(i)});
  auto mine = base;
  auto theirs = base;
  // All rewritten under new identifiers on both sides, and ten thousand equal ones behind.
  for (auto& entry : mine.entries) entry.identifier += 100'000;
  for (auto& entry : theirs.entries) entry.identifier += 200'000;
  for (std::uint64_t i = 1; i <= 10'000; ++i) {
    mine.entries.push_back({300'000 + i, "l", "x"});
    theirs.entries.push_back({400'000 + i, "l", "x"});
  }
  mine.entries.push_back({5, "l", "mine"});
  std::vector<MultiEntry> overtaken;
  const auto merged = mergedEntries(base, mine, theirs, overtaken);
  EXPECT_EQ(merged.entries.size(), 20'001U);
}

}  // namespace
}  // namespace ox
