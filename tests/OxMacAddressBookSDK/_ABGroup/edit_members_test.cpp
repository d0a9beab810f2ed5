#include <gtest/gtest.h>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/support/second_process.hpp"

namespace ox::test {
namespace {

using Persons = std::vector<std::shared_ptr<IOxPerson>>;

Persons persons(std::initializer_list<const char*> ids) {
  Persons list;
  for (const auto* id : ids) list.push_back(person(id));
  return list;
}

// The reports of that edit.
template <typename Edit>
std::string reportsOf(Edit edit) {
  Sequence sequence;
  edit(sequence.callback());
  return sequence.text();
}

TEST(GroupAddPersons, ReportsExactQuotientsAndOffersOnlyWhatIsNoMemberYet) {
  StoreBuilder().persons("p", 3).group("g", "G").member("g", "p1");
  auto& source = SwitchedSource::install();
  source.resetCounts();
  EXPECT_EQ(reportsOf([](const auto& report) {
              group("g")->addPersons_progress(persons({"p0", "p1", "p2"}), report);
            }),
            "33.33333206176758 66.66666412353516 100 100!");
  EXPECT_EQ(source.counts().link, 2U);
  EXPECT_EQ(idsOf(group("g")->persons()), "p1 p0 p2");
}

TEST(GroupAddPersons, OfAnEmptyListReportsTheEndOnly) {
  StoreBuilder().group("g", "G");
  EXPECT_EQ(reportsOf([](const auto& report) { group("g")->addPersons_progress({}, report); }),
            "100!");
}

TEST(GroupAddPersons, OffersAPersonNamedTwiceTwice) {
  StoreBuilder().persons("p", 1).group("g", "G");
  auto& source = SwitchedSource::install();
  source.resetCounts();
  group("g")->addPersons(persons({"p0", "p0"}));
  EXPECT_EQ(source.counts().link, 2U);
  EXPECT_EQ(idsOf(group("g")->persons()), "p0");
}

TEST(GroupAddPersons, LeavesOutPersonsThatAreNoRecordsOfTheStore) {
  StoreBuilder().persons("p", 1).group("g", "G");
  const auto general = OxAddressBookGeneral::init();
  general->addPerson(person("p0"));
  const Persons list = {general->personsDic().objectForKey("p0"), nullptr, person("p0")};
  EXPECT_EQ(reportsOf([&](const auto& report) { group("g")->addPersons_progress(list, report); }),
            "33.33333206176758 66.66666412353516 100 100!");
  EXPECT_EQ(idsOf(group("g")->persons()), "p0");
}

TEST(GroupRemovePersons, ReportsHalfForTheSubgroupsAndHalfForItsOwnMembers) {
  StoreBuilder()
      .persons("p", 2)
      .group("g", "G")
      .group("a", "A")
      .group("b", "B")
      .subgroup("g", "a")
      .subgroup("g", "b")
      .members("g", {"p0", "p1"})
      .members("a", {"p0"})
      .members("b", {"p1"});
  EXPECT_EQ(reportsOf([](const auto& report) {
              group("g")->removePersons_progress(persons({"p0", "p1"}), report);
            }),
            "56.25 75 75 25 56.25 75 75 50 75 100 100!");
  EXPECT_EQ(idsOf(group("g")->includePersons()), "");
}

TEST(GroupRemovePersons, WithoutSubgroupsReportsFromFiftyUp) {
  StoreBuilder().persons("p", 4).group("g", "G").members("g", {"p0", "p2"});
  EXPECT_EQ(reportsOf([](const auto& report) {
              group("g")->removePersonsPrivate_progress(persons({"p0", "p1", "p2", "p3"}), report);
            }),
            "62.5 75 87.5 100 100!");
  EXPECT_EQ(idsOf(group("g")->persons()), "");
}

// What the contract says, word for word, as recursion.
void removeByTheBook(const std::shared_ptr<_ABGroup>& group, const Persons& list,
                     const ProgressCallback& report) {
  const auto subgroups = group->subGroups();
  const auto n = static_cast<float>(subgroups.size());
  const auto share = static_cast<double>(100.0F / n);
  float i = 0;
  for (const auto& subgroup : subgroups) {
    removeByTheBook(recordOf(subgroup), list,
                    [&](double p, bool) { report((p + share * p / 100) * 0.5, false); });
    i += 1;
    report(static_cast<double>(i * 100.0F / n) * 0.5, false);
  }
  for (std::size_t k = 1; k <= list.size(); ++k) {
    report(static_cast<double>(static_cast<float>(k) * 100.0F / static_cast<float>(list.size())) *
                   0.5 +
               50.0,
           false);
  }
  report(100.0, true);
}

TEST(GroupRemovePersons, ReportsAnyDepthAsTheRecursionWould) {
  StoreBuilder builder;
  builder.persons("p", 3);
  for (const auto* id : {"g", "a", "b", "c", "aa", "ab", "aaa", "ca", "cb", "cc"}) {
    builder.group(id, id);
  }
  builder.subgroup("g", "a").subgroup("g", "b").subgroup("g", "c");
  builder.subgroup("a", "aa").subgroup("a", "ab").subgroup("aa", "aaa");
  builder.subgroup("c", "ca").subgroup("c", "cb").subgroup("c", "cc").members("aaa", {"p1"});
  builder.subgroup("b", "aa").subgroup("c", "aa");  // reported by each way that leads there
  const auto list = persons({"p0", "p1", "p2"});
  const auto expected =
      reportsOf([&](const auto& report) { removeByTheBook(group("g"), list, report); });
  EXPECT_EQ(
      reportsOf([&](const auto& report) { group("g")->removePersons_progress(list, report); }),
      expected);
  EXPECT_EQ(idsOf(group("aaa")->persons()), "");
}

TEST(GroupRemovePersons, OfAnEmptyListReportsOnlyToAGivenCallback) {
  StoreBuilder().group("g", "G").group("a", "A").subgroup("g", "a");
  EXPECT_EQ(reportsOf([](const auto& report) { group("g")->removePersons_progress({}, report); }),
            "100 50 100!");
  group("g")->removePersons_progress({}, nullptr);
}

TEST(GroupRemovePersons, WithoutACallbackClearsTheWholeTree) {
  StoreBuilder()
      .persons("p", 2)
      .group("g", "G")
      .group("a", "A")
      .subgroup("g", "a")
      .members("g", {"p0"})
      .members("a", {"p0", "p1"});
  group("g")->removePersons_progress(persons({"p0"}), nullptr);
  EXPECT_EQ(idsOf(group("g")->includePersons()), "p1");
  group("g")->removePersons(persons({"p1"}));
  EXPECT_EQ(idsOf(group("g")->includePersons()), "");
}

TEST(GroupRemovePersons, CanLeaveTheSubgroupsOrTheGroupItselfAlone) {
  StoreBuilder()
      .persons("p", 1)
      .group("g", "G")
      .group("a", "A")
      .subgroup("g", "a")
      .members("g", {"p0"})
      .members("a", {"p0"});
  group("g")->removePersonsFromThisGroup(persons({"p0"}));
  EXPECT_EQ(idsOf(group("g")->persons()), "");
  EXPECT_EQ(idsOf(group("a")->persons()), "p0");
  group("g")->addPersons(persons({"p0"}));
  group("g")->removePersonsOfSubGroup(persons({"p0"}));
  EXPECT_EQ(idsOf(group("g")->persons()), "p0");
  EXPECT_EQ(idsOf(group("a")->persons()), "");
}

const support::SecondProcess tellsTree("tellsTree", [](const auto&) {
  for (const auto& each : ABAddressBook::sharedAddressBook()->groups()) {
    const auto shown = hostGroup(each);
    std::printf("%s[%s][%s] ", shown->displayName()->c_str(), idsOf(shown->persons()).c_str(),
                idsOf(shown->subGroups()).c_str());
  }
  return 0;
});

TEST(GroupEdits, StayInMemoryUntilTheSave) {
  StoreBuilder()
      .persons("p", 4)
      .group("g", "G")
      .group("a", "A")
      .subgroup("g", "a")
      .members("g", {"p0", "p1"})
      .members("a", {"p1", "p2"});
  const std::string before = "G[p0 p1][a] A[p1 p2][] ";
  ASSERT_EQ(tellsTree.run().output, before);
  group("g")->addPersons({person("p3")});
  group("g")->removePersonsFromThisGroup({person("p0")});
  group("g")->removePersons({person("p2")});
  group("g")->removePersons_progress({person("p1")}, [](double, bool) {});
  EXPECT_EQ(tellsTree.run().output, before);
  const auto made = group("g")->addSubGroupByName("New");
  // The creation is stored at once, its name and its place are not.
  EXPECT_EQ(tellsTree.run().output, before + "[][] ");
  ABAddressBook::sharedAddressBook()->save();
  EXPECT_EQ(tellsTree.run().output, "G[p3][a " + *made->ID() + "] A[][] New[][] ");
}

TEST(GroupEdits, AreForgottenByARevert) {
  StoreBuilder().persons("p", 1).group("g", "G");
  group("g")->addPersons(persons({"p0"}));
  EXPECT_EQ(contactSource().unsavedChanges().addedLinks.size(), 1U);
  ABAddressBook::sharedAddressBook()->revert();
  EXPECT_EQ(idsOf(group("g")->persons()), "");
}

TEST(GroupEdits, GoOnWhenTheStoreRefusesLinks) {
  StoreBuilder().persons("p", 2).group("g", "G").members("g", {"p1"});
  SwitchedSource::install().refuseLinkEdits();
  EXPECT_EQ(reportsOf([](const auto& report) {
              group("g")->addPersons_progress(persons({"p0", "p1"}), report);
            }),
            "50 100 100!");
  EXPECT_EQ(reportsOf([](const auto& report) {
              group("g")->removePersons_progress(persons({"p0", "p1"}), report);
            }),
            "75 100 100!");
  EXPECT_EQ(idsOf(group("g")->persons()), "p1");
}

}  // namespace
}  // namespace ox::test
