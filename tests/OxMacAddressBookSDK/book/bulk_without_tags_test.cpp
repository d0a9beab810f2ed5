// Loads while the tag file cannot be read.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "ox/base/failures.hpp"
#include "tests/OxMacAddressBookSDK/book/bulk_runs.hpp"
#include "tests/support/second_process.hpp"

namespace ox::test {
namespace {

// Of a book of two persons, Ann tagged or not.
const support::SecondProcess savesABook("savesABook", [](const auto& arguments) {
  StoreBuilder().container("S", "S", 3).person("a", {.first = "Ann"}).person("b", {.first = "Ben"});
  const auto book = bookNamed("S");
  if (arguments.size() > 1) person("a")->addTag(arguments.at(1));
  const auto data = savedData(book);
  std::ofstream(arguments.at(0), std::ios::binary) << *data;
  return 0;
});

// The books are discovered, so that persons find where their tags are kept.
void loadWhileDamaged(const std::shared_ptr<OxMacAddressBook>& book,
                      std::vector<std::string> arguments) {
  const auto path = support::temporaryPath("book").string();
  arguments.insert(arguments.begin(), path);
  EXPECT_EQ(savesABook.run(arguments).exitCode, 0);
  const auto tags = support::StoreEnvironment::instance().tagStore();
  // What the other process wrote of it lies in the log.
  for (const auto* ending : {"-wal", "-shm"}) std::filesystem::remove(tags.string() + ending);
  support::temporaryFile(tags.filename().string(), std::string(5000, 'x'));
  bookNamed("_local");
  loaded(book, makeData(support::fileBytes(path)));
}

std::string namesIn(const OxMacAddressBook& book) {
  std::string names;
  for (const auto& key : contactSource().recordsIn(*book.validContainerID(), RecordKind::Person)) {
    names += *person(key.text())->displayName() + " ";
  }
  return names;
}

TEST(BulkLoad, OfABookWithoutTagsIsNotTouchedByADamagedTagFile) {
  StoreBuilder().container("E", "Empty", 3);
  const failures::Watch watch;
  const auto book = OxMacAddressBook::initWithContainer(containerOf("E", "Empty", 3));
  loadWhileDamaged(book, {});
  EXPECT_EQ(namesIn(*book), "Ann Ben ");
  EXPECT_TRUE(watch.isClear()) << watch.lastReason();
}

TEST(BulkLoad, OfABookWithTagsLosesNothingElseToADamagedTagFileAndSaysSo) {
  StoreBuilder().container("E", "Full", 3).person("old", {.first = "Old"});
  const failures::Watch watch;
  const auto book = OxMacAddressBook::initWithContainer(containerOf("E", "Full", 3));
  loadWhileDamaged(book, {"sailing"});
  EXPECT_EQ(namesIn(*book), "Ann Ben ");
  // The tags of the person that was removed, and those of Ann.
  EXPECT_EQ(watch.counts().failures, 2U);
  EXPECT_EQ(watch.lastReason(), "tags: file is not a database");
}

}  // namespace
}  // namespace ox::test
