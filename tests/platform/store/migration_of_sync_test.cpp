// A store of version 3, which kept nothing of accounts in step with others, is brought up to date
// without a look at its contacts.
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/schema/kept_copies.hpp"
#include "ox/platform/store/schema/store_form.hpp"
#include "ox/platform/store/schema/tables.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "tests/platform/store/rich_store.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

using Mode = sqlite::Connection::Mode;

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

// Makes the store one of version 3: what the statements of that version would have made.
void makeVersion3() {
  sqlite::Connection store(storePath(), Mode::ReadWrite);
  store.execute(
      "DROP TABLE sync_run; DROP TABLE sync_conflict; DROP TABLE sync_text;"
      "DROP TABLE sync_card; DROP TABLE sync_book; DROP TABLE sync_login;"
      "PRAGMA user_version=3");
  ASSERT_EQ(versionOf(store, storePath()), 3);
}

std::int64_t ask(const char* sql) {
  return sqlite::Connection(storePath(), Mode::ReadOnly).queryInteger(sql);
}

TEST(MigrationOfSync, KeepsEverythingOfAStoreOfVersion3) {
  std::string before;
  {
    const auto source = openStoreSource(storePath());
    support::fillRichStore(*source);
    SaveRequest request;  // what version 3 did not have
    request.sync.removedCards = {1, 2};
    request.removedContainers.push_back({"A:ABAccount", true});
    ASSERT_TRUE(source->execute(request)) << request.reason;
    before = support::wholeStateOf(*source);
    source->checkpoint();
  }
  makeVersion3();
  EXPECT_EQ(storeProblems(storePath()), std::vector<std::string>{});
  EXPECT_EQ(ask("PRAGMA user_version"), 3) << "a check changes nothing";
  const auto source = openStoreSource(storePath());
  EXPECT_EQ(support::wholeStateOf(*source), before);
  EXPECT_EQ(ask("PRAGMA user_version"), kSchemaVersion);
  EXPECT_EQ(storeProblems(storePath()), std::vector<std::string>{});
  const auto copies = pathsOfCopies(storePath());
  ASSERT_EQ(copies.size(), 1U);
  EXPECT_TRUE(copies.front().ends_with("-migration-3-4.db")) << copies.front();
  EXPECT_EQ(sqlite::Connection(copies.front(), Mode::ReadOnly).queryInteger("PRAGMA user_version"),
            3);
}

TEST(MigrationOfSync, CopiesNoRecord) {
  support::StoreBuilder().persons("p", 6000);
  openStoreSource(storePath())->checkpoint();
  makeVersion3();
  const auto pages = ask("PRAGMA page_count") - ask("PRAGMA freelist_count");
  ASSERT_GT(pages, 100);
  openStoreSource(storePath())->containers();
  EXPECT_LE(ask("PRAGMA page_count") - ask("PRAGMA freelist_count"), pages + 16);
}

TEST(MigrationOfSync, MakesAnIndexAnewThatIsMissing) {
  support::StoreBuilder().persons("p", 3);
  openStoreSource(storePath())->checkpoint();
  makeVersion3();
  sqlite::Connection(storePath(), Mode::ReadWrite).execute("DROP INDEX link_child");
  EXPECT_EQ(openStoreSource(storePath())->records(RecordKind::Person).size(), 3U);
  EXPECT_EQ(storeProblems(storePath()), std::vector<std::string>{});
}

TEST(MigrationOfSync, TellsOfDamagedRowsOfVersion3) {
  support::StoreBuilder().persons("p", 3);
  openStoreSource(storePath())->checkpoint();
  makeVersion3();
  auto bytes = support::fileBytes(storePath());
  bytes[bytes.find("On My Mac")] = 'U';
  support::temporaryFile("contacts.db", bytes);
  EXPECT_EQ(storeProblems(storePath()).front(),
            "row 1 of container is damaged: its checksum differs");
}

}  // namespace
}  // namespace ox
