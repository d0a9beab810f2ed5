#include "ox/OxAddressBookSDK/tags/tag_hold.hpp"

#include <condition_variable>
#include <filesystem>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxAddressBookSDK/tags/tag_store.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

using Tags = OxTagManager::Tags;
using Changes = std::vector<TagChange>;

OxTagManager& manager() {
  return *OxTagManager::tagManagerWithID("book");
}

Tags tags(const char* person = "p") {
  return manager().tagsByPersonID(person).value_or(Tags());
}

Tags writtenTags(const char* person = "p") {
  const auto path = support::StoreEnvironment::instance().tagStore();
  return std::filesystem::exists(path) ? TagFile(path.string()).tags("book", person) : Tags();
}

TEST(TagHold, ShowsTheProcessWhatItHoldsAndWritesNothing) {
  manager().setTags_forPersonID(Tags{"a", "b"}, "p");
  const TagHold hold;
  EXPECT_TRUE(TagHold::isOnThread());
  manager().addPersonID_forTag("p", "c");
  manager().addPersonID_forTag("p", "a");
  manager().removePersonID_fromTag("p", "b");
  manager().setTags_forPersonID(Tags{"z"}, "q");
  EXPECT_EQ(tags(), (Tags{"a", "c"}));
  std::thread([] { EXPECT_EQ(tags(), (Tags{"a", "c"})); }).join();
  EXPECT_EQ(writtenTags(), (Tags{"a", "b"}));
  EXPECT_EQ(TagHold::changesOfThread(),
            (Changes{{"book", "p", {"a", "b"}, {"a", "c"}}, {"book", "q", {}, {"z"}}}));
}

TEST(TagHold, ShowsTheTagsOfAllPersonsLikewise) {
  using OfPersons = TagFile::TagsOfPersons;
  auto& store = TagStore::shared();
  EXPECT_EQ(store.tagsUnder("book"), OfPersons());
  manager().setTags_forPersonID(Tags{"b", "a"}, "p");
  manager().setTags_forPersonID(Tags{"c"}, "q");
  OxTagManager::tagManagerWithID("other")->setTags_forPersonID(Tags{"d"}, "p");
  EXPECT_EQ(store.tagsUnder("book"), (OfPersons{{"p", {"b", "a"}}, {"q", {"c"}}}));
  const TagHold hold;
  manager().addPersonID_forTag("p", "z");
  manager().removeForPersonID("q");
  manager().addPersonID_forTag("r", "new");
  EXPECT_EQ(store.tagsUnder("book"), (OfPersons{{"p", {"b", "a", "z"}}, {"r", {"new"}}}));
  EXPECT_EQ(store.tagsUnder("other"), (OfPersons{{"p", {"d"}}}));
}

TEST(TagHold, ForgetsAtItsEndWhatWasNotWritten) {
  manager().setTags_forPersonID(Tags{"a"}, "p");
  {
    const TagHold hold;
    manager().removeForPersonID("p");
    EXPECT_EQ(tags(), Tags());
  }
  EXPECT_FALSE(TagHold::isOnThread());
  EXPECT_EQ(tags(), Tags{"a"});
  EXPECT_EQ(TagHold::changesOfThread(), Changes());
}

TEST(TagHold, MakesNoFileAndHoldsNoChangeThatIsNone) {
  const TagHold hold;
  manager().setTags_forPersonID(std::nullopt, "p");
  manager().removePersonID_fromTag("p", "a");
  manager().addPersonID_forTag("p", "a");
  manager().removePersonID_fromTag("p", "a");
  EXPECT_EQ(TagHold::changesOfThread(), Changes());
  EXPECT_EQ(tags(), Tags());
  EXPECT_FALSE(std::filesystem::exists(support::StoreEnvironment::instance().tagStore()));
}

