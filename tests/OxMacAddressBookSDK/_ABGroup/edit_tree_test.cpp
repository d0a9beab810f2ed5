#include <gtest/gtest.h>

#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

std::string allGroupIds() {
  std::string text;
  for (const auto& each : ABAddressBook::sharedAddressBook()->groups()) {
    text += (text.empty() ? "" : " ") + each->uniqueId().value_or("");
  }
  return text;
}

StoreBuilder threeLevels() {
  StoreBuilder builder;
  for (const auto* id : {"g", "a", "b", "aa", "ab", "ba", "other"}) builder.group(id, id);
  builder.subgroup("g", "a").subgroup("g", "b").subgroup("a", "aa").subgroup("a", "ab");
  builder.subgroup("b", "ba");
  return builder;
}

TEST(GroupTree, GetsANewNamedGroupBelow) {
  StoreBuilder().group("g", "G");
  const auto made = group("g")->addSubGroupByName("Below");
  ASSERT_TRUE(made);
  EXPECT_EQ(made->displayName(), "Below");
  EXPECT_EQ(made->addressBookID(), "_local");
  EXPECT_EQ(idsOf(group("g")->subGroups()), *made->ID());
  const auto unnamed = group("g")->addSubGroupByName(nullptr);
  EXPECT_EQ(unnamed->displayName(), "");
  EXPECT_EQ(group("g")->subGroupsCount(), 2U);
}

TEST(GroupTree, GetsNoGroupBelowAGroupWithoutBook) {
  StoreBuilder().group("g", "G");
  OxMacAddressBook::addressBookArray();  // would stamp the group anew
  group("g")->setAddressID("nowhere");
  EXPECT_EQ(group("g")->addSubGroupByName("Below"), nullptr);
  EXPECT_EQ(allGroupIds(), "g");
}

TEST(GroupTree, HandsOutTheNewGroupAlsoWhenTheLinkWasRefused) {
  StoreBuilder().group("g", "G");
  const auto before = group("g");
  SwitchedSource::install().refuseLinkEdits();
  EXPECT_TRUE(before->addSubGroupByName("Below"));
  EXPECT_EQ(before->subGroupsCount(), 0U);
}

TEST(GroupTree, LosesADirectSubgroupWithEverythingBelowIt) {
  threeLevels();
  EXPECT_TRUE(group("g")->removeSubGroup(group("a")));
  EXPECT_EQ(allGroupIds(), "g b ba other");
  EXPECT_EQ(idsOf(group("g")->subGroups()), "b");
}

TEST(GroupTree, KeepsWhatIsNoDirectSubgroup) {
  threeLevels();
  EXPECT_FALSE(group("g")->removeSubGroup(group("aa")));
  EXPECT_FALSE(group("g")->removeSubGroup(group("other")));
  EXPECT_FALSE(group("g")->removeSubGroup(nullptr));
  EXPECT_EQ(allGroupIds(), "g a b aa ab ba other");
}

TEST(GroupTree, AnswersTrueAndKeepsASubgroupThatTheStoreDoesNotLetGo) {
  threeLevels();
  const auto top = group("g");
  SwitchedSource::install().refuseLinkEdits();
  EXPECT_TRUE(top->removeSubGroup(group("b")));
  EXPECT_EQ(idsOf(top->subGroups()), "a b");
  EXPECT_EQ(allGroupIds(), "g a b aa ab ba other");
}

TEST(GroupTree, AnswersTrueForASubgroupThatStaysWhenEverythingBelowItIsGone) {
  threeLevels();
  const auto top = group("g");
  SwitchedSource::install().refuseLinkEditsOf("g");
  EXPECT_TRUE(top->removeSubGroup(group("b")));
  EXPECT_EQ(idsOf(top->subGroups()), "a b");
  EXPECT_EQ(idsOf(group("b")->subGroups()), "");
  EXPECT_EQ(allGroupIds(), "g a b aa ab other");
}

TEST(GroupTree, IsTornDownFromTheLeavesUp) {
  threeLevels();
  group("g")->removeAllSubGroup();
  const auto changes = ABAddressBook::sharedAddressBook()->unsavedChanges();
  std::string removed;
  for (const auto& key : changes.removals) removed += key.text() + " ";
  EXPECT_EQ(removed, "aa ab a ba b ");
  EXPECT_EQ(allGroupIds(), "g other");
}

TEST(GroupTree, OfAGroupWithoutBookStaysAsItIs) {
  threeLevels();
  OxMacAddressBook::addressBookArray();  // would stamp the groups anew
  for (const auto* id : {"g", "a", "b", "aa", "ab", "ba"}) group(id)->setAddressID("nowhere");
  group("g")->removeAllSubGroup();
  EXPECT_FALSE(group("g")->removeSubGroup(group("a")));
  EXPECT_EQ(allGroupIds(), "g a b aa ab ba other");
}

TEST(GroupTree, MayBeDeeperThanAnyStack) {
  constexpr int kDepth = 3000;
  SaveRequest request;
  for (int i = 0; i < kDepth; ++i) {
    request.additions.push_back(
        {RecordKey::of("d" + std::to_string(i)), RecordKind::Group, "_local", {}, {}});
  }
  ASSERT_TRUE(support::realSource().execute(request));
  // From below: each link looks for circles through everything above it, which is nothing yet.
  for (int i = kDepth - 1; i > 0; --i) {
    group("d" + std::to_string(i - 1))->addSubgroup(group("d" + std::to_string(i)));
  }
  EXPECT_EQ(group("d0")->includePersonsCount(), 0U);
  group("d0")->removePersons({});
  group("d0")->removeAllSubGroup();
  EXPECT_EQ(allGroupIds(), "d0");
}

}  // namespace
}  // namespace ox::test
