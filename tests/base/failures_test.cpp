#include "ox/base/failures.hpp"

#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "ox/base/detached_worker.hpp"
#include "ox/base/serial_queue.hpp"

namespace ox::failures {
namespace {

using Over = Watch::Over;

std::vector<std::string> reasonsOf(const std::vector<Failure>& failures) {
  std::vector<std::string> reasons;
  reasons.reserve(failures.size());
  for (const auto& failure : failures) reasons.push_back(failure.reason);
  return reasons;
}

using Reasons = std::vector<std::string>;

TEST(Watch, CollectsRefusalsAndFailuresWithKindReasonAndSubject) {
  const Watch watch;
  EXPECT_TRUE(watch.isClear());
  EXPECT_FALSE(watch.last());
  noticeRefusal("wrong type", "p1");
  EXPECT_FALSE(watch.hasFailures());
  notice(FailureKind::Full, "no room", "/a/store.db");
  EXPECT_EQ(watch.counts(), (Counts{1, 1}));
  EXPECT_TRUE(watch.hasFailures());
  EXPECT_FALSE(watch.isClear());
  const std::vector<Failure> expected = {{FailureKind::Refused, "wrong type", "p1"},
                                         {FailureKind::Full, "no room", "/a/store.db"}};
  EXPECT_EQ(watch.all(), expected);
  EXPECT_EQ(watch.last(), expected[1]);
  EXPECT_TRUE(expected[0].isRefusal());
  EXPECT_FALSE(expected[1].isRefusal());
}

TEST(Watch, TakesTheKindFromWhatWasThrown) {
  const Watch watch;
  notice(FailureError(FailureKind::Busy, "locked", "s.db"));
  notice(std::bad_alloc());
  notice(std::runtime_error("odd"));
  const std::vector<Failure> expected = {{FailureKind::Busy, "locked", "s.db"},
                                         {FailureKind::NoMemory, "std::bad_alloc", ""},
                                         {FailureKind::Other, "odd", ""}};
  EXPECT_EQ(watch.all(), expected);
}

TEST(Watch, TakesTheKindFromTheErrorOfASystemCall) {
  const std::pair<std::errc, FailureKind> rows[] = {
      {std::errc::permission_denied, FailureKind::Denied},
      {std::errc::read_only_file_system, FailureKind::Denied},
      {std::errc::no_space_on_device, FailureKind::Full},
      {std::errc::not_enough_memory, FailureKind::NoMemory},
      {std::errc::io_error, FailureKind::Unavailable},
  };
  for (const auto& [code, kind] : rows) {
    EXPECT_EQ(kindOf(std::system_error(std::make_error_code(code), "file")), kind);
  }
}

TEST(Watch, SeesItsOwnScopeAndEverythingBelowIt) {
  const Watch outer;
  notice(FailureKind::Other, "before");
  {
    const Watch inner;
    notice(FailureKind::Other, "within");
    EXPECT_EQ(reasonsOf(inner.all()), Reasons{"within"});
    const Watch innermost(Over::OwnWork);
    notice(FailureKind::Other, "below");
    EXPECT_EQ(reasonsOf(innermost.all()), Reasons{"below"});
    EXPECT_EQ(reasonsOf(inner.all()), (Reasons{"within", "below"}));
  }
  notice(FailureKind::Other, "after");
  EXPECT_EQ(reasonsOf(outer.all()), (Reasons{"before", "within", "below", "after"}));
}

TEST(Watch, KeepsTheFirstFewHundredAndTheLastAndCountsAll) {
  const Watch watch;
  for (int i = 0; i < 1000; ++i) notice(FailureKind::Other, std::to_string(i));
  EXPECT_EQ(watch.counts(), (Counts{0, 1000}));
  ASSERT_EQ(watch.all().size(), 256U);
  EXPECT_EQ(watch.all().back().reason, "255");
  EXPECT_EQ(watch.last()->reason, "999");
}

TEST(Watch, TellsOfFailuresThatNobodyWatchedOnceAndNotAsItsOwn) {
  notice(FailureKind::NotAStore, "no store", "s.db");
  noticeRefusal("refused");
  std::thread([] { notice(FailureKind::Other, "on a thread"); }).join();
  {
    const Watch ownWork(Over::OwnWork);
    EXPECT_TRUE(ownWork.earlier().empty()) << "nobody would be told";
    notice(FailureKind::Other, "of own work");
    EXPECT_EQ(ownWork.counts(), (Counts{0, 1}));
  }
  const Watch first;
  const std::vector<Failure> expected = {{FailureKind::NotAStore, "no store", "s.db"},
                                         {FailureKind::Other, "on a thread", ""},
                                         {FailureKind::Other, "of own work", ""}};
  EXPECT_EQ(first.earlier(), expected);
  EXPECT_TRUE(first.isClear());
  const Watch second;
  EXPECT_TRUE(second.earlier().empty());
}

TEST(Watch, IsNotToldOfEarlierFailuresThatSomebodyWatched) {
  {
    const Watch watch;
    notice(FailureKind::Other, "watched");
  }
  EXPECT_TRUE(Watch().earlier().empty());
}

TEST(Watch, RemembersOfWhatNobodyWatchedTheFirstFewHundred) {
  for (int i = 0; i < 1000; ++i) notice(FailureKind::Other, std::to_string(i));
  const Watch watch;
  ASSERT_EQ(watch.earlier().size(), 256U);
  EXPECT_EQ(watch.earlier().back().reason, "255");
}

TEST(Watch, ThreadsThatTheWorkDoesNotStartAreNotSeen) {
  const Watch watch;
  std::thread([] { notice(FailureKind::Other, "of somebody else"); }).join();
  EXPECT_TRUE(watch.isClear());
  EXPECT_EQ(reasonsOf(Watch().earlier()), Reasons{"of somebody else"});
}

TEST(Watch, ThreadsOfTheWorkAreSeenByEveryWatchAroundTheirStart) {
  const Watch outer;
  std::thread thread;
  {
    const Watch inner;
    std::promise<void> noticed;
    std::promise<void> mayGoOn;
    thread = std::thread(watched([&noticed, goOn = mayGoOn.get_future().share()] {
      notice(FailureKind::Other, "within");
      noticed.set_value();
      goOn.wait();
      notice(FailureKind::Other, "after the inner scope");
    }));
    noticed.get_future().wait();
    EXPECT_EQ(reasonsOf(inner.all()), Reasons{"within"});
    mayGoOn.set_value();
    thread.join();
  }
  EXPECT_EQ(reasonsOf(outer.all()), (Reasons{"within", "after the inner scope"}));
}

TEST(Watch, AThreadMayOutliveItAndTheNextWatchTellsThen) {
  std::promise<void> mayGoOn;
  std::thread thread;
  {
    const Watch watch;
    thread = std::thread(watched([goOn = mayGoOn.get_future().share()] {
      goOn.wait();
      notice(FailureKind::Other, "late");
    }));
  }
  mayGoOn.set_value();
  thread.join();
  const Watch next;
  EXPECT_TRUE(next.isClear());
  EXPECT_EQ(reasonsOf(next.earlier()), Reasons{"late"});
}

TEST(Watch, ADetachedWorkerIsWatchedByWhoStartsIt) {
  const Watch watch;
  std::promise<void> ran;
  runDetached([&ran] {
    notice(FailureKind::Busy, "locked");
    ran.set_value();
  });
  ran.get_future().wait();
  EXPECT_EQ(watch.last(), (Failure{FailureKind::Busy, "locked", ""}));
}

TEST(Watch, ATaskOfASerialQueueIsWatchedByWhoSubmitsIt) {
  SerialQueue queue;
  const Watch watch;
  std::thread([&queue] {
    const Watch other;
    queue.sync([] { notice(FailureKind::Other, "theirs"); });
    EXPECT_EQ(reasonsOf(other.all()), Reasons{"theirs"});
  }).join();
  queue.sync([] { notice(FailureKind::Other, "ours"); });
  EXPECT_EQ(reasonsOf(watch.all()), Reasons{"ours"});
}

TEST(Watch, ATaskThatIsRunOnItsOwnThreadAfterAllIsCountedOnce) {
  const Watch watch;
  watched([] { notice(FailureKind::Other, "once"); })();
  notice(FailureKind::Other, "and after it");
  EXPECT_EQ(reasonsOf(watch.all()), (Reasons{"once", "and after it"}));
}

TEST(Aside, PassesByTheInnermostWatchOverOwnWorkAlone) {
  const Watch host;
  const Watch load(Over::OwnWork);
  const Watch step;
  notice(FailureKind::Other, "of the work");
  {
    const Aside aside;
    notice(FailureKind::Other, "of the callback");
    const Watch inTheCallback;
    noticeRefusal("of its own work");
    EXPECT_EQ(inTheCallback.counts(), (Counts{1, 0}));
  }
  notice(FailureKind::Other, "of the work again");
  EXPECT_EQ(reasonsOf(step.all()), (Reasons{"of the work", "of the work again"}));
  EXPECT_EQ(reasonsOf(load.all()), (Reasons{"of the work", "of the work again"}));
  EXPECT_EQ(reasonsOf(host.all()),
            (Reasons{"of the work", "of the callback", "of its own work", "of the work again"}));
}

TEST(Aside, ChangesNothingWhereNobodyWatchesOwnWork) {
  const Watch host;
  const Aside aside;
  notice(FailureKind::Other, "seen");
  EXPECT_EQ(reasonsOf(host.all()), Reasons{"seen"});
}

// Two hosts in one process: each is told of its own.
TEST(WatchThreads, TwoAtOnceDoNotSeeEachOther) {
  const auto work = [](FailureKind kind, const char* reason) {
    const Watch watch;
    std::vector<std::thread> helpers(2);
    for (auto& helper : helpers) {
      helper = std::thread(watched([kind, reason] {
        for (int i = 0; i < 1000; ++i) notice(kind, reason);
      }));
    }
    for (int i = 0; i < 1000; ++i) {
      notice(kind, reason);
      const Watch inner(Over::OwnWork);
      notice(kind, reason);
      EXPECT_EQ(inner.counts().refusals + inner.counts().failures, 1U);
    }
    for (auto& helper : helpers) helper.join();
    for (const auto& failure : watch.all()) EXPECT_EQ(failure, (Failure{kind, reason, ""}));
    return watch.counts();
  };
  auto refused = std::async(std::launch::async, work, FailureKind::Refused, "a");
  auto failed = std::async(std::launch::async, work, FailureKind::Corrupt, "b");
  EXPECT_EQ(refused.get(), (Counts{4000, 0}));
  EXPECT_EQ(failed.get(), (Counts{0, 4000}));
}

TEST(WatchThreads, ThreadsThatOutliveTheirWatchesHarmNobody) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    const Watch watch;
    threads.emplace_back(watched([] {
      for (int n = 0; n < 500; ++n) notice(FailureKind::Other, "late or not");
    }));
    EXPECT_LE(watch.counts().failures, 500U);
    EXPECT_LE(watch.all().size(), kKept);
  }
  for (auto& thread : threads) thread.join();
  EXPECT_LE(Watch().earlier().size(), kKept);
}

}  // namespace
}  // namespace ox::failures