TEST(TagHold, LetsWhatOthersWriteShowThrough) {
  manager().setTags_forPersonID(Tags{"a", "b"}, "p");
  const TagHold hold;
  manager().removePersonID_fromTag("p", "a");
  std::thread([] { manager().addPersonID_forTag("p", "theirs"); }).join();
  EXPECT_EQ(tags(), (Tags{"b", "theirs"}));
  manager().addPersonID_forTag("p", "mine");
  EXPECT_EQ(tags(), (Tags{"b", "theirs", "mine"}));
  EXPECT_EQ(TagHold::changesOfThread(), (Changes{{"book", "p", {"a", "b"}, {"b", "mine"}}}));
  TagHold::forgetThose();
  EXPECT_EQ(tags(), (Tags{"a", "b", "theirs"}));
}

TEST(TagHold, OfAnotherThreadIsSeenButNotPartOfThisOne) {
  const TagHold hold;
  manager().addPersonID_forTag("p", "a");
  std::thread([] {
    EXPECT_FALSE(TagHold::isOnThread());
    const TagHold other;
    manager().addPersonID_forTag("p", "b");
    EXPECT_EQ(TagHold::changesOfThread(), (Changes{{"book", "p", {"a"}, {"a", "b"}}}));
  }).join();
  EXPECT_EQ(TagHold::changesOfThread(), (Changes{{"book", "p", {}, {"a"}}}));
  EXPECT_EQ(tags(), Tags{"a"});
}

// What another thread holds may be forgotten.
TEST(TagHold, OfAnotherThreadSparesThisOneNoChange) {
  manager().setTags_forPersonID(Tags{"a", "b"}, "p");
  manager().setTags_forPersonID(Tags{"a", "b"}, "q");
  const TagHold hold;
  manager().setTags_forPersonID(Tags{"b", "c"}, "p");
  manager().setTags_forPersonID(Tags{"b", "c"}, "q");
  std::thread([] {
    const TagHold other;
    manager().addPersonID_forTag("p", "c");
    manager().removePersonID_fromTag("p", "a");
    manager().setTags_forPersonID(Tags{"b", "c"}, "q");
    EXPECT_EQ(TagHold::changesOfThread(), (Changes{{"book", "p", {"b", "a"}, {"b", "c"}},
                                                   {"book", "q", {"b", "a"}, {"b", "c"}}}));
    EXPECT_EQ(tags("p"), (Tags{"b", "c"}));
    TagStore::shared().holdWithoutTags("p");
    EXPECT_EQ(TagHold::changesOfThread().front(), (TagChange{"book", "p", {"b", "a"}, {}}));
  }).join();
  EXPECT_EQ(tags("p"), (Tags{"b", "c"}));
}

TEST(TagHold, TakesAwayWhatWasWrittenSinceItsFirstChange) {
  manager().setTags_forPersonID(Tags{"a"}, "p");
  const TagHold hold;
  manager().addPersonID_forTag("p", "mine");
  std::thread([] { manager().addPersonID_forTag("p", "theirs"); }).join();
  manager().removePersonID_fromTag("p", "theirs");
  EXPECT_EQ(tags(), (Tags{"a", "mine"}));
  EXPECT_EQ(TagHold::changesOfThread(), (Changes{{"book", "p", {"a", "theirs"}, {"a", "mine"}}}));
}

TEST(TagHold, NestedIsPartOfTheOuterOneWhenItJoins) {
  const TagHold outer;
  manager().addPersonID_forTag("p", "a");
  {
    TagHold inner;
    manager().addPersonID_forTag("p", "b");
    EXPECT_EQ(TagHold::changesOfThread(), (Changes{{"book", "p", {}, {"a", "b"}}}));
    EXPECT_TRUE(inner.joinOuter());
  }
  {
    const TagHold dropped;
    manager().removeForPersonID("p");
    EXPECT_EQ(TagHold::changesOfThread(), Changes());
  }
  EXPECT_EQ(tags(), (Tags{"a", "b"}));
  EXPECT_EQ(TagHold::changesOfThread(), (Changes{{"book", "p", {}, {"a", "b"}}}));
}

TEST(TagHold, OutermostJoinsNone) {
  TagHold hold;
  EXPECT_FALSE(hold.joinOuter());
}

