// Acts that run on several threads at once: each is there whole, or not at all.
#include <future>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/running_act.hpp"
#include "tests/platform/AddressBook/record_view.hpp"
#include "tests/support/store_builder.hpp"

namespace ox {
namespace {

using namespace record_view;
using support::StoreBuilder;

template <typename Work>
void onAnotherThread(Work work) {
  std::thread(work).join();
}

// A request of the container view that puts these persons into the group "g".
bool links(const std::vector<std::string>& persons) {
  SaveRequest request;
  for (const auto& id : persons) {
    request.links.push_back({RecordKey::of("g"), RecordKey::of(id)});
  }
  return contactSource().execute(request);
}

TEST(ActsOfThreads, IsNotWrittenByASaveOnAnotherThreadAndWritesWhatIsNobodys) {
  StoreBuilder().persons("p", 3).group("g", "G").member("g", "p0");
  setFirst("p2", "nobody's");
  const RunningAct act;
  StoreBuilder().person("new", {.first = "New"});
  setFirst("p0", "the act's");
  groupNamed("g")->addMember(personNamed("new"));
  groupNamed("g")->removeMember(personNamed("p0"));
  book()->removeRecord(personNamed("p1"));
  const auto expected = visible();
  EXPECT_EQ(expected, "the act's nobody's New [g: New] ");
  onAnotherThread([] {
    setFirst("p2", "of another thread");
    EXPECT_TRUE(book()->save());
    EXPECT_FALSE(book()->hasUnsavedChanges());
  });
  EXPECT_EQ(elsewhere(), "p0 p1 of another thread [g: p0] ");
  setFirst("p2", "nobody's");
  onAnotherThread([] {
    setFirst("p2", "nobody's own");
    book()->revert();
  });
  EXPECT_EQ(visible(), expected) << "another thread's revert takes back nothing of the act";
  EXPECT_TRUE(book()->save());
  EXPECT_EQ(elsewhere(), expected);
}

TEST(ActsOfThreads, KeepsWhatAnotherThreadChangesOfItsNewRecords) {
  StoreBuilder().persons("p", 1).group("g", "G");
  {
    const RunningAct act;
    StoreBuilder().person("new", {.first = "New"}).person("gone", {.first = "Gone"});
    onAnotherThread([] {
      setFirst("new", "Changed");
      groupNamed("g")->addMember(personNamed("new"));
      book()->removeRecord(personNamed("gone"));
      EXPECT_TRUE(book()->save());
    });
    EXPECT_EQ(elsewhere(), "p0 [g:] ");
    EXPECT_TRUE(book()->save());
  }
  EXPECT_EQ(elsewhere(), "p0 Changed [g: Changed] ");
}

// Two threads' acts change the same things: each is written with its own act.
TEST(ActsOfThreads, OfTwoThreadsKeepEachItsOwnChangeOfOneValue) {
  StoreBuilder().persons("p", 2).group("g", "G").member("g", "p1");
  {
    const RunningAct act;
    setFirst("p0", "first");
    groupNamed("g")->addMember(personNamed("p0"));
    personNamed("p0")->setImageData(makeData("first"));
    onAnotherThread([] {
      const RunningAct other;
      setFirst("p0", "second");
      groupNamed("g")->removeMember(personNamed("p0"));
      personNamed("p0")->setImageData(makeData("second"));
      EXPECT_EQ(visible(), "second p1 [g: p1] ");
      EXPECT_EQ(*personNamed("p0")->imageData(), "second");
    });
    EXPECT_EQ(visible(), "first p1 [g: p1 first] ") << "the second was not saved";
    EXPECT_EQ(*personNamed("p0")->imageData(), "first");
    onAnotherThread([] {
      const RunningAct other;
      setFirst("p0", "p0");
      EXPECT_EQ(visible(), "p0 p1 [g: p1 p0] ");
      groupNamed("g")->removeMember(personNamed("p0"));
      EXPECT_TRUE(book()->save());
    });
    EXPECT_EQ(elsewhere(), "p0 p1 [g: p1] ");
    EXPECT_TRUE(book()->save());
  }
  EXPECT_EQ(elsewhere(), "first p1 [g: p1 first] ");
}

// Two threads' acts link and unlink the same: what the one takes back the other one still writes.
TEST(ActsOfThreads, OfTwoThreadsKeepEachItsOwnLink) {
  StoreBuilder().persons("p", 2).group("g", "G").member("g", "p1");
  {
    const RunningAct act;
    groupNamed("g")->addMember(personNamed("p0"));
    groupNamed("g")->removeMember(personNamed("p1"));
    onAnotherThread([] {
      const RunningAct other;
      EXPECT_TRUE(groupNamed("g")->addMember(personNamed("p0")));
      EXPECT_FALSE(groupNamed("g")->addMember(personNamed("p0"))) << "it is there by now";
      EXPECT_TRUE(groupNamed("g")->removeMember(personNamed("p1")));
      EXPECT_FALSE(groupNamed("g")->removeMember(personNamed("p1"))) << "it is gone by now";
      EXPECT_EQ(visible(), "p0 p1 [g: p0] ");
      EXPECT_TRUE(book()->save());
    });
    EXPECT_EQ(elsewhere(), "p0 p1 [g: p0] ");
  }
  EXPECT_EQ(visible(), "p0 p1 [g: p0] ");
  EXPECT_EQ(elsewhere(), "p0 p1 [g: p0] ");
}

TEST(ActsOfThreads, TakesBackItsOwnLinkAloneWhereAnotherThreadWantsTheSame) {
  StoreBuilder().persons("p", 2).group("g", "G").member("g", "p1");
  {
    const RunningAct act;
    groupNamed("g")->addMember(personNamed("p0"));
    groupNamed("g")->removeMember(personNamed("p1"));
    onAnotherThread([] {
      const RunningAct other;
      groupNamed("g")->addMember(personNamed("p0"));
      groupNamed("g")->removeMember(personNamed("p1"));
      groupNamed("g")->removeMember(personNamed("p0"));
      EXPECT_EQ(visible(), "p0 p1 [g:] ");
      EXPECT_FALSE(links({"p0", "gone"}));
      EXPECT_EQ(visible(), "p0 p1 [g:] ");
    });
    onAnotherThread([] {
      const RunningAct other;
      EXPECT_FALSE(links({"p0", "gone"}));
      EXPECT_EQ(visible(), "p0 p1 [g: p0] ");
    });
    EXPECT_EQ(visible(), "p0 p1 [g: p0] ");
    EXPECT_TRUE(book()->save());
  }
  EXPECT_EQ(elsewhere(), "p0 p1 [g: p0] ");
}

TEST(ActsOfThreads, CreatesALinkThatAnotherThreadMayTakeBack) {
  StoreBuilder().persons("p", 1).group("g", "G");
  {
    const RunningAct act;
    groupNamed("g")->addMember(personNamed("p0"));
    onAnotherThread([] {
      const RunningAct other;
      EXPECT_TRUE(links({"p0"}));
      EXPECT_TRUE(book()->save());
    });
  }
  EXPECT_EQ(elsewhere(), "p0 [g: p0] ");
}

TEST(ActsOfThreads, ThatIsTakenBackRemovesNothingThatAnotherThreadCreates) {
  StoreBuilder().group("g", "G");
  {
    const RunningAct act;
    StoreBuilder().person("new", {.first = "New"}).member("g", "new");
    onAnotherThread([] {
      const RunningAct other;
      book()->removeRecord(personNamed("new"));
      EXPECT_EQ(visible(), "[g:] ");
    });
    EXPECT_EQ(visible(), "New [g: New] ");
    EXPECT_TRUE(book()->save());
  }
  EXPECT_EQ(elsewhere(), "New [g: New] ");
}

TEST(ActsOfThreads, ThatIsSavedRemovesWhatAnotherThreadIsStillToSave) {
  StoreBuilder().group("g", "G");
  {
    const RunningAct act;
    StoreBuilder().person("new", {.first = "New"}).member("g", "new");
    onAnotherThread([] {
      const RunningAct other;
      book()->removeRecord(personNamed("new"));
      EXPECT_TRUE(book()->save());
    });
    EXPECT_EQ(visible(), "[g:] ");
    EXPECT_TRUE(book()->save());
  }
  EXPECT_EQ(elsewhere(), "[g:] ");
  EXPECT_FALSE(book()->hasUnsavedChanges());
}

TEST(ActsOfThreads, RemovesWhatAnotherThreadHasSavedMeanwhile) {
  StoreBuilder().group("g", "G");
  std::promise<void> created;
  std::promise<void> removed;
  std::promise<void> saved;
  std::thread creator([&] {
    const RunningAct act;
    StoreBuilder().person("new", {.first = "New"}).person("other", {.first = "Other"});
    StoreBuilder().members("g", {"new", "other"});
    created.set_value();
    removed.get_future().wait();
    EXPECT_TRUE(book()->save());
    saved.set_value();
  });
  created.get_future().wait();
  {
    const RunningAct act;
    book()->removeRecord(personNamed("new"));
    removed.set_value();
    saved.get_future().wait();
    EXPECT_EQ(elsewhere(), "New Other [g: New Other] ");
    EXPECT_EQ(visible(), "Other [g: Other] ");
    EXPECT_TRUE(book()->save());
  }
  creator.join();
  EXPECT_EQ(elsewhere(), "Other [g: Other] ");
}

TEST(ActsOfThreads, ThatIsTakenBackLeavesNobodyARemovalOfItsRecords) {
  {
    const RunningAct act;
    StoreBuilder().person("new", {.first = "New"});
    onAnotherThread([] { book()->removeRecord(personNamed("new")); });
  }
  EXPECT_FALSE(book()->hasUnsavedChanges());
}

// Each thread's acts are there whole, or not at all, whatever the others save and take back.
TEST(ActsOfThreads, OfManyThreadsAtOnceAreEachWhole) {
  constexpr int kThreads = 4;
  constexpr int kActs = 20;
  StoreBuilder().group("all", "All");
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t] {
      for (int i = 0; i < kActs; ++i) {
        const auto name = std::to_string(t) + '-' + std::to_string(i);
        const RunningAct act;
        StoreBuilder().person(name).group("g" + name, name).member("g" + name, name);
        setFirst(name, name);
        groupNamed("all")->addMember(personNamed(name));
        EXPECT_TRUE(i % 2 == 0 ? book()->save() : true);
        book()->people();
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_FALSE(book()->hasUnsavedChanges());
  const auto seen = elsewhere();
  EXPECT_EQ(seen, visible());
  EXPECT_EQ(book()->people().size(), kThreads * kActs / 2U);
  EXPECT_EQ(groupNamed("all")->members().size(), kThreads * kActs / 2U);
  for (const auto& person : book()->people()) {
    EXPECT_EQ(firstName(*person), *person->uniqueId());
    EXPECT_EQ(person->parentGroups().size(), 2U) << *person->uniqueId();
  }
}

}  // namespace
}  // namespace ox
