#include "oxcontacts/output/persons_below.hpp"

#include <gtest/gtest.h>

namespace ox::program {
namespace {

using Counts = std::vector<std::size_t>;

constexpr std::size_t kEnough = 1'000'000;

RecordKeys newPersons(std::size_t count) {
  RecordKeys persons;
  for (std::size_t i = 0; i < count; ++i) persons.push_back(RecordKey::make(RecordKind::Person));
  return persons;
}

TEST(PersonsBelow, CountsEachPersonOnceHoweverManyWaysLeadToHer) {
  const auto p = newPersons(4);
  // 0 holds 1 and 2, which both hold 3; 4 stands alone.
  const std::vector<NestedGroup> groups = {
      {{1, 2}, {p[0]}}, {{3}, {p[0], p[1]}}, {{3}, {}}, {{}, {p[1], p[2]}}, {{}, {p[2], p[3]}}};
  EXPECT_EQ(personsBelow(groups, kEnough), (Counts{3, 3, 2, 2, 2}));
  EXPECT_EQ(personsBelow({}, kEnough), Counts());
}

TEST(PersonsBelow, CountsInGroupsThatLieInEachOther) {
  const auto p = newPersons(3);
  const std::vector<NestedGroup> groups = {{{1}, {p[0]}}, {{0}, {p[1]}}, {{0, 2}, {p[2]}}};
  EXPECT_EQ(personsBelow(groups, kEnough), (Counts{2, 2, 3}));
}

TEST(PersonsBelow, TakesAStepForEachGroupAboveAndGivesUpWhereTheyAreTooMany) {
  const auto p = newPersons(100);
  std::vector<NestedGroup> chain(100);
  for (std::size_t i = 0; i < 100; ++i) {
    chain[i].persons = {p[i]};
    if (i + 1 < 100) chain[i].subGroups = {i + 1};
  }
  Counts expected;
  for (std::size_t i = 0; i < 100; ++i) expected.push_back(100 - i);
  // The i-th person has i + 1 groups above her, with i links.
  EXPECT_EQ(personsBelow(chain, 10'000), expected);
  EXPECT_EQ(personsBelow(chain, 9'999), std::nullopt);
}

TEST(PersonsBelow, CountsPersonsOfTheSameGroupsTogether) {
  const std::vector<NestedGroup> groups = {{{1}, {}}, {{}, newPersons(5000)}};
  EXPECT_EQ(personsBelow(groups, 3), (Counts{5000, 5000}));
}

}  // namespace
}  // namespace ox::program