TEST(TagHold, PausedLetsChangesBeWritten) {
  const TagHold hold;
  manager().addPersonID_forTag("p", "held");
  {
    const TagHold::Pause pause;
    EXPECT_FALSE(TagHold::isOnThread());
    manager().addPersonID_forTag("p", "written");
  }
  EXPECT_EQ(writtenTags(), Tags{"written"});
  EXPECT_EQ(TagHold::changesOfThread(), (Changes{{"book", "p", {}, {"held"}}}));
}

TEST(TagHold, TakesAllTagsOfAPersonWhateverTheManager) {
  manager().setTags_forPersonID(Tags{"a"}, "p");
  OxTagManager::tagManagerWithID("other")->setTags_forPersonID(Tags{"b", "c"}, "p");
  manager().setTags_forPersonID(Tags{"stays"}, "pp");
  const TagHold hold;
  OxTagManager::tagManagerWithID("third")->addPersonID_forTag("p", "held");
  TagStore::shared().holdWithoutTags("p");
  TagStore::shared().holdWithoutTags("nobody");
  EXPECT_EQ(TagHold::changesOfThread(),
            (Changes{{"book", "p", {"a"}, {}}, {"other", "p", {"b", "c"}, {}}}));
  EXPECT_EQ(tags("pp"), Tags{"stays"});
}

TEST(TagHold, FollowsWhatItsActWrote) {
  const TagHold hold;
  manager().setTags_forPersonID(Tags{"a", "b"}, "p");
  TagStore::shared().follow("store", {{1, "one", TagHold::changesOfThread()}}, [] { return 1; });
  EXPECT_EQ(tags(), (Tags{"a", "b"}));
  TagHold::forgetThose();
  EXPECT_EQ(tags(), (Tags{"a", "b"}));
  EXPECT_EQ(writtenTags(), (Tags{"a", "b"}));
}

TEST(TagHold, ChangesManyTagsAsOneByOne) {
  manager().setTags_forPersonID(Tags{"a", "b", "c"}, "p");
  manager().setTags_forPersonID(Tags{"a", "b", "c"}, "q");
  manager().setTags_forPersonID(Tags{"a", "b", "c"}, "plain");
  const Tags removed = {"b", "x", "b"};
  const Tags added = {"d", "a", "e", "d"};
  manager().changeTags(removed, added, "plain");
  EXPECT_EQ(tags("plain"), (Tags{"a", "c", "d", "e"}));
  const TagHold hold;
  for (const auto& tag : removed) manager().removePersonID_fromTag("p", tag);
  for (const auto& tag : added) manager().addPersonID_forTag("p", tag);
  manager().changeTags(removed, added, "q");
  EXPECT_EQ(TagHold::changesOfThread(),
            (Changes{{"book", "p", {"a", "b", "c"}, {"a", "c", "d", "e"}},
                     {"book", "q", {"a", "b", "c"}, {"a", "c", "d", "e"}}}));
  // One that is removed and added stands at the end.
  manager().changeTags({"a"}, {"a"}, "q");
  EXPECT_EQ(tags("q"), (Tags{"c", "d", "e", "a"}));
}

TEST(TagHold, ChangesWhatOnlyAnotherThreadHolds) {
  manager().setTags_forPersonID(Tags{"a", "b"}, "p");
  std::mutex mutex;
  std::unique_lock lock(mutex);
  std::condition_variable changed;
  enum class State { Start, Held, Done } state = State::Start;
  std::thread other([&] {
    const TagHold hold;
    manager().removePersonID_fromTag("p", "a");
    manager().addPersonID_forTag("p", "z");
    std::unique_lock otherLock(mutex);
    state = State::Held;
    changed.notify_all();
    changed.wait(otherLock, [&] { return state == State::Done; });
  });
  changed.wait(lock, [&] { return state == State::Held; });
  {
    const TagHold hold;
    manager().changeTags({"a"}, {"z"}, "p");
    EXPECT_EQ(TagHold::changesOfThread(), (Changes{{"book", "p", {"b", "a"}, {"b", "z"}}}));
  }
  state = State::Done;
  changed.notify_all();
  lock.unlock();
  other.join();
}

}  // namespace
}  // namespace ox
