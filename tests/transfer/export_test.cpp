#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/AddressBook/ABPerson.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/records/property_keys.hpp"
#include "ox/transfer/exporter.hpp"
#include "ox/transfer/importer.hpp"
#include "ox/vcard/write/writer.hpp"
#include "tests/support/no_more_threads.hpp"
#include "tests/support/statement_count.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::vcard {
namespace {

using support::StoreBuilder;

constexpr std::string_view kLocal = "_local:ABAccount";

std::string exported(CardVersion version) {
  std::string text;
  const auto report = exportCards(contactSource().recordsIn(kLocal, RecordKind::Person),
                                  contactSource().recordsIn(kLocal, RecordKind::Group), version,
                                  [&](std::string_view card) {
                                    text.append(card);
                                    return true;
                                  });
  EXPECT_FALSE(report.stopped);
  return text;
}

ImportReport import(const std::string& text, const std::string& container,
                    const ImportOptions& options = {}) {
  return importFiles({support::temporaryFile("export_test.vcf", text)}, container, options);
}

ImportOptions updating() {
  ImportOptions options;
  options.update = true;
  return options;
}

// Persons with their own UIDs and without, a nested group, a member that is not exported with it.
void build() {
  // Not in the order in which a reader of cards finds the parts.
  const auto address = support::multiValue(
      {{Text(kABHomeLabel), Dictionary{{std::string(kABAddressCityKey), "Town"},
                                       {std::string(kABAddressStreetKey), "1 Way"}}}});
  StoreBuilder()
      .in(std::string(kLocal))
      .person(RecordKey::make(RecordKind::Person).text(), {.first = "Ann", .note = "a\x01"})
      .person("foreign", {.first = "Bo", .more = {{property_id::kAddress, address}}});
  import(
      "BEGIN:VCARD\nVERSION:3.0\nN:Lee;Cy\nUID:c-1\nX-A:b\nEND:VCARD\n"
      "BEGIN:VCARD\nVERSION:3.0\nN:In;Ner\nUID:g-2\nX-ADDRESSBOOKSERVER-KIND:group\n"
      "X-ADDRESSBOOKSERVER-MEMBER:c-1\nEND:VCARD\n",
      std::string(kLocal));
  const auto persons = contactSource().recordsIn(kLocal, RecordKind::Person);
  const auto groups = contactSource().recordsIn(kLocal, RecordKind::Group);
  const auto outer = RecordKey::make(RecordKind::Group).text();
  StoreBuilder()
      .in(std::string(kLocal))
      .group(outer, "Outer")
      .member(outer, persons[0].text())
      .member(outer, persons[1].text())
      .subgroup(outer, groups[0].text());
}

TEST(Export, IsRecognisedByTheContainerItCameFrom) {
  build();
  for (const auto version : {CardVersion::V30, CardVersion::V40}) {
    const auto text = exported(version);
    EXPECT_EQ(exported(version), text);
    const auto report = import(text, std::string(kLocal));
    EXPECT_EQ(report.cards, 5U);
    EXPECT_EQ(report.skipped, 3U);
    EXPECT_EQ(report.groups, 2U);
    EXPECT_EQ(report.problemCount, 0U) << report.problems.at(0).reason;
    EXPECT_EQ(contactSource().recordsIn(kLocal, RecordKind::Group).size(), 2U);
  }
}

TEST(Export, GivesPersonsAndGroupsToAnotherContainer) {
  build();
  for (const auto version : {CardVersion::V30, CardVersion::V40}) {
    const std::string other = version == CardVersion::V30 ? "A:ABAccount" : "B:ABAccount";
    StoreBuilder().container(other, "Other", 3);
    const auto report = import(exported(version), other);
    EXPECT_EQ(report.added, 3U);
    EXPECT_EQ(report.problemCount, 0U) << report.problems.at(0).reason;
    const auto persons = contactSource().recordsIn(other, RecordKind::Person);
    const auto groups = contactSource().recordsIn(other, RecordKind::Group);
    ASSERT_EQ(persons.size(), 3U);
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_EQ(*contactSource().committedValues(persons[0])->text(property_id::kNote), "a\x01");
    EXPECT_EQ(*contactSource().children(groups[0], RecordKind::Person), RecordKeys{persons[2]});
    EXPECT_EQ(*contactSource().children(groups[1], RecordKind::Person),
              (RecordKeys{persons[0], persons[1]}));
    EXPECT_EQ(*contactSource().children(groups[1], RecordKind::Group), RecordKeys{groups[0]});
  }
}

// What is not true any more is left out, and the record is known again all the same.
TEST(Export, OfAnEditedPersonIsRecognised) {
  import(
      "BEGIN:VCARD\nVERSION:3.0\nN:Doe;Jane\nFN:Janey the Great\nUID:c-1\n"
      "REV:2020-01-01T00:00:00Z\nGEO:1;2\nPHOTO:http://x/p\nEND:VCARD\n",
      std::string(kLocal));
  const auto unedited = exported(CardVersion::V40);
  EXPECT_NE(unedited.find("FN:Janey the Great\r\n"), unedited.npos);
  EXPECT_NE(unedited.find("REV:20200101T000000Z\r\n"), unedited.npos);
  EXPECT_EQ(import(unedited, std::string(kLocal)).problemCount, 0U);
  const auto person = contactSource().recordsIn(kLocal, RecordKind::Person).at(0);
  ASSERT_TRUE(
      contactSource().setValue(person, RecordKind::Person, property_id::kLast, Object("Roe")));
  ASSERT_TRUE(contactSource().save().done);
  for (const auto version : {CardVersion::V30, CardVersion::V40}) {
    const auto text = exported(version);
    EXPECT_NE(text.find("FN:Jane Roe\r\n"), text.npos) << text;
    EXPECT_EQ(text.find("Janey"), text.npos) << text;
    EXPECT_EQ(text.find("REV"), text.npos) << text;
    const auto report = import(text, std::string(kLocal), updating());
    EXPECT_EQ(report.skipped, 1U);
    EXPECT_EQ(report.problemCount, 0U);
  }
}

// More than are read at once; every third has a picture of so many bytes.
RecordKeys buildMany(std::size_t count, std::size_t pictureBytes) {
  StoreBuilder builder;
  builder.in(std::string(kLocal));
  for (std::size_t i = 0; i < count; ++i) {
    const auto name = "p" + std::to_string(i);
    const auto picture = i % 3 == 0 ? makeData(std::string(pictureBytes, 'x') + name) : nullptr;
    builder.person(name, {.first = name, .image = picture});
  }
  return contactSource().recordsIn(kLocal, RecordKind::Person);
}

std::string cardOf(const RecordKey& key) {
  std::string card;
  const auto uid = uidOfRecord(key);
  appendCard(*contactSource().committedValues(key), contactSource().committedImage(key),
             {.version = CardVersion::V30, .uid = uid}, card);
  return card;
}

TEST(Export, OnManyThreadsGivesEveryCardInOrder) {
  auto keys = buildMany(500, 20'000);
  std::vector<std::string> expected;
  for (const auto& key : keys) expected.push_back(cardOf(key));
  keys.insert(keys.begin() + 300, RecordKey::of("nobody"));
  const auto caller = std::this_thread::get_id();
  std::vector<std::string> given;
  const auto report = exportCards(keys, {}, CardVersion::V30, [&](std::string_view card) {
    EXPECT_EQ(std::this_thread::get_id(), caller);
    given.emplace_back(card);
    return true;
  });
  EXPECT_EQ(given, expected);
  EXPECT_EQ(report.persons, 500U);
  EXPECT_EQ(report.gone, 1U);
  EXPECT_FALSE(report.stopped);
}

TEST(Export, WithoutThreadsGivesEveryCardAllTheSame) {
  const auto keys = buildMany(500, 10);
  std::vector<std::string> expected;
  for (const auto& key : keys) expected.push_back(cardOf(key));
  std::vector<std::string> given;
  const support::NoMoreThreads none;
  const auto report = exportCards(keys, {}, CardVersion::V30, [&](std::string_view card) {
    given.emplace_back(card);
    return true;
  });
  EXPECT_EQ(given, expected);
  EXPECT_EQ(report.persons, 500U);
}

TEST(Export, AsksForManyPersonsAndTheirGroupsAtOnce) {
  support::statementsRun();
  const auto keys = buildMany(1000, 10);
  StoreBuilder().group("g", "G").group("h", "H").subgroup("g", "h");
  for (int i = 0; i < 20; ++i) StoreBuilder().member("g", "p" + std::to_string(i));
  const auto groups = contactSource().recordsIn(kLocal, RecordKind::Group);
  std::string text;
  const auto before = support::statementsRun();
  const auto report = exportCards(keys, groups, CardVersion::V40, [&](std::string_view card) {
    text += card;
    return true;
  });
  // The persons in two batches; the groups, and whatever stands in them; the begin and the end of
  // the moment; what tells that the tags are of the same moment.
  EXPECT_EQ(support::statementsRun() - before, 2U + 2U + 2U + 4U);
  EXPECT_EQ(report.persons, 1000U);
  EXPECT_EQ(report.groups, 2U);
  std::size_t members = 0;
  for (std::size_t at = 0; (at = text.find("\nMEMBER:", at)) != std::string::npos; ++at) ++members;
  EXPECT_EQ(members, 21U);
}

TEST(Export, FailsForARecordThatCannotBeRead) {
  const auto keys = buildMany(300, 10);
  sqlite::Connection(support::StoreEnvironment::instance().contactStore().string(),
                     sqlite::Connection::Mode::ReadWrite)
      .execute(
          "UPDATE content SET properties = x'00' WHERE record = "
          "(SELECT id FROM record WHERE uid = 'p290')");
  const auto taking = [](std::string_view) { return true; };
  EXPECT_THROW(exportCards(keys, {}, CardVersion::V30, taking), StoreError);
}

TEST(Export, LeavesOutWhatCannotBeReadAndTellsIt) {
  auto keys = buildMany(600, 10);
  StoreBuilder()
      .in(std::string(kLocal))
      .group("g", "G")
      .members("g", {"p1", "p290", "p3"})
      .group("h", "H");
  sqlite::Connection(support::StoreEnvironment::instance().contactStore().string(),
                     sqlite::Connection::Mode::ReadWrite)
      .execute(
          "UPDATE content SET properties = x'00' WHERE record IN "
          "(SELECT id FROM record WHERE uid IN ('p290', 'p599', 'h'));"
          "UPDATE image SET data = x'00' WHERE id = (SELECT image FROM content WHERE record = "
          "(SELECT id FROM record WHERE uid = 'p3'))");
  keys.push_back(RecordKey::of("nobody"));
  std::string text;
  const auto taking = [&](std::string_view card) {
    text.append(card);
    return true;
  };
  const auto report = exportCards(keys, {RecordKey::of("g"), RecordKey::of("h")}, CardVersion::V40,
                                  taking, Unreadable::LeaveOut);
  EXPECT_EQ(report.persons, 598U);
  EXPECT_EQ(report.groups, 1U);
  EXPECT_EQ(report.gone, 1U);
  std::string missing;
  for (const auto& part : report.missing) {
    missing += part.record.text() + (part.what == MissingPart::What::Picture ? " picture" : "") +
               (part.reason.empty() ? "?" : "") + "\n";
  }
  EXPECT_EQ(missing, "h\np3 picture\np290\np599\n");
  EXPECT_NE(text.find("FN:p3\r\n"), std::string::npos);
  EXPECT_EQ(text.find("FN:p290\r\n"), std::string::npos);
  std::size_t members = 0;
  for (std::size_t at = 0; (at = text.find("\nMEMBER:", at)) != std::string::npos; ++at) ++members;
  EXPECT_EQ(members, 2U) << "who has no card is named by no group";
}

std::string groupOf(const std::vector<std::string>& members) {
  std::string card = "BEGIN:VCARD\nVERSION:4.0\nKIND:group\nFN:G\nUID:g\n";
  for (const auto& member : members) card += "MEMBER:x-ox-uid:" + member + "\n";
  return card + "END:VCARD\n";
}

TEST(Import, LeavesAGroupTheMembersThatItsCardNames) {
  const std::string local(kLocal);
  const auto person = [](const std::string& uid) {
    return "BEGIN:VCARD\nVERSION:3.0\nFN:" + uid + "\nUID:" + uid + "\nEND:VCARD\n";
  };
  const auto inner = [](const std::string& lines) {
    return "BEGIN:VCARD\nVERSION:4.0\nKIND:group\nFN:I\nUID:i\n" + lines + "END:VCARD\n";
  };
  import(person("a") + person("b") + inner("") + groupOf({"a", "b", "i"}), local);
  const auto groups = contactSource().recordsIn(kLocal, RecordKind::Group);
  const auto persons = contactSource().recordsIn(kLocal, RecordKind::Person);
  const auto held = [&](RecordKind kind) { return *contactSource().children(groups[1], kind); };
  EXPECT_EQ(import(groupOf({"a", "b", "i"}), local).problemCount, 0U);

  const auto report = import(groupOf({"b"}), local);
  ASSERT_EQ(report.problems.size(), 1U);
  EXPECT_EQ(report.problems[0].reason, "differs from the group with the same UID; not updated");
  EXPECT_EQ(held(RecordKind::Person), persons);

  EXPECT_EQ(import(groupOf({"b"}), local, updating()).problemCount, 0U);
  EXPECT_EQ(held(RecordKind::Person), RecordKeys{persons[1]});
  EXPECT_EQ(held(RecordKind::Group), RecordKeys{});
  EXPECT_EQ(import(groupOf({"b"}), local).problemCount, 0U);

  // The inner group may take the outer one in as soon as it is out of it.
  import(groupOf({"i"}), local, updating());
  const auto turned = import(groupOf({}) + inner("MEMBER:x-ox-uid:g\n"), local, updating());
  EXPECT_EQ(turned.problemCount, 0U);
  EXPECT_EQ(*contactSource().children(groups[0], RecordKind::Group), RecordKeys{groups[1]});
  EXPECT_EQ(held(RecordKind::Group), RecordKeys{});

  // Edits of this process that nobody saved are not saved by the way.
  ASSERT_TRUE(contactSource().link(groups[1], persons[0], RecordKind::Person));
  EXPECT_EQ(import(groupOf({}), local, updating()).problemCount, 0U);
  EXPECT_EQ(contactSource().unsavedChanges().addedLinks.size(), 1U);
  EXPECT_EQ(held(RecordKind::Person), RecordKeys{persons[0]});
}

TEST(Import, LosesNoMemberWhenItsRequestIsRefused) {
  build();
  auto& source = contactSource();
  const auto groups = source.recordsIn(kLocal, RecordKind::Group);
  const auto before = *source.children(groups[1], RecordKind::Person);
  ASSERT_EQ(before.size(), 2U);
  SaveRequest request;
  request.removedLinks.push_back({groups[1], before[0]});
  request.links.push_back({groups[0], groups[1]});
  EXPECT_FALSE(source.execute(request));
  EXPECT_EQ(*source.children(groups[1], RecordKind::Person), before);
  // Out of the outer group, the inner one may take it in.
  request.removedLinks.push_back({groups[1], groups[0]});
  EXPECT_TRUE(source.execute(request)) << request.reason;
  EXPECT_EQ(*source.children(groups[1], RecordKind::Person), RecordKeys{before[1]});
}

TEST(Export, NamesNoMemberThatNobodySaved) {
  build();
  const auto persons = contactSource().recordsIn(kLocal, RecordKind::Person);
  const auto groups = contactSource().recordsIn(kLocal, RecordKind::Group);
  const auto saved = exported(CardVersion::V40);
  ASSERT_TRUE(contactSource().link(groups[0], persons[0], RecordKind::Person));
  EXPECT_EQ(exported(CardVersion::V40), saved);
}

TEST(Export, EndsWhereTheSinkSays) {
  const auto keys = buildMany(500, 10);
  std::uint64_t given = 0;
  const auto report =
      exportCards(keys, {}, CardVersion::V30, [&](std::string_view) { return ++given <= 200; });
  EXPECT_EQ(given, 201U);
  EXPECT_EQ(report.persons, 200U);
  EXPECT_TRUE(report.stopped);
  given = 0;
  const auto throwing = [&](std::string_view) -> bool {
    if (++given == 150) throw std::runtime_error("full");
    return true;
  };
  EXPECT_THROW(exportCards(keys, {}, CardVersion::V30, throwing), std::runtime_error);
  EXPECT_EQ(given, 150U);
}

TEST(CardRepresentation, SaysWhatTheRecordViewSees) {
  StoreBuilder()
      .in(std::string(kLocal))
      .person("p", {.first = "Ann", .image = makeData("\xFF\xD8")});
  import("BEGIN:VCARD\nVERSION:2.1\nN:Lee;Cy\nAGENT:\nBEGIN:VCARD\nN:x\nEND:VCARD\nEND:VCARD\n",
         std::string(kLocal));
  const auto book = ABAddressBook::sharedAddressBook();
  const auto person = std::dynamic_pointer_cast<ABPerson>(book->recordForUniqueId("p"));
  ASSERT_TRUE(person->setValue_forProperty(Object("Bo"), kABLastNameProperty));
  const std::string card =
      "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Bo;Ann;;;\r\nFN:Ann Bo\r\nEND:VCARD\r\n";
  EXPECT_EQ(*person->vCardRepresentation(), card);
  const auto imported = contactSource().recordsIn(kLocal, RecordKind::Person).at(1);
  const auto other = std::dynamic_pointer_cast<ABPerson>(book->recordForUniqueId(imported.text()));
  EXPECT_EQ(*other->vCardRepresentation(),
            "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Lee;Cy;;;\r\nFN:Cy Lee\r\nEND:VCARD\r\n");

  ASSERT_TRUE(book->removeRecord(person));
  EXPECT_EQ(*person->vCardRepresentation(), card);
  ASSERT_TRUE(book->save());
  EXPECT_EQ(person->vCardRepresentation(), nullptr);
}

}  // namespace
}  // namespace ox::vcard
