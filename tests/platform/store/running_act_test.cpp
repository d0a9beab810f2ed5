#include "ox/platform/store/running_act.hpp"

#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "ox/base/failures.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "tests/platform/AddressBook/record_view.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/statement_count.hpp"
#include "tests/support/store_builder.hpp"

namespace ox {
namespace {

using namespace record_view;
using support::StoreBuilder;

const support::SecondProcess removesAnn("removesAnn", [](const auto&) {
  return book()->removeRecord(personNamed("ann")) && book()->save() ? 0 : 1;
});

const support::SecondProcess removesTheAccount("removesTheAccount", [](const auto&) {
  SaveRequest request;
  request.removedContainers.push_back({"A:ABAccount", true});
  return contactSource().execute(request) ? 0 : 1;
});

TEST(RunningAct, CreatesForThisProcessAloneUntilTheSave) {
  StoreBuilder().container("A:ABAccount", "A", 3).person("ann", {.first = "Ann"}).group("g", "G");
  {
    const RunningAct act;
    StoreBuilder()
        .in("A")
        .person("ben", {.first = "Ben", .image = makeData("picture")})
        .group("h", "H")
        .member("h", "ben")
        .member("g", "ben")
        .subgroup("h", "g");
    setFirst("ben", "Benno");
    EXPECT_EQ(visible(), "Ann Benno [g: Benno] [h: Benno [g]] ");
    EXPECT_EQ(contactSource().recordsIn("A:ABAccount", RecordKind::Person).size(), 2U);
    EXPECT_EQ(contactSource().containerOf("ben", RecordKind::Person)->identifier, "A:ABAccount");
    EXPECT_EQ(*contactSource().committedValues(RecordKey::of("ben"))->text(property_id::kFirst),
              "Ben")
        << "the container view has what it was created with";
    EXPECT_EQ(contactSource().committedChildren(RecordKey::of("h"), RecordKind::Person)->size(),
              1U);
    EXPECT_EQ(*personNamed("ben")->imageData(), "picture");
    EXPECT_EQ(book()->unsavedChanges().additions.size(), 2U);
    EXPECT_EQ(elsewhere(), "Ann [g:] ");
    EXPECT_TRUE(book()->save());
    EXPECT_FALSE(book()->hasUnsavedChanges());
  }
  EXPECT_EQ(visible(), "Ann Benno [g: Benno] [h: Benno [g]] ");
  EXPECT_EQ(elsewhere(), visible());
  EXPECT_EQ(*personNamed("ben")->imageData(), "picture");
}

TEST(RunningAct, ThatIsNotSavedLeavesNothingOfItsOwnAndEverythingElse) {
  StoreBuilder().persons("p", 4).group("g", "G").members("g", {"p0", "p1"}).group("h", "H");
  setFirst("p0", "unsaved");
  groupNamed("g")->addMember(personNamed("p2"));
  groupNamed("h")->addMember(personNamed("p0"));
  groupNamed("g")->removeMember(personNamed("p1"));
  const auto before = visible();
  EXPECT_EQ(before, "unsaved p1 p2 p3 [g: unsaved p2] [h: unsaved] ");
  {
    const RunningAct act;
    StoreBuilder().person("new", {.first = "New"}).member("g", "new");
    setFirst("p0", "of the act");
    setFirst("p3", "of the act");
    personNamed("p3")->setImageData(makeData(std::string(100'000, 'x')));
    groupNamed("g")->removeMember(personNamed("p2"));
    groupNamed("g")->addMember(personNamed("p1"));
    groupNamed("g")->addSubgroup(groupNamed("h"));
    book()->removeRecord(groupNamed("h"));
    EXPECT_EQ(visible(), "of the act p1 p2 of the act New [g: of the act New p1] ");
  }
  EXPECT_EQ(visible(), before);
  EXPECT_EQ(elsewhere(), "p0 p1 p2 p3 [g: p0 p1] [h:] ");
  EXPECT_TRUE(book()->save());
  EXPECT_EQ(elsewhere(), before);
}

TEST(RunningAct, RevertsItsOwnAndNobodysOnItsThread) {
  StoreBuilder().persons("p", 2);
  setFirst("p1", "nobody's");
  const RunningAct act;
  StoreBuilder().person("new", {.first = "New"});
  setFirst("p0", "the act's");
  book()->revert();
  EXPECT_EQ(visible(), "p0 p1 ");
  EXPECT_FALSE(book()->hasUnsavedChanges());
}

TEST(RunningAct, PausedIsNobodys) {
  StoreBuilder().persons("p", 2);
  {
    const RunningAct act;
    setFirst("p0", "the act's");
    StoreBuilder().person("staged", {.first = "Staged"});
    const RunningAct::Pause pause;
    setFirst("p1", "saved");
    StoreBuilder().person("at once", {.first = "At-once"});
    EXPECT_TRUE(book()->save());
    book()->revert();
    EXPECT_EQ(visible(), "the act's saved At-once Staged ");
    const RunningAct own;
    setFirst("p1", "of an act in the pause");
  }
  EXPECT_EQ(visible(), "p0 saved At-once ");
  EXPECT_EQ(elsewhere(), visible());
}

TEST(RunningAct, NestedIsTakenBackAloneOrJoinsTheOuter) {
  StoreBuilder().persons("p", 1);
  {
    RunningAct outer;
    EXPECT_FALSE(outer.joinOuter());
    StoreBuilder().person("a", {.first = "A"});
    {
      const RunningAct inner;
      StoreBuilder().person("b", {.first = "B"});
      setFirst("a", "changed");
      setFirst("p0", "changed");
    }
    EXPECT_EQ(visible(), "p0 A ");
    {
      RunningAct inner;
      StoreBuilder().person("c", {.first = "C"});
      setFirst("a", "kept");
      EXPECT_TRUE(inner.joinOuter());
      setFirst("p0", "kept");
    }
    EXPECT_EQ(visible(), "kept kept C ");
    EXPECT_EQ(elsewhere(), "p0 ");
    EXPECT_TRUE(book()->save());
  }
  EXPECT_EQ(elsewhere(), "kept kept C ");
}

TEST(RunningAct, CommitsEveryOtherRequestAtOnce) {
  StoreBuilder().container("A:ABAccount", "A", 3).person("ann", {.first = "Ann"});
  const RunningAct act;
  SaveRequest added;
  added.newContainers.push_back({"B:ABAccount", "B", 3});
  EXPECT_TRUE(contactSource().execute(added));
  SaveRequest dated;
  dated.additions.push_back({RecordKey::of("x"), RecordKind::Person, "A", {}, nullptr});
  dated.moment = contactSource().moment();
  EXPECT_TRUE(contactSource().execute(dated));
  EXPECT_FALSE(book()->hasUnsavedChanges());
  EXPECT_EQ(elsewhere(), "Ann - ");
}

TEST(RunningAct, RefusesARequestAsAWhole) {
  StoreBuilder().container("A:ABAccount", "A", 3).group("a", "A").in("_local").group("g", "G");
  const RunningAct act;
  const auto request = [](const char* container, std::vector<NewLink> links) {
    SaveRequest made;
    made.additions.push_back({RecordKey::of("new"), RecordKind::Group, container, {}, nullptr});
    made.additions.push_back({RecordKey::of("pat"), RecordKind::Person, container, {}, nullptr});
    made.links = std::move(links);
    return made;
  };
  const auto link = [](const char* group, const char* child) {
    return NewLink{RecordKey::of(group), RecordKey::of(child)};
  };
  struct Row {
    SaveRequest request;
    const char* reason;
  };
  for (auto& row : std::vector<Row>{
           {request("Nowhere", {}), "there is no account Nowhere"},
           {request("A", {link("new", "pat"), link("g", "pat")}), "the link would cross accounts"},
           {request("A", {link("new", "gone")}), "there is no record gone"},
           {request("A", {link("pat", "new")}), "pat is no group"},
           {request("A", {link("a", "new"), link("new", "a")}), "the group would be below itself"},
       }) {
    EXPECT_FALSE(contactSource().execute(row.request)) << row.reason;
    EXPECT_EQ(row.request.reason, row.reason);
    EXPECT_EQ(visible(), "[a:] [g:] ") << row.reason;
    EXPECT_FALSE(book()->hasUnsavedChanges());
  }
}

TEST(RunningAct, GivesTheCopyOfARecordAnIdentifierOfItsOwn) {
  StoreBuilder().person("ann", {.first = "Ann"}).group("g", "G");
  const RunningAct act;
  SaveRequest request;
  request.additions.push_back({RecordKey::of("ann"), RecordKind::Person, "_local", {}, nullptr});
  request.links.push_back({RecordKey::of("g"), RecordKey::of("ann")});
  EXPECT_TRUE(contactSource().execute(request));
  EXPECT_NE(request.additions[0].key, RecordKey::of("ann"));
  EXPECT_TRUE(book()->save());
  EXPECT_EQ(elsewhere(), "Ann - [g: -] ");
}

TEST(RunningAct, WhoseAccountIsRemovedElsewhereIsNotSavedAtAll) {
  const failures::Watch watch;
  StoreBuilder().person("ann", {.first = "Ann"}).container("A:ABAccount", "A", 3);
  {
    const RunningAct act;
    StoreBuilder().in("A").person("new", {.first = "New"});
    setFirst("ann", "changed");
    ASSERT_EQ(removesTheAccount.run().exitCode, 0);
    EXPECT_FALSE(book()->save());
    EXPECT_EQ(watch.last()->kind, FailureKind::Refused);
    EXPECT_TRUE(book()->hasUnsavedChanges());
  }
  EXPECT_EQ(visible(), "Ann ");
  EXPECT_EQ(elsewhere(), "Ann ");
}

TEST(RunningAct, LinksOfARecordThatIsRemovedElsewhereAreDroppedAndNamed) {
  StoreBuilder().person("ann", {.first = "Ann"});
  const RunningAct act;
  StoreBuilder().group("h", "H");
  groupNamed("h")->addMember(personNamed("ann"));
  ASSERT_EQ(removesAnn.run().exitCode, 0);
  const auto report = book()->saveAndReturnError();
  EXPECT_TRUE(report.done);
  EXPECT_EQ(report.dropped.size(), 1U);
  EXPECT_EQ(elsewhere(), "[h:] ");
}

// What an act has created is known without a question; of looks for news there is one in 10 ms, as
// for any property, and not one for each record.
TEST(RunningAct, AsksTheStoreNothingAboutWhatItCreates) {
  support::statementsRun();
  StoreBuilder().person("p0");
  book()->people();
  const RunningAct act;
  const auto looks = support::looksMade();
  const auto statements = support::statementsRun();
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 300; ++i) {
    const auto contact = CNMutableContact::init();
    const auto request = CNSaveRequest::init();
    request->addContact_toContainerWithIdentifier(contact, Text("_local"));
    ASSERT_TRUE(CNContactStore::init()->executeSaveRequest_error(*request, nullptr));
    const auto person = book()->recordForKey(contact->key());
    ASSERT_TRUE(person->setValue_forProperty(Object("Ann"), kABFirstNameProperty));
  }
  const auto spent = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now() - start);
  // Which accounts take no changes.
  EXPECT_EQ(support::statementsRun() - statements, 1U);
  // The clock that tells the 10 ms is a coarse one.
  EXPECT_LE(support::looksMade() - looks, static_cast<std::uint64_t>(spent.count()) / 5 + 2);
  EXPECT_EQ(book()->people().size(), 301U);
}

}  // namespace
}  // namespace ox
