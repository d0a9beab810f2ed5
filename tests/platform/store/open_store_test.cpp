#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/schema/schema.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

using support::temporaryFile;
using support::temporaryPath;

// What opening the store at that path says, with the folder taken out; "" when it opens.
std::string refusalOf(const std::filesystem::path& path) {
  try {
    openStoreSource(path.string())->containers();
    return {};
  } catch (const StoreError& error) {
    std::string text = error.what();
    const auto folder = path.parent_path().string() + "/";
    const auto at = text.find(folder);
    return at == std::string::npos ? text : text.erase(at, folder.size());
  }
}

TEST(Store, IsMadeWithOneLocalContainerForThisUserAlone) {
  const auto path = temporaryPath("new/folder/contacts.db");
  const auto source = openStoreSource(path.string());
  EXPECT_FALSE(std::filesystem::exists(path)) << "nothing is touched before it is needed";
  const auto containers = source->containers();
  ASSERT_EQ(containers.size(), 1U);
  EXPECT_EQ(containers[0]->identifier, "_local:ABAccount");
  EXPECT_EQ(containers[0]->type, 1);
  struct stat status {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  ASSERT_EQ(::stat(path.parent_path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700U);
  EXPECT_EQ(storeProblems(path.string()), std::vector<std::string>{});
}

TEST(Store, RefusesWhatIsNoStoreAndLeavesItAlone) {
  const auto folder = temporaryPath("folder");
  std::filesystem::create_directory(folder);
  EXPECT_EQ(refusalOf(folder), "folder: is a directory");

  const std::string text = "BEGIN:VCARD\nEND:VCARD\n";
  const auto card = temporaryFile("card.vcf", text);
  EXPECT_EQ(refusalOf(card), "card.vcf: is not a contact store");
  EXPECT_EQ(support::fileBytes(card), text);

  const auto foreign = temporaryPath("foreign.db");
  {
    sqlite::Connection other(foreign.string(), sqlite::Connection::Mode::ReadWriteCreate);
    other.execute("CREATE TABLE t(a)");
  }
  const auto before = support::fileBytes(foreign);
  EXPECT_EQ(refusalOf(foreign), "foreign.db: is a database of another program");
  EXPECT_EQ(support::fileBytes(foreign), before);

  EXPECT_EQ(refusalOf(card / "contacts.db").substr(0, 11), "contacts.db");
}

TEST(Store, RefusesANewerSchemaAndLeavesItAlone) {
  const auto path = temporaryPath("newer.db");
  openStoreSource(path.string())->containers();
  {
    sqlite::Connection file(path.string(), sqlite::Connection::Mode::ReadWrite);
    file.execute("PRAGMA user_version=99");
  }
  EXPECT_EQ(refusalOf(path),
            "newer.db: was written by a newer version (schema 99, this version knows 4)");
}

TEST(Store, RefusesADamagedNumberOfTheSchema) {
  const auto path = temporaryPath("negative.db");
  openStoreSource(path.string())->containers();
  sqlite::Connection(path.string(), sqlite::Connection::Mode::ReadWrite)
      .execute("PRAGMA user_version=-3");
  EXPECT_EQ(refusalOf(path), "negative.db: the number of its version is damaged");
  EXPECT_THROW(storeProblems(path.string()), StoreError);
}

TEST(Store, RefusesWhenAnotherProgramKeepsItLocked) {
  const auto path = temporaryPath("locked.db");
  openStoreSource(path.string())->containers();
  sqlite::Connection holder(path.string(), sqlite::Connection::Mode::ReadWrite);
  holder.execute("PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE; UPDATE store SET name = name");
  try {
    openStoreFile(path.string());
    FAIL() << "opened a store that is locked";
  } catch (const StoreError& error) {
    EXPECT_EQ(error.kind(), StoreError::Kind::Busy);
  }
}

TEST(Store, NeverBelievesDamagedBytes) {
  const auto path = temporaryPath("damaged.db");
  const auto source = openStoreSource(path.string());
  SaveRequest request;
  PropertyBag values;
  values.set(property_id::kFirst, Object("Ann"));
  request.additions.push_back(
      {RecordKey::of("p1"), RecordKind::Person, "_local", values, makeData("picture")});
  request.additions.push_back({RecordKey::of("p2"), RecordKind::Person, "_local", values, {}});
  ASSERT_TRUE(source->execute(request));
  {
    sqlite::Connection file(path.string(), sqlite::Connection::Mode::ReadWrite);
    file.execute(
        "UPDATE content SET properties = x'01020304050607080900' WHERE record = 1;"
        "UPDATE image SET data = x'00' WHERE id = 1");
  }
  const auto reader = openStoreSource(path.string());
  EXPECT_THROW(reader->value(RecordKey::of("p1"), property_id::kFirst), StoreError);
  EXPECT_THROW(reader->imageData(RecordKey::of("p1")), ImageReadError);
  EXPECT_EQ(std::get<Object>(reader->value(RecordKey::of("p2"), property_id::kFirst)),
            Object("Ann"));
  EXPECT_EQ(storeProblems(path.string()).size(), 1U);
}

TEST(Store, WithoutItsJournalIsReadAllTheSame) {
  const auto path = temporaryPath("uncounted.db");
  {
    const auto source = openStoreSource(path.string());
    SaveRequest request;
    request.additions.push_back({RecordKey::of("p1"), RecordKind::Person, "_local", {}, {}});
    ASSERT_TRUE(source->execute(request));
  }
  sqlite::Connection(path.string(), sqlite::Connection::Mode::ReadWrite).execute("DELETE FROM act");
  const auto reader = openStoreSource(path.string());
  EXPECT_EQ(reader->records(RecordKind::Person).size(), 1U);
  SaveRequest request;
  request.additions.push_back({RecordKey::of("p2"), RecordKind::Person, "_local", {}, {}});
  EXPECT_THROW(reader->execute(request), StoreError);
  EXPECT_EQ(storeProblems(path.string()),
            (std::vector<std::string>{"p1: its row number is not counted",
                                      "the journal has no last row"}));
}

TEST(Check, NamesWhatIsWrong) {
  const auto path = temporaryPath("checked.db");
  const auto source = openStoreSource(path.string());
  SaveRequest request;
  for (const auto* id : {"g1", "g2"}) {
    request.additions.push_back({RecordKey::of(id), RecordKind::Group, "_local", {}, {}});
  }
  request.links.push_back({RecordKey::of("g1"), RecordKey::of("g2")});
  ASSERT_TRUE(source->execute(request));
  EXPECT_EQ(storeProblems(path.string()), std::vector<std::string>{});
  {
    sqlite::Connection file(path.string(), sqlite::Connection::Mode::ReadWrite);
    file.execute(
        "INSERT INTO link(parent, child) VALUES(2, 1); UPDATE act SET next_link = 9;"
        "UPDATE content SET fingerprint = 1 WHERE record = 2");
  }
  EXPECT_EQ(storeProblems(path.string()),
            (std::vector<std::string>{"g2: its fingerprint is not that of its values",
                                      "the group in row 1 is below itself",
                                      "the group in row 2 is below itself"}));
}

}  // namespace
}  // namespace ox
