#include <gtest/gtest.h>

#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/support/second_process.hpp"

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

const support::SecondProcess putsBelow("putsBelow", [](const auto& arguments) {
  return group(arguments.at(0))->addSubgroup(group(arguments.at(1))) &&
                 ABAddressBook::sharedAddressBook()->save()
             ? 0
             : 1;
});

// g holds a, a holds b, and b holds a and g: each process added what was allowed in its view.
void linkInACircle() {
  StoreBuilder().persons("p", 1);
  StoreBuilder().group("g", "G").group("a", "A").group("b", "B").members("b", {"p0"});
  ASSERT_TRUE(group("b")->addSubgroup(group("a")));
  ASSERT_TRUE(group("b")->addSubgroup(group("g")));
  ASSERT_EQ(putsBelow.run({"g", "a"}).exitCode, 0);
  ASSERT_EQ(putsBelow.run({"a", "b"}).exitCode, 0);
  ASSERT_EQ(idsOf(group("a")->subGroups()), "b");
  ASSERT_EQ(idsOf(group("b")->subGroups()), "a g");
}

TEST(GroupsInACircle, AreTornDownOnceAndTheFirstOneStays) {
  linkInACircle();
  group("g")->removeAllSubGroup();
  EXPECT_EQ(allGroupIds(), "g");
  EXPECT_EQ(group("g")->subGroupsCount(), 0U);
}

TEST(GroupsInACircle, LoseADirectSubgroupAndStayThemselves) {
  linkInACircle();
  EXPECT_TRUE(group("g")->removeSubGroup(group("a")));
  EXPECT_EQ(allGroupIds(), "g");
}

TEST(GroupsInACircle, LetPersonsBeRemovedWithReportsThatEnd) {
  linkInACircle();
  Sequence sequence;
  group("g")->removePersons_progress({person("p0")}, sequence.callback());
  // As if b had no sub-groups: those it has are above it.
  EXPECT_EQ(sequence.text(), "100 100 50 100 100 50 100 100!");
  EXPECT_EQ(idsOf(group("g")->includePersons()), "");
}

TEST(GroupsInACircle, AreUndoneByTheSaveWhichNamesTheLink) {
  linkInACircle();
  const auto report = ABAddressBook::sharedAddressBook()->saveAndReturnError();
  EXPECT_TRUE(report.done);
  EXPECT_EQ(report.dropped,
            (std::vector<Failure>{
                {FailureKind::Refused,
                 "the link from b to a was refused: a group would be below itself", "b"},
                {FailureKind::Refused,
                 "the link from b to g was refused: a group would be below itself", "b"}}));
  EXPECT_EQ(idsOf(group("b")->subGroups()), "");
}

TEST(GroupTree, WithManyPathsToOneGroupIsWalkedOnce) {
  // Each layer's two groups hold both of the next: 2^31 paths. Without a book nothing is removed.
  constexpr int kLayers = 32;
  const auto id = [](int layer, int which) {
    return "l" + std::to_string(layer) + "_" + std::to_string(which);
  };
  StoreBuilder builder;
  for (int layer = 0; layer < kLayers; ++layer) {
    builder.group(id(layer, 0), "G").group(id(layer, 1), "G");
  }
  for (int layer = 1; layer < kLayers; ++layer) {
    for (const int above : {0, 1}) {
      for (const int below : {0, 1}) builder.subgroup(id(layer - 1, above), id(layer, below));
    }
  }
  OxMacAddressBook::addressBookArray();  // would stamp the groups anew
  for (const auto& each : ABAddressBook::sharedAddressBook()->groups()) {
    hostGroup(each)->setAddressID("nowhere");
  }
  group(id(0, 0))->removeAllSubGroup();
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->groups().size(), 2U * kLayers);
}

TEST(GroupTree, MayBeDeeperThanAnyStack) {
  constexpr int kDepth = 3000;
  SaveRequest request;
  for (int i = 0; i < kDepth; ++i) {
    request.additions.push_back(
        {RecordKey::of("d" + std::to_string(i)), RecordKind::Group, "_local", {}, {}});
  }
  ASSERT_TRUE(support::realSource().execute(request));
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
