#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

#include "ox/base/failures.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

using Tags = OxTagManager::Tags;
using MaybeTags = std::optional<Tags>;

std::filesystem::path tagFile() {
  return support::StoreEnvironment::instance().tagStore();
}

std::shared_ptr<OxTagManager> manager() {
  return OxTagManager::tagManagerWithID("book");
}

TEST(OxTagManager, IsTheSameObjectForOneIdentifierAndMissingForNone) {
  EXPECT_EQ(OxTagManager::tagManagerWithID("a"), OxTagManager::tagManagerWithID("a"));
  EXPECT_NE(OxTagManager::tagManagerWithID("a"), OxTagManager::tagManagerWithID("b"));
  EXPECT_NE(OxTagManager::tagManagerWithID(""), nullptr);
  EXPECT_EQ(OxTagManager::tagManagerWithID(nullptr), nullptr);
}

TEST(OxTagManager, MakesNoFileBeforeTheFirstTag) {
  const failures::Watch watch;
  const auto tags = manager();
  EXPECT_EQ(tags->tagsByPersonID("p"), std::nullopt);
  tags->setTags_forPersonID(Tags(), "p");
  tags->setTags_forPersonID(std::nullopt, "p");
  tags->removePersonID_fromTag("p", "x");
  tags->removeForPersonID("p");
  tags->addPersonID_forTag(nullptr, "x");
  tags->addPersonID_forTag("p", nullptr);
  EXPECT_EQ(OxTagManager::problems(), Tags());
  EXPECT_TRUE(OxTagManager::makeDurable());
  EXPECT_FALSE(std::filesystem::exists(tagFile()));
  EXPECT_EQ(watch.counts(), failures::Counts());

  tags->addPersonID_forTag("p", "x");
  struct stat status {};
  ASSERT_EQ(::stat(tagFile().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST(OxTagManager, KeepsTagsInTheOrderOfAddingAndNoneTwice) {
  const auto tags = manager();
  for (const auto* tag : {"z", "a", "z", "", "m"}) tags->addPersonID_forTag("p", tag);
  EXPECT_EQ(tags->tagsByPersonID("p"), MaybeTags({"z", "a", "", "m"}));
  tags->removePersonID_fromTag("p", "z");
  tags->removePersonID_fromTag("p", "unknown");
  tags->addPersonID_forTag("p", "z");
  EXPECT_EQ(tags->tagsByPersonID("p"), MaybeTags({"a", "", "m", "z"}));
  tags->setTags_forPersonID(Tags{"m", "b", "m", "a", "b"}, "p");
  EXPECT_EQ(tags->tagsByPersonID("p"), MaybeTags({"m", "b", "a"}));
  tags->setTags_forPersonID(Tags{"a", "b", "m"}, "p");
  EXPECT_EQ(tags->tagsByPersonID("p"), MaybeTags({"a", "b", "m"}));
}

TEST(OxTagManager, AnswersMissingOnceThePersonHasNoTagLeft) {
  const auto tags = manager();
  tags->addPersonID_forTag("p", "x");
  tags->removePersonID_fromTag("p", "x");
  EXPECT_EQ(tags->tagsByPersonID("p"), std::nullopt);
  tags->setTags_forPersonID(Tags{"x", "y"}, "p");
  tags->setTags_forPersonID(Tags(), "p");
  EXPECT_EQ(tags->tagsByPersonID("p"), std::nullopt);
  tags->setTags_forPersonID(Tags{"x", "y"}, "p");
  tags->removeForPersonID("p");
  EXPECT_EQ(tags->tagsByPersonID("p"), std::nullopt);
  EXPECT_EQ(tags->tagsByPersonID(nullptr), std::nullopt);
}

TEST(OxTagManager, KeepsIdentifiersAndPersonsApart) {
  const auto other = OxTagManager::tagManagerWithID("other");
  manager()->addPersonID_forTag("p", "x");
  other->addPersonID_forTag("p", "y");
  manager()->addPersonID_forTag("q", "z");
  other->removeForPersonID("q");
  EXPECT_EQ(manager()->tagsByPersonID("p"), MaybeTags({"x"}));
  EXPECT_EQ(other->tagsByPersonID("p"), MaybeTags({"y"}));
  EXPECT_EQ(manager()->tagsByPersonID("q"), MaybeTags({"z"}));
}

TEST(OxTagManager, RepairsIllFormedTextAndKeepsNul) {
  const std::string nul("a\0b", 3);
  manager()->addPersonID_forTag("p", nul);
  manager()->addPersonID_forTag("p", "\xFF");
  EXPECT_EQ(manager()->tagsByPersonID("p"), MaybeTags({nul, "\xEF\xBF\xBD"}));
  manager()->setTags_forPersonID(Tags{"\xFE", "\xFF"}, "p");
  EXPECT_EQ(manager()->tagsByPersonID("p"), MaybeTags({"\xEF\xBF\xBD"}));
}

const support::SecondProcess tagsAnn("tagsAnn", [](const auto& arguments) {
  const failures::Watch watch;
  for (const auto& tag : arguments) manager()->addPersonID_forTag("ann", tag);
  return watch.hasFailures() ? 1 : 0;
});

const support::SecondProcess clearsAnn("clearsAnn", [](const auto&) {
  manager()->setTags_forPersonID(std::nullopt, "ann");
  return manager()->tagsByPersonID("ann") ? 1 : 0;
});

TEST(OxTagManager, SeesWhatAnotherProcessWroteAtOnce) {
  EXPECT_EQ(manager()->tagsByPersonID("ann"), std::nullopt);
  EXPECT_EQ(tagsAnn.run({"x", "y"}).exitCode, 0);
  EXPECT_EQ(manager()->tagsByPersonID("ann"), MaybeTags({"x", "y"}));
  EXPECT_EQ(clearsAnn.run().exitCode, 0);
  EXPECT_EQ(manager()->tagsByPersonID("ann"), std::nullopt);
  EXPECT_EQ(tagsAnn.run({"z"}).exitCode, 0);
  manager()->setTags_forPersonID(Tags(), "ann");
  EXPECT_EQ(clearsAnn.run().exitCode, 0);
}

TEST(OxTagManager, LosesNothingWhenProcessesMakeTheFileAndWriteAtOnce) {
  const failures::Watch watch;
  support::RunningProcess first(tagsAnn.command({"a1", "a2", "a3", "a4"}));
  support::RunningProcess second(tagsAnn.command({"b1", "b2", "b3", "b4"}));
  for (const auto* tag : {"c1", "c2", "c3", "c4"}) manager()->addPersonID_forTag("ann", tag);
  EXPECT_EQ(first.wait().exitCode, 0);
  EXPECT_EQ(second.wait().exitCode, 0);
  EXPECT_EQ(manager()->tagsByPersonID("ann").value_or(Tags()).size(), 12U);
  EXPECT_EQ(watch.counts().failures, 0U);
}

TEST(OxTagManager, LosesNothingWhenThreadsWriteAtOnce) {
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([thread] {
      for (int tag = 0; tag < 10; ++tag) {
        manager()->addPersonID_forTag("p", std::to_string(thread) + "-" + std::to_string(tag));
        manager()->tagsByPersonID("p");
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(manager()->tagsByPersonID("p").value_or(Tags()).size(), 40U);
}

TEST(OxTagManager, SyncsWhatWasWrittenWithoutChangingIt) {
  manager()->setTags_forPersonID(Tags{"x", "y"}, "p");
  EXPECT_TRUE(OxTagManager::makeDurable());
  EXPECT_TRUE(OxTagManager::makeDurable());
  EXPECT_EQ(manager()->tagsByPersonID("p"), MaybeTags({"x", "y"}));
  EXPECT_EQ(OxTagManager::problems(), Tags());
}

}  // namespace
}  // namespace ox
