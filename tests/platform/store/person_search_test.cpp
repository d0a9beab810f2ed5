#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "ox/base/failures.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/journal/journal.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/journal/store_journal.hpp"
#include "ox/platform/store/pinned_moment.hpp"
#include "ox/platform/store/running_act.hpp"
#include "ox/platform/store/search/search_index.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/repair.hpp"
#include "ox/records/search_text.hpp"
#include "tests/platform/AddressBook/record_view.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

using record_view::book;
using record_view::personNamed;
using record_view::setFirst;
using support::StoreBuilder;

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

std::string indexPath() {
  return storePath() + ".find";
}

template <typename People>
std::string idsOf(const People& people) {
  std::string ids;
  for (const auto& person : people) {
    ids += (ids.empty() ? "" : " ") + person->uniqueId().value_or("?");
  }
  return ids;
}

std::string found(const std::string& words) {
  return idsOf(book()->peopleMatching(words));
}

const support::SecondProcess renames("renamesFound", [](const auto& arguments) {
  return setFirst(arguments.at(0), arguments.at(1)) && book()->save() ? 0 : 1;
});
const support::SecondProcess removes("removesFound", [](const auto& arguments) {
  return book()->removeRecord(personNamed(arguments.at(0))) && book()->save() ? 0 : 1;
});
const support::SecondProcess forgets("forgetsPerson", [](const auto& arguments) {
  try {
    const auto key = RecordKey::of(arguments.at(0));
    return contactSource().journal().erase(key, "Unforgettable", 0) ? 0 : 1;
  } catch (const StoreError&) {
    return 2;  // erased, but the file is in use
  }
});
const support::SecondProcess searches("searchesPersons", [](const auto& arguments) {
  return found(arguments.at(0)) == arguments.at(1) ? 0 : 1;
});

TEST(PersonSearch, FindsInCreationOrder) {
  StoreBuilder()
      .person("b", {.first = "Ann", .last = "Lee"})
      .group("g", "Ann")
      .person("a", {.first = "Anna", .company = "Lee & Co"})
      .person("c", {.first = "Bob"});
  EXPECT_EQ(found("ann"), "b a");
  EXPECT_EQ(found("lee ANN"), "b a");
  EXPECT_EQ(found("bob"), "c");
  EXPECT_EQ(found("ann bob"), "");
  EXPECT_EQ(found(" "), "");
  EXPECT_EQ(idsOf(book()->peopleNamed("lee")), "b");
  EXPECT_EQ(idsOf(book()->peopleMatching({})), "");
}

TEST(PersonSearch, FindsWhatIsNotSavedYet) {
  StoreBuilder()
      .person("a", {.first = "Ann"})
      .person("b", {.first = "Bob"})
      .person("c", {.first = "Cy"});
  EXPECT_EQ(found("bob"), "b");
  setFirst("a", "Bobby");
  setFirst("b", "Dan");
  EXPECT_EQ(found("bob"), "a");
  EXPECT_EQ(found("dan"), "b");
  book()->removeRecord(personNamed("c"));
  EXPECT_EQ(found("cy"), "");
  book()->revert();
  EXPECT_EQ(found("bob"), "b");
  EXPECT_EQ(found("cy"), "c");
  setFirst("a", "Bobby");
  EXPECT_TRUE(book()->save());
  EXPECT_EQ(found("bob"), "a b");
}

TEST(PersonSearch, FollowsWhatOthersWrite) {
  StoreBuilder().person("a", {.first = "Ann"}).person("b", {.first = "Bob"});
  EXPECT_EQ(found("ann"), "a");
  EXPECT_EQ(renames.run({"a", "Zoe"}).exitCode, 0);
  EXPECT_EQ(found("ann"), "");
  EXPECT_EQ(found("zoe"), "a");
  StoreBuilder().person("c", {.first = "Zoe"});
  EXPECT_EQ(found("zoe"), "a c");
  EXPECT_EQ(searches.run({"zoe", "a c"}).exitCode, 0);
  EXPECT_EQ(removes.run({"a"}).exitCode, 0);
  EXPECT_EQ(found("zoe"), "c");
}

TEST(PersonSearch, FollowsAPersonThatComesBack) {
  StoreBuilder().person("a", {.first = "Ann"});
  EXPECT_EQ(removes.run({"a"}).exitCode, 0);
  EXPECT_EQ(found("ann"), "");
  EXPECT_TRUE(journal::undo().done);
  EXPECT_EQ(found("ann"), "a");
}

TEST(PersonSearch, IsOfThePinnedMoment) {
  StoreBuilder().person("a", {.first = "Ann"});
  const PinnedMoment moment;
  EXPECT_EQ(found("ann"), "a");
  EXPECT_EQ(renames.run({"a", "Zoe"}).exitCode, 0);
  EXPECT_EQ(searches.run({"zoe", "a"}).exitCode, 0);
  EXPECT_EQ(found("zoe"), "");
  EXPECT_EQ(found("ann"), "a");
}

