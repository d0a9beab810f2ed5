// No room for the private file in which large unsaved pictures wait for the save.
#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "tests/faults/store_state.hpp"
#include "tests/faults/trouble.hpp"
#include "tests/support/store_builder.hpp"

namespace ox::faults {
namespace {

// While it lives no file of this process grows beyond that size.
class SizeLimit {
 public:
  explicit SizeLimit(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  SizeLimit(const SizeLimit&) = delete;
  SizeLimit& operator=(const SizeLimit&) = delete;
  ~SizeLimit() { ::setrlimit(RLIMIT_FSIZE, &before_); }

 private:
  rlimit before_{};
};

Data picture(char letter) {
  return makeData(std::string(20'000, letter));
}

std::string pictureOf(ABPerson& person) {
  const auto data = person.imageData();
  return data ? std::string(1, data->front()) + std::to_string(data->size()) : "none";
}

TEST(FullDisk, RefusesThePictureThatFindsNoRoomAndNoOther) {
  const failures::Watch watch;
  support::StoreBuilder().persons("p", 2).person("stored", {.image = picture('s')});
  const auto book = ABAddressBook::sharedAddressBook();
  const auto people = book->people();
  auto& waiting = *people.at(0);
  auto& fresh = *people.at(1);
  auto& stored = *people.at(2);
  ASSERT_TRUE(waiting.setImageData(picture('w')));
  ASSERT_EQ(watch.counts().failures, 0U);
  {
    const SizeLimit limit(30'000);
    for (auto* person : {&waiting, &fresh, &stored}) {
      EXPECT_FALSE(person->setImageData(picture('x')));
    }
    EXPECT_EQ(watch.counts().failures, 3U);
    EXPECT_EQ(watch.lastReason(), "the file for unsaved pictures: writing: File too large");
    EXPECT_EQ(pictureOf(waiting), "w20000");
    EXPECT_EQ(pictureOf(fresh), "none");
    EXPECT_EQ(pictureOf(stored), "s20000");
    EXPECT_EQ(book->unsavedChanges().values.size(), 1U);
    EXPECT_TRUE(fresh.setValue_forProperty(Object("Ann"), kABFirstNameProperty));
    EXPECT_TRUE(stored.setImageData(nullptr));
  }
  EXPECT_TRUE(fresh.setImageData(picture('f')));
  EXPECT_EQ(pictureOf(waiting), "w20000");
  const auto wanted = stateOf(contactSource());
  EXPECT_TRUE(book->save());
  EXPECT_EQ(committedState(storePath()), wanted);
  EXPECT_EQ(pictureOf(waiting), "w20000");
  EXPECT_EQ(pictureOf(fresh), "f20000");
  EXPECT_EQ(pictureOf(stored), "none");
  EXPECT_EQ(problemsOf(storePath()), "");
}

TEST(FullDisk, WithoutAPlaceForUnsavedPicturesRefusesThem) {
  const failures::Watch watch;
  support::StoreBuilder().persons("p", 1);
  const auto book = ABAddressBook::sharedAddressBook();
  const auto people = book->people();
  auto& person = *people.front();
  ASSERT_EQ(::setenv("TMPDIR", "/nowhere", 1), 0);
  EXPECT_FALSE(person.setImageData(picture('x')));
  EXPECT_EQ(watch.counts().failures, 1U);
  EXPECT_TRUE(watch.lastReason().starts_with("the file for unsaved pictures: "));
  EXPECT_TRUE(watch.lastReason().ends_with(": No such file or directory"));
  EXPECT_TRUE(person.setImageData(makeData("small ones wait in memory")));
  ASSERT_EQ(::unsetenv("TMPDIR"), 0);
  EXPECT_TRUE(person.setImageData(picture('y')));
  EXPECT_TRUE(book->save());
  EXPECT_EQ(pictureOf(person), "y20000");
}

}  // namespace
}  // namespace ox::faults
