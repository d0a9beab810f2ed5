#include <gtest/gtest.h>
#include <string>

#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/store_builder.hpp"

namespace ox {
namespace {

using support::StoreBuilder;

std::shared_ptr<ABPerson> person(const std::string& id) {
  return std::dynamic_pointer_cast<ABPerson>(
      ABAddressBook::sharedAddressBook()->recordForUniqueId(id));
}

std::shared_ptr<ABGroup> group(const std::string& id) {
  return std::dynamic_pointer_cast<ABGroup>(
      ABAddressBook::sharedAddressBook()->recordForUniqueId(id));
}

bool save() {
  return ABAddressBook::sharedAddressBook()->save();
}

std::string ids(const auto& records) {
  std::string text;
  for (const auto& record : records) text += *record->uniqueId() + " ";
  return text;
}

const support::SecondProcess listsMembers("listsMembers", [](const auto& arguments) {
  std::printf("%s", ids(group(arguments.at(0))->members()).c_str());
  return 0;
});

const support::SecondProcess addsMember("addsMember", [](const auto& arguments) {
  return group(arguments.at(0))->addMember(person(arguments.at(1))) && save() ? 0 : 1;
});

const support::SecondProcess removesPerson("removesPerson", [](const auto& arguments) {
  return ABAddressBook::sharedAddressBook()->removeRecord(person(arguments.at(0))) && save() ? 0
                                                                                             : 1;
});

TEST(Links, StandInTheOrderOfAdding) {
  StoreBuilder().person("p1").person("p2").person("p3").group("g1", "G").group("g2", "H");
  EXPECT_TRUE(group("g1")->addMember(person("p3")));
  EXPECT_TRUE(group("g1")->addMember(person("p1")));
  EXPECT_TRUE(group("g1")->addSubgroup(group("g2")));
  EXPECT_TRUE(save());
  EXPECT_TRUE(group("g1")->addMember(person("p2")));
  EXPECT_EQ(ids(group("g1")->members()), "p3 p1 p2 ");
  EXPECT_EQ(ids(group("g1")->subgroups()), "g2 ");
  EXPECT_EQ(ids(group("g2")->parentGroups()), "g1 ");
  EXPECT_TRUE(save());
  EXPECT_EQ(listsMembers.run({"g1"}).output, "p3 p1 p2 ");
}

TEST(Links, ThatArePutBackStandAtTheEnd) {
  StoreBuilder().person("p1").person("p2").group("g1", "G").members("g1", {"p1", "p2"});
  EXPECT_TRUE(group("g1")->removeMember(person("p1")));
  EXPECT_EQ(ids(group("g1")->members()), "p2 ");
  EXPECT_EQ(ids(person("p1")->parentGroups()), "");
  EXPECT_TRUE(group("g1")->addMember(person("p1")));
  EXPECT_EQ(ids(group("g1")->members()), "p2 p1 ");
  EXPECT_TRUE(save());
  EXPECT_EQ(ids(group("g1")->members()), "p2 p1 ");
  EXPECT_EQ(listsMembers.run({"g1"}).output, "p2 p1 ");
}

TEST(Links, AddedAndTakenAwayAgainLeaveNothingToSave) {
  StoreBuilder().person("p1").group("g1", "G");
  EXPECT_TRUE(group("g1")->addMember(person("p1")));
  EXPECT_TRUE(group("g1")->removeMember(person("p1")));
  EXPECT_FALSE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
  EXPECT_TRUE(group("g1")->addMember(person("p1")));
  EXPECT_EQ(ids(group("g1")->members()), "p1 ");
}

TEST(Links, AreSeenByTheContainerViewAfterTheSaveOnly) {
  StoreBuilder().person("p1").group("g1", "G");
  EXPECT_TRUE(group("g1")->addMember(person("p1")));
  EXPECT_EQ(listsMembers.run({"g1"}).output, "");
  EXPECT_TRUE(save());
  EXPECT_EQ(listsMembers.run({"g1"}).output, "p1 ");
}

TEST(Links, AreRefusedTwiceAcrossContainersAndInACircle) {
  const failures::Watch watch;
  StoreBuilder()
      .person("p1")
      .group("g1", "G")
      .group("g2", "H")
      .group("g3", "I")
      .subgroup("g1", "g2")
      .container("A:ABAccount", "A", 3)
      .person("a1")
      .group("ag", "AG");
  EXPECT_TRUE(group("g1")->addMember(person("p1")));
  EXPECT_FALSE(group("g1")->addMember(person("p1")));
  EXPECT_FALSE(group("g1")->addMember(person("a1")));
  EXPECT_FALSE(group("g1")->addSubgroup(group("ag")));
  EXPECT_FALSE(group("g1")->addSubgroup(group("g1")));
  EXPECT_TRUE(group("g2")->addSubgroup(group("g3")));
  EXPECT_FALSE(group("g3")->addSubgroup(group("g1")));
  EXPECT_FALSE(group("g1")->removeMember(person("a1")));
  EXPECT_FALSE(group("g1")->addMember(nullptr));
  EXPECT_EQ(watch.counts().refusals, 5U) << "taking away what is not there is none";
  EXPECT_EQ(ids(group("g3")->subgroups()), "");
}

TEST(Links, OfARemovedGroupVanishAtOnce) {
  StoreBuilder()
      .person("p1")
      .group("g1", "G")
      .group("g2", "H")
      .subgroup("g1", "g2")
      .members("g2", {"p1"});
  const auto removed = group("g2");
  EXPECT_TRUE(ABAddressBook::sharedAddressBook()->removeRecord(removed));
  EXPECT_EQ(ids(group("g1")->subgroups()), "");
  EXPECT_EQ(ids(person("p1")->parentGroups()), "");
  EXPECT_EQ(ids(removed->members()), "");
  EXPECT_FALSE(removed->addMember(person("p1")));
  EXPECT_FALSE(group("g1")->addSubgroup(removed));
  EXPECT_TRUE(save());
  EXPECT_EQ(ids(group("g1")->subgroups()), "");
  EXPECT_EQ(ids(person("p1")->parentGroups()), "");
}

TEST(Links, MadeInTwoProcessesAreAllKept) {
  StoreBuilder().person("p1").person("p2").group("g1", "G");
  EXPECT_TRUE(group("g1")->addMember(person("p1")));
  EXPECT_EQ(addsMember.run({"g1", "p2"}).exitCode, 0);
  EXPECT_EQ(addsMember.run({"g1", "p1"}).exitCode, 0);
  EXPECT_TRUE(save());
  EXPECT_EQ(ids(group("g1")->members()), "p2 p1 ");
  EXPECT_FALSE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
}

TEST(Links, KeepTheirOrderHoweverOftenOneIsTakenAwayAndPutBack) {
  StoreBuilder().person("p1").person("p2").person("p3").group("g1", "G").group("g2", "H");
  EXPECT_TRUE(group("g1")->addMember(person("p1")));
  EXPECT_TRUE(group("g1")->addSubgroup(group("g2")));
  for (int i = 0; i < 100; ++i) {
    EXPECT_TRUE(group("g1")->addMember(person("p2")));
    EXPECT_TRUE(group("g1")->removeMember(person("p2")));
  }
  EXPECT_TRUE(group("g1")->addMember(person("p3")));
  EXPECT_TRUE(group("g1")->addMember(person("p2")));
  EXPECT_EQ(ids(group("g1")->members()), "p1 p3 p2 ");
  EXPECT_TRUE(save());
  EXPECT_EQ(listsMembers.run({"g1"}).output, "p1 p3 p2 ");
  EXPECT_EQ(ids(group("g1")->subgroups()), "g2 ");
}

TEST(Links, AreForgottenWhenTheRecordWasRemovedElsewhere) {
  StoreBuilder().person("p1").person("p2").group("g1", "G").members("g1", {"p1"});
  EXPECT_TRUE(group("g1")->removeMember(person("p1")));
  EXPECT_TRUE(group("g1")->addMember(person("p2")));
  EXPECT_EQ(removesPerson.run({"p1"}).exitCode, 0);
  EXPECT_EQ(removesPerson.run({"p2"}).exitCode, 0);
  const auto report = ABAddressBook::sharedAddressBook()->saveAndReturnError();
  EXPECT_TRUE(report.done);
  EXPECT_EQ(report.dropped,
            (std::vector<Failure>{{FailureKind::Refused,
                                   "the link from g1 to p2 was dropped: one of them is not there",
                                   "g1"}}));
  EXPECT_EQ(ids(group("g1")->members()), "");
}

TEST(Links, AreRefusedInACircleOfAnyLength) {
  constexpr int kGroups = 40;
  StoreBuilder builder;
  const auto id = [](int i) { return "g" + std::to_string(i); };
  for (int i = 0; i < kGroups; ++i) builder.group(id(i), "G");
  // From the middle outwards in both directions, half of it stored and half of it unsaved.
  for (int step = 0; step < kGroups / 2 - 1; ++step) {
    const int down = kGroups / 2 + step;
    const int up = kGroups / 2 - 1 - step;
    EXPECT_TRUE(group(id(down))->addSubgroup(group(id(down + 1))));
    EXPECT_TRUE(group(id(up - 1))->addSubgroup(group(id(up))));
    if (step == kGroups / 4) {
      EXPECT_TRUE(save());
    }
  }
  EXPECT_TRUE(group(id(kGroups / 2 - 1))->addSubgroup(group(id(kGroups / 2))));
  for (int below = 1; below < kGroups; below += 7) {
    EXPECT_FALSE(group(id(below))->addSubgroup(group(id(0)))) << below;
    EXPECT_FALSE(group(id(kGroups - 1))->addSubgroup(group(id(below - 1)))) << below;
  }
  EXPECT_TRUE(save());
  EXPECT_FALSE(group(id(kGroups - 1))->addSubgroup(group(id(0))));
}

}  // namespace
}  // namespace ox
