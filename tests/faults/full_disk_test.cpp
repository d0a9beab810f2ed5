// A disk that is full, or broken, at any one of the changes that an operation makes to it.
#include <gtest/gtest.h>

#include "ox/base/failures.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"
#include "ox/platform/store/store_source.hpp"
#include "tests/faults/store_state.hpp"
#include "tests/faults/trouble.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::faults {
namespace {

std::shared_ptr<ABAddressBook> book() {
  return ABAddressBook::sharedAddressBook();
}

std::shared_ptr<ABPerson> personOf(const std::string& id) {
  return std::dynamic_pointer_cast<ABPerson>(book()->recordForUniqueId(id));
}

std::shared_ptr<ABGroup> groupOf(const std::string& id) {
  return std::dynamic_pointer_cast<ABGroup>(book()->recordForUniqueId(id));
}

void buildRecords() {
  support::StoreBuilder()
      .person("changed", {.first = "Ann"})
      .person("joining")
      .group("group", "Friends")
      .group("below", "Family")
      .members("group", {"changed"});
}

// Edits of every kind; those of even and odd numbers undo each other's links.
void edit(int number) {
  const auto gone = "removed" + std::to_string(number);
  const auto custom = "Custom" + std::to_string(number);
  const bool even = number % 2 == 0;
  const auto text = std::to_string(number);
  const auto changed = personOf("changed");
  const auto joining = personOf("joining");
  const auto group = groupOf("group");
  const auto below = groupOf("below");
  ASSERT_EQ(ABPerson::addPropertiesAndTypes({{custom, kABStringProperty}}), 1U);
  EXPECT_TRUE(changed->setValue_forProperty(Object(text), kABFirstNameProperty));
  EXPECT_TRUE(joining->setValue_forProperty(even ? Object(text) : Object(), kABNoteProperty));
  EXPECT_TRUE(changed->setValue_forProperty(Object("own"), custom));
  EXPECT_TRUE(changed->setValue_forProperty(support::multiValue({{"Home", Object(text)}}),
                                            kABPhoneProperty));
  EXPECT_TRUE(changed->setImageData(makeData(std::string(17'000, even ? 'e' : 'o'))));
  EXPECT_TRUE(group->removeMember(even ? changed : joining));
  EXPECT_TRUE(group->addMember(even ? joining : changed));
  EXPECT_TRUE(even ? group->addSubgroup(below) : group->removeSubgroup(below));
  EXPECT_TRUE(book()->removeRecord(personOf(gone)));
}

TEST(FullDisk, AtAnyWriteOfASaveKeepsItsChangesForTheNextTry) {
  const failures::Watch watch;
  FaultyDisk::shared();
  buildRecords();
  int made = 0;
  const int met = forEachTrouble(Points::Each, [&](const Trouble& trouble) {
    support::StoreBuilder().person("removed" + std::to_string(made), {.note = "old"});
    const auto before = committedState(storePath());
    edit(made++);
    const auto wanted = stateOf(contactSource());
    const auto failed = watch.counts().failures;
    SaveReport report;
    const bool struck = trouble.during([&] { report = book()->saveAndReturnError(); });
    EXPECT_EQ(report.done, !struck);
    if (struck) {
      EXPECT_TRUE(report.failure.reason.starts_with(storePath() + ": ")) << report.failure.reason;
      EXPECT_EQ(watch.counts().failures, failed + 1);
      EXPECT_EQ(committedState(storePath()), before);
      EXPECT_EQ(stateOf(contactSource()), wanted);
      EXPECT_EQ(problemsOf(storePath()), "");
      EXPECT_TRUE(book()->save());
    }
    EXPECT_FALSE(book()->hasUnsavedChanges());
    EXPECT_EQ(committedState(storePath()), wanted);
    EXPECT_EQ(problemsOf(storePath()), "");
    return struck;
  });
  EXPECT_GT(met, 60);
  sqlite::Connection store(storePath(), sqlite::Connection::Mode::ReadOnly);
  EXPECT_EQ(store.queryInteger("SELECT count(*) FROM custom_property"), made);
}

// What could not be read once is read the next time, and is neither missing nor half there.
TEST(BrokenDisk, AtAnyReadIsToldAndNothingHalfReadIsKept) {
  FaultyDisk::shared();
  buildRecords();
  support::StoreBuilder().persons("p", 60).person("seen",
                                                  {.image = makeData(std::string(9'000, 'i'))});
  contactSource().checkpoint();
  const auto whole = committedState(storePath());
  std::uint64_t met = 0;
  for (;; ++met) {
    SCOPED_TRACE("at read " + std::to_string(met + 1));
    const auto source = openStoreSource(storePath());
    std::string state;
    const bool struck = Trouble{Fault::UnreadOnce, met + 1}.during([&] {
      try {
        state = stateOf(*source);
      } catch (const StoreError& error) {
        state = error.what();
      }
    });
    EXPECT_EQ(state.starts_with(storePath() + ": "), struck) << state;
    EXPECT_EQ(stateOf(*source), whole);
    if (!struck || HasFailure()) break;
  }
  EXPECT_GT(met, 10U);
}

std::shared_ptr<CNSaveRequest> additions(int count) {
  auto request = CNSaveRequest::init();
  const auto group = CNMutableGroup::init();
  request->addGroup_toContainerWithIdentifier(group, "_local");
  for (int i = 0; i < count; ++i) {
    const auto contact = CNMutableContact::init();
    PropertyBag values;
    values.set(property_id::kNote, Object(std::string(1'000, 'n') + std::to_string(i)));
    contact->setProperties(std::move(values));
    request->addContact_toContainerWithIdentifier(contact, "_local");
    request->addMember_toGroup(contact->identifier(), group->identifier());
  }
  return request;
}

TEST(FullDisk, AtAnyWriteOfARequestWritesNothingOfIt) {
  const failures::Watch watch;
  FaultyDisk::shared();
  support::StoreBuilder().person("there", {.first = "Ann"});
  const int met = forEachTrouble(Points::Sampled, [&](const Trouble& trouble) {
    constexpr int kContacts = 60;
    const auto before = committedState(storePath());
    const auto held = contactSource().records(RecordKind::Person).size();
    const auto request = additions(kContacts);
    const auto failed = watch.counts().failures;
    bool done = false;
    std::string error;
    const auto execute = [&] {
      done = CNContactStore::init()->executeSaveRequest_error(*request, &error);
    };
    const bool struck = trouble.during(execute);
    EXPECT_EQ(done, !struck);
    if (struck) {
      EXPECT_TRUE(error.starts_with(storePath() + ": ")) << error;
      EXPECT_EQ(watch.counts().failures, failed + 1);
      EXPECT_EQ(stateOf(contactSource()), before);
      EXPECT_EQ(committedState(storePath()), before);
      execute();
    }
    EXPECT_TRUE(done);
    EXPECT_EQ(contactSource().records(RecordKind::Person).size(), held + kContacts);
    EXPECT_EQ(committedState(storePath()), stateOf(contactSource()));
    EXPECT_EQ(problemsOf(storePath()), "");
    // So that what is compared stays small.
    for (const auto& person : book()->people()) {
      if (person->uniqueId() != "there") book()->removeRecord(person);
    }
    EXPECT_TRUE(book()->save());
    return struck;
  });
  EXPECT_GT(met, 80);
}

TEST(FullDisk, WhileAStoreIsMadeLeavesAPlaceToMakeIt) {
  FaultyDisk::shared();
  int made = 0;
  const auto container = std::string("_local:ABAccount On My Mac 1\n");
  const int met = forEachTrouble(Points::Each, [&](const Trouble& trouble) {
    const auto path =
        support::temporaryPath("new" + std::to_string(made++)).string() + "/contacts.db";
    const auto source = openStoreSource(path);
    std::string error;
    const bool struck = trouble.during([&] {
      try {
        source->containers();
      } catch (const StoreError& failure) {
        error = failure.what();
      }
    });
    EXPECT_EQ(error.starts_with(path + ": "), struck) << error;
    EXPECT_EQ(stateOf(*source), container);
    EXPECT_EQ(committedState(path), container);
    EXPECT_EQ(problemsOf(path), "");
    return struck;
  });
  EXPECT_GT(met, 60);
}

}  // namespace
}  // namespace ox::faults
