#include "ox/platform/store/committed/record_index.hpp"

#include <gtest/gtest.h>
#include <string>

namespace ox {
namespace {

RecordIndex::Entry entry(std::int64_t row, const std::string& id, std::int32_t container = 1,
                         RecordKind kind = RecordKind::Person) {
  return {RecordKey::of(id), row, container, kind};
}

std::string texts(const std::vector<RecordKey>& keys) {
  std::string text;
  for (const auto& key : keys) text += key.text() + " ";
  return text;
}

TEST(RecordIndex, ListsInOrderOfRowsByKindAndContainer) {
  RecordIndex index;
  index.append(entry(1, "a"));
  index.append(entry(2, "g", 1, RecordKind::Group));
  index.append(entry(5, "b", 2));
  index.append(entry(9, "c"));
  EXPECT_EQ(texts(index.all(RecordKind::Person)), "a b c ");
  EXPECT_EQ(texts(index.all(RecordKind::Group)), "g ");
  EXPECT_EQ(texts(index.inContainer(1, RecordKind::Person)), "a c ");
  EXPECT_EQ(texts(index.inContainer(3, RecordKind::Person)), "");
  EXPECT_EQ(index.find(RecordKey::of("b"))->row, 5);
}

TEST(RecordIndex, ForgetsRemovedRowsAndTakesTheirIdentifierAgain) {
  RecordIndex index;
  index.append(entry(1, "a"));
  index.append(entry(2, "b"));
  index.removeRow(1);
  index.removeRow(1);
  index.removeRow(7);
  EXPECT_EQ(index.find(RecordKey::of("a")), nullptr);
  index.append(entry(3, "a"));
  EXPECT_EQ(texts(index.all(RecordKind::Person)), "b a ");
  EXPECT_EQ(index.find(RecordKey::of("a"))->row, 3);
  EXPECT_EQ(index.size(), 2U);
}

TEST(RecordIndex, StaysRightThroughGrowthAndMassRemoval) {
  RecordIndex index;
  for (std::int64_t row = 1; row <= 5000; ++row) {
    index.append(entry(row, "p" + std::to_string(row), static_cast<std::int32_t>(row % 3)));
  }
  for (std::int64_t row = 1; row <= 5000; ++row) {
    if (row % 10 != 0) index.removeRow(row);
  }
  ASSERT_EQ(index.size(), 500U);
  for (std::int64_t row = 1; row <= 5000; ++row) {
    const auto* found = index.find(RecordKey::of("p" + std::to_string(row)));
    ASSERT_EQ(found != nullptr, row % 10 == 0) << row;
    if (found != nullptr) {
      ASSERT_EQ(found->row, row);
    }
  }
  EXPECT_EQ(index.inContainer(0, RecordKind::Person).size() +
                index.inContainer(1, RecordKind::Person).size() +
                index.inContainer(2, RecordKind::Person).size(),
            500U);
}

}  // namespace
}  // namespace ox
