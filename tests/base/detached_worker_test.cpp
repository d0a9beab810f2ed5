#include "ox/base/detached_worker.hpp"

#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <pthread.h>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "ox/base/failures.hpp"

namespace ox {
namespace {

// Tells when the last owner let go: a worker's end, seen from outside.
struct Farewell {
  std::promise<void> gone;
  ~Farewell() { gone.set_value(); }
};

TEST(DetachedWorker, RunsOnAThreadOfItsOwnAndReturnsAtOnce) {
  std::promise<void> mayGoOn;
  std::promise<std::thread::id> ran;
  runDetached([waits = mayGoOn.get_future().share(), &ran] {
    waits.wait();
    ran.set_value(std::this_thread::get_id());
  });
  mayGoOn.set_value();  // reached only because the call above did not wait for the task
  EXPECT_NE(ran.get_future().get(), std::this_thread::get_id());
}

TEST(DetachedWorker, ContainsWhatATaskThrowsCountsItAndLetsGoOfWhatItOwns) {
  const failures::Watch watch;
  auto farewell = std::make_shared<Farewell>();
  auto gone = farewell->gone.get_future();
  runDetached([owned = std::move(farewell)] { throw std::runtime_error("disk full"); });
  gone.wait();
  EXPECT_EQ(watch.counts(), (failures::Counts{0, 1}));
  EXPECT_EQ(watch.last(), (Failure{FailureKind::Other, "disk full", ""}));

  farewell = std::make_shared<Farewell>();
  gone = farewell->gone.get_future();
  runDetached([owned = std::move(farewell)] { throw 7; });
  gone.wait();
  EXPECT_EQ(watch.counts(), (failures::Counts{0, 2}));
}

TEST(DetachedWorker, TellsItsCallerWhenNoThreadCanBeStarted) {
  pthread_attr_t huge;
  pthread_attr_init(&huge);
  pthread_attr_setstacksize(&huge, std::size_t{1} << 60);  // no address space is that large
  ASSERT_EQ(pthread_setattr_default_np(&huge), 0);
  bool ran = false;
  EXPECT_THROW(runDetached([&ran] { ran = true; }), std::system_error);
  EXPECT_FALSE(ran);
  pthread_attr_destroy(&huge);
}

}  // namespace
}  // namespace ox