TEST(PersonSearch, FollowsAnEarlierCopyInPlaceOfTheStore) {
  StoreBuilder().person("a", {.first = "Ann"});
  EXPECT_EQ(found("ann"), "a");
  contactSource().letGo();
  const auto copy = support::temporaryPath("copy");
  std::filesystem::copy_file(storePath(), copy);
  EXPECT_EQ(renames.run({"a", "Zoe"}).exitCode, 0);
  EXPECT_EQ(found("zoe"), "a");
  contactSource().letGo();
  std::filesystem::copy_file(copy, storePath(), std::filesystem::copy_options::overwrite_existing);
  {
    const PinnedMoment moment;
    EXPECT_EQ(found("zoe"), "");
    EXPECT_EQ(found("ann"), "a");
  }
  SearchIndex index(indexPath());
  EXPECT_EQ(index.find(SearchQuery("ann"), *index.reach())->size(), 1U);
  EXPECT_EQ(renames.run({"a", "Eve"}).exitCode, 0);
  EXPECT_EQ(found("eve"), "a");
}

// The index that stands beside the store before it is searched.
struct Before {
  std::string name;
  void (*prepare)();
};

void PrintTo(const Before& before, std::ostream* out) {
  *out << before.name;
}

class PersonSearchBefore : public testing::TestWithParam<Before> {};

TEST_P(PersonSearchBefore, FindsAllTheSame) {
  StoreBuilder().persons("Ann", 50).person("b", {.first = "Bob"});
  EXPECT_EQ(found("bob"), "b");
  contactSource().letGo();
  GetParam().prepare();
  EXPECT_EQ(found("bob"), "b");
  EXPECT_EQ(found("ann49"), "Ann49");
}

void execute(const char* sql) {
  sqlite::Connection(indexPath(), sqlite::Connection::Mode::ReadWrite).execute(sql);
}

INSTANTIATE_TEST_SUITE_P(
    With, PersonSearchBefore,
    testing::Values(
        Before{"NoIndex", [] { std::filesystem::remove(indexPath()); }},
        Before{"AnEmptyFile", [] { std::filesystem::resize_file(indexPath(), 0); }},
        Before{"ACutOffFile", [] { std::filesystem::resize_file(indexPath(), 5000); }},
        Before{"AForeignFile",
               [] {
                 std::filesystem::remove(indexPath());
                 support::temporaryFile("contacts.db.find", "no database at all");
               }},
        Before{"TheStoreItself",
               [] {
                 std::filesystem::copy_file(storePath(), indexPath(),
                                            std::filesystem::copy_options::overwrite_existing);
               }},
        Before{"OtherForms", [] { execute("UPDATE reach SET forms = 'ICU 1'"); }},
        Before{"AnotherStore", [] { execute("UPDATE reach SET store = randomblob(16)"); }},
        Before{"AnotherPast", [] { execute("UPDATE reach SET name = randomblob(16)"); }},
        Before{"AFolderInItsPlace",
               [] {
                 std::filesystem::remove(indexPath());
                 std::filesystem::create_directory(indexPath());
               }}),
    [](const auto& row) { return row.param.name; });

TEST(PersonSearch, BelievesNoDamagedIndex) {
  StoreBuilder().persons("Ann", 50).person("b", {.first = "Bob"});
  EXPECT_EQ(found("bob"), "b");
  contactSource().letGo();
  const auto sound = support::fileBytes(indexPath());
  for (std::size_t at = 100; at < sound.size(); at += 67) {
    auto damaged = sound;
    damaged[at] = static_cast<char>(damaged[at] ^ (1 << (at % 8)));
    support::temporaryFile("contacts.db.find", damaged);
    EXPECT_EQ(found("bob"), "b") << at;
    EXPECT_EQ(found("ann7"), "Ann7") << at;
    contactSource().letGo();
  }
}

TEST(PersonSearch, KeepsNothingOfWhoIsForgotten) {
  StoreBuilder().person("a", {.first = "Unforgettable"}).person("b", {.first = "Bob"});
  EXPECT_EQ(found("unforgettable"), "a");
  EXPECT_EQ(removes.run({"a"}).exitCode, 0);
  contactSource().journal().erase(RecordKey::of("a"), "Unforgettable", 0);
  EXPECT_FALSE(std::filesystem::exists(indexPath()));
  EXPECT_EQ(found("bob"), "b");
  EXPECT_EQ(support::fileBytes(indexPath()).find("unforgettable"), std::string::npos);
}

TEST(PersonSearch, WritesNobodyDownWhoWasForgottenMeanwhile) {
  StoreBuilder().person("a", {.first = "Unforgettable"}).person("b", {.first = "Bob"});
  EXPECT_EQ(removes.run({"a"}).exitCode, 0);
  EXPECT_TRUE(journal::undo().done);
  {
    const PinnedMoment moment;
    EXPECT_EQ(book()->people().size(), 2U);
    EXPECT_NE(forgets.run({"a"}).exitCode, 1);
    EXPECT_EQ(found("bob"), "b");
    EXPECT_FALSE(std::filesystem::exists(indexPath()));
  }
  EXPECT_EQ(found("unforgettable"), "");
  EXPECT_EQ(support::fileBytes(indexPath()).find("unforgettable"), std::string::npos);
}

