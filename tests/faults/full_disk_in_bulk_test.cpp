// A disk that is full, or broken, at any one of the changes of an import or of a book's load.
#include <gtest/gtest.h>

#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/transfer/importer.hpp"
#include "tests/OxMacAddressBookSDK/book/bulk_runs.hpp"
#include "tests/faults/store_state.hpp"
#include "tests/faults/trouble.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::faults {
namespace {

constexpr std::uint64_t kPersons = 3;

std::string cards(int number) {
  const auto end = "\r\nEND:VCARD\r\n";
  std::string text;
  std::string members;
  for (std::uint64_t i = 0; i < kPersons; ++i) {
    const auto uid = std::to_string(number) + "-" + std::to_string(i);
    text += "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Ann\r\nN:;Ann;;;\r\nNOTE:" + std::string(3'000, 'n') +
            "\r\nUID:" + uid + end;
    members += "\r\nX-ADDRESSBOOKSERVER-MEMBER:urn:uuid:" + uid;
  }
  return text + "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Friends\r\nN:Friends\r\nUID:group" +
         std::to_string(number) + "\r\nX-ADDRESSBOOKSERVER-KIND:group" + members + end;
}

std::size_t count(RecordKind kind) {
  return contactSource().records(kind).size();
}

void removeEverything() {
  const auto book = ABAddressBook::sharedAddressBook();
  for (const auto& group : book->groups()) book->removeRecord(group);
  for (const auto& person : book->people()) {
    if (person->uniqueId() != "there") book->removeRecord(person);
  }
  ASSERT_TRUE(book->save());
}

TEST(FullDisk, AtAnyWriteOfAnImportLeavesWhatItCounted) {
  FaultyDisk::shared();
  support::StoreBuilder().person("there", {.first = "Ann"});
  int made = 0;
  int told = 0;
  const int met = forEachTrouble(Points::Each, [&](const Trouble& trouble) {
    const auto path = support::temporaryFile("cards.vcf", cards(made++)).string();
    vcard::ImportReport report;
    const auto import = [&] { report = vcard::importFiles({path}, "_local", {}); };
    const bool struck = trouble.during(import);
    if (report.failure.empty()) {
      // Met, if at all, when the write-ahead log was to be emptied, which can wait.
      EXPECT_EQ(report.added + report.skipped, kPersons);
    } else {
      EXPECT_TRUE(struck && report.failure.starts_with(storePath())) << report.failure;
      ++told;
    }
    EXPECT_EQ(count(RecordKind::Person), 1 + report.added);
    EXPECT_EQ(count(RecordKind::Group), report.groups);
    EXPECT_EQ(committedState(storePath()), stateOf(contactSource()));
    EXPECT_EQ(problemsOf(storePath()), "");
    if (struck) import();
    EXPECT_EQ(report.failure, "");
    EXPECT_EQ(report.added + report.skipped, kPersons);
    EXPECT_EQ(count(RecordKind::Person), 1 + kPersons);
    const auto groups = contactSource().records(RecordKind::Group);
    EXPECT_EQ(groups.size(), 1U);
    EXPECT_EQ(contactSource().children(groups.at(0), RecordKind::Person)->size(), kPersons);
    EXPECT_EQ(committedState(storePath()), stateOf(contactSource()));
    EXPECT_EQ(problemsOf(storePath()), "");
    removeEverything();
    return struck;
  });
  EXPECT_GT(met, 90);
  EXPECT_GT(told, 40);
}

std::string nameOf(const ABRecord& record, std::string_view property) {
  return std::get<Object>(record.valueForProperty(property)).toText().value_or("");
}

// The names of everything, without the empty records that a load cut short leaves behind.
std::string content() {
  const auto book = ABAddressBook::sharedAddressBook();
  std::string text;
  for (const auto& person : book->people()) {
    const auto name = nameOf(*person, kABFirstNameProperty);
    if (!name.empty()) text += name + ' ';
  }
  for (const auto& group : book->groups()) {
    const auto name = nameOf(*group, kABGroupNameProperty);
    if (name.empty()) continue;
    text += '[' + name + ':';
    for (const auto& member : group->members()) {
      text += ' ' + nameOf(*member, kABFirstNameProperty);
    }
    text += "] ";
  }
  return text;
}

TEST(FullDisk, AtAnyWriteOfALoadLosesNobody) {
  const failures::Watch watch;
  FaultyDisk::shared();
  support::StoreBuilder()
      .person("ann", {.first = "Ann", .note = std::string(9'000, 'n')})
      .person("ben", {.first = "Ben"})
      .group("friends", "Friends")
      .members("friends", {"ann", "ben"});
  const auto data = test::savedData(test::bookNamed("_local"));
  const std::string whole = "Ann Ben [Friends: Ann Ben] ";
  const int met = forEachTrouble(Points::Each, [&](const Trouble& trouble) {
    const auto before = watch.counts().failures;
    const bool struck = trouble.during([&] { test::loaded(test::bookNamed("_local"), data); });
    EXPECT_EQ(watch.counts().failures != before, struck);
    EXPECT_EQ(problemsOf(storePath()), "");
    EXPECT_EQ(content(), whole);
    // What is left unsaved completes the load; it must not be half of one.
    EXPECT_TRUE(ABAddressBook::sharedAddressBook()->save());
    EXPECT_EQ(content(), whole);
    EXPECT_EQ(problemsOf(storePath()), "");
    test::loaded(test::bookNamed("_local"), data);
    EXPECT_EQ(count(RecordKind::Person), 2U);
    EXPECT_EQ(count(RecordKind::Group), 1U);
    EXPECT_EQ(content(), whole);
    return struck;
  });
  EXPECT_GT(met, 90);
}

}  // namespace
}  // namespace ox::faults
