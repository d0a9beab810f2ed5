#include "ox/sync/folder/offer_of_folder.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/sync/folder/book_folder.hpp"

namespace ox::sync {
namespace {

using Facts = std::pair<RemoteFailure, std::string>;
using Books = std::vector<std::pair<std::string, std::string>>;

class FolderOffer : public BookFolder {
 protected:
  FolderOffer() { folder_ = std::filesystem::canonical(folder_); }

  void makeFolder(const std::string& name) const {
    std::filesystem::create_directories(path(name));
  }

  // Name and path of each.
  Books books(const std::string& of = {}) const {
    Books found;
    for (const auto& book : offerOfFolder(path(of)).books) found.emplace_back(book.name, book.url);
    return found;
  }
};

TEST_F(FolderOffer, IsTheFolderItselfWhenItHoldsCards) {
  write("ann.vcf", "x");
  makeFolder("inner");
  write("inner/bob.vcf", "x");
  write("displayname", "Mine");
  EXPECT_EQ(books(), (Books{{"Mine", path()}}));
}

TEST_F(FolderOffer, IsAnEmptyFolderItself) {
  makeFolder("new");
  EXPECT_EQ(books("new"), (Books{{"new", path("new")}}));
  EXPECT_EQ(books("./new/../new/"), (Books{{"new", path("new")}}));
}

TEST_F(FolderOffer, IsTheFoldersInItThatHoldCards) {
  for (const auto* name : {"work", "home", "empty", ".hidden"}) makeFolder(name);
  for (const auto* name : {"work/ann.vcf", "home/bob.vcf", ".hidden/eve.vcf"}) write(name, "x");
  std::filesystem::create_directory_symlink(path("work"), path("link"));
  EXPECT_EQ(books(), (Books{{"home", path("home")}, {"work", path("work")}}));
  EXPECT_EQ(offerOfFolder(path()).homes, std::vector<std::string>{path()});
}

TEST_F(FolderOffer, SaysWhoseAFolderIsAndWhetherItCanBeWritten) {
  write("ann.vcf", "x");
  EXPECT_TRUE(offerOfFolder(path()).books.front().isOwn);
  EXPECT_FALSE(offerOfFolder(path()).books.front().isReadOnly);
  if (isSuperuser()) GTEST_SKIP() << "the superuser writes everywhere";
  ::chmod(path().c_str(), 0500);
  EXPECT_TRUE(offerOfFolder(path()).books.front().isReadOnly);
}

TEST_F(FolderOffer, OfWhatLeadsToNoCardsIsAFailure) {
  EXPECT_EQ(failureOf([&] { offerOfFolder(path("away")); }),
            Facts(RemoteFailure::NoBook, path("away") + ": No such file or directory"));
  write("file", "x");
  EXPECT_EQ(failureOf([&] { offerOfFolder(path("file")); }),
            Facts(RemoteFailure::NoBook, path("file") + ": Not a directory"));
  makeFolder("inner");
  EXPECT_EQ(failureOf([&] { offerOfFolder(path()); }),
            Facts(RemoteFailure::NoBook,
                  path() + ": neither it nor a folder in it holds a file that ends in .vcf"));
}

}  // namespace
}  // namespace ox::sync
