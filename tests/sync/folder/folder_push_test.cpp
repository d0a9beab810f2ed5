#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/sync/folder/book_folder.hpp"

namespace ox::sync {
namespace {

using Kind = Push::Kind;
using Outcome = Pushed::Outcome;
using Names = std::vector<std::string>;

using FolderPush = BookFolder;

unsigned modeOf(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

TEST_F(FolderPush, CreatesAFileForThisUserAlone) {
  const auto done = pushed(Kind::Create, "ann.vcf", "", "text");
  EXPECT_EQ(done.outcome, Outcome::Done);
  EXPECT_EQ(done.href, "ann.vcf");
  EXPECT_EQ(bytes("ann.vcf"), "text");
  EXPECT_EQ(modeOf(path("ann.vcf")), 0600u);
  EXPECT_EQ(names(), Names{"ann.vcf"});
}

TEST_F(FolderPush, NeverCreatesOverWhatIsThere) {
  write("ann.vcf", "theirs");
  std::filesystem::create_symlink(path("nowhere"), path("link.vcf"));
  EXPECT_EQ(pushed(Kind::Create, "ann.vcf", "", "ours").outcome, Outcome::Exists);
  EXPECT_EQ(pushed(Kind::Create, "link.vcf", "", "ours").outcome, Outcome::Exists);
  EXPECT_EQ(bytes("ann.vcf"), "theirs");
  EXPECT_EQ(names(), (Names{"ann.vcf", "link.vcf"}));
}

TEST_F(FolderPush, UpdatesWhatTheEtagWasGivenForAndKeepsItsMode) {
  write("ann.vcf", "one");
  ::chmod(path("ann.vcf").c_str(), 0640);
  const auto done = pushed(Kind::Update, "ann.vcf", listed()["ann.vcf"], "two");
  EXPECT_EQ(done.outcome, Outcome::Done);
  EXPECT_EQ(bytes("ann.vcf"), "two");
  EXPECT_EQ(modeOf(path("ann.vcf")), 0640u);
  EXPECT_EQ(names(), Names{"ann.vcf"});
}

// What a push and what a fetch says of a card are good for the next change of it.
TEST_F(FolderPush, TakesTheEtagOfAPushAndOfAFetch) {
  auto etag = pushed(Kind::Create, "ann.vcf", "", "one").etag;
  auto done = pushed(Kind::Update, "ann.vcf", etag, "two");
  ASSERT_EQ(done.outcome, Outcome::Done);
  ::usleep(60'000);
  done = pushed(Kind::Update, "ann.vcf", done.etag, "three");
  ASSERT_EQ(done.outcome, Outcome::Done);
  EXPECT_EQ(pushed(Kind::Remove, "ann.vcf", fetched("ann.vcf").etag, "").outcome, Outcome::Done);
  EXPECT_EQ(names(), Names());
}

TEST_F(FolderPush, LeavesAloneWhatChangedThere) {
  write("ann.vcf", "one");
  const auto etag = listed()["ann.vcf"];
  write("ann.vcf", "two");
  EXPECT_EQ(pushed(Kind::Update, "ann.vcf", etag, "ours").outcome, Outcome::Changed);
  EXPECT_EQ(pushed(Kind::Remove, "ann.vcf", etag, "").outcome, Outcome::Changed);
  EXPECT_EQ(pushed(Kind::Update, "ann.vcf", "", "ours").outcome, Outcome::Changed);
  EXPECT_EQ(bytes("ann.vcf"), "two");
  EXPECT_EQ(names(), Names{"ann.vcf"});
}

// The text is asked for while somebody else writes the file.
TEST_F(FolderPush, LooksAgainBeforeItReplaces) {
  write("ann.vcf", "one");
  const Push push{Kind::Update, "ann.vcf", listed()["ann.vcf"], [&] {
                    write("ann.vcf", "two");
                    return std::string("ours");
                  }};
  Outcome outcome = Outcome::Unknown;
  FolderBook(path()).push({&push, 1},
                          [&](std::size_t, const Pushed& one) { outcome = one.outcome; });
  EXPECT_EQ(outcome, Outcome::Changed);
  EXPECT_EQ(bytes("ann.vcf"), "two");
}

TEST_F(FolderPush, SaysWhatIsGone) {
  EXPECT_EQ(pushed(Kind::Update, "ann.vcf", "1-2-3.4", "ours").outcome, Outcome::Gone);
  EXPECT_EQ(pushed(Kind::Remove, "ann.vcf", "1-2-3.4", "").outcome, Outcome::Gone);
  EXPECT_EQ(names(), Names());
}

TEST_F(FolderPush, NeverWritesThroughALink) {
  write("target", "theirs");
  std::filesystem::create_symlink(path("target"), path("link.vcf"));
  const auto etag = listed()["link.vcf"];
  EXPECT_EQ(pushed(Kind::Update, "link.vcf", etag, "ours").outcome, Outcome::Refused);
  EXPECT_EQ(pushed(Kind::Remove, "link.vcf", etag, "").outcome, Outcome::Refused);
  EXPECT_EQ(bytes("target"), "theirs");
  EXPECT_EQ(names(), (Names{"link.vcf", "target"}));
}

TEST_F(FolderPush, RefusesNamesThatAreNoCard) {
  for (const std::string href : {"../ann.vcf", ".ann.vcf", "ann.txt", "/tmp/ann.vcf"}) {
    EXPECT_EQ(pushed(Kind::Create, href, "", "x").outcome, Outcome::Refused) << href;
  }
  const auto tooLong = std::string(300, 'x') + ".vcf";
  EXPECT_EQ(pushed(Kind::Create, tooLong, "", "x").outcome, Outcome::Refused);
  EXPECT_EQ(names(), Names());
}

TEST_F(FolderPush, ToAFolderThatIsClosedIsReadOnly) {
  if (isSuperuser()) GTEST_SKIP() << "the superuser writes everywhere";
  write("ann.vcf", "one");
  const auto etag = listed()["ann.vcf"];
  ::chmod(path().c_str(), 0500);
  EXPECT_EQ(pushed(Kind::Create, "bob.vcf", "", "x").outcome, Outcome::ReadOnly);
  EXPECT_EQ(pushed(Kind::Update, "ann.vcf", etag, "x").outcome, Outcome::ReadOnly);
  EXPECT_EQ(pushed(Kind::Remove, "ann.vcf", etag, "").outcome, Outcome::ReadOnly);
  EXPECT_EQ(names(), Names{"ann.vcf"});
}

TEST_F(FolderPush, TellsOfEachWithItsPlace) {
  write("bob.vcf", "one");
  const auto text = [] { return std::string("text"); };
  const std::vector<Push> pushes = {{Kind::Create, "ann.vcf", "", text},
                                    {Kind::Create, "bob.vcf", "", text},
                                    {Kind::Remove, "eve.vcf", "1-2-3.4", {}}};
  std::vector<std::pair<std::size_t, Outcome>> told;
  FolderBook(path()).push(
      pushes, [&](std::size_t place, const Pushed& one) { told.emplace_back(place, one.outcome); });
  EXPECT_EQ(told, (std::vector<std::pair<std::size_t, Outcome>>{
                      {0, Outcome::Done}, {1, Outcome::Exists}, {2, Outcome::Gone}}));
}

// No file may grow beyond some bytes: nothing half written is left.
TEST_F(FolderPush, LeavesNothingOfACardThatDoesNotFit) {
  write("ann.vcf", "one");
  const auto etag = listed()["ann.vcf"];
  const auto child = ::fork();
  if (child == 0) {
    ::signal(SIGXFSZ, SIG_IGN);
    const struct rlimit limit { 100, 100 };
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const auto outcome = pushed(Kind::Update, "ann.vcf", etag, std::string(1000, 'x')).outcome;
    ::_exit(outcome == Outcome::TooLarge ? 0 : 1);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(bytes("ann.vcf"), "one");
  EXPECT_EQ(names(), Names{"ann.vcf"});
}

TEST_F(FolderPush, RemovesWhatKilledProcessesHaveLeft) {
  write("ann.vcf", "one");
  const auto child = ::fork();
  if (child == 0) {
    const Push push{Kind::Create, "bob.vcf", "", [] {
                      ::raise(SIGKILL);
                      return std::string();
                    }};
    FolderBook(path()).push({&push, 1}, [](std::size_t, const Pushed&) {});
    ::_exit(0);
  }
  ::waitpid(child, nullptr, 0);
  ASSERT_EQ(names().size(), 2u);
  EXPECT_EQ(listed().size(), 1u);
  write(".mine.tmp", "not ours");
  EXPECT_EQ(pushed(Kind::Create, "eve.vcf", "", "x").outcome, Outcome::Done);
  EXPECT_EQ(names(), (Names{".mine.tmp", "ann.vcf", "eve.vcf"}));
}

}  // namespace
}  // namespace ox::sync
