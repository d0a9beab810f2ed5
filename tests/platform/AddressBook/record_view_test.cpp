#include "tests/platform/AddressBook/record_view.hpp"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

#include "ox/base/failures.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/support/switched_source.hpp"

namespace ox {
namespace {

using record_view::book;
using record_view::personNamed;
using support::StoreBuilder;

Text textOf(const ABRecord& record, TextView property) {
  const auto value = record.valueForProperty(property);
  return std::get<Object>(value).toText();
}

std::string ids(const auto& records) {
  std::string text;
  for (const auto& record : records) text += *record->uniqueId() + " ";
  return text;
}

Text committedFirst(const std::string& id) {
  const auto values = contactSource().committedValues(RecordKey::of(id));
  const auto* text = values ? values->text(property_id::kFirst) : nullptr;
  return text != nullptr ? Text(*text) : std::nullopt;
}

const support::SecondProcess setsNote("setsNote", [](const auto& arguments) {
  const auto person = personNamed(arguments.at(0));
  if (!person) return 1;
  if (!person->setValue_forProperty(Object(arguments.at(1)), kABNoteProperty)) return 2;
  return book()->save() ? 0 : 3;
});

const support::SecondProcess removes("removes", [](const auto& arguments) {
  return book()->removeRecord(personNamed(arguments.at(0))) && book()->save() ? 0 : 1;
});

const support::SecondProcess adds("adds", [](const auto& arguments) {
  StoreBuilder().person(arguments.at(0), {.first = "New"});
  return 0;
});

TEST(RecordView, ListsEveryRecordInCreationOrderAsOneLiveObjectEach) {
  StoreBuilder().person("p2").group("g1", "One").person("p1").group("g0", "Zero");
  const auto people = book()->people();
  EXPECT_EQ(ids(people), "p2 p1 ");
  EXPECT_EQ(ids(book()->groups()), "g1 g0 ");
  EXPECT_EQ(book()->recordForUniqueId("p1"), people[1]);
  EXPECT_EQ(book()->people(), people);
  EXPECT_EQ(book()->recordForUniqueId("nobody"), nullptr);
  EXPECT_EQ(book()->recordForUniqueId(nullptr), nullptr);
}

TEST(RecordView, FindsNoRecordByTheKeyThatStandsForNone) {
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->recordForKey(RecordKey()), nullptr);
}

TEST(RecordView, KeepsChangesInMemoryUntilTheSave) {
  StoreBuilder().person("p1", {.first = "Ann"});
  const auto person = personNamed("p1");
  EXPECT_TRUE(person->setValue_forProperty(Object("Bea"), kABFirstNameProperty));
  EXPECT_EQ(textOf(*person, kABFirstNameProperty), "Bea");
  EXPECT_EQ(committedFirst("p1"), "Ann");
  EXPECT_TRUE(book()->hasUnsavedChanges());
  EXPECT_TRUE(book()->save());
  EXPECT_FALSE(book()->hasUnsavedChanges());
  EXPECT_EQ(committedFirst("p1"), "Bea");
}

TEST(RecordView, TakesWhatIsVisibleAlreadyForNoChange) {
  StoreBuilder().person("p1", {.first = "Ann"});
  const auto person = personNamed("p1");
  EXPECT_TRUE(person->setValue_forProperty(Object("Ann"), kABFirstNameProperty));
  EXPECT_TRUE(person->removeValueForProperty(kABNoteProperty));
  EXPECT_TRUE(person->setImageData(nullptr));
  EXPECT_FALSE(book()->hasUnsavedChanges());

  person->setValue_forProperty(Object("Bea"), kABFirstNameProperty);
  person->setImageData(makeData("picture"));
  EXPECT_EQ(book()->unsavedChanges().values.size(), 2U);
  person->setValue_forProperty(Object("Ann"), kABFirstNameProperty);
  person->setImageData(nullptr);
  EXPECT_FALSE(book()->hasUnsavedChanges());
}

TEST(RecordView, TakesAnEqualMultiValueWithNewIdentifiersForNoChange) {
  StoreBuilder().person("p1", {.phones = {{"a", "1"}, {"b", "2", true}}});
  const auto person = personNamed("p1");
  const auto phones = [](bool firstIsMain) {
    MultiValue values;
    const auto first = values.add("1", "a");
    const auto second = values.add("2", "b");
    values.primary = firstIsMain ? first : second;
    return std::make_shared<const MultiValue>(values);
  };
  EXPECT_TRUE(person->setValue_forProperty(phones(false), kABPhoneProperty));
  EXPECT_FALSE(book()->hasUnsavedChanges());
  EXPECT_TRUE(person->setValue_forProperty(phones(true), kABPhoneProperty));
  EXPECT_TRUE(book()->hasUnsavedChanges());
  EXPECT_TRUE(person->setValue_forProperty(phones(false), kABPhoneProperty));
  EXPECT_FALSE(book()->hasUnsavedChanges());
}

TEST(RecordView, ReadsRecordsOneAfterAnotherAndADamagedOneAmongThemAlone) {
  const failures::Watch watch;
  StoreBuilder().persons("p", 100);
  {
    sqlite::Connection file(support::StoreEnvironment::instance().contactStore().string(),
                            sqlite::Connection::Mode::ReadWrite);
    file.execute("UPDATE content SET properties = x'00' WHERE record = 50");
  }
  int read = 0;
  for (const auto& person : book()->people()) {
    if (textOf(*person, kABFirstNameProperty) == person->uniqueId()) ++read;
  }
  EXPECT_EQ(read, 99);
  EXPECT_EQ(watch.counts().failures, 1U);
}

TEST(RecordView, RevertsToWhatWasSaved) {
  StoreBuilder().person("p1", {.first = "Ann"}).person("p2");
  const auto person = personNamed("p1");
  person->setValue_forProperty(Object("Bea"), kABFirstNameProperty);
  person->setImageData(makeData(std::string(100'000, 'x')));
  book()->removeRecord(personNamed("p2"));
  EXPECT_EQ(person->imageData()->size(), 100'000U);
  book()->revert();
  EXPECT_FALSE(book()->hasUnsavedChanges());
  EXPECT_EQ(textOf(*person, kABFirstNameProperty), "Ann");
  EXPECT_EQ(person->imageData(), nullptr);
  EXPECT_EQ(ids(book()->people()), "p1 p2 ");
}

TEST(RecordView, RefusesWrongTypesUnknownPropertiesAndKeepsTheOldValue) {
  const failures::Watch watch;
  StoreBuilder().person("p1", {.first = "Ann"}).group("g1", "Friends");
  const auto person = personNamed("p1");
  EXPECT_FALSE(person->setValue_forProperty(Object(std::int64_t{1}), kABFirstNameProperty));
  EXPECT_FALSE(person->setValue_forProperty(Object("x"), kABPhoneProperty));
  EXPECT_FALSE(person->setValue_forProperty(Object("x"), "NoSuchProperty"));
  EXPECT_FALSE(person->setValue_forProperty(Object("x"), nullptr));
  EXPECT_FALSE(person->setValue_forProperty(Object("x"), kABGroupNameProperty));
  MultiValue numbers;
  numbers.add(std::int64_t{1}, "");
  EXPECT_FALSE(
      person->setValue_forProperty(std::make_shared<const MultiValue>(numbers), kABPhoneProperty));
  EXPECT_EQ(textOf(*person, kABFirstNameProperty), "Ann");
  EXPECT_EQ(watch.counts().refusals, 6U);
  EXPECT_EQ(watch.counts().failures, 0U);
}

TEST(RecordView, KeepsValuesOfARemovedRecordUntilTheSave) {
  StoreBuilder().person("p1", {.first = "Ann"}).person("p2").group("g1", "G").member("g1", "p1");
  const auto person = personNamed("p1");
  const auto group = std::dynamic_pointer_cast<ABGroup>(book()->recordForUniqueId("g1"));
  EXPECT_EQ(ids(group->members()), "p1 ");
  EXPECT_TRUE(book()->removeRecord(person));
  EXPECT_FALSE(book()->removeRecord(person));
  EXPECT_EQ(ids(book()->people()), "p2 ");
  EXPECT_EQ(book()->recordForUniqueId("p1"), nullptr);
  EXPECT_EQ(ids(group->members()), "");
  EXPECT_EQ(ids(person->parentGroups()), "");
  EXPECT_EQ(textOf(*person, kABFirstNameProperty), "Ann");
  EXPECT_FALSE(person->setValue_forProperty(Object("Bea"), kABFirstNameProperty));
  EXPECT_EQ(contactSource().recordsIn("_local", RecordKind::Person).size(), 2U);

  EXPECT_TRUE(book()->save());
  EXPECT_EQ(person->uniqueId(), "p1");
  EXPECT_EQ(textOf(*person, kABFirstNameProperty), std::nullopt);
  EXPECT_FALSE(person->setValue_forProperty(Object("Bea"), kABFirstNameProperty));
  EXPECT_EQ(contactSource().recordsIn("_local", RecordKind::Person).size(), 1U);
}

TEST(RecordView, ReplacesInvalidUtf8WhereTextEnters) {
  StoreBuilder().person("p1");
  const auto person = personNamed("p1");
  EXPECT_TRUE(person->setValue_forProperty(Object("a\xFF"
                                                  "b"),
                                           kABNoteProperty));
  MultiValue phones;
  phones.add("1\xC3", "la\xFF");
  EXPECT_TRUE(
      person->setValue_forProperty(std::make_shared<const MultiValue>(phones), kABPhoneProperty));
  EXPECT_EQ(textOf(*person, kABNoteProperty), "a\uFFFDb");
  const auto stored = std::get<MultiValuePtr>(person->valueForProperty(kABPhoneProperty));
  EXPECT_EQ(stored->entries[0].value, Object("1\uFFFD"));
  EXPECT_EQ(stored->entries[0].label, "la\uFFFD");
}

TEST(RecordView, WritesACustomPropertyWithItsFirstValueOnly) {
  StoreBuilder().person("p1");
  EXPECT_EQ(ABPerson::addPropertiesAndTypes({{"Extra", kABMultiStringProperty}}), 1U);
  EXPECT_EQ(ABPerson::addPropertiesAndTypes({{"Extra", kABStringProperty}}), 0U);
  EXPECT_EQ(ABPerson::typeOfProperty("Extra"), kABMultiStringProperty);
  EXPECT_EQ(ABPerson::properties().back(), "Extra");
  MultiValue values;
  values.add("one", "");
  const auto person = personNamed("p1");
  EXPECT_TRUE(person->setValue_forProperty(std::make_shared<const MultiValue>(values), "Extra"));
  EXPECT_TRUE(book()->save());
}

TEST(TwoProcesses, EditingDifferentPropertiesBothWin) {
  StoreBuilder().person("p1", {.first = "Ann"});
  const auto person = personNamed("p1");
  person->setValue_forProperty(Object("Bea"), kABFirstNameProperty);
  EXPECT_EQ(setsNote.run({"p1", "from the other"}).exitCode, 0);
  EXPECT_TRUE(book()->save());
  EXPECT_EQ(committedFirst("p1"), "Bea");
  EXPECT_EQ(textOf(*person, kABNoteProperty), "from the other");
}

TEST(TwoProcesses, ARemovalElsewhereWinsAndIsNamed) {
  StoreBuilder().person("p1", {.first = "Ann"}).person("p2", {.first = "Bob"});
  const auto people = book()->people();
  people[0]->setValue_forProperty(Object("Bea"), kABFirstNameProperty);
  people[1]->setValue_forProperty(Object("Bert"), kABFirstNameProperty);
  EXPECT_EQ(removes.run({"p1"}).exitCode, 0);
  const auto report = book()->saveAndReturnError();
  EXPECT_TRUE(report.done);
  EXPECT_EQ(
      report.dropped,
      (std::vector<Failure>{{FailureKind::Refused,
                             "the changes of p1 were dropped: it was removed elsewhere", "p1"}}));
  EXPECT_EQ(committedFirst("p2"), "Bert");
  EXPECT_EQ(ids(book()->people()), "p2 ");
}

TEST(TwoProcesses, SeeEachOthersRecordsAtTheNextList) {
  StoreBuilder().person("p1").person("p2");
  EXPECT_EQ(ids(book()->people()), "p1 p2 ");
  EXPECT_EQ(adds.run({"p3"}).exitCode, 0);
  EXPECT_EQ(removes.run({"p1"}).exitCode, 0);
  EXPECT_EQ(ids(book()->people()), "p2 p3 ");
  EXPECT_EQ(textOf(*personNamed("p3"), kABFirstNameProperty), "New");
  EXPECT_EQ(personNamed("p1"), nullptr);
  StoreBuilder().person("p4");
  EXPECT_EQ(adds.run({"p5"}).exitCode, 0);
  StoreBuilder().person("p6");
  EXPECT_EQ(ids(book()->people()), "p2 p3 p4 p5 p6 ");
}

TEST(TwoProcesses, ChangingTheSamePropertyLeaveTheOneSavedLast) {
  StoreBuilder().person("p1", {.note = "old"});
  const auto person = personNamed("p1");
  EXPECT_TRUE(person->setValue_forProperty(Object("mine"), kABNoteProperty));
  EXPECT_EQ(setsNote.run({"p1", "theirs"}).exitCode, 0);
  EXPECT_EQ(textOf(*person, kABNoteProperty), "mine");
  EXPECT_TRUE(book()->save());
  EXPECT_EQ(textOf(*person, kABNoteProperty), "mine");
  EXPECT_EQ(setsNote.run({"p1", "theirs"}).exitCode, 0);
  book()->people();  // looks for news
  EXPECT_EQ(textOf(*person, kABNoteProperty), "theirs");
}

TEST(TwoProcesses, ChangingAPictureAndAValueBothWin) {
  StoreBuilder().person("p1", {.note = "old", .image = makeData("old picture")});
  const auto person = personNamed("p1");
  EXPECT_TRUE(person->setImageData(makeData("new picture")));
  EXPECT_EQ(setsNote.run({"p1", "theirs"}).exitCode, 0);
  EXPECT_TRUE(book()->save());
  EXPECT_EQ(textOf(*person, kABNoteProperty), "theirs");
  EXPECT_EQ(*contactSource().committedImage(RecordKey::of("p1")), "new picture");
}

TEST(RecordView, TakesAPictureInPlaceOfADamagedOneWhateverItsBytes) {
  StoreBuilder().person("p1", {.image = makeData("picture")});
  const auto path = support::StoreEnvironment::instance().contactStore();
  {
    sqlite::Connection file(path.string(), sqlite::Connection::Mode::ReadWrite);
    file.execute("UPDATE image SET data = 'damaged'");
  }
  EXPECT_TRUE(personNamed("p1")->setImageData(makeData("damaged")));
  EXPECT_TRUE(book()->save());
  EXPECT_EQ(*contactSource().committedImage(RecordKey::of("p1")), "damaged");
}

TEST(RecordView, TakesAPictureAnewThatIsDamaged) {
  StoreBuilder().person("p1", {.image = makeData("picture")});
  const auto path = support::StoreEnvironment::instance().contactStore();
  sqlite::Connection(path.string(), sqlite::Connection::Mode::ReadWrite)
      .execute("UPDATE image SET data = 'damaged'");
  EXPECT_TRUE(personNamed("p1")->setImageData(makeData("picture")));
  EXPECT_TRUE(book()->save());
  EXPECT_EQ(*contactSource().committedImage(RecordKey::of("p1")), "picture");
}

TEST(RecordView, HoldsTheUnsavedPictureOnTheDiskButOnce) {
  const auto spilled = [] {
    for (const auto& each : std::filesystem::directory_iterator("/proc/self/fd")) {
      std::error_code gone;
      const auto target = std::filesystem::read_symlink(each.path(), gone).string();
      if (target.find("/oxcontacts-") == std::string::npos) continue;
      struct stat file {};
      EXPECT_EQ(::stat(each.path().c_str(), &file), 0);
      return static_cast<std::int64_t>(file.st_blocks) * 512;
    }
    return std::int64_t{-1};
  };
  StoreBuilder().person("p1");
  const auto person = personNamed("p1");
  constexpr std::size_t kSize = 1U << 20U;
  for (char c = 'a'; c <= 'j'; ++c) {
    EXPECT_TRUE(person->setImageData(makeData(std::string(kSize, c))));
  }
  EXPECT_EQ(*person->imageData(), std::string(kSize, 'j'));
  EXPECT_GE(spilled(), static_cast<std::int64_t>(kSize));
  EXPECT_LT(spilled(), static_cast<std::int64_t>(3 * kSize));
  EXPECT_TRUE(person->setImageData(nullptr));
  EXPECT_LT(spilled(), static_cast<std::int64_t>(kSize));
}

TEST(RecordView, KnowsAGroupThatCameBackUnderAHeldPersonsIdentifier) {
  StoreBuilder().person("x");
  const auto held = personNamed("x");
  ASSERT_TRUE(book()->removeRecord(held) && book()->save());
  StoreBuilder().group("x", "G");
  ASSERT_EQ(book()->groups().size(), 1U);
  EXPECT_EQ(book()->groups().at(0)->uniqueId(), "x");
  EXPECT_EQ(personNamed("x"), nullptr);
  EXPECT_TRUE(std::dynamic_pointer_cast<ABGroup>(book()->recordForUniqueId("x")));
}

TEST(RecordView, AFailedSaveSaysWhyAndKeepsTheChanges) {
  const failures::Watch watch;
  StoreBuilder().person("p1", {.first = "Ann"});
  const auto person = personNamed("p1");
  person->setValue_forProperty(Object("Bea"), kABFirstNameProperty);
  const auto path = support::StoreEnvironment::instance().contactStore();
  {
    sqlite::Connection file(path.string(), sqlite::Connection::Mode::ReadWrite);
    file.execute(
        "CREATE TRIGGER full BEFORE UPDATE ON content BEGIN SELECT raise(ABORT, "
        "'disk is full'); END");
  }
  const auto report = book()->saveAndReturnError();
  EXPECT_FALSE(report.done);
  EXPECT_EQ(report.failure,
            (Failure{FailureKind::Unavailable, path.string() + ": disk is full", path.string()}));
  EXPECT_TRUE(book()->hasUnsavedChanges());
  EXPECT_EQ(watch.counts().failures, 1U);
  {
    sqlite::Connection file(path.string(), sqlite::Connection::Mode::ReadWrite);
    file.execute("DROP TRIGGER full");
  }
  EXPECT_TRUE(book()->save());
  EXPECT_EQ(committedFirst("p1"), "Bea");
}

}  // namespace
}  // namespace ox