TEST(PersonSearch, TellsOfWhomItCannotRead) {
  StoreBuilder().person("a", {.first = "Ann"}).person("b", {.first = "Bob"});
  contactSource().letGo();
  sqlite::Connection(storePath(), sqlite::Connection::Mode::ReadWrite)
      .execute("UPDATE content SET properties = zeroblob(20) WHERE record = 1");
  for (int i = 0; i < 2; ++i) {
    const failures::Watch watch;
    EXPECT_EQ(found("bob"), "b");
    EXPECT_EQ(watch.lastReason(), storePath() + ": 1 record is damaged and not searched");
    EXPECT_EQ(watch.last()->kind, FailureKind::Corrupt);
  }
  EXPECT_EQ(SearchIndex(indexPath()).reach(), std::nullopt);
}

TEST(PersonSearch, IsMadeAnewAfterARepair) {
  StoreBuilder().person("a", {.first = "Ann"});
  EXPECT_EQ(found("ann"), "a");
  contactSource().letGo();
  sqlite::Connection(storePath(), sqlite::Connection::Mode::ReadWrite)
      .execute("DROP INDEX content_fingerprint");
  repairStore(storePath());
  EXPECT_FALSE(std::filesystem::exists(indexPath()));
  EXPECT_EQ(found("ann"), "a");
}

TEST(PersonSearch, KeepsTheIndexOfAStoreWhoseLogWasTrimmedAfterIt) {
  StoreBuilder().person("a", {.first = "Ann"});
  EXPECT_EQ(found("ann"), "a");
  journal::setBounds({365, 1 << 20});
  EXPECT_TRUE(std::filesystem::exists(indexPath()));
}

TEST(PersonSearch, HasOneIndexWhateverLinkLeadsToTheStore) {
  StoreBuilder().person("a", {.first = "Ann"});
  const auto link = support::temporaryPath("link.db").string();
  std::filesystem::create_symlink(storePath(), link);
  EXPECT_EQ(StoreAddress(link).searchFile(), StoreAddress(storePath()).searchFile());
}

TEST(PersonSearch, KeepsNothingThatHasLeftTheJournal) {
  StoreBuilder().person("a", {.first = "Unforgettable"}).person("b", {.first = "Bob"});
  EXPECT_EQ(found("unforgettable"), "a");
  EXPECT_EQ(removes.run({"a"}).exitCode, 0);
  EXPECT_NE(support::fileBytes(indexPath()).find("unforgettable"), std::string::npos);
  journal::setBounds({0, 0});
  for (int i = 0; i < 4; ++i) StoreBuilder().person("c" + std::to_string(i));
  journal::setBounds({0, 0});
  EXPECT_FALSE(std::filesystem::exists(indexPath()));
}

// What somebody types of a text: some letters in a row.
std::string partOf(const std::string& text, std::mt19937& random) {
  const auto from = random() % text.size();
  return text.substr(from, 1 + random() % 4);
}

TEST(PersonSearch, FindsWhatALookAtEachFinds) {
  std::mt19937 random(7);
  const std::vector<std::string> firsts = {"Ann",  "Bob",   "Céline", "Dörte",
                                           "小明", "Антон", "Ελένη"};
  const std::vector<std::string> lasts = {"Lee", "Müller", "Ørsted", "王", "Чехов", "O'Neil"};
  for (int step = 0; step < 40; ++step) {
    StoreBuilder builder;
    for (int i = 0; i < 5; ++i) {
      builder.person("p" + std::to_string(step * 5 + i),
                     {.first = firsts[random() % firsts.size()],
                      .last = lasts[random() % lasts.size()],
                      .note = "note " + std::to_string(random() % 1000),
                      .phones = {{"_$!<Home>!$_", Object("030 " + std::to_string(random()))}}});
    }
    const auto changed = "p" + std::to_string(random() % static_cast<unsigned>(step * 5 + 5));
    if (personNamed(changed)) setFirst(changed, firsts[random() % firsts.size()]);
    if (step % 3 == 0) book()->save();
    const auto gone =
        personNamed("p" + std::to_string(random() % static_cast<unsigned>(step * 5 + 5)));
    if (gone) book()->removeRecord(gone);
    for (int i = 0; i < 5; ++i) {
      const auto words =
          partOf(firsts[random() % 4], random) + " " + partOf(lasts[random() % 3], random);
      const SearchQuery query(words);
      std::string expected;
      for (const auto& person : book()->people()) {
        PropertyBag values;
        for (const auto& property : property_table::all(RecordKind::Person)) {
          values.set(property.id, person->valueForProperty(property.name));
        }
        if (!query.matches(searchText(values))) continue;
        expected += (expected.empty() ? "" : " ") + person->uniqueId().value_or("?");
      }
      EXPECT_EQ(found(words), expected) << step << ": " << words;
    }
  }
}

}  // namespace
}  // namespace ox
