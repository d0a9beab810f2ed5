#include "ox/sync/folder/folder_book.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/sync/folder/book_folder.hpp"

namespace ox::sync {
namespace {

using State = FetchedCard::State;
using Hrefs = std::vector<std::string>;
using Facts = std::pair<RemoteFailure, std::string>;

using FolderListing = BookFolder;
using FolderFetch = BookFolder;
using FolderFacts = BookFolder;

TEST_F(FolderListing, NamesTheCardsAndNothingElse) {
  for (const auto* name : {"bob.vcf", "Ann Lee.vcf", "ä.vcf", ".vcf", ".hidden.vcf", "card.VCF",
                           "ann.vcf~", "ann.vcf.tmp", "ann.txt", "displayname", "color"}) {
    write(name, "x");
  }
  std::filesystem::create_directory(path("folder.vcf"));
  ASSERT_EQ(::mkfifo(path("pipe.vcf").c_str(), 0600), 0);
  const auto listing = FolderBook(path()).list("a token of another time");
  EXPECT_TRUE(listing.isWhole);
  EXPECT_EQ(listing.token, "");
  EXPECT_EQ(listing.gone, Hrefs());
  EXPECT_EQ(hrefs(), (Hrefs{"Ann Lee.vcf", "bob.vcf", "ä.vcf"}));
  EXPECT_EQ(listing.cards.front().bytes, 1u);
}

TEST_F(FolderListing, OfAnEmptyFolderIsEmptyAndWhole) {
  const auto listing = FolderBook(path()).list("");
  EXPECT_TRUE(listing.isWhole);
  EXPECT_TRUE(listing.cards.empty());
}

TEST_F(FolderListing, OfAFolderThatIsNotThereIsAFailure) {
  EXPECT_EQ(failureOf([&] { FolderBook(path("away")).list(""); }),
            Facts(RemoteFailure::Away, path("away") + ": No such file or directory"));
  write("file", "");
  EXPECT_EQ(failureOf([&] { FolderBook(path("file")).list(""); }),
            Facts(RemoteFailure::Away, path("file") + ": Not a directory"));
}

TEST_F(FolderListing, OfAFolderThatCannotBeReadIsAFailure) {
  if (isSuperuser()) GTEST_SKIP() << "the superuser reads everything";
  write("ann.vcf", "x");
  ::chmod(path().c_str(), 0300);
  EXPECT_EQ(failureOf([&] { FolderBook(path()).list(""); }),
            Facts(RemoteFailure::Away, path() + ": Permission denied"));
  // Names alone are no listing.
  ::chmod(path().c_str(), 0600);
  EXPECT_EQ(failureOf([&] { FolderBook(path()).list(""); }).first, RemoteFailure::Away);
}

TEST_F(FolderListing, GivesTheSameEtagUntilTheFileChanges) {
  write("ann.vcf", "one");
  const auto before = listed();
  EXPECT_EQ(listed(), before);
  ::usleep(60'000);
  EXPECT_EQ(listed(), before);
  write("ann.vcf", "two");
  EXPECT_NE(listed(), before);
}

// The clock that changes are stamped with stands still for some milliseconds.
TEST_F(FolderListing, SeesEveryEditHoweverSoonItComes) {
  std::string before;
  for (int edit = 0; edit < 20; ++edit) {
    write("ann.vcf", "text " + std::to_string(10 + edit));
    const auto now = listed()["ann.vcf"];
    EXPECT_NE(now, before) << edit;
    before = now;
  }
}

// As on a file system that keeps full seconds, and on one whose clock is ahead.
TEST_F(FolderListing, SeesAnEditThatLeavesTheTimeAsItWas) {
  const auto now = std::time(nullptr);
  for (const auto& [seconds, nanoseconds] :
       {std::pair(now - 100, 0L), std::pair(now + 100, 123'456'789L)}) {
    write("ann.vcf", "one");
    stamp("ann.vcf", seconds, nanoseconds);
    const auto before = listed();
    EXPECT_EQ(listed(), before);
    write("ann.vcf", "two");
    stamp("ann.vcf", seconds, nanoseconds);
    EXPECT_NE(listed(), before) << seconds - now;
  }
}

TEST_F(FolderListing, TellsAFileFromAnotherOneOfTheSameSizeAndTime) {
  write("ann.vcf", "one");
  write("other", "two");
  stamp("ann.vcf", 1'000'000'000, 5);
  stamp("other", 1'000'000'000, 5);
  const auto before = listed();
  std::filesystem::rename(path("other"), path("ann.vcf"));
  EXPECT_NE(listed(), before);
}

TEST_F(FolderListing, GivesAnotherEtagWhenAFileCanBeReadAgain) {
  if (isSuperuser()) GTEST_SKIP() << "the superuser reads everything";
  write("ann.vcf", "one");
  ::chmod(path("ann.vcf").c_str(), 0);
  const auto before = listed();
  ::chmod(path("ann.vcf").c_str(), 0600);
  EXPECT_NE(listed(), before);
}

TEST_F(FolderListing, EndsWhenTheHostAsks) {
  write("ann.vcf", "one");
  WireHooks hooks;
  hooks.isStopped = [] { return true; };
  EXPECT_EQ(failureOf([&] { FolderBook(path(), hooks).list(""); }).first, RemoteFailure::Stopped);
}

TEST_F(FolderFetch, GivesTheBytesAndTheEtagOfTheListing) {
  const auto text = "BEGIN:VCARD\r\nNOTE:\xff" + std::string(1, '\0') + " x\nEND:VCARD";
  write("ann.vcf", text);
  const auto etag = listed()["ann.vcf"];
  const auto card = fetched("ann.vcf");
  EXPECT_EQ(card.state, State::Read);
  EXPECT_EQ(card.href, "ann.vcf");
  EXPECT_EQ(card.text, text);
  EXPECT_EQ(card.etag, etag);
}

TEST_F(FolderFetch, OfAFileThatIsGoneSaysSo) {
  EXPECT_EQ(fetched("ann.vcf").state, State::Gone);
}

TEST_F(FolderFetch, NamesWhyACardCannotBeRead) {
  write("target", "BEGIN:VCARD");
  std::filesystem::create_symlink(path("target"), path("link.vcf"));
  const auto link = fetched("link.vcf");
  EXPECT_EQ(link.state, State::Unreadable);
  EXPECT_EQ(link.etag, "as listed");
  EXPECT_EQ(link.reason, "is a symbolic link, which is not followed");
  EXPECT_EQ(hrefs(), Hrefs{"link.vcf"});
  std::filesystem::create_directory(path("folder.vcf"));
  EXPECT_EQ(fetched("folder.vcf").reason, "Is a directory");
  if (isSuperuser()) GTEST_SKIP() << "the superuser reads everything";
  write("closed.vcf", "x");
  ::chmod(path("closed.vcf").c_str(), 0);
  EXPECT_EQ(fetched("closed.vcf").reason, "Permission denied");
}

TEST_F(FolderFetch, NeverLeavesTheFolder) {
  std::filesystem::create_directory(path("inner"));
  write("secret.vcf", "x");
  const FolderBook book(path("inner"));
  for (const std::string href :
       {"../secret.vcf", "/etc/passwd.vcf", "a/b.vcf", ".hidden.vcf", "ann.txt", ".vcf", ""}) {
    EXPECT_EQ(book.pathOf(href), "") << href;
    EXPECT_EQ(fetched(href).reason, "is not the name of a card in this folder") << href;
  }
  EXPECT_EQ(book.pathOf("a%20b +.vcf"), "a%20b +.vcf");
  EXPECT_EQ(book.hrefFor("0A-b_c.d"), "0A-b_c.d.vcf");
}

TEST_F(FolderFacts, TakeTheNameFromItsFileElseFromTheFolder) {
  std::filesystem::create_directory(path("Friends"));
  EXPECT_EQ(FolderBook(path("Friends")).facts().name, "Friends");
  EXPECT_EQ(FolderBook(path("Friends/")).facts().name, "Friends");
  write("Friends/displayname", "Alte Freunde \n");
  EXPECT_EQ(FolderBook(path("Friends")).facts().name, "Alte Freunde");
  write("Friends/displayname", "\n");
  EXPECT_EQ(FolderBook(path("Friends")).facts().name, "Friends");
}

TEST_F(FolderFacts, TellWhetherItCanBeWritten) {
  EXPECT_FALSE(FolderBook(path()).facts().isReadOnly);
  if (isSuperuser()) GTEST_SKIP() << "the superuser writes everywhere";
  ::chmod(path().c_str(), 0500);
  EXPECT_TRUE(FolderBook(path()).facts().isReadOnly);
}

}  // namespace
}  // namespace ox::sync
